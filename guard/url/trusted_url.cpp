#include "url/trusted_url.h"

#include "url/ascii.h"
#include "url/strict_url.h"
#include "url/trusted_hosts.h"

#include <cstdlib>
#include <windows.h>

#include <shlwapi.h>

namespace product_services_guard {
namespace {

// Longer than any host, port or scheme.
constexpr DWORD UrlPartCapacity = 300;

// Returns a part of the URL, or an empty text if it has no such part.
std::wstring GetUrlPart(const std::wstring& url, DWORD part)
{
    wchar_t text[UrlPartCapacity] = L"";
    DWORD size = UrlPartCapacity;
    return UrlGetPartW(url.c_str(), text, &size, part, 0) == S_OK ? text : std::wstring();
}

} // namespace

bool WindowsParsesIdentically(const std::wstring& url)
{
    const std::optional<HostPort> parsed = ParseStrictHttpsUrl(url);
    if (!parsed || !EqualsIgnoreAsciiCase(GetUrlPart(url, URL_PART_SCHEME), L"https") ||
        !EqualsIgnoreAsciiCase(GetUrlPart(url, URL_PART_HOSTNAME), parsed->host)) {
        return false;
    }
    const std::wstring port = GetUrlPart(url, URL_PART_PORT);
    return (port.empty() ? DefaultHttpsPort : std::wcstoul(port.c_str(), nullptr, 10)) == parsed->port &&
           GetUrlPart(url, URL_PART_USERNAME).empty() && GetUrlPart(url, URL_PART_PASSWORD).empty();
}

bool IsTrustedUrl(const std::wstring& url, const wchar_t* trustedHosts)
{
    return WindowsParsesIdentically(url) && (!trustedHosts || MatchesTrustedHosts(url, trustedHosts));
}

} // namespace product_services_guard
