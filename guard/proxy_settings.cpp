#include "proxy_settings.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace product_services_guard {
namespace {

// WinHTTP's port where a proxy is named without one; libcurl's would be 1080.
constexpr wchar_t UsualPort[] = L":80";

// The entries of a list, in lower case: they are separated by semicolons or white space.
std::vector<std::wstring> Entries(const std::wstring& list)
{
    constexpr wchar_t Separators[] = L"; \t\r\n";
    std::vector<std::wstring> entries;
    for (std::size_t start = 0; (start = list.find_first_not_of(Separators, start)) != list.npos;) {
        const std::size_t end = std::min(list.find_first_of(Separators, start), list.size());
        std::wstring entry = list.substr(start, end - start);
        std::transform(entry.begin(), entry.end(), entry.begin(), [](wchar_t c) {
            return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + 32) : c;
        });
        entries.push_back(std::move(entry));
        start = end;
    }
    return entries;
}

// Cuts "scheme://" off and returns the scheme, or an empty text.
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

// The host of "host:port", "[::1]:port" or either without a port. An address of IPv6 without brackets stays
// whole.
std::wstring CutPort(const std::wstring& text)
{
    if (text.starts_with(L'[')) {
        return text.substr(1, text.find(L']') - 1);
    }
    const std::size_t colon = text.find(L':');
    return colon == text.rfind(L':') ? text.substr(0, colon) : text;
}

std::wstring WithPort(std::wstring address)
{
    std::wstring rest = address;
    CutScheme(rest);
    rest.resize(std::min(rest.find(L'/'), rest.size()));
    address.resize(address.find(rest) + rest.size());
    const bool hasPort = rest.find(L':', rest.starts_with(L'[') ? rest.find(L']') : 0) != rest.npos;
    return hasPort ? address : address + UsualPort;
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
std::optional<std::wstring> Translate(std::wstring entry, const std::wstring& serviceHost)
{
    if (entry == L"<local>") {
        const bool isLocal = !serviceHost.empty() && serviceHost.find_first_of(L".:") == serviceHost.npos;
        return isLocal ? std::optional(serviceHost) : std::nullopt;
    }
    const std::wstring scheme = CutScheme(entry);
    if (!scheme.empty() && scheme != L"https") {
        return std::nullopt;
    }
    entry = CutPort(entry);
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

std::wstring HttpsProxy(const std::wstring& list)
{
    std::wstring forAll;
    for (const std::wstring& entry : Entries(list)) {
        if (entry.starts_with(L"https=")) {
            return WithPort(entry.substr(6));
        }
        if (forAll.empty() && entry.find(L'=') == entry.npos) {
            forAll = WithPort(entry);
        }
    }
    return forAll;
}

std::wstring NoProxy(const std::wstring& list, const std::wstring& serviceHost)
{
    std::wstring hosts;
    for (const std::wstring& entry : Entries(list)) {
        const std::optional<std::wstring> host = Translate(entry, serviceHost);
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

std::wstring HostOf(const std::wstring& address)
{
    std::wstring rest = address;
    CutScheme(rest);
    return CutPort(rest.substr(0, rest.find_first_of(L"/?#")));
}

} // namespace product_services_guard
