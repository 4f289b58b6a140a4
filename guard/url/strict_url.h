// URLs in a form that every parser reads the same way.
#pragma once

#include <optional>
#include <string_view>

namespace product_services_guard {

inline constexpr unsigned DefaultHttpsPort = 443;

/// A host and its port. The host is a part of the text that was parsed.
struct HostPort
{
    std::wstring_view host;
    unsigned port = 0;
};

/// Parses "host" or "host:port"; the default port is 443. Returns nullopt if the host is not a DNS name:
/// labels of letters, digits and inner hyphens, separated by single dots; the last label must not be a
/// number.
std::optional<HostPort> ParseHostPort(std::wstring_view text);

/// Parses a URL of at most 2,083 characters that consists of "https://", a host, an optional port and an
/// optional path. Returns nullopt for any other text.
std::optional<HostPort> ParseStrictHttpsUrl(std::wstring_view url);

} // namespace product_services_guard
