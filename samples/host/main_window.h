#pragma once

#include <product_services/product_services.h>

/// Opens the sample host's window and returns when the user has closed it.
void RunMainWindow(HostContext& product);
