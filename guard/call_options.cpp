#include "call_options.h"

#include "trusted_hosts.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>
#include <windows.h>

#include <strsafe.h>

namespace product_services_guard {
namespace {

constexpr std::size_t LongestQuote = 100;

wchar_t sentence[200];

const wchar_t* UnknownOption(std::uint32_t options)
{
    StringCchPrintfW(sentence, std::size(sentence), L"This version knows no such options: 0x%X.", options);
    return sentence;
}

const wchar_t* MalformedEntry(std::wstring_view entry)
{
    const int length = static_cast<int>(std::min(entry.size(), LongestQuote));
    StringCchPrintfW(
        sentence, std::size(sentence), L"trustedHosts has an entry that names no host: \"%.*s\".", length,
        entry.data());
    return sentence;
}

const wchar_t* FindProblem(std::uint32_t options, std::uint32_t known, const wchar_t* trustedHosts)
{
    constexpr std::uint32_t All = PRODUCT_SERVICES_QUIET | PRODUCT_SERVICES_HOST_SCALING;
    if ((options & ~All) != 0) {
        return UnknownOption(options & ~All);
    }
    if ((options & ~known) != 0) {
        return L"PRODUCT_SERVICES_QUIET is for checks: the upgrade center is a window.";
    }
    if (!trustedHosts) {
        return nullptr;
    }
    const std::optional<std::wstring_view> malformed = FindMalformedEntry(trustedHosts);
    return malformed ? MalformedEntry(*malformed) : nullptr;
}

} // namespace

CallOptions ReadOptions(const GuardedCall& call, std::uint32_t known)
{
    if (call.size < sizeof(GuardedCall)) {
        return {};
    }
    CallOptions options;
    options.isQuiet = (call.options & PRODUCT_SERVICES_QUIET) != 0;
    options.hasHostScaling = (call.options & PRODUCT_SERVICES_HOST_SCALING) != 0;
    options.trustedHosts = call.trustedHosts;
    options.problem = FindProblem(call.options, known, call.trustedHosts);
    return options;
}

} // namespace product_services_guard
