// Runs a proxy configuration script (PAC).
#pragma once

#include "calls/transfer_limits.h"
#include "proxy/win_http.h"

#include <optional>
#include <string>

namespace product_services_guard {

/// Options for automatic detection (WPAD). Any machine on the network can answer a WPAD query, so the user's
/// credentials are never sent.
WINHTTP_AUTOPROXY_OPTIONS WpadOptions();

/// Options for a script whose URL is configured. The URL must stay valid until the query is done.
WINHTTP_AUTOPROXY_OPTIONS PacUrlOptions(const wchar_t* scriptUrl);

struct PacAnswer
{
    std::wstring proxies; ///< Empty for a direct connection.
    std::wstring bypassList;
};

/// Queries a script for the proxies for `url`. An empty `scriptUrl` means automatic detection. Returns
/// nullopt if there is no script, if it cannot be run, or if the limits are exceeded first. In the last case
/// the query continues on its own thread, which keeps this DLL loaded until it ends.
std::optional<PacAnswer> QueryPac(
    const WinHttpApi& winHttp, const std::wstring& url, const std::wstring& scriptUrl,
    const TransferLimits& limits);

} // namespace product_services_guard
