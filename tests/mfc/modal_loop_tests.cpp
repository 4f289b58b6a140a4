#include <afxwin.h>

#include <afxdialogex.h>

#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace {

constexpr UINT IDD_WITH_BUTTON = 3;
constexpr UINT IDD_MISSING = 99;
constexpr UINT WM_SYSTIMER = 0x0118;

// Posts the next one until wParam is 0. The last one ends the dialog with lParam, unless that is 0.
constexpr UINT WM_NEXT_STEP = WM_APP;
constexpr UINT WM_DESTROY_SELF = WM_APP + 1;
constexpr UINT WM_WORK = WM_APP + 2;

// Messages of which the host's queue is never empty.
struct MessageStorm
{
    const char* name;
    UINT message;
    void (*causeNext)(HWND window);
    bool isLowPriority; // Windows generates the message only if the queue is otherwise empty
};

// Takes longer than the timer's period, so that the next message is due when it returns.
void WorkOnTimer(HWND window)
{
    SetTimer(window, 1, USER_TIMER_MINIMUM, nullptr);
    Sleep(30);
}

constexpr MessageStorm Storms[]{
    {"an animated window", WM_PAINT, [](HWND host) { InvalidateRect(host, nullptr, FALSE); }, true},
    {"a timer that is too fast", WM_TIMER, WorkOnTimer, true},
    {"a timer of a caret", WM_SYSTIMER, [](HWND host) { PostMessageW(host, WM_SYSTIMER, 0, 0); }, true},
    {"messages posted to oneself", WM_WORK, [](HWND host) { PostMessageW(host, WM_WORK, 0, 0); }, false},
};

constexpr ULONGLONG StormTimeoutMs = 5000;

// The storm that the host's window is in, when it ends, and how many of its messages have arrived.
MessageStorm storm;
ULONGLONG endOfStorm;
int messageCount;

LRESULT CALLBACK HandleStorm(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const LRESULT result = DefWindowProcW(window, message, wParam, lParam);
    if (message == storm.message && GetTickCount64() < endOfStorm) {
        ++messageCount;
        storm.causeNext(window);
    }
    return result;
}

// Creates an active window of the host and starts a storm in it.
HWND CreateBusyHost(const MessageStorm& newStorm)
{
    const HWND host = CreateWindowW(
        L"Static", L"Host", WS_POPUP | WS_VISIBLE, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr);
    SetActiveWindow(host);
    UpdateWindow(host); // so that only the storm causes painting
    storm = newStorm;
    endOfStorm = GetTickCount64() + StormTimeoutMs;
    SetWindowLongPtrW(host, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(HandleStorm));
    storm.causeNext(host);
    return host;
}

// Records when it is shown, and then closes with OK.
class RecordingDialog : public CDialogEx
{
public:
    using CDialogEx::CDialogEx;

    std::function<void(HWND dialog)> onInit = [](HWND) {};
    int timesShown = 0;
    int messagesBeforeShown = 0;
    int messagesBeforeActive = 0;

    BOOL OnInitDialog() override
    {
        messageCount = 0;
        onInit(m_hWnd);
        return CDialogEx::OnInitDialog();
    }

    BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult) override
    {
        if (message == WM_SHOWWINDOW && wParam) {
            ++timesShown;
            messagesBeforeShown = messageCount;
            PostMessageW(m_hWnd, WM_COMMAND, IDOK, 0);
        } else if (message == WM_ACTIVATE && wParam != WA_INACTIVE) {
            messagesBeforeActive = messageCount;
        } else if (message == WM_NEXT_STEP) {
            EXPECT_FALSE(IsWindowVisible(m_hWnd)) << "although a message was left in the queue";
            DoStep(wParam, static_cast<int>(lParam));
        } else if (message == WM_DESTROY_SELF) {
            return DestroyWindow();
        }
        return CDialogEx::OnWndMsg(message, wParam, lParam, pResult);
    }

private:
    void DoStep(WPARAM stepsLeft, int result)
    {
        if (stepsLeft > 0) {
            PostMessageW(m_hWnd, WM_NEXT_STEP, stepsLeft - 1, result);
        } else if (result) {
            EndDialog(result);
        }
    }
};

} // namespace

TEST(ModalLoop, ShowsTheDialogWhenIdle)
{
    // Name, result, how often the dialog is shown, and what happens in OnInitDialog.
    const std::tuple<const char*, INT_PTR, int, std::function<void(HWND dialog)>> cases[]{
        {"nothing happens", IDOK, 1, [](HWND) {}},
        {"messages are posted", IDOK, 1, [](HWND dialog) { PostMessageW(dialog, WM_NEXT_STEP, 3, 0); }},
        {"ended by a sent message", 4, 0, [](HWND dialog) { SendMessageW(dialog, WM_NEXT_STEP, 0, 4); }},
        {"ended by the last of posted messages", 5, 0,
         [](HWND dialog) { PostMessageW(dialog, WM_NEXT_STEP, 3, 5); }},
        {"ended by a message that another thread sent", 6, 0,
         [](HWND dialog) { std::thread(SendNotifyMessageW, dialog, WM_NEXT_STEP, 0, 6).join(); }},
        {"cancelled", IDCANCEL, 0, [](HWND dialog) { PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0); }},
        {"destroyed", -1, 0, [](HWND dialog) { PostMessageW(dialog, WM_DESTROY_SELF, 0, 0); }},
    };
    for (const auto& [name, result, timesShown, onInit] : cases) {
        SCOPED_TRACE(name);
        RecordingDialog dialog(IDD_WITH_BUTTON);
        dialog.onInit = onInit;
        EXPECT_EQ(dialog.DoModal(), result);
        EXPECT_EQ(dialog.timesShown, timesShown);
        EXPECT_EQ(dialog.m_hWnd, nullptr) << "the window is destroyed";
    }
}

TEST(ModalLoop, ShowsTheDialogSoonInABusyHost)
{
    for (const MessageStorm& row : Storms) {
        SCOPED_TRACE(row.name);
        const HWND host = CreateBusyHost(row);
        RecordingDialog ended(IDD_WITH_BUTTON);
        ended.onInit = [](HWND dialog) { SendMessageW(dialog, WM_NEXT_STEP, 0, 7); };
        EXPECT_EQ(ended.DoModal(), 7);
        EXPECT_EQ(ended.timesShown, 0);
        EXPECT_EQ(GetActiveWindow(), host);

        RecordingDialog dialog(IDD_WITH_BUTTON);
        EXPECT_EQ(dialog.DoModal(), IDOK);
        EXPECT_EQ(dialog.timesShown, 1);
        EXPECT_EQ(dialog.messagesBeforeShown == 0, row.isLowPriority) << "posted messages are handled first";
        EXPECT_EQ(dialog.messagesBeforeActive, dialog.messagesBeforeShown) << "the host is active until then";
        EXPECT_LT(GetTickCount64(), endOfStorm);
        DestroyWindow(host);
    }
}

TEST(ModalLoop, RepostsQuit)
{
    RecordingDialog dialog(IDD_WITH_BUTTON);
    dialog.onInit = [](HWND) { PostQuitMessage(42); };
    EXPECT_EQ(dialog.DoModal(), -1);
    EXPECT_EQ(dialog.timesShown, 0);

    MSG message{};
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 42u);
}

TEST(ModalLoop, FailsWithoutATemplate)
{
    RecordingDialog dialog(IDD_MISSING);
    EXPECT_EQ(dialog.DoModal(), -1);
}
