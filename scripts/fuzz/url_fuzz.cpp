// Feeds any texts to what decides whether a URL is trusted, natively under libFuzzer. Whatever the URL, a
// trusted one is plainly of one of the two hosts in the list.
#include "url/trusted_hosts.h"

#include <cstdlib>
#include <regex>
#include <string>

using namespace product_services_guard;

static bool IsPlainlyOfAHost(const std::wstring& url)
{
    static const std::wregex plain(
        L"https://(example\\.com(:443)?|[a-z0-9.-]+\\.shop\\.example:8443)", std::regex::icase);
    return std::regex_match(url.substr(0, url.find(L'/', 8)), plain);
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const std::wstring text(data, data + size);
    if (MatchesTrustedHosts(text, L"example.com;*.shop.example:8443") && !IsPlainlyOfAHost(text)) {
        std::abort();
    }
    // Any list is read to its end, and no valid list trusts a text that is no https URL.
    if (!FindInvalidEntry(text) && MatchesTrustedHosts(L"file:///c:/x.exe", text)) {
        std::abort();
    }
    return 0;
}
