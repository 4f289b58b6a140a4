// Reads and operates windows of this process from a second thread, as a user would.
#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>
#include <windows.h>

namespace window_automation {

/// Calls `condition` until it returns true. Returns false after the timeout.
bool WaitFor(const std::function<bool()>& condition, DWORD timeoutMs = 15000);

/// The visible dialogs of a thread, including message boxes, in z-order.
std::vector<HWND> VisibleDialogs(DWORD threadId);

/// The text of a window that any thread of this process has created.
std::wstring WindowText(HWND window);

std::wstring ControlText(HWND dialog, int id);

/// The rows of a list view in report view, each with `columns` texts.
std::vector<std::vector<std::wstring>> ListRows(HWND list, int columns);

std::wstring ColumnHeading(HWND list, int column);

/// LVCFMT_LEFT, LVCFMT_CENTER or LVCFMT_RIGHT.
int ColumnAlignment(HWND list, int column);

void SelectRow(HWND list, int row);

/// The window that has the focus in the thread of `window`.
HWND FocusedWindowOfThread(HWND window);

/// Waits until `control` has the focus, for at most three seconds.
testing::AssertionResult WaitForFocus(HWND control);

/// Waits until one of the `width` pixels from `at` to the right has the color, for at most three seconds.
testing::AssertionResult WaitForPixelColor(HWND window, POINT at, COLORREF color, int width = 1);

/// Does what a click on a button does, and returns at once.
void ClickButton(HWND dialog, int id);

} // namespace window_automation
