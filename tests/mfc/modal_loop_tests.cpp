#include <afxwin.h>

#include <afxdialogex.h>

#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace {

constexpr UINT IDD_WITH_BUTTON = 3;
constexpr UINT IDD_MISSING = 99;
constexpr UINT WM_SYSTIMER = 0x0118;

// wParam more of them follow, each posted by the one before; the last ends the dialog with lParam, if not 0.
constexpr UINT WM_STEP = WM_APP;
constexpr UINT WM_VANISH = WM_APP + 1; // destroys the window
constexpr UINT WM_WORK = WM_APP + 2;   // the host's own

// Messages of which a host always has another one in its queue.
struct Flood
{
    const char* name;
    UINT message;
    void (*causeNext)(HWND window);
    bool comesLast; // when nothing else is in the queue
};

// A handler that takes longer than the timer: the next one is due when it is done.
void WorkAtTimer(HWND window)
{
    SetTimer(window, 1, USER_TIMER_MINIMUM, nullptr);
    Sleep(30);
}

constexpr Flood Floods[]{
    {"an animated window", WM_PAINT, [](HWND host) { InvalidateRect(host, nullptr, FALSE); }, true},
    {"a timer that is too fast", WM_TIMER, WorkAtTimer, true},
    {"a timer of a caret", WM_SYSTIMER, [](HWND host) { PostMessageW(host, WM_SYSTIMER, 0, 0); }, true},
    {"messages posted to oneself", WM_WORK, [](HWND host) { PostMessageW(host, WM_WORK, 0, 0); }, false},
};

constexpr ULONGLONG GiveUpMs = 5000;

// The flood that the host's window is in, when that ends, and how many of its messages came.
Flood flood;
ULONGLONG endOfFlood;
int seen;

LRESULT CALLBACK HandleFlood(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const LRESULT result = DefWindowProcW(window, message, wParam, lParam);
    if (message == flood.message && GetTickCount64() < endOfFlood) {
        ++seen;
        flood.causeNext(window);
    }
    return result;
}

// An active window of the host, in a flood.
HWND MakeBusyHost(const Flood& itsFlood)
{
    const HWND host = CreateWindowW(
        L"Static", L"Host", WS_POPUP | WS_VISIBLE, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr);
    SetActiveWindow(host);
    UpdateWindow(host); // so that only the flood has something to paint
    flood = itsFlood;
    endOfFlood = GetTickCount64() + GiveUpMs;
    SetWindowLongPtrW(host, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(HandleFlood));
    flood.causeNext(host);
    return host;
}

// Notes when it is shown, and is confirmed then.
class WatchedDialog : public CDialogEx
{
public:
    using CDialogEx::CDialogEx;

    std::function<void(HWND dialog)> atStart = [](HWND) {};
    int timesShown = 0;
    int seenBeforeShown = 0;
    int seenBeforeActive = 0;

    BOOL OnInitDialog() override
    {
        seen = 0;
        atStart(m_hWnd);
        return CDialogEx::OnInitDialog();
    }

    BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult) override
    {
        if (message == WM_SHOWWINDOW && wParam) {
            ++timesShown;
            seenBeforeShown = seen;
            PostMessageW(m_hWnd, WM_COMMAND, IDOK, 0);
        } else if (message == WM_ACTIVATE && wParam != WA_INACTIVE) {
            seenBeforeActive = seen;
        } else if (message == WM_STEP) {
            EXPECT_FALSE(IsWindowVisible(m_hWnd)) << "messages are left";
            Step(wParam, static_cast<int>(lParam));
        } else if (message == WM_VANISH) {
            return DestroyWindow();
        }
        return CDialogEx::OnWndMsg(message, wParam, lParam, pResult);
    }

private:
    void Step(WPARAM more, int end)
    {
        if (more > 0) {
            PostMessageW(m_hWnd, WM_STEP, more - 1, end);
        } else if (end) {
            EndDialog(end);
        }
    }
};

} // namespace

TEST(ModalLoop, ShowsTheDialogWhenIdle)
{
    // Name, result, how often it is shown, and what happens at the start.
    const std::tuple<const char*, INT_PTR, int, std::function<void(HWND dialog)>> cases[]{
        {"nothing happens", IDOK, 1, [](HWND) {}},
        {"messages are posted", IDOK, 1, [](HWND dialog) { PostMessageW(dialog, WM_STEP, 3, 0); }},
        {"ended by a sent message", 4, 0, [](HWND dialog) { SendMessageW(dialog, WM_STEP, 0, 4); }},
        {"ended by the last of posted messages", 5, 0,
         [](HWND dialog) { PostMessageW(dialog, WM_STEP, 3, 5); }},
        {"ended by a message that another thread sent", 6, 0,
         [](HWND dialog) { std::thread(SendNotifyMessageW, dialog, WM_STEP, 0, 6).join(); }},
        {"cancelled", IDCANCEL, 0, [](HWND dialog) { PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0); }},
        {"destroyed", -1, 0, [](HWND dialog) { PostMessageW(dialog, WM_VANISH, 0, 0); }},
    };
    for (const auto& [name, result, timesShown, atStart] : cases) {
        SCOPED_TRACE(name);
        WatchedDialog dialog(IDD_WITH_BUTTON);
        dialog.atStart = atStart;
        EXPECT_EQ(dialog.DoModal(), result);
        EXPECT_EQ(dialog.timesShown, timesShown);
        EXPECT_EQ(dialog.m_hWnd, nullptr) << "the window is gone";
    }
}

TEST(ModalLoop, ShowsTheDialogSoonInABusyHost)
{
    for (const Flood& itsFlood : Floods) {
        SCOPED_TRACE(itsFlood.name);
        const HWND host = MakeBusyHost(itsFlood);
        WatchedDialog ended(IDD_WITH_BUTTON);
        ended.atStart = [](HWND dialog) { SendMessageW(dialog, WM_STEP, 0, 7); };
        EXPECT_EQ(ended.DoModal(), 7);
        EXPECT_EQ(ended.timesShown, 0);
        EXPECT_EQ(GetActiveWindow(), host);

        WatchedDialog dialog(IDD_WITH_BUTTON);
        EXPECT_EQ(dialog.DoModal(), IDOK);
        EXPECT_EQ(dialog.timesShown, 1);
        EXPECT_EQ(dialog.seenBeforeShown == 0, flood.comesLast) << "what is posted comes first for a while";
        EXPECT_EQ(dialog.seenBeforeActive, dialog.seenBeforeShown) << "the host is active until then";
        EXPECT_LT(GetTickCount64(), endOfFlood);
        DestroyWindow(host);
    }
}

TEST(ModalLoop, RepostsQuit)
{
    WatchedDialog dialog(IDD_WITH_BUTTON);
    dialog.atStart = [](HWND) { PostQuitMessage(42); };
    EXPECT_EQ(dialog.DoModal(), -1);
    EXPECT_EQ(dialog.timesShown, 0);

    MSG message{};
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 42u);
}

TEST(ModalLoop, FailsWithoutATemplate)
{
    WatchedDialog dialog(IDD_MISSING);
    EXPECT_EQ(dialog.DoModal(), -1);
}
