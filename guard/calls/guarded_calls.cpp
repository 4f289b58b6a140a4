#include "host/host_call_scope.h"

#include "product_services/guarded_calls.h"

#include "calls/call_lock.h"
#include "calls/call_outcome.h"
#include "calls/call_params.h"
#include "calls/dpi_awareness_scope.h"
#include "calls/guarded_environment.h"
#include "calls/start_check_delay.h"
#include "policy/policy.h"
#include "update/update_check.h"
#include "upgrade/upgrade_center.h"

#include <exception>
#include <new>

namespace product_services_guard {
namespace {

std::uint32_t AllowedOptions(GuardedFunction function)
{
    const std::uint32_t forBoth = PRODUCT_SERVICES_OPTION_HOST_DPI_AWARENESS |
                                  PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE |
                                  PRODUCT_SERVICES_OPTION_SYSTEM_PROXY;
    return function == GuardedFunction::CheckForUpdates ? forBoth | PRODUCT_SERVICES_OPTION_QUIET : forBoth;
}

HostContext MakeHostContext(const GuardedCallParams& params)
{
    HostContext context{};
    context.productName = params.productName;
    context.productVersion = params.productVersion;
    context.apiKey = params.apiKey;
    context.languageId = params.languageId;
    return context;
}

void CallLibrary(HostContext& context, GuardedEnvironment& environment, GuardedFunction function)
{
    product_services::HostCallScope call(&context, environment);
    if (function == GuardedFunction::CheckForUpdates) {
        product_services::RunUpdateCheck(call);
    } else {
        product_services::RunUpgradeCenter(call);
    }
}

CallOutcome CallGuarded(const GuardedCallParams& params, GuardedFunction function)
{
    HostContext context = MakeHostContext(params);
    GuardedEnvironment environment(params);
    // The message boxes of a check keep the host's DPI awareness.
    const bool usesHostDpiAwareness = (params.options & PRODUCT_SERVICES_OPTION_HOST_DPI_AWARENESS) != 0;
    const ScopedDpiUnaware dpiUnaware(function == GuardedFunction::Upgrade && !usesHostDpiAwareness);
    try {
        CallLibrary(context, environment, function);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        return TranslateException(environment.Events(), function, error.what());
    } catch (...) {
        return {PRODUCT_SERVICES_OUTCOME_FAILED, L"The call failed with an unknown exception."};
    }
    return DetermineOutcome(environment.Events(), function, params.trustedHosts);
}

CallOutcome ValidateAndCall(const GuardedCallParams& params, GuardedFunction function)
{
    const CallLock lock;
    if (!lock.OwnsLock()) {
        return {PRODUCT_SERVICES_OUTCOME_BUSY, L"Another call is already in progress."};
    }
    const std::wstring error = FindInvalidParameter(params, AllowedOptions(function));
    if (!error.empty()) {
        return {PRODUCT_SERVICES_OUTCOME_INVALID_PARAMETER, error};
    }
    if (params.cancelFlag && *params.cancelFlag != 0) {
        return {PRODUCT_SERVICES_OUTCOME_CANCELLED, L"The call was cancelled."};
    }
    const bool isCheck = function == GuardedFunction::CheckForUpdates;
    if (IsDisabledByPolicy(
            isCheck ? PRODUCT_SERVICES_DISABLED_CHECK_FOR_UPDATES : PRODUCT_SERVICES_DISABLED_UPGRADE)) {
        return {
            PRODUCT_SERVICES_OUTCOME_DISABLED_BY_POLICY,
            isCheck ? L"An administrator has disabled update checks."
                    : L"An administrator has disabled the upgrade center."};
    }
    return CallGuarded(params, function);
}

ProductServicesOutcome MakeGuardedCall(GuardedCallParams* hostParams, GuardedFunction function)
{
    if (!hostParams || hostParams->size < sizeof hostParams->size) {
        return PRODUCT_SERVICES_OUTCOME_INVALID_PARAMETER;
    }
    try {
        const CallOutcome outcome = ValidateAndCall(ReadParams(*hostParams), function);
        WriteOutcome(*hostParams, outcome.resultCode, outcome.text);
        return outcome.outcome;
    } catch (const std::bad_alloc&) {
        WriteOutcome(*hostParams, PRODUCT_SERVICES_NO_RESULT, L"Out of memory.");
        return PRODUCT_SERVICES_OUTCOME_FAILED;
    }
}

} // namespace
} // namespace product_services_guard

using namespace product_services_guard;

ProductServicesOutcome PRODUCT_SERVICES_CALL GuardedCheckForUpdates(GuardedCallParams* params)
{
    return MakeGuardedCall(params, GuardedFunction::CheckForUpdates);
}

ProductServicesOutcome PRODUCT_SERVICES_CALL GuardedUpgrade(GuardedCallParams* params)
{
    return MakeGuardedCall(params, GuardedFunction::Upgrade);
}

std::uint32_t PRODUCT_SERVICES_CALL GetDisabledCalls()
{
    std::uint32_t disabled = 0;
    for (const auto call : {PRODUCT_SERVICES_DISABLED_CHECK_FOR_UPDATES, PRODUCT_SERVICES_DISABLED_UPGRADE}) {
        disabled |= IsDisabledByPolicy(call) ? std::uint32_t{call} : 0;
    }
    return disabled;
}

std::uint32_t PRODUCT_SERVICES_CALL GetStartCheckDelay()
{
    return ComputeStartCheckDelayMs();
}
