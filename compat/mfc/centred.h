#pragma once

#include <windows.h>

/// Where the top left corner of `window` goes so that it is in the middle of `area`; one that is larger
/// starts at the area's own corner, so that its title bar stays in reach.
POINT CentredPosition(const RECT& area, const RECT& window);
