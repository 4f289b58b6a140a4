#include "product_call.h"

#include <product_services/product_services.h>

#include <exception>
#include <vector>

namespace {

// The library copies without a bound: room for any message and for the longest address that a service may
// send.
constexpr std::size_t ResultCapacity = 0x10000;

// No call of the library reports this; it shows that a call has reported nothing.
constexpr std::uint32_t NothingReported = 0xFFFFFFFF;

std::wstring Widen(const char* text)
{
    return {text, text + std::char_traits<char>::length(text)};
}

std::wstring Describe(std::uint32_t code, const std::wstring& text)
{
    if (code == NothingReported) {
        return L"nothing was reported";
    }
    if (code == PRODUCT_SERVICES_SUCCESS) {
        return L"200: a newer release is at " + text;
    }
    return std::to_wstring(code) + L": " + text;
}

} // namespace

std::wstring CallAndDescribe(ProductCall call, const Options& options)
{
    std::vector<wchar_t> text(ResultCapacity);

    HostContext context{};
    context.productName = options.productName.c_str();
    context.productVersion = options.productVersion.c_str();
    context.apiKey = options.apiKey.c_str();
    context.languageId = options.languageId;
    context.resultCode = NothingReported;
    context.resultText = text.data();

    try {
        call == ProductCall::CheckForUpdates ? CheckForUpdates(&context) : Upgrade(&context);
    } catch (const std::exception& error) {
        return L"the call ended with an error: " + Widen(error.what());
    }
    return Describe(context.resultCode, text.data());
}
