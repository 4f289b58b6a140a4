#pragma once

#include <functional>
#include <string>

struct UnattendedUser
{
    /// The offer to buy, counted from 1; 0 leaves the upgrade center.
    int buys = 0;
    int looksMs = 0;
};

/// Stands in for the user of this process's main thread while `work` runs there: prints each message box and
/// presses OK; prints the offers of the upgrade center and buys one or leaves.
void WithUnattendedUser(const UnattendedUser& user, const std::function<void()>& work);

/// Prints a line in UTF-8.
void PrintLine(const std::wstring& line);
