// Reads and works the windows of this process from a second thread, as a user would.
#pragma once

#include <functional>
#include <string>
#include <vector>
#include <windows.h>

namespace window_automation {

/// Calls `condition` until it holds or the time is over; says whether it held.
bool WaitFor(const std::function<bool()>& condition, DWORD timeoutMs = 15000);

/// The visible dialogs (message boxes too) of a thread, in z-order.
std::vector<HWND> VisibleDialogs(DWORD threadId);

/// Waits for a visible dialog of the thread; null if none came up in time.
HWND WaitForDialog(DWORD threadId, DWORD timeoutMs = 15000);

/// The text of a window of this process, whatever thread made it.
std::wstring WindowText(HWND window);

std::wstring ControlText(HWND dialog, int id);

/// The text of a message box, without its caption and buttons.
std::wstring MessageBoxText(HWND box);

/// The rows of a list view in report view, each with `columns` texts.
std::vector<std::vector<std::wstring>> ListRows(HWND list, int columns);

/// The heading of a column.
std::wstring ColumnHeading(HWND list, int column);

/// LVCFMT_LEFT, LVCFMT_CENTER or LVCFMT_RIGHT.
int ColumnAlignment(HWND list, int column);

void SelectRow(HWND list, int row);

/// The window that has the focus in the thread of `window`.
HWND FocusedWindowOfThread(HWND window);

/// Waits until one of the `width` pixels from `at` to the right has this color, since painting takes its
/// time; says whether one did.
bool WaitForPixelColor(HWND window, POINT at, COLORREF color, int width = 1, DWORD timeoutMs = 3000);

/// Does what a click on a button does; returns at once.
void ClickButton(HWND dialog, int id);

} // namespace window_automation
