#include "windows_address.h"

#include "ascii.h"
#include "plain_address.h"

#include <cstdlib>
#include <string_view>
#include <windows.h>

#include <shlwapi.h>

namespace product_services_guard {
namespace {

// Longer than any host, port or scheme.
constexpr DWORD PartRoom = 300;
using Part = wchar_t[PartRoom];

/// A part of the address, empty where it has none.
std::wstring_view ReadPart(const wchar_t* address, DWORD which, Part& part)
{
    part[0] = L'\0';
    DWORD size = PartRoom;
    return UrlGetPartW(address, part, &size, which, 0) == S_OK ? part : std::wstring_view();
}

} // namespace

bool IsReadAlikeByWindows(const wchar_t* address)
{
    const std::optional<Target> target = ReadPlainAddress(address);
    Part scheme;
    Part host;
    Part port;
    Part user;
    Part password;
    const std::wstring_view digits = ReadPart(address, URL_PART_PORT, port);
    return target && IsSameInAnyCase(ReadPart(address, URL_PART_SCHEME, scheme), L"https") &&
           IsSameInAnyCase(ReadPart(address, URL_PART_HOSTNAME, host), target->host) &&
           (digits.empty() ? 443 : std::wcstoul(port, nullptr, 10)) == target->port &&
           ReadPart(address, URL_PART_USERNAME, user).empty() &&
           ReadPart(address, URL_PART_PASSWORD, password).empty();
}

} // namespace product_services_guard
