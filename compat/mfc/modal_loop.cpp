#include <afxwin.h>

int CWnd::RunModalLoop(DWORD dwFlags)
{
    bool showsOnIdle = (dwFlags & MLF_SHOWONIDLE) && !(GetStyle() & WS_VISIBLE);
    while (ContinueModal()) {
        MSG message;
        if (!showsOnIdle) {
            ::GetMessageW(&message, nullptr, 0, 0);
        } else if (!::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            showsOnIdle = false;
            // A message that another thread sent may have ended the loop during the look at the queue.
            if (ContinueModal()) {
                ShowWindow(SW_SHOWNORMAL);
                UpdateWindow();
            }
            continue;
        }
        if (message.message == WM_QUIT) {
            ::PostQuitMessage(static_cast<int>(message.wParam));
            return -1;
        }
        if (!PreTranslateMessage(&message)) {
            ::TranslateMessage(&message);
            ::DispatchMessageW(&message);
        }
    }
    return m_modalResult;
}

BOOL CWnd::ContinueModal()
{
    return m_continuesModal;
}

void CWnd::EndModalLoop(int nResult)
{
    m_modalResult = nResult;
    m_continuesModal = false;
    // Wakes the loop where it waits for a message while a sent one brings it here.
    ::PostMessageW(m_hWnd, WM_NULL, 0, 0);
}

BOOL CWnd::PreTranslateMessage(MSG*)
{
    return FALSE;
}
