// Feeds any texts to what decides whether an address is trusted, natively under libFuzzer. Whatever the
// address, a trusted one has the plain look of one of the two in the list.
#include "trusted_hosts.h"

#include <cstdlib>
#include <regex>
#include <string>

using namespace product_services_guard;

static bool HasAPlainLook(const std::wstring& address)
{
    static const std::wregex plain(
        L"https://(example\\.com(:443)?|[a-z0-9.-]+\\.shop\\.example:8443)", std::regex::icase);
    return std::regex_match(address.substr(0, address.find(L'/', 8)), plain);
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const std::wstring text(data, data + size);
    if (IsTrustedAddress(text, L"example.com;*.shop.example:8443") && !HasAPlainLook(text)) {
        std::abort();
    }
    // A list of any form is read to its end, and what is not malformed trusts nothing that is no address.
    if (!FindMalformedEntry(text) && IsTrustedAddress(L"file:///c:/x.exe", text)) {
        std::abort();
    }
    return 0;
}
