// The maker's service, as the product family names it.
#pragma once

#include <string>

namespace product_services_guard {

/// A host, in lower case and without the brackets of an IPv6 address, and its port.
struct ServiceEndpoint
{
    std::wstring host;
    std::wstring port;
};

/// Where the service's base URL leads.
ServiceEndpoint GetServiceEndpoint();

/// The base URL, for scripts that want to know where a request goes.
std::wstring GetServiceUrl();

} // namespace product_services_guard
