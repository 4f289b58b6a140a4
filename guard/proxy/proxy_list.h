// The lists in which Windows names proxies and hosts to bypass: entries between semicolons or white space.
#pragma once

#include <string>
#include <vector>

namespace product_services_guard {

/// A host, without the brackets of an IPv6 address, and its port, which is empty if none is named.
struct ListedHost
{
    std::wstring host;
    std::wstring port;
};

/// The entries of a list, in lower case.
std::vector<std::wstring> SplitList(const std::wstring& list);

/// Removes "scheme://" from the text and returns the scheme, or an empty text.
std::wstring ConsumeScheme(std::wstring& text);

/// Splits "host:port" or "[::1]:port". An IPv6 address without brackets is a host without a port.
ListedHost SplitHostPort(const std::wstring& text);

/// The proxies for https in a list such as "http=a:80;https=b:8080" or "b:8080", in its order and each with
/// its port: 80, or 443 for "https://b", if the list names none. Entries without a host and those of other
/// protocols, such as SOCKS, are left out.
std::vector<std::wstring> ProxiesForHttps(const std::wstring& list);

} // namespace product_services_guard
