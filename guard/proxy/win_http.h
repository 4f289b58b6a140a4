// The part of WinHTTP that knows proxies.
#pragma once

#include <windows.h>

#include <winhttp.h>

namespace product_services_guard {

/// Its functions, which are loaded at the first need: few hosts need them.
struct WinHttpApi
{
    decltype(&WinHttpGetIEProxyConfigForCurrentUser) getProxyConfig;
    decltype(&WinHttpOpen) open;
    decltype(&WinHttpGetProxyForUrl) getProxyForUrl;
    decltype(&WinHttpCloseHandle) closeHandle;
};

/// WinHTTP of the system folder, whose functions are null if it cannot be loaded.
WinHttpApi LoadWinHttp();

} // namespace product_services_guard
