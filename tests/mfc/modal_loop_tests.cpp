#include <afxwin.h>

#include <afxdialogex.h>

#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace {

constexpr UINT IDD_EMPTY = 3;
constexpr UINT WM_STEP = WM_APP;

// Is confirmed when it is shown. At WM_STEP it posts another of less steps, and at the last one ends with
// lParam.
class SteppingDialog : public CDialogEx
{
public:
    using CDialogEx::CDialogEx;

    std::function<void(HWND)> start;
    int timesShown = 0;

    BOOL OnInitDialog() override
    {
        start(m_hWnd);
        return CDialogEx::OnInitDialog();
    }

    BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult) override
    {
        if (message == WM_SHOWWINDOW && wParam) {
            ++timesShown;
            PostMessageW(m_hWnd, WM_COMMAND, IDOK, 0);
        } else if (message == WM_STEP && wParam) {
            PostMessageW(m_hWnd, WM_STEP, wParam - 1, lParam);
        } else if (message == WM_STEP) {
            EXPECT_FALSE(IsWindowVisible(m_hWnd));
            lParam ? EndDialog(static_cast<int>(lParam)) : void();
        }
        return CDialogEx::OnWndMsg(message, wParam, lParam, pResult);
    }
};

} // namespace

TEST(ModalLoop, ShowsADialogWhenNoMessageIsLeftUnlessItHasEnded)
{
    const std::pair<int, std::function<void(HWND)>> cases[]{
        {IDOK, [](HWND dialog) { PostMessageW(dialog, WM_STEP, 3, 0); }},
        {4, [](HWND dialog) { SendMessageW(dialog, WM_STEP, 0, 4); }},
        {5, [](HWND dialog) { PostMessageW(dialog, WM_STEP, 3, 5); }},
        {6, [](HWND dialog) { std::thread(SendNotifyMessageW, dialog, WM_STEP, 0, 6).join(); }},
        {-1, [](HWND) { PostQuitMessage(42); }}};
    for (const auto& [result, start] : cases) {
        SteppingDialog dialog(IDD_EMPTY);
        dialog.start = start;
        EXPECT_EQ(dialog.DoModal(), result);
        EXPECT_EQ(dialog.timesShown, result == IDOK ? 1 : 0) << result;
    }
    MSG message{};
    PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);
    EXPECT_EQ(message.wParam, 42u) << "the host gets it too";
}
