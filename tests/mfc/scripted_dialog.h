// A dialog that does what a test asks for.
#pragma once

#include <afxwin.h>

#include <afxdialogex.h>

#include "automation.h"
#include "resource.h"

#include <functional>
#include <gtest/gtest.h>
#include <thread>

constexpr UINT WM_STEP = WM_APP;
constexpr UINT WM_SHOWN = WM_APP + 1;
constexpr int Stuck = -2; ///< The result of a dialog that nothing else has ended in time.

class ScriptedDialog : public CDialogEx
{
public:
    explicit ScriptedDialog(CWnd* parent = nullptr) : CDialogEx(IDD_CONTROLS, parent) {}

    std::function<void()> atStart = [] {};                   ///< In OnInitDialog.
    std::function<void(WPARAM number)> atStep = [](auto) {}; ///< At each WM_STEP.
    std::function<void()> onceShown = [] {};                 ///< When the loop has shown the window.
    int timesShown = 0;

protected:
    BOOL OnInitDialog() override
    {
        CDialogEx::OnInitDialog();
        SetTimer(m_hWnd, 1, 10000, nullptr);
        atStart();
        return TRUE;
    }

    BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult) override
    {
        if (message == WM_SHOWWINDOW && wParam) {
            ++timesShown;
            PostMessageW(m_hWnd, WM_SHOWN, 0, 0);
        } else if (message == WM_SHOWN) {
            onceShown();
        } else if (message == WM_STEP) {
            atStep(wParam);
        } else if (message == WM_TIMER) {
            EndDialog(Stuck);
        }
        return CDialogEx::OnWndMsg(message, wParam, lParam, pResult);
    }
};

inline void RunAndLook(ScriptedDialog& dialog, const std::function<void()>& look)
{
    dialog.onceShown = [&] {
        look();
        dialog.EndDialog(IDOK);
    };
    EXPECT_EQ(dialog.DoModal(), IDOK);
}
