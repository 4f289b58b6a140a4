#include "checks.h"
#include "windows_proxy_settings.h"
#include "within_time.h"

namespace doctor {
namespace {

using namespace product_services_guard;
using std::chrono::seconds;

// The configuration script is asked within Windows' own time-outs, and each proxy is tried for two seconds.
constexpr seconds WindowsProxyLimit{20};

// What a host would take over if no variable were set. The guard's function for it sets variables, which a
// look-up that exceeds its limit would do under later checks; this changes nothing.
ProxyDecision AskWindows(const std::wstring& serviceAddress)
{
    return DecideProxy(ReadWindowsProxy(serviceAddress.c_str()), serviceAddress.c_str(), {});
}

} // namespace

Finding CheckProxyVariables(const Route& route)
{
    const wchar_t* check = L"proxy variables";
    if (route.value.empty()) {
        return {
            State::Ok, check, L"neither https_proxy nor all_proxy is set: the service is asked directly",
            rows::Proxies};
    }
    const std::wstring named = route.variable + L" names " + route.value;
    if (route.isExcepted) {
        return {
            State::Note, check, named + L", and no_proxy excepts the service: it is asked directly",
            rows::Proxies};
    }
    if (route.isForeign) {
        return {
            State::Note, check,
            named + L", which applies; the doctor can ask the service through http:// proxies only",
            rows::Proxies};
    }
    return {State::Note, check, named + L", which applies", rows::Proxies};
}

Finding CheckWindowsProxy(const std::wstring& serviceAddress)
{
    const wchar_t* check = L"proxy of Windows";
    const auto result = WithinTime(WindowsProxyLimit, [=] { return AskWindows(serviceAddress); });
    if (!result) {
        return {
            State::Note, check, L"Windows has not told it within " + InWords(WindowsProxyLimit),
            rows::Proxies};
    }
    switch (result->outcome) {
    case PRODUCT_SERVICES_PROXY_TAKEN:
        return {
            State::Note, check, result->text + L" applies only in a host that calls UseWindowsProxy",
            rows::Proxies};
    case PRODUCT_SERVICES_PROXY_FAILED:
        return {State::Note, check, L"could not be read: " + result->text, rows::Proxies};
    default:
        return {State::Ok, check, L"Windows has none for the service that can be reached", rows::Proxies};
    }
}

} // namespace doctor
