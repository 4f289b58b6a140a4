#include "proxy_list.h"

#include <algorithm>

namespace product_services_guard {
namespace {

// "scheme://user@host:port" with a port; empty for what is no proxy that speaks HTTP.
std::wstring WithPort(std::wstring proxy)
{
    const std::wstring scheme = CutScheme(proxy);
    if (!scheme.empty() && scheme != L"http" && scheme != L"https") {
        return {};
    }
    proxy.resize(std::min(proxy.find(L'/'), proxy.size()));
    const HostAndPort server = CutPort(proxy.substr(proxy.find(L'@') + 1));
    if (server.host.empty()) {
        return {};
    }
    if (server.port.empty()) {
        // libcurl's usual port would be 1080.
        proxy.resize(proxy.ends_with(L':') ? proxy.size() - 1 : proxy.size());
        proxy += scheme == L"https" ? L":443" : L":80";
    }
    return scheme.empty() ? proxy : scheme + L"://" + proxy;
}

void AddProxy(std::vector<std::wstring>& proxies, const std::wstring& entry)
{
    std::wstring proxy = WithPort(entry);
    if (!proxy.empty()) {
        proxies.push_back(std::move(proxy));
    }
}

} // namespace

std::wstring InLowerCase(std::wstring text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](wchar_t c) {
        return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + 32) : c;
    });
    return text;
}

std::vector<std::wstring> Entries(const std::wstring& list)
{
    constexpr wchar_t Separators[] = L"; \t\r\n";
    std::vector<std::wstring> entries;
    for (std::size_t start = 0; (start = list.find_first_not_of(Separators, start)) != list.npos;) {
        const std::size_t end = std::min(list.find_first_of(Separators, start), list.size());
        entries.push_back(InLowerCase(list.substr(start, end - start)));
        start = end;
    }
    return entries;
}

std::wstring CutScheme(std::wstring& text)
{
    const std::size_t end = text.find(L"://");
    if (end == text.npos) {
        return {};
    }
    std::wstring scheme = text.substr(0, end);
    text.erase(0, end + 3);
    return scheme;
}

HostAndPort CutPort(const std::wstring& server)
{
    const std::size_t bracket = server.starts_with(L'[') ? server.find(L']') : server.npos;
    if (bracket != server.npos) {
        const std::wstring rest = server.substr(bracket + 1);
        return {server.substr(1, bracket - 1), rest.starts_with(L':') ? rest.substr(1) : rest, true};
    }
    const std::size_t colon = server.find(L':');
    if (colon == server.npos || colon != server.rfind(L':')) {
        return {server, L""};
    }
    return {server.substr(0, colon), server.substr(colon + 1)};
}

std::vector<std::wstring> HttpsProxies(const std::wstring& list)
{
    constexpr std::wstring_view Https = L"https=";
    std::vector<std::wstring> forHttps;
    std::vector<std::wstring> forAll;
    for (const std::wstring& entry : Entries(list)) {
        if (entry.starts_with(Https)) {
            AddProxy(forHttps, entry.substr(Https.size()));
        } else if (entry.find(L'=') == entry.npos) {
            AddProxy(forAll, entry);
        }
    }
    return forHttps.empty() ? forAll : forHttps;
}

} // namespace product_services_guard
