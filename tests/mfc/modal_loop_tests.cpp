#include "scripted_dialog.h"

TEST(ModalLoop, ShowsTheDialogWhenNoMessageIsLeft)
{
    ScriptedDialog dialog;
    std::vector<bool> visibleAtStep;
    dialog.atStart = [&] { PostMessageW(dialog.m_hWnd, WM_STEP, 3, 0); };
    dialog.atStep = [&](WPARAM stepsLeft) {
        visibleAtStep.push_back(IsWindowVisible(dialog.m_hWnd));
        PostMessageW(dialog.m_hWnd, stepsLeft ? WM_STEP : WM_NULL, stepsLeft - 1, 0);
    };
    RunAndLook(dialog, [&] { EXPECT_TRUE(IsWindowVisible(dialog.m_hWnd)); });
    EXPECT_EQ(visibleAtStep, std::vector<bool>(4, false));
    EXPECT_EQ(dialog.timesShown, 1);
}

TEST(ModalLoop, NeverShowsADialogThatEndsBeforeItIsIdle)
{
    ScriptedDialog dialog;
    dialog.atStep = [&](WPARAM result) { dialog.EndDialog(static_cast<int>(result)); };
    const std::pair<int, std::function<void()>> ends[]{
        {0, [&] { dialog.EndDialog(0); }},
        {INT_MIN,
         [&] {
             PostMessageW(dialog.m_hWnd, WM_STEP, 8, 0);
             dialog.EndDialog(INT_MIN);
         }},
        {5, [&] { PostMessageW(dialog.m_hWnd, WM_STEP, 5, 0); }},
        {6, [&] { std::thread([&] { SendNotifyMessageW(dialog.m_hWnd, WM_STEP, 6, 0); }).join(); }},
    };
    for (const auto& [result, end] : ends) {
        dialog.atStart = end;
        EXPECT_EQ(dialog.DoModal(), result);
        EXPECT_EQ(dialog.timesShown, 0) << result;
        EXPECT_FALSE(dialog.m_hWnd);
    }
    EXPECT_EQ(ScriptedDialog(IDD_MISSING).DoModal(), -1);
}

TEST(ModalLoop, EndsAtAQuitMessageAndKeepsIt)
{
    ScriptedDialog dialog;
    dialog.atStart = [] { PostQuitMessage(42); };
    EXPECT_EQ(dialog.DoModal(), -1);
    EXPECT_FALSE(dialog.m_hWnd);
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 42u);
}

TEST(ModalLoop, EndsWhileItWaits)
{
    ScriptedDialog dialog;
    dialog.atStep = [&](WPARAM result) {
        result ? dialog.EndDialog(static_cast<int>(result)) : static_cast<void>(dialog.DestroyWindow());
    };
    const auto send = [](WPARAM step) {
        return [=](HWND window) { SendMessageW(window, WM_STEP, step, 0); };
    };
    // Another message may happen to wake the loop, though hardly each time.
    for (int result = 1; result <= 5; ++result) {
        EXPECT_EQ(RunWithUser(dialog, send(static_cast<WPARAM>(result))), result);
    }
    EXPECT_EQ(RunWithUser(dialog, send(0)), -1) << "its window destroyed";
}

TEST(ModalLoop, DisablesTheParentWhileTheDialogIsOpen)
{
    for (const auto& [templateId, enabled] :
         {std::pair{IDD_PLAIN, true}, {IDD_PLAIN, false}, {IDD_MISSING, true}}) {
        ScriptedDialog parent;
        RunAndLook(parent, [&, id = static_cast<UINT>(templateId), wasEnabled = enabled] {
            EnableWindow(parent.m_hWnd, wasEnabled);
            ScriptedDialog dialog(id, &parent);
            dialog.onceShown = [&] { EXPECT_FALSE(IsWindowEnabled(parent.m_hWnd)); };
            // In time to be activated.
            dialog.atEnd = [&] { EXPECT_EQ(IsWindowEnabled(parent.m_hWnd), wasEnabled); };
            EXPECT_EQ(dialog.DoModal(), id == IDD_MISSING ? -1 : IDOK);
            EXPECT_EQ(IsWindowEnabled(parent.m_hWnd), wasEnabled);
        });
    }
}

TEST(Dialog, IsCentredWhereNothingPlacedIt)
{
    MONITORINFO monitor{sizeof(MONITORINFO), {}, {}, 0};
    ASSERT_TRUE(GetMonitorInfoW(MonitorFromPoint({0, 0}, MONITOR_DEFAULTTOPRIMARY), &monitor));
    for (const auto& [templateId, move] : {std::pair{IDD_PLAIN, 0}, {IDD_PLAIN, 11}, {IDD_PLACED, 0}}) {
        ScriptedDialog dialog(static_cast<UINT>(templateId));
        dialog.atStart = [&, by = move] {
            SetWindowPos(dialog.m_hWnd, nullptr, by, by, 0, 0, by ? SWP_NOSIZE : SWP_NOSIZE | SWP_NOMOVE);
        };
        RECT rect{};
        RunAndLook(dialog, [&] { GetWindowRect(dialog.m_hWnd, &rect); });
        const LONG offX = rect.left + rect.right - monitor.rcWork.left - monitor.rcWork.right;
        const LONG offY = rect.top + rect.bottom - monitor.rcWork.top - monitor.rcWork.bottom;
        const bool centred = std::abs(offX) <= 1 && std::abs(offY) <= 1;
        EXPECT_EQ(centred, templateId == IDD_PLAIN && !move) << rect.left << ", " << rect.top;
        EXPECT_TRUE(!move || (rect.left == move && rect.top == move));
    }
}
