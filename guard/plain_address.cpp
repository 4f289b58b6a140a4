#include "plain_address.h"

#include "ascii.h"

#include <algorithm>

namespace product_services_guard {
namespace {

constexpr std::wstring_view Scheme = L"https://";
constexpr unsigned HttpsPort = 443;
constexpr unsigned HighestPort = 65535;

// Windows' readers take no more.
constexpr std::size_t LongestAddress = 2083;
// As names in the DNS.
constexpr std::size_t LongestHost = 253;
constexpr std::size_t LongestLabel = 63;

bool IsDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

bool IsLetter(wchar_t c)
{
    return LowerAscii(c) >= L'a' && LowerAscii(c) <= L'z';
}

bool IsNameCharacter(wchar_t c)
{
    return IsLetter(c) || IsDigit(c) || c == L'-';
}

// What an address may hold by its standard, written out; a backslash and a quotation mark are not among them.
bool IsAddressCharacter(wchar_t c)
{
    return IsLetter(c) || IsDigit(c) ||
           std::wstring_view(L"-._~:/?#[]@!$&'()*+,;=%").find(c) != std::wstring_view::npos;
}

bool IsLabel(std::wstring_view label)
{
    return !label.empty() && label.size() <= LongestLabel && label.front() != L'-' && label.back() != L'-' &&
           std::all_of(label.begin(), label.end(), IsNameCharacter);
}

// Some readers take a host that ends so for an address of IPv4: "1.2.3.4", "0x7f000001", "127.1".
bool IsNumber(std::wstring_view label)
{
    const bool isHexadecimal = label.size() >= 2 && label[0] == L'0' && LowerAscii(label[1]) == L'x';
    return isHexadecimal || std::all_of(label.begin(), label.end(), IsDigit);
}

bool IsHost(std::wstring_view host)
{
    if (host.size() > LongestHost) {
        return false;
    }
    for (std::size_t dot = 0; (dot = host.find(L'.')) != host.npos; host.remove_prefix(dot + 1)) {
        if (!IsLabel(host.substr(0, dot))) {
            return false;
        }
    }
    return IsLabel(host) && !IsNumber(host);
}

// 0 for what is no port: too large, or with a zero in front.
unsigned ReadPort(std::wstring_view digits)
{
    if (digits.empty() || digits.size() > 5 || digits.front() == L'0' ||
        !std::all_of(digits.begin(), digits.end(), IsDigit)) {
        return 0;
    }
    unsigned port = 0;
    for (const wchar_t digit : digits) {
        port = port * 10 + static_cast<unsigned>(digit - L'0');
    }
    return port <= HighestPort ? port : 0;
}

} // namespace

std::optional<Target> ReadTarget(std::wstring_view text)
{
    const std::size_t colon = text.find(L':');
    const Target target{
        text.substr(0, colon), colon == text.npos ? HttpsPort : ReadPort(text.substr(colon + 1))};
    return IsHost(target.host) && target.port != 0 ? std::optional(target) : std::nullopt;
}

std::optional<Target> ReadPlainAddress(std::wstring_view address)
{
    if (address.size() > LongestAddress || !IsSameInAnyCase(address.substr(0, Scheme.size()), Scheme) ||
        !std::all_of(address.begin(), address.end(), IsAddressCharacter)) {
        return std::nullopt;
    }
    const std::wstring_view rest = address.substr(Scheme.size());
    return ReadTarget(rest.substr(0, rest.find(L'/')));
}

} // namespace product_services_guard
