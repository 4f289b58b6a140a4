#include "proxy_decision.h"

#include "product_services/guarded_calls.h"
#include "proxy_exceptions.h"
#include "proxy_list.h"

#include <windows.h>

namespace product_services_guard {
namespace {

ProxyDecision Failure(const wchar_t* sentence)
{
    return {PRODUCT_SERVICES_PROXY_FAILED, sentence, {}, {}};
}

ProxyDecision NoChange(std::uint32_t outcome)
{
    return {outcome, {}, {}, {}};
}

ProxyDecision Take(const std::wstring& proxy, const std::wstring& exceptions)
{
    return {PRODUCT_SERVICES_PROXY_TAKEN, proxy, proxy, exceptions};
}

} // namespace

ProxyDecision DecideProxy(
    const ProxySettings& settings, const wchar_t* serviceAddress, const ProxyEnvironment& environment)
{
    std::optional<ServiceAddress> service;
    if (serviceAddress && !(service = ReadServiceAddress(serviceAddress))) {
        return Failure(L"The service's address is not of the form https://host:port/path.");
    }
    if (environment.hasProxy) {
        return NoChange(PRODUCT_SERVICES_PROXY_KEPT);
    }
    if (settings.error != ERROR_SUCCESS && settings.error != ERROR_FILE_NOT_FOUND) {
        return Failure(L"The proxy settings of Windows could not be read.");
    }
    const std::vector<std::wstring> proxies = HttpsProxies(settings.proxies);
    if (proxies.empty()) {
        return NoChange(PRODUCT_SERVICES_PROXY_NONE);
    }
    if (!service) {
        const bool isFree = !environment.hasExceptions;
        return Take(proxies.front(), isFree ? TranslatedExceptions(settings.exceptions) : std::wstring());
    }
    if (!IsExcepted(settings.exceptions, *service)) {
        return Take(proxies.front(), {});
    }
    // The host's own no_proxy stays, and may not name the service.
    return environment.hasExceptions ? NoChange(PRODUCT_SERVICES_PROXY_NONE)
                                     : Take(proxies.front(), service->host);
}

} // namespace product_services_guard
