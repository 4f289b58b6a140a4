// Looks for what keeps the calls of an application from working.
#pragma once

#include "options.h"

namespace product_services_tool {

/// Checks the machine step by step and prints what it finds. Changes nothing. Returns 1 if it found an error,
/// else 0; threads that have exceeded their time may still run.
int RunDoctor(const Options& options);

} // namespace product_services_tool
