// What UseWindowsProxy decides, for settings as Windows has them.
#include "product_services/guarded_calls.h"
#include "proxy_decision.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace product_services_guard {
namespace {

constexpr auto None = PRODUCT_SERVICES_PROXY_NONE;
constexpr auto Taken = PRODUCT_SERVICES_PROXY_TAKEN;
constexpr auto Kept = PRODUCT_SERVICES_PROXY_KEPT;
constexpr auto Failed = PRODUCT_SERVICES_PROXY_FAILED;
constexpr ProxyEnvironment OwnProxy{true, false};
constexpr ProxyEnvironment OwnExceptions{false, true};
constexpr wchar_t Service[] = L"https://svc.corp.test:18443/updates";
constexpr wchar_t ServiceHost[] = L"svc.corp.test";

ProxySettings Proxies(const wchar_t* list)
{
    return {ERROR_SUCCESS, list, L""};
}

ProxySettings Exceptions(const wchar_t* list)
{
    return {ERROR_SUCCESS, L"p:8080", list};
}

struct ProxyCase
{
    const char* name;
    ProductServicesProxy outcome;
    ProxySettings settings;
    std::wstring httpsProxy;
    std::wstring noProxy;
    const wchar_t* address = Service;
    ProxyEnvironment environment{};
};

// clang-format off
const ProxyCase Cases[]{
    {"no settings at all", None, {ERROR_FILE_NOT_FOUND, L"", L""}, L"", L""},
    {"settings that cannot be read", Failed, {ERROR_ACCESS_DENIED, L"", L""}, L"", L""},
    {"no proxy", None, Proxies(L""), L"", L""},
    {"one for all", Taken, Proxies(L"P:8080"), L"p:8080", L""},
    {"one for https among others", Taken, Proxies(L"http=a:1;HTTPS=b:2;ftp=c:3"), L"b:2", L""},
    {"one for https after one for all", Taken, Proxies(L"a:1 https=b:2"), L"b:2", L""},
    {"for http alone", None, Proxies(L"http=a:1"), L"", L""},
    {"for https without a server", None, Proxies(L"https="), L"", L""},
    {"for https without a server, among others", None, Proxies(L"http=a:1;https=;ftp="), L"", L""},
    {"SOCKS by protocol", None, Proxies(L"socks=a:1080"), L"", L""},
    {"SOCKS by scheme", None, Proxies(L"socks5://a:1080"), L"", L""},
    {"without a port", Taken, Proxies(L"p"), L"p:80", L""},
    {"without a port after its colon", Taken, Proxies(L"p:"), L"p:80", L""},
    {"with a scheme, without a port", Taken, Proxies(L"http://p"), L"http://p:80", L""},
    {"with a scheme, a port and a path", Taken, Proxies(L"http://p:8080/"), L"http://p:8080", L""},
    {"over TLS without a port", Taken, Proxies(L"https=https://p"), L"https://p:443", L""},
    {"with a user, without a port", Taken, Proxies(L"http://user:word@p"), L"http://user:word@p:80", L""},
    {"IPv6 without a port", Taken, Proxies(L"[::1]"), L"[::1]:80", L""},
    {"the name", Taken, Exceptions(L"svc.corp.test"), L"p:8080", ServiceHost},
    {"the name in capitals", Taken, Exceptions(L"SVC"), L"p:8080", L"svc", L"HTTPS://Svc"},
    {"the last of three names", Taken, Exceptions(L"a; b svc.corp.test"), L"p:8080", ServiceHost},
    {"another name and port", Taken, Exceptions(L"localhost:8080"), L"p:8080", L""},
    {"a domain of the name", Taken, Exceptions(L"corp.test"), L"p:8080", L""},
    {"the top domain of the name", Taken, Exceptions(L"test"), L"p:8080", L""},
    {"domains below the name", Taken, Exceptions(L"*.svc.corp.test"), L"p:8080", L""},
    {"the name at another port", Taken, Exceptions(L"svc.corp.test:8080"), L"p:8080", L""},
    {"the name at its port", Taken, Exceptions(L"svc.corp.test:18443"), L"p:8080", ServiceHost},
    {"the name at the usual port", Taken, Exceptions(L"svc:443"), L"p:8080", L"svc", L"https://svc"},
    {"the name with the scheme", Taken, Exceptions(L"https://svc.corp.test"), L"p:8080", ServiceHost},
    {"the name with another scheme", Taken, Exceptions(L"http://svc.corp.test"), L"p:8080", L""},
    {"a star at the end", Taken, Exceptions(L"svc.*"), L"p:8080", ServiceHost},
    {"a star within", Taken, Exceptions(L"s*.corp.test"), L"p:8080", ServiceHost},
    {"a star at the beginning", Taken, Exceptions(L"*vc.corp.test"), L"p:8080", ServiceHost},
    {"stars that have to try again", Taken, Exceptions(L"*.*.t*t"), L"p:8080", ServiceHost},
    {"a star for nothing", Taken, Exceptions(L"svc.corp.test*"), L"p:8080", ServiceHost},
    {"a question mark", Taken, Exceptions(L"local?ost"), L"p:8080", L"localhost", L"https://localhost"},
    {"a question mark for nothing", Taken, Exceptions(L"svc.corp.test?"), L"p:8080", L""},
    {"local names, for one without a dot", Taken, Exceptions(L"<local>"), L"p:8080", L"svc", L"https://svc"},
    {"local names, for one with a dot", Taken, Exceptions(L"<local>"), L"p:8080", L""},
    {"local names, for IPv6", Taken, Exceptions(L"<local>"), L"p:8080", L"", L"https://[::1]"},
    {"IPv6", Taken, Exceptions(L"[::1]:18443"), L"p:8080", L"::1", L"https://[::1]:18443"},
    {"an address", Taken, Exceptions(L"10.*"), L"p:8080", L"10.1.2.3", L"https://10.1.2.3"},
    {"for any service", Taken, Exceptions(L"<local>;*.Example.com http://x; 10.*;192.168.*.*;a*b;b:80"),
     L"p:8080", L"example.com,10.0.0.0/8,192.168.0.0/16,b", nullptr},
    {"all, for any service", Taken, Exceptions(L"a;*;b"), L"p:8080", L"*", nullptr},
    {"the host's own proxy", Kept, Exceptions(L"svc.*"), L"", L"", Service, OwnProxy},
    {"the host's own exceptions", Taken, Exceptions(L""), L"p:8080", L"", Service, OwnExceptions},
    {"the host's own, without the service", None, Exceptions(L"svc.*"), L"", L"", Service, OwnExceptions},
    {"the host's own, for any service", Taken, Exceptions(L"a"), L"p:8080", L"", nullptr, OwnExceptions},
    {"an empty address", Failed, Proxies(L"p"), L"", L"", L""},
    {"an address without a scheme", Failed, Proxies(L"p"), L"", L"", L"svc.corp.test:18443"},
    {"an address with another scheme", Failed, Proxies(L"p"), L"", L"", L"http://svc.corp.test"},
    {"an address without a host", Failed, Proxies(L"p"), L"", L"", L"https://:443"},
    {"an address with a user", Failed, Proxies(L"p"), L"", L"", L"https://user@svc.corp.test"},
    {"an address with a word as its port", Failed, Proxies(L"p"), L"", L"", L"https://svc.corp.test:x"},
    {"an address with half a bracket", Failed, Proxies(L"p"), L"", L"", L"https://[::1"},
};
// clang-format on

TEST(ProxyDecision, FollowsTheSettingsOfWindows)
{
    for (const ProxyCase& row : Cases) {
        SCOPED_TRACE(row.name);
        const ProxyDecision decision = DecideProxy(row.settings, row.address, row.environment);
        EXPECT_EQ(decision.outcome, row.outcome);
        EXPECT_EQ(decision.httpsProxy, row.httpsProxy);
        EXPECT_EQ(decision.noProxy, row.noProxy);
        EXPECT_EQ(decision.text.ends_with(L'.'), row.outcome == Failed) << "a failure says why";
        EXPECT_TRUE(row.outcome == Failed || decision.text == row.httpsProxy) << "or the text is the proxy";
    }
}

} // namespace
} // namespace product_services_guard
