#pragma once

#include <windows.h>

/// Subclasses all new windows of the class of `list`, a list view. Each records the time at which it was
/// painted, and cancels its dialog as soon as nothing is left to paint.
void WatchLists(HWND list);

/// Returns the time at which a list was last painted, in microseconds.
double LastPainted();

/// Shows a plain Win32 dialog with the template, list and picture of the upgrade center until it is
/// cancelled.
void ShowBareDialog(HMODULE library, std::size_t offers);
