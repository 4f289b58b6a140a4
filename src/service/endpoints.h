#pragma once

#include <string>

namespace product_services::endpoints {

/// URLs of the product service, composed when the library is loaded.
extern const std::wstring GetUpdatesUrl;
extern const std::wstring CheckUrl;

} // namespace product_services::endpoints
