#pragma once

#include <windows.h>

/// Returns the top left corner that centers `window` in `area`. A window that is larger than the area gets
/// the area's corner, so that its title bar can be reached.
POINT CenteredPosition(const RECT& area, const RECT& window);
