#pragma once

#include <curl/curl.h>

namespace product_services {

/// libcurl's own description of a result code; null for the codes without one.
const wchar_t* FindCurlErrorText(CURLcode code);

} // namespace product_services
