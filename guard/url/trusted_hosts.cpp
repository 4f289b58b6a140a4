#include "url/trusted_hosts.h"

#include "url/ascii.h"
#include "url/strict_url.h"

namespace product_services_guard {
namespace {

constexpr std::wstring_view WildcardPrefix = L"*.";

std::wstring_view Trim(std::wstring_view text)
{
    const std::size_t start = text.find_first_not_of(L" \t");
    return start == text.npos ? std::wstring_view()
                              : text.substr(start, text.find_last_not_of(L" \t") - start + 1);
}

// Removes the first entry from the list and returns it. Returns an empty text if there are no more entries.
std::wstring_view NextEntry(std::wstring_view& list)
{
    std::wstring_view entry;
    while (entry.empty() && !list.empty()) {
        const std::size_t end = list.find(L';');
        entry = Trim(list.substr(0, end));
        list.remove_prefix(end == list.npos ? list.size() : end + 1);
    }
    return entry;
}

bool ConsumePrefix(std::wstring_view& text, std::wstring_view prefix)
{
    if (!text.starts_with(prefix)) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

// "a.example.com" and "a.b.example.com" are subdomains of "example.com"; the name itself is not.
bool IsSubdomainOf(std::wstring_view host, std::wstring_view name)
{
    return host.size() > name.size() + 1 && host[host.size() - name.size() - 1] == L'.' &&
           EqualsIgnoreAsciiCase(host.substr(host.size() - name.size()), name);
}

bool EntryMatches(std::wstring_view entry, const HostPort& target)
{
    const bool isWildcard = ConsumePrefix(entry, WildcardPrefix);
    const std::optional<HostPort> trusted = ParseHostPort(entry);
    if (!trusted || trusted->port != target.port) {
        return false;
    }
    return isWildcard ? IsSubdomainOf(target.host, trusted->host)
                      : EqualsIgnoreAsciiCase(target.host, trusted->host);
}

} // namespace

std::optional<std::wstring_view> FindInvalidEntry(std::wstring_view list)
{
    const std::wstring_view whole = list;
    std::wstring_view entry = NextEntry(list);
    if (entry.empty()) {
        return whole;
    }
    for (; !entry.empty(); entry = NextEntry(list)) {
        std::wstring_view name = entry;
        ConsumePrefix(name, WildcardPrefix);
        if (!ParseHostPort(name)) {
            return entry;
        }
    }
    return std::nullopt;
}

bool MatchesTrustedHosts(std::wstring_view url, std::wstring_view list)
{
    const std::optional<HostPort> target = ParseStrictHttpsUrl(url);
    if (!target) {
        return false;
    }
    for (std::wstring_view entry = NextEntry(list); !entry.empty(); entry = NextEntry(list)) {
        if (EntryMatches(entry, *target)) {
            return true;
        }
    }
    return false;
}

} // namespace product_services_guard
