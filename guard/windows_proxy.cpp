#include "product_services/guarded_calls.h"

#include "bounded_text.h"
#include "proxy_settings.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <windows.h>

#include <winhttp.h>

namespace product_services_guard {
namespace {

struct Freed
{
    void operator()(wchar_t* text) const { GlobalFree(text); }
    void operator()(HINSTANCE module) const { FreeLibrary(module); }
};
using Text = std::unique_ptr<wchar_t, Freed>;

// Loaded for the call alone and from the system's folder: few hosts need it, and an import would also look
// beside the program.
class WinHttp
{
public:
    template <typename Function>
    Function* Find(const char* name) const
    {
        void* const found = reinterpret_cast<void*>(GetProcAddress(m_module.get(), name));
        return reinterpret_cast<Function*>(found);
    }

    bool IsLoaded() const { return m_module != nullptr; }

private:
    std::unique_ptr<std::remove_pointer_t<HMODULE>, Freed> m_module{
        LoadLibraryExW(L"winhttp.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32)};
};

#define WINHTTP_FUNCTION(library, name) library.Find<decltype(name)>(#name)

struct Settings
{
    std::wstring proxies;
    std::wstring bypass;
};

std::wstring Copied(const wchar_t* text)
{
    return text ? text : std::wstring();
}

/// What a configuration script says of the address; nothing where there is no script to be had.
std::optional<Settings> AskScript(
    const WinHttp& winHttp, const wchar_t* address, bool detects, const wchar_t* script)
{
    const HINTERNET session = WINHTTP_FUNCTION(winHttp, WinHttpOpen)(
        L"ProductServices", WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0);
    if (!session) {
        return std::nullopt;
    }
    WINHTTP_AUTOPROXY_OPTIONS options{};
    if (detects) {
        options.dwFlags |= WINHTTP_AUTOPROXY_AUTO_DETECT;
        options.dwAutoDetectFlags = WINHTTP_AUTO_DETECT_TYPE_DHCP | WINHTTP_AUTO_DETECT_TYPE_DNS_A;
    }
    if (script) {
        options.dwFlags |= WINHTTP_AUTOPROXY_CONFIG_URL;
        options.lpszAutoConfigUrl = script;
    }
    options.fAutoLogonIfChallenged = TRUE;
    WINHTTP_PROXY_INFO info{};
    const bool isAnswered =
        WINHTTP_FUNCTION(winHttp, WinHttpGetProxyForUrl)(session, address, &options, &info);
    WINHTTP_FUNCTION(winHttp, WinHttpCloseHandle)(session);
    if (!isAnswered) {
        return std::nullopt;
    }
    const Text proxies(info.lpszProxy);
    const Text bypass(info.lpszProxyBypass);
    return Settings{Copied(proxies.get()), Copied(bypass.get())};
}

std::optional<Settings> ReadSettings(const wchar_t* address)
{
    const WinHttp winHttp;
    WINHTTP_CURRENT_USER_IE_PROXY_CONFIG config{};
    if (!winHttp.IsLoaded() || !WINHTTP_FUNCTION(winHttp, WinHttpGetIEProxyConfigForCurrentUser)(&config)) {
        return std::nullopt;
    }
    const Text script(config.lpszAutoConfigUrl);
    const Text proxies(config.lpszProxy);
    const Text bypass(config.lpszProxyBypass);
    if (address && (config.fAutoDetect || script)) {
        if (auto settings = AskScript(winHttp, address, config.fAutoDetect, script.get())) {
            return settings;
        }
    }
    return Settings{Copied(proxies.get()), Copied(bypass.get())};
}

// Like libcurl, which takes an empty variable for none.
bool IsSet(const wchar_t* variable)
{
    return GetEnvironmentVariableW(variable, nullptr, 0) > 1;
}

std::uint32_t TakeOver(const wchar_t* serviceAddress, std::wstring& text)
{
    if (IsSet(L"https_proxy") || IsSet(L"all_proxy")) {
        return PRODUCT_SERVICES_PROXY_KEPT;
    }
    const std::optional<Settings> settings = ReadSettings(serviceAddress);
    if (!settings) {
        text = L"The proxy settings of Windows could not be read.";
        return PRODUCT_SERVICES_PROXY_FAILED;
    }
    text = HttpsProxy(settings->proxies);
    if (text.empty()) {
        return PRODUCT_SERVICES_PROXY_NONE;
    }
    SetEnvironmentVariableW(L"https_proxy", text.c_str());
    const std::wstring hosts = NoProxy(settings->bypass, HostOf(Copied(serviceAddress)));
    if (!hosts.empty() && !IsSet(L"no_proxy")) {
        SetEnvironmentVariableW(L"no_proxy", hosts.c_str());
    }
    return PRODUCT_SERVICES_PROXY_TAKEN;
}

} // namespace
} // namespace product_services_guard

using namespace product_services_guard;

std::uint32_t UseWindowsProxy(const wchar_t* serviceAddress, wchar_t* text, std::uint32_t textCapacity)
{
    std::uint32_t found = PRODUCT_SERVICES_PROXY_FAILED;
    std::wstring foundText;
    try {
        found = TakeOver(serviceAddress, foundText);
    } catch (const std::exception&) {
        CopyBounded(text, textCapacity, L"There is not enough memory to read the proxy settings.");
        return PRODUCT_SERVICES_PROXY_FAILED;
    }
    CopyBounded(text, textCapacity, foundText.c_str());
    return found;
}
