// Makes guarded calls.
#pragma once

#include "call_result.h"
#include "options.h"

namespace product_services_tool {

/// Checks for updates without showing anything. The time limit does not include DNS lookups.
CallResult CheckQuietly(const Options& options);

/// Runs the command `check` or `upgrade`, prints the result, and returns the exit status. If something that
/// cannot be interrupted exceeds the time limit, prints that and ends the process.
int RunGuardedCall(const Options& options);

} // namespace product_services_tool
