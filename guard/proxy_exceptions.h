// Windows' list of hosts that are asked without a proxy.
#pragma once

#include "service_address.h"

#include <string>

namespace product_services_guard {

/// Whether the list excepts the service. An entry is [scheme://]host[:port]: a scheme or a port that it names
/// has to be the service's, its host is the whole name, in which "*" stands for any signs and "?" for one.
/// Case does not matter. "<local>" stands for all names without a dot.
bool IsExcepted(const std::wstring& list, const ServiceAddress& service);

/// The list in the words of no_proxy, for a service that is not known. "*.example.com" becomes "example.com",
/// "10.*" "10.0.0.0/8"; ports are cut off. Patterns that libcurl cannot express, "<local>" among them, are
/// left out.
std::wstring TranslatedExceptions(const std::wstring& list);

} // namespace product_services_guard
