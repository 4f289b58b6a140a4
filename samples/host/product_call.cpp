#include "product_call.h"

#include <exception>

namespace {

// The library copies without a bound: room for any message and for the longest address of a service.
wchar_t resultText[0x10000];

// No call of the library reports this; it shows that a call has reported nothing.
constexpr std::uint32_t NothingReported = 0xFFFFFFFF;

} // namespace

std::wstring CallAndDescribe(ProductCall call, HostContext& context)
{
    context.resultCode = NothingReported;
    context.resultText = resultText;
    try {
        call(&context);
    } catch (const std::exception& error) {
        const std::string what = error.what();
        return L"the call ended with an error: " + std::wstring(what.begin(), what.end());
    }
    switch (context.resultCode) {
    case NothingReported:
        return L"nothing was reported";
    case PRODUCT_SERVICES_SUCCESS:
        return std::wstring(L"200: a newer release is at ") + resultText;
    default:
        return std::to_wstring(context.resultCode) + L": " + resultText;
    }
}
