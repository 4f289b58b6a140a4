#include <afxdialogex.h>

IMPLEMENT_DYNAMIC(CDialogEx, CDialog)

namespace {

bool IsStaticText(HWND control)
{
    wchar_t className[8];
    return ::GetClassNameW(control, className, 8) && ::lstrcmpiW(className, L"Static") == 0;
}

} // namespace

CDialogEx::CDialogEx(UINT nIDTemplate, CWnd* pParent) : CDialog(nIDTemplate, pParent) {}

CDialogEx::~CDialogEx()
{
    DeleteOwnedImage();
}

void CDialogEx::SetBackgroundImage(HBITMAP hBitmap, BackgroundLocation, BOOL bAutoDestroy, BOOL bRepaint)
{
    if (hBitmap != m_image) {
        DeleteOwnedImage();
    }
    m_image = hBitmap;
    m_ownsImage = bAutoDestroy;
    if (bRepaint && ::IsWindowVisible(m_hWnd)) {
        Invalidate();
        UpdateWindow();
    }
}

void CDialogEx::DeleteOwnedImage()
{
    if (m_image && m_ownsImage) {
        ::DeleteObject(m_image);
    }
    m_image = nullptr;
}

BOOL CDialogEx::OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult)
{
    if (m_image && message == WM_ERASEBKGND) {
        EraseBackground(reinterpret_cast<HDC>(wParam));
        *pResult = TRUE;
        return TRUE;
    }
    if (m_image && message == WM_CTLCOLORSTATIC && IsStaticText(reinterpret_cast<HWND>(lParam))) {
        ::SetBkMode(reinterpret_cast<HDC>(wParam), TRANSPARENT);
        *pResult = reinterpret_cast<LRESULT>(::GetStockObject(HOLLOW_BRUSH));
        return TRUE;
    }
    return CDialog::OnWndMsg(message, wParam, lParam, pResult);
}

// Paints the image, and the normal background only around it, so that nothing is painted twice.
void CDialogEx::EraseBackground(HDC dc)
{
    BITMAP size{};
    ::GetObjectW(m_image, sizeof size, &size);
    HDC source = ::CreateCompatibleDC(dc);
    HGDIOBJ previous = ::SelectObject(source, m_image);
    ::BitBlt(dc, 0, 0, size.bmWidth, size.bmHeight, source, 0, 0, SRCCOPY);
    ::SelectObject(source, previous);
    ::DeleteDC(source);

    const int state = ::SaveDC(dc);
    ::ExcludeClipRect(dc, 0, 0, size.bmWidth, size.bmHeight);
    DefWindowProc(WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0);
    ::RestoreDC(dc, state);
}
