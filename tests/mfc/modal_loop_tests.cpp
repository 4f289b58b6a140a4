#include <afxwin.h>

#include <afxdialogex.h>

#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace {

constexpr UINT IDD_EMPTY = 3;
constexpr UINT WM_STEP = WM_APP;

// A dialog that does what a test asks for, and is confirmed when it is shown.
class ScriptedDialog : public CDialogEx
{
public:
    ScriptedDialog() : CDialogEx(IDD_EMPTY) {}

    std::function<void()> atStart;                ///< In OnInitDialog.
    std::function<void(WPARAM parameter)> atStep; ///< At each WM_STEP.
    int timesShown = 0;

protected:
    BOOL OnInitDialog() override
    {
        CDialogEx::OnInitDialog();
        atStart();
        return TRUE;
    }

    BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult) override
    {
        if (message == WM_SHOWWINDOW && wParam) {
            ++timesShown;
            PostMessageW(m_hWnd, WM_COMMAND, IDOK, 0);
        } else if (message == WM_STEP) {
            atStep(wParam);
        }
        return CDialogEx::OnWndMsg(message, wParam, lParam, pResult);
    }
};

} // namespace

TEST(ModalLoop, ShowsTheDialogWhenNoMessageIsLeft)
{
    ScriptedDialog dialog;
    std::vector<bool> visibleAtStep;
    dialog.atStart = [&] { PostMessageW(dialog.m_hWnd, WM_STEP, 3, 0); };
    dialog.atStep = [&](WPARAM stepsLeft) {
        visibleAtStep.push_back(IsWindowVisible(dialog.m_hWnd));
        PostMessageW(dialog.m_hWnd, stepsLeft ? WM_STEP : WM_NULL, stepsLeft - 1, 0);
    };
    EXPECT_EQ(dialog.DoModal(), IDOK);
    EXPECT_EQ(visibleAtStep, std::vector<bool>(4, false));
    EXPECT_EQ(dialog.timesShown, 1);
}

TEST(ModalLoop, NeverShowsADialogThatEndsBeforeItIsIdle)
{
    ScriptedDialog dialog;
    dialog.atStep = [&](WPARAM result) { dialog.EndDialog(static_cast<int>(result)); };
    const std::pair<int, std::function<void()>> ends[]{
        {4, [&] { dialog.EndDialog(4); }},
        {5, [&] { PostMessageW(dialog.m_hWnd, WM_STEP, 5, 0); }},
        {6, [&] { std::thread([&] { SendNotifyMessageW(dialog.m_hWnd, WM_STEP, 6, 0); }).join(); }},
        {-1, [] { PostQuitMessage(42); }},
    };
    for (const auto& [result, end] : ends) {
        dialog.atStart = end;
        EXPECT_EQ(dialog.DoModal(), result);
        EXPECT_EQ(dialog.timesShown, 0) << result;
    }
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) << "the host gets it too";
    EXPECT_EQ(message.wParam, 42u);
}
