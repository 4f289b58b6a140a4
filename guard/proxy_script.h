// How WinHTTP is asked for a proxy configuration script.
#pragma once

#include <windows.h>

#include <winhttp.h>

namespace product_services_guard {

/// The script that the network names. Whoever answers on the network can be the one that is detected: it gets
/// no sign-on of the user.
WINHTTP_AUTOPROXY_OPTIONS DetectedScript();

/// The script at an address that the user has configured, which must stay until it was asked.
WINHTTP_AUTOPROXY_OPTIONS ConfiguredScript(const wchar_t* address);

} // namespace product_services_guard
