#include "proxy/win_http.h"

#include "system_function.h"

namespace product_services_guard {

WinHttpApi LoadWinHttp()
{
    return {
        LOAD_SYSTEM_FUNCTION(L"winhttp.dll", WinHttpGetIEProxyConfigForCurrentUser),
        LOAD_SYSTEM_FUNCTION(L"winhttp.dll", WinHttpOpen),
        LOAD_SYSTEM_FUNCTION(L"winhttp.dll", WinHttpGetProxyForUrl),
        LOAD_SYSTEM_FUNCTION(L"winhttp.dll", WinHttpCloseHandle)};
}

} // namespace product_services_guard
