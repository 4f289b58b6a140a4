#include "doctor/run_with_timeout.h"
#include "doctor/service_checks.h"
#include "url/service_endpoint.h"

#include <cstdint>
#include <cstdlib>

namespace product_services_tool {
namespace {

using product_services_guard::ProxySource;
using product_services_guard::SystemProxy;

// Windows may need some seconds to find a script, and each of the script's proxies is tried for two seconds.
constexpr std::chrono::seconds SystemProxyTimeout{15};
// The DNS lookup of a proxy cannot be interrupted.
constexpr std::chrono::seconds NameLookupGrace{5};

std::wstring GetVariable(const wchar_t* name)
{
    const wchar_t* const value = _wgetenv(name);
    return value ? value : L"";
}

// "Windows' configuration script names b:80; tried a:80 (no connection), b:80 (connected)"
std::wstring DescribeSystemProxy(const SystemProxy& system)
{
    std::wstring text = L"Windows has ";
    if (system.source == ProxySource::Script) {
        text = L"Windows' configuration script names ";
    } else if (system.source == ProxySource::FixedProxy) {
        text = L"Windows' proxy setting names ";
    }
    if (system.isBypassed) {
        text += L"the service in its bypass list";
    } else if (!system.proxy.empty()) {
        text += system.proxy;
    } else {
        text += system.candidates.empty() ? L"no HTTP proxy" : L"no proxy that accepts a connection";
    }
    const wchar_t* separator = L"; tried ";
    for (const auto& candidate : system.candidates) {
        text += separator + candidate.proxy + (candidate.isReachable ? L" (connected)" : L" (no connection)");
        separator = L", ";
    }
    return text;
}

} // namespace

ProxyVariables GetProxyVariables()
{
    return {GetVariable(L"https_proxy"), GetVariable(L"all_proxy"), GetVariable(L"no_proxy")};
}

Finding CheckProxyVariables(const ProxyVariables& variables)
{
    const bool isHttpsProxySet = !variables.httpsProxy.empty();
    const std::wstring& proxy = isHttpsProxySet ? variables.httpsProxy : variables.allProxy;
    std::wstring message = L"neither https_proxy nor all_proxy is set";
    if (!proxy.empty()) {
        message = (isHttpsProxySet ? L"https_proxy is " : L"all_proxy is ") + proxy;
    }
    if (!variables.noProxy.empty()) {
        message += L"; no_proxy is " + variables.noProxy;
    }
    return {
        proxy.empty() ? Severity::Ok : Severity::Warning, L"proxy variables", message, help_anchors::Proxies};
}

std::optional<SystemProxy> QuerySystemProxy()
{
    return RunWithTimeout(SystemProxyTimeout + NameLookupGrace, [] {
        constexpr std::chrono::milliseconds Limit = SystemProxyTimeout;
        product_services_guard::TransferLimits limits(static_cast<std::uint32_t>(Limit.count()), nullptr);
        limits.StartClock();
        return product_services_guard::ChooseSystemProxy(
            product_services_guard::GetServiceEndpoint(), limits);
    });
}

Finding CheckSystemProxy(const std::optional<SystemProxy>& system, bool isUsed)
{
    Finding finding{Severity::Ok, L"system proxy", L"Windows did not answer in time", help_anchors::Proxies};
    if (!system) {
        finding.severity = Severity::Warning;
        return finding;
    }
    if (system->source == ProxySource::Environment) {
        finding.message = L"not used: https_proxy or all_proxy is set and takes precedence";
        return finding;
    }
    finding.message = DescribeSystemProxy(*system);
    if (system->proxy.empty()) {
        finding.message += L", so the service is contacted directly";
    }
    if (system->isScriptUnanswered) {
        finding.message += L"; a configuration script is set, but it could not be fetched or run";
    }
    if (!isUsed) {
        finding.message += L"; not used: --no-system-proxy is set";
    }
    const bool isNoneReachable = system->proxy.empty() && !system->candidates.empty();
    const bool isNoneSupported =
        system->source == ProxySource::FixedProxy && system->proxy.empty() && !system->isBypassed;
    if (isNoneReachable || isNoneSupported || system->isScriptUnanswered) {
        finding.severity = Severity::Warning;
    }
    return finding;
}

} // namespace product_services_tool
