// Windows' lists of proxies and of hosts to bypass, whose entries are separated by semicolons or white space.
#pragma once

#include <string>
#include <vector>

namespace product_services_guard {

/// A host, without the brackets of an IPv6 address, and its port, which is empty if there is none.
struct ListedHost
{
    std::wstring host;
    std::wstring port;
};

/// Returns the entries of a list, in lower case.
std::vector<std::wstring> SplitList(const std::wstring& list);

/// Removes "scheme://" from the text and returns the scheme. Returns an empty text if there is none.
std::wstring ConsumeScheme(std::wstring& text);

/// Splits "host:port" or "[::1]:port". An IPv6 address without brackets is a host without a port.
ListedHost SplitHostPort(const std::wstring& text);

/// Returns the proxies for https in a list such as "http=a:80;https=b:8080" or "b:8080", in the same order.
/// If an entry has no port, 80 is added, or 443 for "https://b". Entries without a host, and those for other
/// protocols, such as SOCKS, are skipped.
std::vector<std::wstring> ProxiesForHttps(const std::wstring& list);

} // namespace product_services_guard
