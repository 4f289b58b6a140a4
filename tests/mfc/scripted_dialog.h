// A dialog that does what a test asks for.
#pragma once

#include <afxwin.h>

#include <afxdialogex.h>

#include "automation.h"
#include "resource.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

constexpr UINT WM_STEP = WM_APP;
constexpr UINT WM_SHOWN = WM_APP + 1;

class ScriptedDialog : public CDialogEx
{
public:
    explicit ScriptedDialog(UINT templateId = IDD_PLAIN, CWnd* parent = nullptr)
        : CDialogEx(templateId, parent)
    {
    }

    std::function<void()> atStart;             ///< In OnInitDialog.
    std::function<void(WPARAM number)> atStep; ///< At each WM_STEP.
    std::function<void()> onceShown;           ///< After the loop has shown the window; then IDOK ends it.
    std::function<void()> atEnd;               ///< At WM_DESTROY.
    int timesShown = 0;
    std::atomic<bool> loopTakesMessages = false; ///< After the window was shown.

protected:
    BOOL OnInitDialog() override
    {
        CDialogEx::OnInitDialog();
        if (atStart) {
            atStart();
        }
        return TRUE;
    }

    BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult) override
    {
        if (message == WM_SHOWWINDOW && wParam) {
            ++timesShown;
            PostMessageW(m_hWnd, WM_SHOWN, 0, 0);
        } else if (message == WM_SHOWN) {
            loopTakesMessages = true;
            if (onceShown) {
                onceShown();
                EndDialog(IDOK);
            }
        } else if (message == WM_STEP && atStep) {
            atStep(wParam);
        } else if (message == WM_DESTROY && atEnd) {
            atEnd();
        }
        return CDialogEx::OnWndMsg(message, wParam, lParam, pResult);
    }
};

inline void RunAndLook(ScriptedDialog& dialog, std::function<void()> look)
{
    dialog.onceShown = std::move(look);
    EXPECT_EQ(dialog.DoModal(), IDOK);
}

/// Runs the dialog; once it shows, `user` works it from another thread and is expected to end it.
inline INT_PTR RunWithUser(ScriptedDialog& dialog, const std::function<void(HWND window)>& user)
{
    dialog.loopTakesMessages = false;
    std::thread thread([&, threadId = GetCurrentThreadId()] {
        const HWND window = automation::WaitForDialog(threadId);
        automation::WaitFor([&] { return dialog.loopTakesMessages.load(); });
        user(window);
        if (!automation::WaitFor([&] { return !IsWindow(window); }, 10000)) {
            ADD_FAILURE() << "the dialog did not end";
            PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
        }
    });
    const INT_PTR result = dialog.DoModal();
    thread.join();
    return result;
}
