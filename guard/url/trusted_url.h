// Decides which URLs of the service may be reported and opened.
#pragma once

#include <string>

namespace product_services_guard {

/// Returns true if the URL has the strict form and Windows parses it the same way as ParseStrictHttpsUrl:
/// with the same scheme, host and port, and without a user and a password.
bool WindowsParsesIdentically(const std::wstring& url);

/// Returns true if Windows parses the URL the same way as we do, and its host is in the list. If the list is
/// null, any host is trusted.
bool IsTrustedUrl(const std::wstring& url, const wchar_t* trustedHosts);

} // namespace product_services_guard
