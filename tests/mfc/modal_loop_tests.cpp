#include <afxwin.h>

#include <afxdialogex.h>

#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace {

constexpr UINT IDD_EMPTY = 3;
constexpr UINT IDD_MISSING = 99;

// wParam more of them follow, each posted by the one before; the last ends the dialog with lParam, if not 0.
constexpr UINT WM_STEP = WM_APP;
constexpr UINT WM_VANISH = WM_APP + 1; // destroys the window

// Counts how often it is shown, and is confirmed then.
class WatchedDialog : public CDialogEx
{
public:
    using CDialogEx::CDialogEx;

    std::function<void(HWND)> atStart;
    int timesShown = 0;

    BOOL OnInitDialog() override
    {
        atStart(m_hWnd);
        return CDialogEx::OnInitDialog();
    }

    BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult) override
    {
        if (message == WM_SHOWWINDOW && wParam) {
            ++timesShown;
            PostMessageW(m_hWnd, WM_COMMAND, IDOK, 0);
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

TEST(ModalLoop, ShowsADialogWhenNoMessageIsLeftUnlessItHasEnded)
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
        WatchedDialog dialog(IDD_EMPTY);
        dialog.atStart = atStart;
        EXPECT_EQ(dialog.DoModal(), result);
        EXPECT_EQ(dialog.timesShown, timesShown);
        EXPECT_EQ(dialog.m_hWnd, nullptr) << "the window is gone";
    }
}

TEST(ModalLoop, LeavesAProgramsQuitToTheHost)
{
    WatchedDialog dialog(IDD_EMPTY);
    dialog.atStart = [](HWND) { PostQuitMessage(42); };
    EXPECT_EQ(dialog.DoModal(), -1);
    EXPECT_EQ(dialog.timesShown, 0);

    MSG message{};
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 42u);
}

TEST(ModalLoop, DoesNotStartWithoutATemplate)
{
    WatchedDialog dialog(IDD_MISSING);
    EXPECT_EQ(dialog.DoModal(), -1);
}
