#pragma once

#include <windows.h>

/// From now on each new window of the class of `list`, a list view, notes when it has painted itself and,
/// once nothing more is to be painted, has its dialog cancelled.
void WatchLists(HWND list);

/// When the last list had painted itself last.
double LastPainted();

/// Shows a plain Win32 dialog with the upgrade center's template, list and picture, until it is cancelled.
void ShowBareDialog(HMODULE library, std::size_t offers);
