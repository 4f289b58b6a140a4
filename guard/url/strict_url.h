// URLs in a form that every parser reads the same way.
#pragma once

#include <optional>
#include <string_view>

namespace product_services_guard {

/// A host and its port, as parts of the text that was parsed.
struct HostPort
{
    std::wstring_view host;
    unsigned port = 0;
};

/// Parses "host" or "host:port"; without a port it is 443. Nothing if the host is not a DNS name: labels of
/// letters, digits and inner hyphens with single dots between them, the last of which is not a number.
std::optional<HostPort> ParseHostPort(std::wstring_view text);

/// Parses "https://", a host and its port, and then nothing or a path, of at most 2,083 characters. Nothing
/// for any other text.
std::optional<HostPort> ParseStrictHttpsUrl(std::wstring_view url);

} // namespace product_services_guard
