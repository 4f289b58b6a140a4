// The address of the maker's service, taken apart.
#pragma once

#include <optional>
#include <string>

namespace product_services_guard {

/// Host and port in lower case; the host of an IPv6 address is without its brackets.
struct ServiceAddress
{
    std::wstring host;
    std::wstring port;
};

/// Reads https://host[:port][/path]. Nothing for an address of another form: without the scheme or with
/// another one, without a host, with a user, or with signs in its host that a plain name does not have.
std::optional<ServiceAddress> ReadServiceAddress(std::wstring address);

} // namespace product_services_guard
