// Checks of the connection to the service and of its replies: functions that read values, and rules that
// check them.
#pragma once

#include "call_result.h"
#include "doctor/finding.h"
#include "doctor/transfer_watch.h"
#include "proxy/system_proxy.h"

#include <optional>
#include <string>

namespace product_services_tool {

/// The environment variables that libcurl reads. A variable that is not set is empty.
struct ProxyVariables
{
    std::wstring httpsProxy;
    std::wstring allProxy;
    std::wstring noProxy;
};

ProxyVariables GetProxyVariables();
Finding CheckProxyVariables(const ProxyVariables& variables);

/// Returns the proxy that a guarded call would use, or nullopt if Windows takes too long.
std::optional<product_services_guard::SystemProxy> QuerySystemProxy();
/// `isUsed` is false with --no-system-proxy.
Finding CheckSystemProxy(const std::optional<product_services_guard::SystemProxy>& system, bool isUsed);

/// Checks whether the transfer reached the request.
Finding CheckConnection(const TransferReport& report, const TransferSettings& settings);
Finding CheckCertificate(const TransferReport& report, bool acceptsAnyCertificate);
Finding CheckProbe(const TransferReport& report, const TransferSettings& settings);
/// If there is no list of trusted hosts, any host is trusted.
Finding CheckUpdateQuery(
    const TransferReport& report, const TransferSettings& settings,
    const std::optional<std::wstring>& trustedHosts);
Finding CheckQuietCall(const CallResult& result);

} // namespace product_services_tool
