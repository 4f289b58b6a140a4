#include "proxy/pac_query.h"

#include "unique_handle.h"

#include <memory>

namespace product_services_guard {
namespace {

constexpr DWORD PollIntervalMs = 50;

// Owned by the query's thread and by the caller. Until the thread has ended, only the thread writes to it.
struct Query
{
    Query() = default;
    ~Query()
    {
        GlobalFree(info.lpszProxy);
        GlobalFree(info.lpszProxyBypass);
    }

    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    WinHttpApi winHttp{};
    std::wstring url;
    std::wstring scriptUrl;
    HMODULE module = nullptr;
    WINHTTP_PROXY_INFO info{};
    bool isAnswered = false;
};

void RunQuery(Query& query)
{
    const HINTERNET session =
        query.winHttp.open(L"ProductServices", WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0);
    if (!session) {
        return;
    }
    WINHTTP_AUTOPROXY_OPTIONS options =
        query.scriptUrl.empty() ? WpadOptions() : PacUrlOptions(query.scriptUrl.c_str());
    query.isAnswered = query.winHttp.getProxyForUrl(session, query.url.c_str(), &options, &query.info);
    query.winHttp.closeHandle(session);
}

DWORD WINAPI QueryThread(void* parameter)
{
    auto* const owner = static_cast<std::shared_ptr<Query>*>(parameter);
    const HMODULE module = (*owner)->module;
    RunQuery(**owner);
    delete owner;
    FreeLibraryAndExitThread(module, 0);
}

// Returns null if no thread can be created. The thread holds a reference to this DLL.
UniqueHandle StartThread(const std::shared_ptr<Query>& query)
{
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<const wchar_t*>(&QueryThread),
            &query->module)) {
        return nullptr;
    }
    auto* const owner = new std::shared_ptr<Query>(query);
    const HANDLE thread = CreateThread(nullptr, 0, QueryThread, owner, 0, nullptr);
    if (!thread) {
        delete owner;
        FreeLibrary(query->module);
    }
    return UniqueHandle(thread);
}

bool WaitForThread(HANDLE thread, const TransferLimits& limits)
{
    while (WaitForSingleObject(thread, PollIntervalMs) == WAIT_TIMEOUT) {
        if (limits.IsCancelled() || limits.IsTimeOver()) {
            return false;
        }
    }
    return true;
}

std::wstring ToString(const wchar_t* text)
{
    return text ? text : std::wstring();
}

} // namespace

WINHTTP_AUTOPROXY_OPTIONS WpadOptions()
{
    WINHTTP_AUTOPROXY_OPTIONS options{};
    options.dwFlags = WINHTTP_AUTOPROXY_AUTO_DETECT;
    options.dwAutoDetectFlags = WINHTTP_AUTO_DETECT_TYPE_DHCP | WINHTTP_AUTO_DETECT_TYPE_DNS_A;
    options.fAutoLogonIfChallenged = FALSE;
    return options;
}

WINHTTP_AUTOPROXY_OPTIONS PacUrlOptions(const wchar_t* scriptUrl)
{
    WINHTTP_AUTOPROXY_OPTIONS options{};
    options.dwFlags = WINHTTP_AUTOPROXY_CONFIG_URL;
    options.lpszAutoConfigUrl = scriptUrl;
    options.fAutoLogonIfChallenged = TRUE;
    return options;
}

std::optional<PacAnswer> QueryPac(
    const WinHttpApi& winHttp, const std::wstring& url, const std::wstring& scriptUrl,
    const TransferLimits& limits)
{
    const auto query = std::make_shared<Query>();
    query->winHttp = winHttp;
    query->url = url;
    query->scriptUrl = scriptUrl;
    const UniqueHandle thread = StartThread(query);
    if (!thread) {
        return std::nullopt;
    }
    if (!WaitForThread(thread.get(), limits) || !query->isAnswered) {
        return std::nullopt;
    }
    return PacAnswer{ToString(query->info.lpszProxy), ToString(query->info.lpszProxyBypass)};
}

} // namespace product_services_guard
