// Translates Windows' texts for proxies into those that libcurl reads.
#pragma once

#include <string>

namespace product_services_guard {

/// The proxy for https out of a list such as "http=a:80;https=b:8080" or "b:8080", with its port; empty where
/// the list has none.
std::wstring HttpsProxy(const std::wstring& list);

/// The value of no_proxy for a list of hosts such as "*.example.com;10.*;<local>". "<local>" stands for names
/// without a dot, which libcurl has no word for: it becomes `serviceHost` where that is one. Patterns that
/// libcurl cannot express are left out.
std::wstring NoProxy(const std::wstring& list, const std::wstring& serviceHost);

/// The host of an address such as "https://host:443/path".
std::wstring HostOf(const std::wstring& address);

} // namespace product_services_guard
