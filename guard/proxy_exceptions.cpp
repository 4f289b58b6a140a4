#include "proxy_exceptions.h"

#include "proxy_list.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace product_services_guard {
namespace {

// In steps of the product of both lengths at most, whatever the pattern.
bool Matches(std::wstring_view pattern, std::wstring_view text)
{
    std::size_t star = pattern.npos;
    std::size_t afterStar = 0;
    std::size_t p = 0;
    std::size_t t = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == L'*') {
            star = p++;
            afterStar = t;
        } else if (p < pattern.size() && (pattern[p] == L'?' || pattern[p] == text[t])) {
            ++p;
            ++t;
        } else if (star != pattern.npos) {
            p = star + 1;
            t = ++afterStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', p) == pattern.npos;
}

bool IsLocal(const std::wstring& host)
{
    return host.find_first_of(L".:") == host.npos;
}

// Cuts the scheme off and returns whether the entry is one for https.
bool IsForHttps(std::wstring& entry)
{
    const std::wstring scheme = CutScheme(entry);
    return scheme.empty() || scheme == L"https";
}

bool Excepts(std::wstring entry, const ServiceAddress& service)
{
    if (entry == L"<local>") {
        return IsLocal(service.host);
    }
    if (!IsForHttps(entry)) {
        return false;
    }
    const HostAndPort server = CutPort(entry);
    return (server.port.empty() || server.port == service.port) && Matches(server.host, service.host);
}

// "10.*" or "192.168.*.*" as "10.0.0.0/8" or "192.168.0.0/16".
std::optional<std::wstring> AddressRange(std::wstring pattern)
{
    while (pattern.ends_with(L".*")) {
        pattern.erase(pattern.size() - 2);
    }
    const auto dots = std::count(pattern.begin(), pattern.end(), L'.');
    if (pattern.empty() || dots > 2 || pattern.find_first_not_of(L"0123456789.") != pattern.npos) {
        return std::nullopt;
    }
    for (auto octets = dots + 1; octets < 4; ++octets) {
        pattern += L".0";
    }
    constexpr const wchar_t* Bits[]{L"/8", L"/16", L"/24"};
    return pattern + Bits[dots];
}

// libcurl takes a name for the domain of that name with all that is in it.
std::optional<std::wstring> Translate(std::wstring entry)
{
    if (!IsForHttps(entry)) {
        return std::nullopt;
    }
    entry = CutPort(entry).host;
    if (entry == L"*") {
        return entry;
    }
    if (entry.ends_with(L".*")) {
        return AddressRange(std::move(entry));
    }
    entry.erase(0, entry.find_first_not_of(L"*."));
    const bool isName = !entry.empty() && entry.find_first_of(L"*?<>,/") == entry.npos;
    return isName ? std::optional(entry) : std::nullopt;
}

} // namespace

bool IsExcepted(const std::wstring& list, const ServiceAddress& service)
{
    const std::vector<std::wstring> entries = Entries(list);
    return std::any_of(entries.begin(), entries.end(), [&service](const std::wstring& entry) {
        return Excepts(entry, service);
    });
}

std::wstring TranslatedExceptions(const std::wstring& list)
{
    std::wstring hosts;
    for (const std::wstring& entry : Entries(list)) {
        const std::optional<std::wstring> host = Translate(entry);
        if (host == L"*") {
            // libcurl knows it as the whole value only.
            return *host;
        }
        if (host) {
            hosts += hosts.empty() ? *host : L"," + *host;
        }
    }
    return hosts;
}

} // namespace product_services_guard
