#include "route.h"

#include <cwchar>
#include <string_view>
#include <windows.h>

#include <winhttp.h>

namespace doctor {
namespace {

std::wstring Variable(const wchar_t* name)
{
    std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

Server ReadService(const std::wstring& address)
{
    URL_COMPONENTS parts{};
    parts.dwStructSize = sizeof parts;
    parts.dwHostNameLength = static_cast<DWORD>(-1);
    if (!WinHttpCrackUrl(address.c_str(), 0, 0, &parts)) {
        return {};
    }
    std::wstring host(parts.lpszHostName, parts.dwHostNameLength);
    if (host.starts_with(L'[')) {
        host = host.substr(1, host.size() - 2);
    }
    return {host, std::to_wstring(parts.nPort)};
}

// [scheme://][user[:password]@]host[:port][/]
Server ReadProxy(std::wstring_view text, std::wstring_view scheme)
{
    text = text.substr(0, text.find(L'/'));
    const std::size_t end = text.starts_with(L'[') ? text.find(L']') + 1 : text.find(L':');
    std::wstring_view host = text.substr(0, end);
    const std::size_t colon = text.find(L':', host.size());
    if (host.starts_with(L'[')) {
        host = host.substr(1, host.size() - 2);
    }
    // libcurl's own ports.
    const wchar_t* usualPort = scheme == L"https" ? L"443" : L"1080";
    return {std::wstring(host), colon == text.npos ? usualPort : std::wstring(text.substr(colon + 1))};
}

bool IsSame(std::wstring_view one, std::wstring_view other)
{
    return CompareStringOrdinal(
               one.data(), static_cast<int>(one.size()), other.data(), static_cast<int>(other.size()),
               TRUE) == CSTR_EQUAL;
}

// An entry is a name, which stands for all below it too.
bool Excepts(std::wstring_view entry, std::wstring_view host)
{
    if (entry.starts_with(L'.')) {
        entry.remove_prefix(1);
    }
    if (entry.empty() || host.size() < entry.size() ||
        !IsSame(host.substr(host.size() - entry.size()), entry)) {
        return false;
    }
    return host.size() == entry.size() || host[host.size() - entry.size() - 1] == L'.';
}

bool IsExcepted(std::wstring_view list, std::wstring_view host)
{
    if (list == L"*") {
        return true;
    }
    while (!list.empty()) {
        const std::size_t end = list.find_first_of(L", \t");
        if (Excepts(list.substr(0, end), host)) {
            return true;
        }
        list.remove_prefix(end == list.npos ? list.size() : end + 1);
    }
    return false;
}

} // namespace

std::wstring Text(const Server& server)
{
    const bool isIpv6 = server.host.find(L':') != server.host.npos;
    return (isIpv6 ? L"[" + server.host + L"]" : server.host) + L":" + server.port;
}

Route ReadRoute(const std::wstring& serviceAddress)
{
    Route route;
    route.service = ReadService(serviceAddress);
    for (const wchar_t* variable : {L"https_proxy", L"all_proxy"}) {
        route.value = Variable(variable);
        route.variable = variable;
        if (!route.value.empty()) {
            break;
        }
    }
    if (route.value.empty()) {
        return route;
    }
    const std::size_t colon = route.value.find(L"://");
    const std::wstring scheme = colon == route.value.npos ? L"http" : route.value.substr(0, colon);
    std::wstring rest = colon == route.value.npos ? route.value : route.value.substr(colon + 3);
    rest = rest.substr(rest.rfind(L'@') + 1);
    route.value = scheme + L"://" + rest;
    route.isExcepted = IsExcepted(Variable(L"no_proxy"), route.service.host);
    if (!route.isExcepted) {
        route.proxy = ReadProxy(rest, scheme);
        route.isForeign = !IsSame(scheme, L"http");
    }
    return route;
}

} // namespace doctor
