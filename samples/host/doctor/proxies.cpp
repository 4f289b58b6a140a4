#include "checks.h"
#include "within_time.h"

#include <iterator>
#include <windows.h>

namespace doctor {
namespace {

using product_services::ProxyResult;
using std::chrono::seconds;

// The configuration script is asked within Windows' own time-outs, and each proxy is tried for two seconds.
constexpr seconds WindowsProxyLimit{20};

// Takes an environment variable away from this process for as long as it lives.
class Without
{
public:
    explicit Without(const wchar_t* name) : m_name(name), m_isSet(Read()) {}
    ~Without() { SetEnvironmentVariableW(m_name, m_isSet ? m_value.c_str() : nullptr); }

    Without(const Without&) = delete;
    Without& operator=(const Without&) = delete;

private:
    bool Read()
    {
        const DWORD size = GetEnvironmentVariableW(m_name, nullptr, 0);
        m_value.resize(size);
        m_value.resize(GetEnvironmentVariableW(m_name, m_value.data(), size));
        SetEnvironmentVariableW(m_name, nullptr);
        return size > 0;
    }

    const wchar_t* m_name;
    std::wstring m_value;
    bool m_isSet;
};

// What a host would take over if no variable were set. All variables are put back.
ProxyResult AskWindows(const std::wstring& serviceAddress)
{
    const Without httpsProxy(L"https_proxy");
    const Without allProxy(L"all_proxy");
    const Without noProxy(L"no_proxy");
    return product_services::UseWindowsProxy(serviceAddress);
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
    switch (result->found) {
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
