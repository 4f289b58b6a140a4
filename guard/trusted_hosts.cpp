#include "trusted_hosts.h"

#include "ascii.h"
#include "plain_address.h"

namespace product_services_guard {
namespace {

constexpr std::wstring_view BelowName = L"*.";

std::wstring_view Trimmed(std::wstring_view text)
{
    const std::size_t start = text.find_first_not_of(L" \t");
    return start == text.npos ? std::wstring_view()
                              : text.substr(start, text.find_last_not_of(L" \t") - start + 1);
}

// Cuts the first entry off the list; an empty text where only separators were left.
std::wstring_view CutEntry(std::wstring_view& list)
{
    std::wstring_view entry;
    while (entry.empty() && !list.empty()) {
        const std::size_t end = list.find(L';');
        entry = Trimmed(list.substr(0, end));
        list.remove_prefix(end == list.npos ? list.size() : end + 1);
    }
    return entry;
}

bool CutPrefix(std::wstring_view& text, std::wstring_view prefix)
{
    if (!text.starts_with(prefix)) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

// "a.example.com" and "a.b.example.com" are below "example.com"; the name itself is not.
bool IsBelow(std::wstring_view host, std::wstring_view name)
{
    return host.size() > name.size() + 1 && host[host.size() - name.size() - 1] == L'.' &&
           IsSameInAnyCase(host.substr(host.size() - name.size()), name);
}

bool Takes(std::wstring_view entry, const Target& target)
{
    const bool isBelow = CutPrefix(entry, BelowName);
    const std::optional<Target> trusted = ReadTarget(entry);
    if (!trusted || trusted->port != target.port) {
        return false;
    }
    return isBelow ? IsBelow(target.host, trusted->host) : IsSameInAnyCase(target.host, trusted->host);
}

} // namespace

std::optional<std::wstring_view> FindMalformedEntry(std::wstring_view list)
{
    const std::wstring_view whole = list;
    std::wstring_view entry = CutEntry(list);
    if (entry.empty()) {
        return whole;
    }
    for (; !entry.empty(); entry = CutEntry(list)) {
        std::wstring_view name = entry;
        CutPrefix(name, BelowName);
        if (!ReadTarget(name)) {
            return entry;
        }
    }
    return std::nullopt;
}

bool IsTrustedAddress(std::wstring_view address, std::wstring_view list)
{
    const std::optional<Target> target = ReadPlainAddress(address);
    if (!target) {
        return false;
    }
    for (std::wstring_view entry = CutEntry(list); !entry.empty(); entry = CutEntry(list)) {
        if (Takes(entry, *target)) {
            return true;
        }
    }
    return false;
}

} // namespace product_services_guard
