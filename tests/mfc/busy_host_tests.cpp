#include <afxwin.h>

#include <afxdialogex.h>

#include <functional>
#include <gtest/gtest.h>

namespace {

constexpr UINT IDD_WITH_BUTTON = 4;
constexpr UINT WM_WORK = WM_APP;
constexpr UINT WM_SYSTIMER = 0x0118;
constexpr ULONGLONG GiveUpMs = 5000;
constexpr DWORD TimerWorkMs = 30;

// A window of the host that always has another message in the thread's queue, until `GiveUpMs` are over.
class BusyWindow
{
public:
    using Work = void (*)(HWND window);

    BusyWindow(UINT message, Work causeNext) : m_message(message), m_causeNext(causeNext)
    {
        SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(WindowProc));
        SetActiveWindow(m_window);
        UpdateWindow(m_window); // so that only the flood has something to paint
        causeNext(m_window);
    }

    ~BusyWindow() { DestroyWindow(m_window); }

    BusyWindow(const BusyWindow&) = delete;
    BusyWindow& operator=(const BusyWindow&) = delete;

    HWND Window() const { return m_window; }
    int MessagesSeen() const { return m_seen; }

private:
    static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        auto& self = *reinterpret_cast<BusyWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        const LRESULT result = DefWindowProcW(window, message, wParam, lParam);
        if (message == self.m_message && GetTickCount64() < self.m_end) {
            ++self.m_seen;
            self.m_causeNext(window);
        }
        return result;
    }

    const HWND m_window = CreateWindowW(
        L"Static", L"Host", WS_POPUP | WS_VISIBLE, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr);
    const UINT m_message;
    const Work m_causeNext;
    const ULONGLONG m_end = GetTickCount64() + GiveUpMs;
    int m_seen = 0;
};

// Notes what there is when it is about to be shown, and is confirmed then.
class WatchedDialog : public CDialogEx
{
public:
    explicit WatchedDialog(const BusyWindow& host) : CDialogEx(IDD_WITH_BUTTON), m_host(host) {}

    std::function<void(CDialog& dialog)> atStart = [](CDialog&) {};
    int timesShown = 0;
    int messagesBeforeShown = 0;
    int messagesBeforeActive = 0;
    ULONGLONG waitedMs = 0;

    BOOL OnInitDialog() override
    {
        CDialogEx::OnInitDialog();
        m_made = GetTickCount64();
        m_seenAtStart = m_host.MessagesSeen();
        atStart(*this);
        return TRUE;
    }

    BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult) override
    {
        if (message == WM_SHOWWINDOW && wParam) {
            ++timesShown;
            waitedMs = GetTickCount64() - m_made;
            messagesBeforeShown = m_host.MessagesSeen() - m_seenAtStart;
            PostMessageW(m_hWnd, WM_COMMAND, IDOK, 0);
        } else if (message == WM_ACTIVATE && wParam != WA_INACTIVE) {
            messagesBeforeActive = m_host.MessagesSeen() - m_seenAtStart;
        }
        return CDialogEx::OnWndMsg(message, wParam, lParam, pResult);
    }

private:
    const BusyWindow& m_host;
    ULONGLONG m_made = 0;
    int m_seenAtStart = 0;
};

struct Flood
{
    const char* name;
    UINT message;
    BusyWindow::Work causeNext;
};

void Repaint(HWND window)
{
    InvalidateRect(window, nullptr, FALSE);
}

// A handler that takes longer than the timer: the next one is due when it is done.
void WorkAtTimer(HWND window)
{
    SetTimer(window, 1, USER_TIMER_MINIMUM, nullptr);
    Sleep(TimerWorkMs);
}

void BlinkCaret(HWND window)
{
    PostMessageW(window, WM_SYSTIMER, 0, 0);
}

void PostWork(HWND window)
{
    PostMessageW(window, WM_WORK, 0, 0);
}

constexpr Flood PostedWork{"messages posted to oneself", WM_WORK, PostWork};

constexpr Flood LastInQueue[]{
    {"an animated window", WM_PAINT, Repaint},
    {"a timer that is too fast", WM_TIMER, WorkAtTimer},
    {"a timer of a caret", WM_SYSTIMER, BlinkCaret},
};

} // namespace

TEST(BusyHost, DoesNotGetAnotherTurnAtPaintingOrTimersBeforeTheDialogIsShown)
{
    for (const Flood& flood : LastInQueue) {
        SCOPED_TRACE(flood.name);
        const BusyWindow host(flood.message, flood.causeNext);
        WatchedDialog dialog(host);
        EXPECT_EQ(dialog.DoModal(), IDOK);
        EXPECT_EQ(dialog.timesShown, 1);
        EXPECT_EQ(dialog.messagesBeforeShown, 0);
    }
}

TEST(BusyHost, SeesTheDialogSoonAlthoughItPostsMessagesToItself)
{
    const BusyWindow host(PostedWork.message, PostedWork.causeNext);
    WatchedDialog dialog(host);
    EXPECT_EQ(dialog.DoModal(), IDOK);
    EXPECT_EQ(dialog.timesShown, 1);
    EXPECT_LT(dialog.waitedMs, GiveUpMs / 2);
    EXPECT_GT(dialog.messagesBeforeShown, 0) << "what is posted comes first for a while";
    EXPECT_EQ(dialog.messagesBeforeActive, dialog.messagesBeforeShown) << "the host is active until then";
}

TEST(BusyHost, NeverSeesADialogThatEndsWhenItIsSetUp)
{
    for (const Flood& flood : {PostedWork, LastInQueue[0], LastInQueue[1], LastInQueue[2]}) {
        SCOPED_TRACE(flood.name);
        const BusyWindow host(flood.message, flood.causeNext);
        WatchedDialog dialog(host);
        dialog.atStart = [](CDialog& ended) { ended.EndDialog(7); };
        EXPECT_EQ(dialog.DoModal(), 7);
        EXPECT_EQ(dialog.timesShown, 0);
        EXPECT_EQ(GetActiveWindow(), host.Window());
    }
}
