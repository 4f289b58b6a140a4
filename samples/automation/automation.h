// Reads and works the windows of this process from a second thread, as a user would.
#pragma once

#include <functional>
#include <string>
#include <vector>
#include <windows.h>

namespace automation {

/// Calls `condition` until it holds or `timeoutMs` is over; says whether it held.
bool WaitFor(const std::function<bool()>& condition, DWORD timeoutMs = 15000);

/// The visible dialogs (message boxes too) of a thread, in z-order.
std::vector<HWND> VisibleDialogs(DWORD threadId);

/// Waits for a visible dialog of the thread; null where none came up in time.
HWND WaitForDialog(DWORD threadId, DWORD timeoutMs = 15000);

/// The text of a window of this process, whatever thread made it.
std::wstring WindowText(HWND window);

std::wstring ControlText(HWND dialog, int id);

/// The text of a message box, without its caption and buttons.
std::wstring MessageBoxText(HWND box);

/// The rows of a list view in report view, each with `columns` texts.
std::vector<std::vector<std::wstring>> ListRows(HWND list, int columns);

/// The heading of a column.
std::wstring ColumnText(HWND list, int column);

/// LVCFMT_LEFT, LVCFMT_CENTER or LVCFMT_RIGHT.
int ColumnAlignment(HWND list, int column);

void SelectRow(HWND list, int row);

/// The window that has the focus in the thread of `window`.
HWND FocusBeside(HWND window);

/// Whether a point from `at` to the right, `width` of them, gets this colour: painting takes its time.
bool HasColour(HWND window, POINT at, COLORREF colour, int width = 1, DWORD timeoutMs = 3000);

/// Presses a button as a click does; returns at once.
void Press(HWND dialog, int id);

} // namespace automation
