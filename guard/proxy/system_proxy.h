// The proxy that is configured in Windows.
#pragma once

#include "calls/transfer_limits.h"
#include "proxy/proxy_probe.h"
#include "proxy/win_http.h"
#include "url/service_endpoint.h"

#include <string>
#include <vector>

namespace product_services_guard {

/// What decides on the proxy.
enum class ProxySource
{
    Nothing,     ///< Windows has none configured, or its settings cannot be read.
    Environment, ///< Proxy variables, which libcurl reads by itself; Windows is not asked.
    Script,      ///< The answer of a script, detected (WPAD) or configured (PAC).
    FixedProxy   ///< The proxy that is configured.
};

/// The proxy for the service, and how it was found.
struct SystemProxy
{
    ProxySource source = ProxySource::Nothing;
    std::wstring proxy = {};                     ///< Empty: the service is asked directly.
    bool isBypassed = false;                     ///< The bypass list names the service.
    bool isScriptUnanswered = false;             ///< The configured script could not be fetched or run.
    std::vector<ProxyCandidate> candidates = {}; ///< The script's proxies that were tried.
};

/// The proxy through which to reach the service. Scripts are asked within the limits.
SystemProxy ChooseSystemProxy(
    const ServiceEndpoint& service, const TransferLimits& limits, const WinHttpApi& winHttp = LoadWinHttp());

/// The same in UTF-8 for libcurl; empty if there is none, and if the process has proxy variables.
std::string FindSystemProxy(
    const ServiceEndpoint& service, const TransferLimits& limits, const WinHttpApi& winHttp = LoadWinHttp());

} // namespace product_services_guard
