#include <afxwin.h>

#include "centred.h"

#include <algorithm>
#include <map>

IMPLEMENT_DYNAMIC(CWnd, CCmdTarget)

BEGIN_MESSAGE_MAP(CWnd, CCmdTarget)
END_MESSAGE_MAP()

namespace {

// The windows that have an object. An entry whose thread was terminated stays, and is never looked at again:
// its window is gone.
std::map<HWND, CWnd*> attachedWindows;

} // namespace

CWnd::~CWnd()
{
    DestroyWindow();
}

BOOL CWnd::SubclassWindow(HWND hWnd)
{
    m_hWnd = hWnd;
    attachedWindows[hWnd] = this;
    m_formerProc = reinterpret_cast<WNDPROC>(
        ::SetWindowLongPtrW(hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(AttachedWindowProc)));
    return TRUE;
}

void CWnd::Detach()
{
    attachedWindows.erase(m_hWnd);
    ::SetWindowLongPtrW(m_hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_formerProc));
    m_hWnd = nullptr;
    if (m_continuesModal) {
        // Nothing can end its loop any more. Not to the window, whose messages go with it.
        m_continuesModal = false;
        ::PostMessageW(nullptr, WM_NULL, 0, 0);
    }
}

CWnd* CWnd::FindAttached(HWND window)
{
    const auto found = attachedWindows.find(window);
    return found == attachedWindows.end() ? nullptr : found->second;
}

LRESULT CALLBACK CWnd::AttachedWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    // A window procedure is an entry into the module like an export.
    AFX_MANAGE_STATE(AfxGetStaticModuleState())
    CWnd* object = FindAttached(window);
    if (!object) {
        return ::DefWindowProcW(window, message, wParam, lParam);
    }
    const WNDPROC formerProc = object->m_formerProc;
    if (message == WM_NCDESTROY) {
        object->Detach();
        return ::CallWindowProcW(formerProc, window, message, wParam, lParam);
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
    return ::CallWindowProcW(m_formerProc, m_hWnd, message, wParam, lParam);
}

BOOL CWnd::OnCommand(WPARAM wParam, LPARAM lParam)
{
    // A menu or an accelerator has no control and no code of its own.
    const UINT code = lParam ? HIWORD(wParam) : BN_CLICKED;
    return RouteMessage(WM_COMMAND, code, LOWORD(wParam), {});
}

BOOL CWnd::OnNotify(WPARAM, LPARAM lParam, LRESULT* pResult)
{
    auto* header = reinterpret_cast<NMHDR*>(lParam);
    return RouteMessage(WM_NOTIFY, header->code, static_cast<UINT>(header->idFrom), {header, pResult});
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

POINT CentredPosition(const RECT& area, const RECT& window)
{
    const LONG freeWidth = (area.right - area.left) - (window.right - window.left);
    const LONG freeHeight = (area.bottom - area.top) - (window.bottom - window.top);
    return {
        area.left + std::max(freeWidth, LONG{0}) / 2,
        area.top + std::max(freeHeight, LONG{0}) / 2,
    };
}

// Without an owner, the middle of the work area of the monitor that is worked on. A dialog that is not shown
// yet is not active and lies in a corner of the primary one.
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
    const POINT position = CentredPosition(information.rcWork, window);
    ::SetWindowPos(m_hWnd, nullptr, position.x, position.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

DWORD CWnd::GetStyle() const
{
    return static_cast<DWORD>(::GetWindowLongPtrW(m_hWnd, GWL_STYLE));
}

BOOL CWnd::ModifyStyleEx(DWORD dwRemove, DWORD dwAdd, UINT nFlags)
{
    const auto former = static_cast<DWORD>(::GetWindowLongPtrW(m_hWnd, GWL_EXSTYLE));
    const DWORD style = (former & ~dwRemove) | dwAdd;
    if (style == former) {
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
