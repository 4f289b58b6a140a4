// The proxy that is configured in Windows.
#pragma once

#include "calls/transfer_limits.h"
#include "proxy/proxy_probe.h"
#include "proxy/win_http.h"
#include "url/service_endpoint.h"

#include <string>
#include <vector>

namespace product_services_guard {

/// Where the choice of a proxy comes from.
enum class ProxySource
{
    Nothing,     ///< No proxy is configured in Windows, or the settings cannot be read.
    Environment, ///< Proxy variables, which libcurl reads itself. Windows' settings are not read.
    Script,      ///< A script that was detected (WPAD) or is configured (PAC).
    FixedProxy   ///< The configured proxy.
};

/// The proxy for the service, and how it was found.
struct SystemProxy
{
    ProxySource source = ProxySource::Nothing;
    std::wstring proxy = {};                     ///< Empty for a direct connection.
    bool isBypassed = false;                     ///< The bypass list matches the service.
    bool isScriptUnanswered = false;             ///< The configured script could not be fetched or run.
    std::vector<ProxyCandidate> candidates = {}; ///< The script's proxies that were tried.
};

/// Chooses the proxy for connections to the service. Scripts are queried within the limits.
SystemProxy ChooseSystemProxy(
    const ServiceEndpoint& service, const TransferLimits& limits, const WinHttpApi& winHttp = LoadWinHttp());

/// Does the same and returns the proxy in UTF-8 for libcurl. Empty if there is none, or if proxy variables
/// are set.
std::string FindSystemProxy(
    const ServiceEndpoint& service, const TransferLimits& limits, const WinHttpApi& winHttp = LoadWinHttp());

} // namespace product_services_guard
