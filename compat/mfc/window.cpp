#include <afxwin.h>

#include "centered_position.h"

#include <algorithm>
#include <map>

IMPLEMENT_DYNAMIC(CWnd, CCmdTarget)

BEGIN_MESSAGE_MAP(CWnd, CCmdTarget)
END_MESSAGE_MAP()

namespace {

// The windows that have an object. If a thread was terminated, the entries of its windows stay, but are never
// used again.
std::map<HWND, CWnd*> permanentWindows;

} // namespace

CWnd::~CWnd()
{
    DestroyWindow();
}

BOOL CWnd::SubclassWindow(HWND hWnd)
{
    m_hWnd = hWnd;
    permanentWindows[hWnd] = this;
    m_pfnSuper = reinterpret_cast<WNDPROC>(
        ::SetWindowLongPtrW(hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(SubclassProc)));
    return TRUE;
}

void CWnd::Detach()
{
    permanentWindows.erase(m_hWnd);
    ::SetWindowLongPtrW(m_hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_pfnSuper));
    m_hWnd = nullptr;
    if (m_inModalLoop) {
        // Wake the loop, which nothing else can end any more. Messages to the window itself would be lost.
        m_inModalLoop = false;
        ::PostMessageW(nullptr, WM_NULL, 0, 0);
    }
}

CWnd* CWnd::FromHandlePermanent(HWND window)
{
    const auto found = permanentWindows.find(window);
    return found == permanentWindows.end() ? nullptr : found->second;
}

LRESULT CALLBACK CWnd::SubclassProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    // Like an export, a window procedure is an entry point of the module.
    AFX_MANAGE_STATE(AfxGetStaticModuleState())
    CWnd* object = FromHandlePermanent(window);
    if (!object) {
        return ::DefWindowProcW(window, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY) {
        const WNDPROC original = object->m_pfnSuper;
        object->Detach();
        return ::CallWindowProcW(original, window, message, wParam, lParam);
    }
    return object->WindowProc(message, wParam, lParam);
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    LRESULT result = 0;
    return OnWndMsg(message, wParam, lParam, &result) ? result : DefWindowProc(message, wParam, lParam);
}

BOOL CWnd::OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult)
{
    switch (message) {
    case WM_COMMAND:
        return OnCommand(wParam, lParam);
    case WM_NOTIFY:
        return OnNotify(wParam, lParam, pResult);
    default:
        return FALSE;
    }
}

LRESULT CWnd::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    return ::CallWindowProcW(m_pfnSuper, m_hWnd, message, wParam, lParam);
}

BOOL CWnd::OnCommand(WPARAM wParam, LPARAM lParam)
{
    // A menu or an accelerator sends no control handle and no notification code.
    const UINT code = lParam ? HIWORD(wParam) : BN_CLICKED;
    return HandleMessage(WM_COMMAND, code, LOWORD(wParam), {});
}

BOOL CWnd::OnNotify(WPARAM, LPARAM lParam, LRESULT* pResult)
{
    auto* header = reinterpret_cast<NMHDR*>(lParam);
    return HandleMessage(WM_NOTIFY, header->code, static_cast<UINT>(header->idFrom), {header, pResult});
}

BOOL CWnd::DestroyWindow()
{
    return m_hWnd && ::DestroyWindow(m_hWnd);
}

LRESULT CWnd::SendMessage(UINT message, WPARAM wParam, LPARAM lParam) const
{
    return ::SendMessageW(m_hWnd, message, wParam, lParam);
}

BOOL CWnd::ShowWindow(int nCmdShow)
{
    return ::ShowWindow(m_hWnd, nCmdShow);
}

void CWnd::UpdateWindow()
{
    ::UpdateWindow(m_hWnd);
}

void CWnd::Invalidate(BOOL bErase)
{
    ::InvalidateRect(m_hWnd, nullptr, bErase);
}

void CWnd::SetRedraw(BOOL bRedraw)
{
    SendMessage(WM_SETREDRAW, static_cast<WPARAM>(bRedraw));
}

POINT CenteredPosition(const RECT& area, const RECT& window)
{
    const LONG freeWidth = (area.right - area.left) - (window.right - window.left);
    const LONG freeHeight = (area.bottom - area.top) - (window.bottom - window.top);
    return {
        area.left + std::max(freeWidth, LONG{0}) / 2,
        area.top + std::max(freeHeight, LONG{0}) / 2,
    };
}

// Centers the window in the work area of the monitor with the active window. The dialog itself says nothing
// about the monitor, because it is not shown yet and lies in a corner of the primary one.
void CWnd::CenterWindow()
{
    const HWND active = ::GetActiveWindow();
    const HMONITOR monitor =
        ::MonitorFromWindow(active ? active : ::GetForegroundWindow(), MONITOR_DEFAULTTOPRIMARY);
    MONITORINFO information{};
    information.cbSize = sizeof information;
    RECT window;
    if (!::GetMonitorInfoW(monitor, &information) || !::GetWindowRect(m_hWnd, &window)) {
        return;
    }
    const POINT position = CenteredPosition(information.rcWork, window);
    ::SetWindowPos(m_hWnd, nullptr, position.x, position.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

DWORD CWnd::GetStyle() const
{
    return static_cast<DWORD>(::GetWindowLongPtrW(m_hWnd, GWL_STYLE));
}

BOOL CWnd::ModifyStyleEx(DWORD dwRemove, DWORD dwAdd, UINT nFlags)
{
    const auto previous = static_cast<DWORD>(::GetWindowLongPtrW(m_hWnd, GWL_EXSTYLE));
    const DWORD style = (previous & ~dwRemove) | dwAdd;
    if (style == previous) {
        return FALSE;
    }
    ::SetWindowLongPtrW(m_hWnd, GWL_EXSTYLE, static_cast<LONG_PTR>(style));
    if (nFlags) {
        ::SetWindowPos(
            m_hWnd, nullptr, 0, 0, 0, 0, nFlags | SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    return TRUE;
}

HICON CWnd::SetIcon(HICON hIcon, BOOL bBigIcon)
{
    return reinterpret_cast<HICON>(
        SendMessage(WM_SETICON, bBigIcon ? ICON_BIG : ICON_SMALL, reinterpret_cast<LPARAM>(hIcon)));
}

void CWnd::SetWindowText(LPCTSTR lpszString)
{
    ::SetWindowTextW(m_hWnd, lpszString);
}

void CWnd::SetDlgItemText(int nID, LPCTSTR lpszString)
{
    ::SetDlgItemTextW(m_hWnd, nID, lpszString);
}
