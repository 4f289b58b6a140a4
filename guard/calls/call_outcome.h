// The outcome of a guarded call.
#pragma once

#include "calls/guarded_environment.h"
#include "product_services/guarded_calls.h"

#include <cstdint>
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

/// Returns the outcome of a call that has returned.
CallOutcome DetermineOutcome(const CallEvents& events, GuardedFunction function, const wchar_t* trustedHosts);

/// Returns the outcome of a call that has thrown an exception; `what` is the exception's text.
CallOutcome TranslateException(const CallEvents& events, GuardedFunction function, const char* what);

} // namespace product_services_guard
