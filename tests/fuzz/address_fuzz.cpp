// Feeds any texts to what decides whether an address is trusted, natively under libFuzzer. Whatever the
// address, a trusted one has the plain look of one of the two in the list.
#include "trusted_hosts.h"

#include <cstdlib>
#include <string>

using namespace product_services_guard;

static std::wstring InLowerCase(std::wstring text)
{
    for (wchar_t& c : text) {
        if (c >= L'A' && c <= L'Z') {
            c += 32;
        }
    }
    return text;
}

static bool HasAPlainLook(const std::wstring& address)
{
    const std::wstring text = InLowerCase(address);
    const std::wstring host = text.substr(0, text.find(L'/', 8));
    if (host == L"https://example.com" || host == L"https://example.com:443") {
        return true;
    }
    const std::wstring below = L".shop.example:8443";
    return host.starts_with(L"https://") && host.ends_with(below) && host.size() > 8 + below.size() &&
           host.find_first_not_of(L"abcdefghijklmnopqrstuvwxyz0123456789-.", 8) == host.size() - 5;
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
