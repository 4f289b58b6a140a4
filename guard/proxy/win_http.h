// WinHTTP's functions for proxies.
#pragma once

#include <windows.h>

#include <winhttp.h>

namespace product_services_guard {

/// The functions are loaded on demand, because few hosts need them.
struct WinHttpApi
{
    decltype(&WinHttpGetIEProxyConfigForCurrentUser) getProxyConfig;
    decltype(&WinHttpOpen) open;
    decltype(&WinHttpGetProxyForUrl) getProxyForUrl;
    decltype(&WinHttpCloseHandle) closeHandle;
};

/// Loads WinHTTP from the system folder. The functions are null if that fails.
WinHttpApi LoadWinHttp();

} // namespace product_services_guard
