#include "proxy_script.h"

namespace product_services_guard {

WINHTTP_AUTOPROXY_OPTIONS DetectedScript()
{
    WINHTTP_AUTOPROXY_OPTIONS options{};
    options.dwFlags = WINHTTP_AUTOPROXY_AUTO_DETECT;
    options.dwAutoDetectFlags = WINHTTP_AUTO_DETECT_TYPE_DHCP | WINHTTP_AUTO_DETECT_TYPE_DNS_A;
    options.fAutoLogonIfChallenged = FALSE;
    return options;
}

WINHTTP_AUTOPROXY_OPTIONS ConfiguredScript(const wchar_t* address)
{
    WINHTTP_AUTOPROXY_OPTIONS options{};
    options.dwFlags = WINHTTP_AUTOPROXY_CONFIG_URL;
    options.lpszAutoConfigUrl = address;
    options.fAutoLogonIfChallenged = TRUE;
    return options;
}

} // namespace product_services_guard
