#include "proxy/proxy_probe.h"

#include "proxy/proxy_list.h"
#include "service/text_conversion.h"

#include <memory>

namespace product_services_guard {
namespace {

constexpr long ConnectTimeoutMs = 2000;

struct CurlDeleter
{
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

bool CanConnectTo(std::wstring proxy, const TransferLimits& limits)
{
    const std::unique_ptr<CURL, CurlDeleter> handle(curl_easy_init());
    if (!handle) {
        return false;
    }
    // Connect without TLS even to a proxy that uses it, because only the TCP connection matters.
    ConsumeScheme(proxy);
    const std::string url = "http://" + product_services::ToUtf8(proxy);
    curl_easy_setopt(handle.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_PROXY, "");
    curl_easy_setopt(handle.get(), CURLOPT_CONNECT_ONLY, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_CONNECTTIMEOUT_MS, ConnectTimeoutMs);
    limits.Apply(handle.get());
    return curl_easy_perform(handle.get()) == CURLE_OK;
}

} // namespace

std::wstring FirstReachableProxy(
    const std::wstring& proxies, const TransferLimits& limits, std::vector<ProxyCandidate>* candidates)
{
    for (const std::wstring& proxy : ProxiesForHttps(proxies)) {
        const bool isReachable = CanConnectTo(proxy, limits);
        if (candidates) {
            candidates->push_back({proxy, isReachable});
        }
        if (isReachable) {
            return proxy;
        }
    }
    return {};
}

} // namespace product_services_guard
