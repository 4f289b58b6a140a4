#include "proxy/proxy_bypass.h"

#include "proxy/proxy_list.h"

#include <algorithm>
#include <string_view>

namespace product_services_guard {
namespace {

// On a mismatch, lets the last "*" match one more character and tries the rest again. The number of steps is
// at most the product of both lengths, whatever the pattern.
bool MatchesWildcard(std::wstring_view pattern, std::wstring_view text)
{
    std::size_t patternIndex = 0;
    std::size_t textIndex = 0;
    std::size_t starIndex = pattern.npos;
    std::size_t retryIndex = 0;
    while (textIndex < text.size()) {
        const wchar_t expected = patternIndex < pattern.size() ? pattern[patternIndex] : L'\0';
        if (expected == L'*') {
            starIndex = patternIndex;
            retryIndex = textIndex;
            ++patternIndex;
        } else if (expected == L'?' || expected == text[textIndex]) {
            ++patternIndex;
            ++textIndex;
        } else if (starIndex != pattern.npos) {
            ++retryIndex;
            patternIndex = starIndex + 1;
            textIndex = retryIndex;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', patternIndex) == pattern.npos;
}

bool IsLocalName(const std::wstring& host)
{
    return host.find_first_of(L".:") == host.npos;
}

bool EntryMatches(std::wstring entry, const ServiceEndpoint& service)
{
    if (entry == L"<local>") {
        return IsLocalName(service.host);
    }
    const std::wstring scheme = ConsumeScheme(entry);
    if (!scheme.empty() && scheme != L"https") {
        return false;
    }
    const ListedHost listed = SplitHostPort(entry);
    return (listed.port.empty() || listed.port == service.port) && MatchesWildcard(listed.host, service.host);
}

} // namespace

bool IsBypassed(const std::wstring& bypassList, const ServiceEndpoint& service)
{
    const std::vector<std::wstring> entries = SplitList(bypassList);
    return std::any_of(entries.begin(), entries.end(), [&service](const std::wstring& entry) {
        return EntryMatches(entry, service);
    });
}

} // namespace product_services_guard
