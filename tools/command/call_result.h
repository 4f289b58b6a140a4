// What came of a guarded call, as it is printed.
#pragma once

#include "product_services/guarded_calls.h"

#include <string>

namespace product_services_tool {

struct CallResult
{
    ProductServicesOutcome outcome = PRODUCT_SERVICES_OUTCOME_FAILED;
    /// Of the library, or PRODUCT_SERVICES_NO_RESULT.
    std::uint32_t code = PRODUCT_SERVICES_NO_RESULT;
    std::wstring text = {};
};

/// The outcome's name without its prefix, such as "NEWER_RELEASE".
std::wstring ToString(ProductServicesOutcome outcome);

/// Whether the service was asked and has answered.
bool IsAnswered(ProductServicesOutcome outcome);

/// "NEWER_RELEASE: https://example.com/setup.exe"
std::wstring ToLine(const CallResult& result);

/// {"outcome":"NEWER_RELEASE","code":200,"text":"https://example.com/setup.exe"}, with null for no code.
std::wstring ToJson(const CallResult& result);

} // namespace product_services_tool
