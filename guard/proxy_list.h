// The lists in which Windows names proxies and exceptions: entries between semicolons or white space.
#pragma once

#include <string>
#include <vector>

namespace product_services_guard {

struct HostAndPort
{
    /// Without the brackets of an IPv6 address.
    std::wstring host;
    /// Empty where none is named.
    std::wstring port;
    bool isBracketed = false;
};

/// A to Z alone, as in the names of hosts.
std::wstring InLowerCase(std::wstring text);

/// The entries of a list, in lower case.
std::vector<std::wstring> Entries(const std::wstring& list);

/// Cuts "scheme://" off and returns the scheme, or an empty text.
std::wstring CutScheme(std::wstring& text);

/// Parts "host:port" or "[::1]:port". An IPv6 address without brackets is a host without a port.
HostAndPort CutPort(const std::wstring& server);

/// The proxies for https out of a list such as "http=a:80;https=b:8080" or "b:8080", in its order and each
/// with its port: 80, or 443 for "https://b", where the list names none. Entries without a server and those
/// of other protocols, such as SOCKS, are left out.
std::vector<std::wstring> HttpsProxies(const std::wstring& list);

} // namespace product_services_guard
