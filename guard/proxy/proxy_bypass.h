// Windows' list of hosts that are asked without a proxy.
#pragma once

#include "url/service_endpoint.h"

#include <string>

namespace product_services_guard {

/// Whether the list names the service. An entry is [scheme://]host[:port]: a scheme or a port that it names
/// must be the service's, its host matches the whole name, with "*" for any characters and "?" for one. Case
/// does not matter.
/// "<local>" stands for all names without a dot.
bool IsBypassed(const std::wstring& bypassList, const ServiceEndpoint& service);

} // namespace product_services_guard
