#include "product_services/guarded_calls.h"

#include "bounded_text.h"
#include "proxy_decision.h"
#include "windows_proxy_settings.h"

#include <exception>
#include <windows.h>

namespace product_services_guard {
namespace {

// Like libcurl, which takes an empty variable for none.
bool IsSet(const wchar_t* variable)
{
    return GetEnvironmentVariableW(variable, nullptr, 0) > 1;
}

void Set(const wchar_t* variable, const std::wstring& value)
{
    if (!value.empty()) {
        SetEnvironmentVariableW(variable, value.c_str());
    }
}

ProxyDecision TakeOver(const wchar_t* serviceAddress)
{
    const ProxyEnvironment environment{IsSet(L"https_proxy") || IsSet(L"all_proxy"), IsSet(L"no_proxy")};
    // What does not hang on the settings: then no script is asked.
    ProxyDecision decision = DecideProxy({}, serviceAddress, environment);
    if (decision.outcome != PRODUCT_SERVICES_PROXY_NONE) {
        return decision;
    }
    decision = DecideProxy(ReadWindowsProxy(serviceAddress), serviceAddress, environment);
    Set(L"https_proxy", decision.httpsProxy);
    Set(L"no_proxy", decision.noProxy);
    return decision;
}

} // namespace
} // namespace product_services_guard

using namespace product_services_guard;

std::uint32_t UseWindowsProxy(const wchar_t* serviceAddress, wchar_t* text, std::uint32_t textCapacity)
{
    try {
        const ProxyDecision decision = TakeOver(serviceAddress);
        CopyBounded(text, textCapacity, decision.text.c_str());
        return decision.outcome;
    } catch (const std::exception&) {
        CopyBounded(text, textCapacity, L"There is not enough memory to read the proxy settings.");
        return PRODUCT_SERVICES_PROXY_FAILED;
    }
}
