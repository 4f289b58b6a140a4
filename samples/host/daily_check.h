// The check at start, which is made at most once a day.
#pragma once

#include <stop_token>

/// Waits on a worker thread until this computer's turn. Returns false if there was a check within a day, or a
/// stop is requested.
bool WaitForDailyCheck(const std::stop_token& stopToken);

/// Remembers that there was a check now.
void RememberDailyCheck();
