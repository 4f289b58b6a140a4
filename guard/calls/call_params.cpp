#include "calls/call_params.h"

#include "calls/text_copy.h"
#include "url/trusted_hosts.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <optional>

namespace product_services_guard {
namespace {

constexpr std::uint32_t AllOptions =
    PRODUCT_SERVICES_OPTION_QUIET | PRODUCT_SERVICES_OPTION_HOST_DPI_AWARENESS |
    PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE | PRODUCT_SERVICES_OPTION_SYSTEM_PROXY;

constexpr std::size_t MaxQuotedLength = 100;

template <typename Member>
constexpr std::size_t GetEnd(std::size_t offset)
{
    return offset + sizeof(Member);
}

#define MEMBER_END(member) GetEnd<decltype(GuardedCallParams::member)>(offsetof(GuardedCallParams, member))

constexpr std::array MemberEnds{
    MEMBER_END(size),
    MEMBER_END(languageId),
    MEMBER_END(productName),
    MEMBER_END(productVersion),
    MEMBER_END(apiKey),
    MEMBER_END(trustedHosts),
    MEMBER_END(options),
    MEMBER_END(timeLimitMs),
    MEMBER_END(cancelFlag),
    MEMBER_END(resultText),
    MEMBER_END(resultTextCapacity),
    MEMBER_END(resultCode),
    MEMBER_END(isTextTruncated),
    MEMBER_END(reserved)};
static_assert(MemberEnds.back() == sizeof(GuardedCallParams), "no padding, and no member is missing");

std::size_t RoundDownToMemberEnd(std::uint32_t size)
{
    std::size_t rounded = 0;
    for (const std::size_t end : MemberEnds) {
        if (end <= size) {
            rounded = end;
        }
    }
    return rounded;
}

std::wstring UnknownOptionsText(std::uint32_t options)
{
    wchar_t text[60];
    std::swprintf(text, std::size(text), L"Unknown option flags: 0x%X.", options);
    return text;
}

} // namespace

GuardedCallParams ReadParams(const GuardedCallParams& hostParams)
{
    GuardedCallParams params{};
    std::memcpy(&params, &hostParams, RoundDownToMemberEnd(hostParams.size));
    return params;
}

std::wstring FindInvalidParameter(const GuardedCallParams& params, std::uint32_t allowedOptions)
{
    if ((params.options & ~AllOptions) != 0) {
        return UnknownOptionsText(params.options & ~AllOptions);
    }
    if ((params.options & ~allowedOptions) != 0) {
        return L"PRODUCT_SERVICES_OPTION_QUIET cannot be used with GuardedUpgrade.";
    }
    if (params.trustedHosts) {
        if (const std::optional<std::wstring_view> entry = FindInvalidEntry(params.trustedHosts)) {
            return L"trustedHosts contains an invalid entry: \"" +
                   std::wstring(entry->substr(0, MaxQuotedLength)) + L"\".";
        }
    }
    return {};
}

void WriteOutcome(GuardedCallParams& hostParams, std::uint32_t resultCode, std::wstring_view text)
{
    const GuardedCallParams params = ReadParams(hostParams);
    const bool isTruncated = CopyTruncated(params.resultText, params.resultTextCapacity, text);
    if (hostParams.size >= MEMBER_END(resultCode)) {
        hostParams.resultCode = resultCode;
    }
    if (hostParams.size >= MEMBER_END(isTextTruncated)) {
        hostParams.isTextTruncated = isTruncated ? 1 : 0;
    }
}

} // namespace product_services_guard
