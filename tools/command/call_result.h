// The result of a guarded call, and how it is printed.
#pragma once

#include "product_services/guarded_calls.h"

#include <cstdint>
#include <string>

namespace product_services_tool {

struct CallResult
{
    ProductServicesOutcome outcome = PRODUCT_SERVICES_OUTCOME_FAILED;
    /// The library's result code, or PRODUCT_SERVICES_NO_RESULT.
    std::uint32_t code = PRODUCT_SERVICES_NO_RESULT;
    std::wstring text = {};
};

/// Returns the outcome's name without its prefix, such as "NEWER_RELEASE".
std::wstring ToString(ProductServicesOutcome outcome);

/// Returns true if the service was queried and has answered.
bool IsAnswered(ProductServicesOutcome outcome);

/// Returns a line such as "NEWER_RELEASE: https://example.com/setup.exe".
std::wstring ToLine(const CallResult& result);

/// Returns JSON such as {"outcome":"NEWER_RELEASE","code":200,"text":"https://example.com/setup.exe"}. The
/// code is null if there is none.
std::wstring ToJson(const CallResult& result);

} // namespace product_services_tool
