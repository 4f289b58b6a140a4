// Checks of the way to the service and of its replies: rules over plain values, and functions that read
// those.
#pragma once

#include "call_result.h"
#include "doctor/finding.h"
#include "doctor/transfer_watch.h"
#include "proxy/system_proxy.h"

#include <optional>
#include <string>

namespace product_services_tool {

/// The environment variables that libcurl reads; empty for those that are not set.
struct ProxyVariables
{
    std::wstring httpsProxy;
    std::wstring allProxy;
    std::wstring noProxy;
};

ProxyVariables ReadProxyVariables();
Finding CheckProxyVariables(const ProxyVariables& variables);

/// What a guarded call would use; nothing if Windows takes too long.
std::optional<product_services_guard::SystemProxy> ReadSystemProxy();
/// `isUsed` is false with --no-system-proxy.
Finding CheckSystemProxy(const std::optional<product_services_guard::SystemProxy>& system, bool isUsed);

/// Whether the transfer got as far as to a request.
Finding CheckConnection(const TransferReport& report, const TransferSettings& settings);
Finding CheckCertificate(const TransferReport& report, bool acceptsAnyCertificate);
Finding CheckProbe(const TransferReport& report, const TransferSettings& settings);
/// Without trusted hosts, any host is trusted.
Finding CheckUpdateQuery(
    const TransferReport& report, const TransferSettings& settings,
    const std::optional<std::wstring>& trustedHosts);
Finding CheckQuietCall(const CallResult& result);

} // namespace product_services_tool
