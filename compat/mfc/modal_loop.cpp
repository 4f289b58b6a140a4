#include <afxwin.h>

namespace {

// The window is shown after this time even if the queue of a busy host is never empty.
constexpr ULONGLONG ShowTimeoutMs = 250;

// The timer of carets and menus, which Windows' headers do not declare.
constexpr UINT WM_SYSTIMER = 0x0118;

// Returns false if there is no message, unless it is to wait for one.
bool FetchMessage(MSG& message, bool wait)
{
    if (wait) {
        ::GetMessageW(&message, nullptr, 0, 0);
        return true;
    }
    return ::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
}

// Windows generates these only when the queue is otherwise empty, so all posted messages have been handled.
bool IsLowPriorityMessage(const MSG& message)
{
    return message.message == WM_PAINT || message.message == WM_TIMER || message.message == WM_SYSTIMER;
}

} // namespace

int CWnd::RunModalLoop(DWORD dwFlags)
{
    bool isShowPending = (dwFlags & MLF_SHOWONIDLE) && !(GetStyle() & WS_VISIBLE);
    const ULONGLONG showDeadline = ::GetTickCount64() + ShowTimeoutMs;
    while (ContinueModal()) {
        MSG message;
        const bool wait = !isShowPending;
        const bool hasMessage = FetchMessage(message, wait);
        if (hasMessage && message.message == WM_QUIT) {
            ::PostQuitMessage(static_cast<int>(message.wParam));
            return -1;
        }
        const bool isIdle = !hasMessage || IsLowPriorityMessage(message);
        const bool isTimeToShow = isIdle || ::GetTickCount64() >= showDeadline;
        // A message that was sent by another thread, and handled while fetching, may have ended the loop.
        if (isShowPending && isTimeToShow && ContinueModal()) {
            isShowPending = false;
            ShowOnIdle();
        }
        if (hasMessage && !PreTranslateMessage(&message)) {
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
    return m_inModalLoop;
}

void CWnd::EndModalLoop(int nResult)
{
    m_modalResult = nResult;
    m_inModalLoop = false;
    // If this is called from a sent message, the loop is still blocked in GetMessageW; post a message to wake
    // it.
    ::PostMessageW(m_hWnd, WM_NULL, 0, 0);
}

BOOL CWnd::PreTranslateMessage(MSG*)
{
    return FALSE;
}
