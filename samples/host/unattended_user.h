#pragma once

#include <functional>
#include <string>

/// Stands in for the user of this process's main thread while `work` runs there: prints each message box and
/// presses OK; in the upgrade center prints the offers and buys number `buys`, or leaves for 0.
void WithUnattendedUser(int buys, const std::function<void()>& work);

/// Prints a line in UTF-8.
void PrintLine(const std::wstring& line);
