// The service of the product family.
#pragma once

#include <string>

namespace product_services_guard {

/// A host, in lower case and without the brackets of an IPv6 address, and its port.
struct ServiceEndpoint
{
    std::wstring host;
    std::wstring port;
};

/// Returns the host and the port of the service's base URL.
ServiceEndpoint GetServiceEndpoint();

/// Returns the base URL, which proxy configuration scripts get.
std::wstring GetServiceUrl();

} // namespace product_services_guard
