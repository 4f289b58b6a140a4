#pragma once

#include <product_services/product_services.hpp>

/// Opens the sample host's window and returns when the user has closed it.
void RunMainWindow(product_services::Product& product);
