#include "url/strict_url.h"

#include "url/ascii.h"

#include <algorithm>

namespace product_services_guard {
namespace {

constexpr std::wstring_view Scheme = L"https://";
constexpr unsigned MaxPort = 65535;

// The limit of Windows' own parsers.
constexpr std::size_t MaxUrlLength = 2083;
// The limits of the DNS.
constexpr std::size_t MaxHostLength = 253;
constexpr std::size_t MaxLabelLength = 63;

bool IsDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

bool IsLetter(wchar_t c)
{
    return ToLowerAscii(c) >= L'a' && ToLowerAscii(c) <= L'z';
}

bool IsHostnameCharacter(wchar_t c)
{
    return IsLetter(c) || IsDigit(c) || c == L'-';
}

// The characters of RFC 3986, which do not include the backslash and the quotation mark.
bool IsUriCharacter(wchar_t c)
{
    return IsLetter(c) || IsDigit(c) ||
           std::wstring_view(L"-._~:/?#[]@!$&'()*+,;=%").find(c) != std::wstring_view::npos;
}

bool IsDnsLabel(std::wstring_view label)
{
    return !label.empty() && label.size() <= MaxLabelLength && label.front() != L'-' &&
           label.back() != L'-' && std::all_of(label.begin(), label.end(), IsHostnameCharacter);
}

// Some URL parsers treat a host whose last label is a number as an IPv4 address: "1.2.3.4", "0x7f000001",
// "127.1".
bool LooksLikeIpv4Part(std::wstring_view label)
{
    const bool isHexadecimal = label.size() >= 2 && label[0] == L'0' && ToLowerAscii(label[1]) == L'x';
    return isHexadecimal || std::all_of(label.begin(), label.end(), IsDigit);
}

bool IsDnsName(std::wstring_view host)
{
    if (host.size() > MaxHostLength) {
        return false;
    }
    std::size_t dot = host.find(L'.');
    while (dot != host.npos) {
        if (!IsDnsLabel(host.substr(0, dot))) {
            return false;
        }
        host.remove_prefix(dot + 1);
        dot = host.find(L'.');
    }
    return IsDnsLabel(host) && !LooksLikeIpv4Part(host);
}

// Returns 0 if it is not a valid port: too large, or with a leading zero.
unsigned ParsePort(std::wstring_view digits)
{
    if (digits.empty() || digits.size() > 5 || digits.front() == L'0' ||
        !std::all_of(digits.begin(), digits.end(), IsDigit)) {
        return 0;
    }
    unsigned port = 0;
    for (const wchar_t digit : digits) {
        port = port * 10 + static_cast<unsigned>(digit - L'0');
    }
    return port <= MaxPort ? port : 0;
}

} // namespace

std::optional<HostPort> ParseHostPort(std::wstring_view text)
{
    const std::size_t colon = text.find(L':');
    const unsigned port = colon == text.npos ? DefaultHttpsPort : ParsePort(text.substr(colon + 1));
    const std::wstring_view host = text.substr(0, colon);
    if (!IsDnsName(host) || port == 0) {
        return std::nullopt;
    }
    return HostPort{host, port};
}

std::optional<HostPort> ParseStrictHttpsUrl(std::wstring_view url)
{
    if (url.size() > MaxUrlLength || !EqualsIgnoreAsciiCase(url.substr(0, Scheme.size()), Scheme) ||
        !std::all_of(url.begin(), url.end(), IsUriCharacter)) {
        return std::nullopt;
    }
    const std::wstring_view rest = url.substr(Scheme.size());
    return ParseHostPort(rest.substr(0, rest.find(L'/')));
}

} // namespace product_services_guard
