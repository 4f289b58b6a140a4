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
    explicit SteppingDialog(const std::function<void(HWND)>& start) : CDialogEx(IDD_EMPTY), m_start(start) {}

    int timesShown = 0;

protected:
    BOOL OnInitDialog() override
    {
        CDialogEx::OnInitDialog();
        m_start(m_hWnd);
        return TRUE;
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

private:
    std::function<void(HWND)> m_start;
};

} // namespace

TEST(ModalLoop, ShowsADialogWhenNoMessageIsLeftUnlessItHasEnded)
{
    const std::tuple<int, int, std::function<void(HWND)>> cases[]{
        {IDOK, 1, [](HWND dialog) { PostMessageW(dialog, WM_STEP, 3, 0); }},
        {4, 0, [](HWND dialog) { SendMessageW(dialog, WM_STEP, 0, 4); }},
        {5, 0, [](HWND dialog) { PostMessageW(dialog, WM_STEP, 3, 5); }},
        {6, 0, [](HWND dialog) { std::thread(SendNotifyMessageW, dialog, WM_STEP, 0, 6).join(); }},
        {-1, 0, [](HWND) { PostQuitMessage(42); }}};
    for (const auto& [result, timesShown, start] : cases) {
        SteppingDialog dialog(start);
        EXPECT_EQ(dialog.DoModal(), result);
        EXPECT_EQ(dialog.timesShown, timesShown) << result;
    }
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) << "the host gets it too";
    EXPECT_EQ(message.wParam, 42u);
}
