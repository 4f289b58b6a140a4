#pragma once

#include "options.h"

/// Opens the sample host's window and returns when the user has closed it.
int RunMainWindow(const Options& options);
