#include "windows_proxy_settings.h"

#include "proxy_connection.h"
#include "proxy_script.h"

#include <memory>
#include <optional>
#include <windows.h>

#include <winhttp.h>

namespace product_services_guard {
namespace {

struct Freed
{
    void operator()(wchar_t* text) const { GlobalFree(text); }
};
using Text = std::unique_ptr<wchar_t, Freed>;

std::wstring Copied(const Text& text)
{
    return text ? text.get() : std::wstring();
}

struct WinHttp
{
    decltype(&WinHttpGetIEProxyConfigForCurrentUser) getConfig;
    decltype(&WinHttpOpen) open;
    decltype(&WinHttpGetProxyForUrl) getProxy;
    decltype(&WinHttpCloseHandle) close;
};

template <typename Function>
void Find(HMODULE module, const char* name, Function*& function)
{
    function = reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// Loaded at the first need and from the system's folder: few hosts need it, and an import would also look
// beside the program. It stays loaded, since its threads outlast a call.
const WinHttp* LoadWinHttp()
{
    static WinHttp library{};
    if (library.close) {
        return &library;
    }
    const HMODULE module = LoadLibraryExW(L"winhttp.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (!module) {
        return nullptr;
    }
    Find(module, "WinHttpGetIEProxyConfigForCurrentUser", library.getConfig);
    Find(module, "WinHttpOpen", library.open);
    Find(module, "WinHttpGetProxyForUrl", library.getProxy);
    Find(module, "WinHttpCloseHandle", library.close);
    return &library;
}

// What a script says of the address; nothing where there is no script to be had.
std::optional<ProxySettings> AskScript(
    const WinHttp& winHttp, const wchar_t* address, WINHTTP_AUTOPROXY_OPTIONS options)
{
    const HINTERNET session =
        winHttp.open(L"ProductServices", WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0);
    if (!session) {
        return std::nullopt;
    }
    WINHTTP_PROXY_INFO info{};
    const bool isAnswered = winHttp.getProxy(session, address, &options, &info);
    winHttp.close(session);
    const Text proxies(info.lpszProxy);
    const Text exceptions(info.lpszProxyBypass);
    if (!isAnswered) {
        return std::nullopt;
    }
    // WinHTTP does not say whether DIRECT is the last of the alternatives.
    return ProxySettings{ERROR_SUCCESS, FirstReached(Copied(proxies)), Copied(exceptions)};
}

} // namespace

ProxySettings ReadWindowsProxy(const wchar_t* serviceAddress)
{
    const WinHttp* const winHttp = LoadWinHttp();
    if (!winHttp) {
        return {ERROR_MOD_NOT_FOUND, {}, {}};
    }
    WINHTTP_CURRENT_USER_IE_PROXY_CONFIG config{};
    if (!winHttp->getConfig(&config)) {
        return {GetLastError(), {}, {}};
    }
    const Text script(config.lpszAutoConfigUrl);
    const Text proxies(config.lpszProxy);
    const Text exceptions(config.lpszProxyBypass);
    std::optional<ProxySettings> answer;
    if (serviceAddress && config.fAutoDetect) {
        answer = AskScript(*winHttp, serviceAddress, DetectedScript());
    }
    if (serviceAddress && script && !answer) {
        answer = AskScript(*winHttp, serviceAddress, ConfiguredScript(script.get()));
    }
    return answer ? *answer : ProxySettings{ERROR_SUCCESS, Copied(proxies), Copied(exceptions)};
}

} // namespace product_services_guard
