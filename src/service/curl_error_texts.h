#pragma once

#include <curl/curl.h>

namespace product_services {

/// Returns libcurl's own description of a result code, or null if it has none.
const wchar_t* FindCurlErrorText(CURLcode code);

} // namespace product_services
