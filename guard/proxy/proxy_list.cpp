#include "proxy/proxy_list.h"

#include "url/ascii.h"

#include <algorithm>
#include <string_view>

namespace product_services_guard {
namespace {

bool IsPrintableAscii(wchar_t c)
{
    return c > L' ' && c < 0x7F;
}

// Adds the default port to "scheme://user@host" if there is none. Returns an empty text if the proxy is not
// an HTTP proxy.
std::wstring NormalizeProxy(std::wstring proxy)
{
    const std::wstring scheme = ConsumeScheme(proxy);
    if ((!scheme.empty() && scheme != L"http" && scheme != L"https") ||
        !std::all_of(proxy.begin(), proxy.end(), IsPrintableAscii)) {
        return {};
    }
    proxy.resize(std::min(proxy.find(L'/'), proxy.size()));
    const ListedHost server = SplitHostPort(proxy.substr(proxy.find(L'@') + 1));
    if (server.host.empty()) {
        return {};
    }
    if (server.port.empty()) {
        // libcurl's default port would be 1080.
        proxy.resize(proxy.ends_with(L':') ? proxy.size() - 1 : proxy.size());
        proxy += scheme == L"https" ? L":443" : L":80";
    }
    return scheme.empty() ? proxy : scheme + L"://" + proxy;
}

void AddProxy(std::vector<std::wstring>& proxies, const std::wstring& entry)
{
    std::wstring proxy = NormalizeProxy(entry);
    if (!proxy.empty()) {
        proxies.push_back(std::move(proxy));
    }
}

} // namespace

std::vector<std::wstring> SplitList(const std::wstring& list)
{
    constexpr wchar_t Separators[] = L"; \t\r\n";
    std::vector<std::wstring> entries;
    std::size_t start = list.find_first_not_of(Separators);
    while (start != list.npos) {
        const std::size_t end = std::min(list.find_first_of(Separators, start), list.size());
        entries.push_back(ToLowerAscii(list.substr(start, end - start)));
        start = list.find_first_not_of(Separators, end);
    }
    return entries;
}

std::wstring ConsumeScheme(std::wstring& text)
{
    const std::size_t end = text.find(L"://");
    if (end == text.npos) {
        return {};
    }
    std::wstring scheme = text.substr(0, end);
    text.erase(0, end + 3);
    return scheme;
}

ListedHost SplitHostPort(const std::wstring& text)
{
    const std::size_t bracket = text.starts_with(L'[') ? text.find(L']') : text.npos;
    if (bracket != text.npos) {
        const std::wstring rest = text.substr(bracket + 1);
        return {text.substr(1, bracket - 1), rest.starts_with(L':') ? rest.substr(1) : rest};
    }
    const std::size_t colon = text.find(L':');
    if (colon == text.npos || colon != text.rfind(L':')) {
        return {text, L""};
    }
    return {text.substr(0, colon), text.substr(colon + 1)};
}

std::vector<std::wstring> ProxiesForHttps(const std::wstring& list)
{
    constexpr std::wstring_view Https = L"https=";
    std::vector<std::wstring> forHttps;
    std::vector<std::wstring> forAll;
    for (const std::wstring& entry : SplitList(list)) {
        if (entry.starts_with(Https)) {
            AddProxy(forHttps, entry.substr(Https.size()));
        } else if (entry.find(L'=') == entry.npos) {
            AddProxy(forAll, entry);
        }
    }
    return forHttps.empty() ? forAll : forHttps;
}

} // namespace product_services_guard
