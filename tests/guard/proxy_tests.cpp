// The proxy that a guarded call uses, with settings and scripts that a fake WinHTTP provides.
#include "product_services/guarded_calls.h"
#include "proxy/proxy_bypass.h"
#include "proxy/proxy_list.h"
#include "proxy/proxy_probe.h"
#include "proxy/system_proxy.h"
#include "support/data_file.h"
#include "support/loopback_server.h"

#include <cstdint>
#include <gtest/gtest.h>

using namespace product_services_guard;

namespace {

const ServiceEndpoint Service{L"svc.corp.test", L"18443"};
const TransferLimits NoLimits(PRODUCT_SERVICES_NO_TIME_LIMIT, nullptr);

// The row of the table, and the scripts that were run, in order.
nlohmann::ordered_json currentRow;
nlohmann::ordered_json scriptsRun;

// Returns a text as WinHTTP does; null for an empty one.
wchar_t* GlobalCopy(const std::string& utf8)
{
    if (utf8.empty()) {
        return nullptr;
    }
    const std::wstring text = ToWide(utf8);
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    return static_cast<wchar_t*>(std::memcpy(GlobalAlloc(GPTR, bytes), text.c_str(), bytes));
}

BOOL WINAPI GetProxyConfig(WINHTTP_CURRENT_USER_IE_PROXY_CONFIG* config)
{
    const nlohmann::ordered_json& settings = currentRow.at("settings");
    if (settings.is_null()) {
        return FALSE;
    }
    config->fAutoDetect = settings.value("detects", false);
    config->lpszAutoConfigUrl = GlobalCopy(settings.value("script", ""));
    config->lpszProxy = GlobalCopy(settings.value("proxies", ""));
    config->lpszProxyBypass = GlobalCopy(settings.value("bypass", ""));
    return TRUE;
}

HINTERNET WINAPI OpenSession(const wchar_t*, DWORD access, const wchar_t*, const wchar_t*, DWORD)
{
    EXPECT_EQ(access, static_cast<DWORD>(WINHTTP_ACCESS_TYPE_NO_PROXY)) << "the script itself";
    return GlobalAlloc(GPTR, 1);
}

BOOL WINAPI
GetProxyForUrl(HINTERNET, const wchar_t* url, WINHTTP_AUTOPROXY_OPTIONS* options, WINHTTP_PROXY_INFO* info)
{
    EXPECT_STREQ(url, (L"http://" + ToWide(TESTS_ADDRESS) + L":18444").c_str()) << "the service's";
    std::string script = "detected";
    if (options->dwFlags == WINHTTP_AUTOPROXY_CONFIG_URL) {
        const std::wstring scriptUrl = options->lpszAutoConfigUrl;
        script.assign(scriptUrl.begin(), scriptUrl.end());
    } else {
        constexpr DWORD DhcpAndDns = WINHTTP_AUTO_DETECT_TYPE_DHCP | WINHTTP_AUTO_DETECT_TYPE_DNS_A;
        EXPECT_EQ(options->dwAutoDetectFlags, DhcpAndDns);
    }
    scriptsRun.push_back(script + (options->fAutoLogonIfChallenged ? ", with logon" : ", without logon"));
    const nlohmann::ordered_json scripts = currentRow.value("scripts", nlohmann::ordered_json::object());
    if (!scripts.contains(script)) {
        return FALSE;
    }
    info->lpszProxy = GlobalCopy(scripts[script]);
    return TRUE;
}

BOOL WINAPI CloseSession(HINTERNET session)
{
    return GlobalFree(session) == nullptr;
}

constexpr WinHttpApi FakeWinHttp{GetProxyConfig, OpenSession, GetProxyForUrl, CloseSession};

void ReplaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (std::size_t at = text.find(from); at != text.npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

} // namespace

TEST(ProxyList, SelectsProxiesForHttps)
{
    const auto cases = ReadDataFile("guard/proxies.json").at("lists");
    for (const auto& [name, row] : cases.items()) {
        SCOPED_TRACE(name);
        const std::vector<std::wstring> proxies = ProxiesForHttps(ToWide(row["list"]));
        EXPECT_EQ(proxies.empty() ? L"" : proxies.front(), ToWide(row["proxy"]));
    }
}

TEST(BypassList, MatchesLikeWindows)
{
    const auto cases = ReadDataFile("guard/proxies.json").at("bypass lists");
    for (const auto& [name, row] : cases.items()) {
        SCOPED_TRACE(name);
        const ServiceEndpoint service{
            ToWide(row.value("host", "svc.corp.test")), ToWide(row.value("port", "18443"))};
        EXPECT_EQ(IsBypassed(ToWide(row["list"]), service), row["bypassed"].get<bool>());
    }
}

TEST(SystemProxy, FollowsSettingsAndScripts)
{
    const LoopbackServer proxy;
    std::string text = ReadDataFile("guard/proxies.json").at("settings").dump();
    ReplaceAll(text, "OPEN", std::string(TESTS_ADDRESS) + ":18444");
    ReplaceAll(text, "DEAD", std::string(TESTS_ADDRESS) + ":1");
    const auto cases = nlohmann::ordered_json::parse(text);
    for (const auto& [name, row] : cases.items()) {
        SCOPED_TRACE(name);
        currentRow = row;
        scriptsRun = nlohmann::ordered_json::array();
        const std::wstring variable = ToWide(row.value("environment", ""));
        SetEnvironmentVariableW(variable.c_str(), L"http://own:1");
        EXPECT_EQ(FindSystemProxy(Service, NoLimits, FakeWinHttp), row["proxy"].get<std::string>());
        EXPECT_EQ(scriptsRun, row["scripts run"]);
        SetEnvironmentVariableW(variable.c_str(), nullptr);
    }
}

TEST(SystemProxy, IsEmptyWithoutWinHttp)
{
    EXPECT_EQ(FindSystemProxy(Service, NoLimits, {}), "");
}

// The script does not return until the test releases its thread.
TEST(SystemProxy, IsEmptyIfAScriptExceedsTheLimits)
{
    static HANDLE release = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    currentRow = nlohmann::ordered_json::parse(R"({"settings": {"script": "http://s/x.pac"}})");
    WinHttpApi silent = FakeWinHttp;
    silent.getProxyForUrl = [](HINTERNET, const wchar_t*, WINHTTP_AUTOPROXY_OPTIONS*, WINHTTP_PROXY_INFO*) {
        WaitForSingleObject(release, INFINITE);
        return FALSE;
    };
    volatile std::uint32_t cancelFlag = 0;
    TransferLimits limits(400, &cancelFlag);
    limits.StartClock();
    const std::uint64_t start = GetTickCount64();
    EXPECT_EQ(FindSystemProxy(Service, limits, silent), "");
    EXPECT_GE(GetTickCount64() - start, 350u);
    EXPECT_LT(GetTickCount64() - start, 1400u);

    const TransferLimits unlimited(PRODUCT_SERVICES_NO_TIME_LIMIT, &cancelFlag);
    cancelFlag = 1;
    EXPECT_EQ(FindSystemProxy(Service, unlimited, silent), "") << "cancelled";
    SetEvent(release);
}

// The proxy's connection queue is full, so another connection is neither accepted nor refused.
TEST(ProxyProbe, TimesOutOnASilentProxy)
{
    const SOCKET listener = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address{AF_INET, 0, {}, {}};
    ASSERT_EQ(inet_pton(AF_INET, TESTS_ADDRESS, &address.sin_addr), 1);
    int size = sizeof address;
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(listener, 0), 0);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    std::vector<SOCKET> waiting;
    for (int i = 0; i < 4; ++i) {
        waiting.push_back(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
        u_long isNonBlocking = 1;
        ioctlsocket(waiting.back(), static_cast<long>(FIONBIO), &isNonBlocking);
        static_cast<void>(connect(waiting.back(), reinterpret_cast<const sockaddr*>(&address), size));
    }
    const std::wstring proxy = ToWide(TESTS_ADDRESS) + L":" + std::to_wstring(ntohs(address.sin_port));
    const std::uint64_t start = GetTickCount64();
    EXPECT_EQ(FirstReachableProxy(proxy, NoLimits), L"");
    EXPECT_GE(GetTickCount64() - start, 1500u) << "the queue was not full";
    EXPECT_LT(GetTickCount64() - start, 5000u);
    for (const SOCKET connection : waiting) {
        closesocket(connection);
    }
    closesocket(listener);
}
