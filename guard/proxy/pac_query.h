// What a proxy configuration script (PAC) says.
#pragma once

#include "calls/transfer_limits.h"
#include "proxy/win_http.h"

#include <optional>
#include <string>

namespace product_services_guard {

/// Options for automatic detection (WPAD). Any machine on the network can answer a WPAD query, so the user's
/// credentials are never sent.
WINHTTP_AUTOPROXY_OPTIONS WpadOptions();

/// Options for a script whose URL is configured, which must stay valid until the script has been asked.
WINHTTP_AUTOPROXY_OPTIONS PacUrlOptions(const wchar_t* scriptUrl);

struct PacAnswer
{
    std::wstring proxies; ///< Empty: the service is to be asked directly.
    std::wstring bypassList;
};

/// Asks the script for a proxy for `url`; `scriptUrl` is empty for detection. Nothing if there is no script
/// or it cannot be run, and if the limits are exceeded first: then Windows goes on looking for it in a thread
/// of its own, which keeps this DLL loaded until it ends.
std::optional<PacAnswer> QueryPac(
    const WinHttpApi& winHttp, const std::wstring& url, const std::wstring& scriptUrl,
    const TransferLimits& limits);

} // namespace product_services_guard
