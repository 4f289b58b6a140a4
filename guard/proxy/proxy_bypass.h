// Windows' list of hosts to which connections bypass the proxy.
#pragma once

#include "url/service_endpoint.h"

#include <string>

namespace product_services_guard {

/// Returns true if an entry of the list matches the service. An entry is [scheme://]host[:port]. The host
/// must match the entire name, with "*" for any characters and "?" for one; a scheme and a port, if present,
/// must be the service's. "<local>" matches all names without a dot. Case does not matter.
bool IsBypassed(const std::wstring& bypassList, const ServiceEndpoint& service);

} // namespace product_services_guard
