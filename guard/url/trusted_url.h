// The URLs of the service that may be reported and opened.
#pragma once

#include <string>

namespace product_services_guard {

/// Whether Windows' own parser finds in the URL what ParseStrictHttpsUrl does: the scheme, the host and the
/// port, and neither a user nor a password.
bool WindowsParsesIdentically(const std::wstring& url);

/// Whether a URL may be reported and opened: a strict https URL, also to Windows, that leads to a host of the
/// list if there is one.
bool IsTrustedUrl(const std::wstring& url, const wchar_t* trustedHosts);

} // namespace product_services_guard
