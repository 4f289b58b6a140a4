#pragma once

#include <string>

namespace product_services::endpoints {

/// Addresses of the product service, built when the library is loaded.
extern const std::wstring GetUpdates;
extern const std::wstring Check;

} // namespace product_services::endpoints
