#include "proxy/system_proxy.h"

#include "proxy/pac_query.h"
#include "proxy/proxy_bypass.h"
#include "proxy/proxy_list.h"
#include "proxy/proxy_probe.h"
#include "service/text_conversion.h"

#include <memory>
#include <optional>
#include <vector>

namespace product_services_guard {
namespace {

// An empty variable counts as not set, as it does for libcurl.
bool IsVariableSet(const wchar_t* name)
{
    return GetEnvironmentVariableW(name, nullptr, 0) > 1;
}

// The user's settings, whose texts the caller of WinHTTP has to free.
struct ProxyConfig : WINHTTP_CURRENT_USER_IE_PROXY_CONFIG
{
    ProxyConfig() : WINHTTP_CURRENT_USER_IE_PROXY_CONFIG() {}
    ~ProxyConfig()
    {
        GlobalFree(lpszAutoConfigUrl);
        GlobalFree(lpszProxy);
        GlobalFree(lpszProxyBypass);
    }

    ProxyConfig(const ProxyConfig&) = delete;
    ProxyConfig& operator=(const ProxyConfig&) = delete;
};

// Returns the answer of the detected script, or else of the configured one.
std::optional<PacAnswer> QueryScripts(
    const WinHttpApi& winHttp, const ProxyConfig& config, const TransferLimits& limits)
{
    std::optional<PacAnswer> answer;
    if (config.fAutoDetect) {
        answer = QueryPac(winHttp, GetServiceUrl(), {}, limits);
    }
    if (!answer && config.lpszAutoConfigUrl) {
        answer = QueryPac(winHttp, GetServiceUrl(), config.lpszAutoConfigUrl, limits);
    }
    return answer;
}

// If the script returns no reachable proxy, the connection is direct.
SystemProxy UseScript(const PacAnswer& answer, const ServiceEndpoint& service, const TransferLimits& limits)
{
    SystemProxy choice{.source = ProxySource::Script, .isBypassed = IsBypassed(answer.bypassList, service)};
    if (!choice.isBypassed) {
        choice.proxy = FirstReachableProxy(answer.proxies, limits, &choice.candidates);
    }
    return choice;
}

SystemProxy UseFixedProxy(const ProxyConfig& config, const ServiceEndpoint& service)
{
    SystemProxy choice{.isScriptUnanswered = config.lpszAutoConfigUrl != nullptr};
    if (!config.lpszProxy) {
        return choice;
    }
    choice.source = ProxySource::FixedProxy;
    choice.isBypassed = config.lpszProxyBypass && IsBypassed(config.lpszProxyBypass, service);
    const std::vector<std::wstring> proxies = ProxiesForHttps(config.lpszProxy);
    if (!choice.isBypassed && !proxies.empty()) {
        choice.proxy = proxies.front();
    }
    return choice;
}

} // namespace

SystemProxy ChooseSystemProxy(
    const ServiceEndpoint& service, const TransferLimits& limits, const WinHttpApi& winHttp)
{
    if (IsVariableSet(L"https_proxy") || IsVariableSet(L"all_proxy")) {
        return {.source = ProxySource::Environment};
    }
    ProxyConfig config;
    if (!winHttp.getProxyConfig || !winHttp.getProxyConfig(&config)) {
        return {};
    }
    const std::optional<PacAnswer> answer = QueryScripts(winHttp, config, limits);
    return answer ? UseScript(*answer, service, limits) : UseFixedProxy(config, service);
}

std::string FindSystemProxy(
    const ServiceEndpoint& service, const TransferLimits& limits, const WinHttpApi& winHttp)
{
    return product_services::ToUtf8(ChooseSystemProxy(service, limits, winHttp).proxy);
}

} // namespace product_services_guard
