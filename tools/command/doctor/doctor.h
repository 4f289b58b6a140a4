// Diagnoses why the calls of an application do not work.
#pragma once

#include "options.h"

namespace product_services_tool {

/// Checks the machine step by step and prints the findings. Changes nothing. Returns 1 if it has found an
/// error, otherwise 0. Threads that have exceeded their time may still run.
int RunDoctor(const Options& options);

} // namespace product_services_tool
