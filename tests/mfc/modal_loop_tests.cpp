#include <afxwin.h>

#include <afxdialogex.h>

#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace {

constexpr UINT IDD_EMPTY = 3;
constexpr UINT IDD_MISSING = 99;

constexpr UINT WM_STEP = WM_APP;       // wParam more of them follow, each posted by the one before
constexpr UINT WM_END = WM_APP + 1;    // ends the dialog with wParam
constexpr UINT WM_VANISH = WM_APP + 2; // destroys the window

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
        switch (message) {
        case WM_SHOWWINDOW:
            OnShow(wParam);
            break;
        case WM_STEP:
            OnStep(wParam, lParam);
            return TRUE;
        case WM_END:
            EndDialog(static_cast<int>(wParam));
            return TRUE;
        case WM_VANISH:
            DestroyWindow();
            return TRUE;
        }
        return CDialogEx::OnWndMsg(message, wParam, lParam, pResult);
    }

private:
    void OnShow(WPARAM isShown)
    {
        if (isShown) {
            ++timesShown;
            PostMessageW(m_hWnd, WM_COMMAND, IDOK, 0);
        }
    }

    // The last step posts the message `last`.
    void OnStep(WPARAM more, LPARAM last)
    {
        EXPECT_FALSE(IsWindowVisible(m_hWnd)) << "messages are left";
        if (more > 0) {
            PostMessageW(m_hWnd, WM_STEP, more - 1, last);
        } else {
            PostMessageW(m_hWnd, static_cast<UINT>(last), 5, 0);
        }
    }
};

} // namespace

TEST(ModalLoop, ShowsADialogWhenNoMessageIsLeftUnlessItHasEnded)
{
    // Name, result, how often it is shown, and what happens at the start.
    const std::tuple<const char*, INT_PTR, int, std::function<void(HWND dialog)>> cases[]{
        {"nothing happens", IDOK, 1, [](HWND) {}},
        {"messages are posted", IDOK, 1, [](HWND dialog) { PostMessageW(dialog, WM_STEP, 3, WM_NULL); }},
        {"ended by a sent message", 4, 0, [](HWND dialog) { SendMessageW(dialog, WM_END, 4, 0); }},
        {"ended by the last of posted messages", 5, 0,
         [](HWND dialog) { PostMessageW(dialog, WM_STEP, 3, WM_END); }},
        {"ended by a message that another thread sent", 6, 0,
         [](HWND dialog) { std::thread(SendNotifyMessageW, dialog, WM_END, 6, 0).join(); }},
        {"confirmed before it is shown", IDOK, 0,
         [](HWND dialog) { PostMessageW(dialog, WM_COMMAND, IDOK, 0); }},
        {"destroyed before it is shown", -1, 0, [](HWND dialog) { PostMessageW(dialog, WM_VANISH, 0, 0); }},
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
