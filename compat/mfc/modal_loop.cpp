#include <afxwin.h>

namespace {

// The queue of a busy host is never empty; its user waits no longer than this.
constexpr ULONGLONG ShownAfterMs = 250;

// The timer of carets and menus, for which the headers have no name.
constexpr UINT WM_SYSTIMER = 0x0118;

bool TakeMessage(MSG& message, bool waits)
{
    if (waits) {
        ::GetMessageW(&message, nullptr, 0, 0);
        return true;
    }
    return ::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
}

// The queue hands these out when it holds nothing else, so that all that was posted has had its turn.
bool ComesLast(const MSG& message)
{
    return message.message == WM_PAINT || message.message == WM_TIMER || message.message == WM_SYSTIMER;
}

} // namespace

int CWnd::RunModalLoop(DWORD dwFlags)
{
    bool isHidden = (dwFlags & MLF_SHOWONIDLE) && !(GetStyle() & WS_VISIBLE);
    const ULONGLONG latest = ::GetTickCount64() + ShownAfterMs;
    while (ContinueModal()) {
        MSG message;
        const bool isIdle = !TakeMessage(message, !isHidden);
        if (!isIdle && message.message == WM_QUIT) {
            ::PostQuitMessage(static_cast<int>(message.wParam));
            return -1;
        }
        // A message that another thread sent may have ended the loop during the look at the queue.
        if (isHidden && ContinueModal() && (isIdle || ComesLast(message) || ::GetTickCount64() >= latest)) {
            isHidden = false;
            ShowOnIdle();
        }
        if (!isIdle && !PreTranslateMessage(&message)) {
            ::TranslateMessage(&message);
            ::DispatchMessageW(&message);
        }
    }
    return m_modalResult;
}

void CWnd::ShowOnIdle()
{
    ShowWindow(SW_SHOWNORMAL);
    UpdateWindow();
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
