// Makes the guarded calls.
#pragma once

#include "call_result.h"
#include "options.h"

namespace product_services_tool {

/// Looks for a newer release without any window, within the time limit but for the look-up of a name.
CallResult CheckQuietly(const Options& options);

/// Runs `check` or `upgrade` and prints the result; returns the exit status. If the time limit is exceeded by
/// what cannot be interrupted, it prints that and ends the process.
int RunGuardedCall(const Options& options);

} // namespace product_services_tool
