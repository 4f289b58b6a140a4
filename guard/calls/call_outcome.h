// What became of a guarded call.
#pragma once

#include "calls/guarded_environment.h"
#include "product_services/guarded_calls.h"

#include <string>

namespace product_services_guard {

/// The two guarded calls.
enum class GuardedFunction
{
    CheckForUpdates,
    Upgrade
};

struct CallOutcome
{
    ProductServicesOutcome outcome = PRODUCT_SERVICES_OUTCOME_FAILED;
    std::wstring text = {};
    std::uint32_t resultCode = PRODUCT_SERVICES_NO_RESULT;
};

/// The outcome of a call that returned.
CallOutcome DetermineOutcome(const CallEvents& events, GuardedFunction function, const wchar_t* trustedHosts);

/// The outcome of a call that an exception left; `error` is the exception's text.
CallOutcome DetermineOutcomeOfException(
    const CallEvents& events, GuardedFunction function, const char* error);

} // namespace product_services_guard
