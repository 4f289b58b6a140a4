#pragma once

#include <string>
#include <vector>

struct BareRow
{
    std::wstring name;
    std::wstring version;
};

/// Shows a plain Win32 dialog with the upgrade center's template, list and background until it is cancelled.
void ShowBareDialog(const std::vector<BareRow>& rows);
