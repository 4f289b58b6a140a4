#include "guarded_call.h"

#include "product_services/product_services.hpp"
#include "text.h"
#include "watchdog.h"

#include <windows.h>

namespace product_services_tool {
namespace {

// The time that a call needs in addition to its transfers, such as 750 ms if there is no record.
constexpr std::chrono::seconds Grace{2};

product_services::CallParams ToCallParams(const Options& options)
{
    return {
        .productName = options.product,
        .productVersion = options.version,
        .apiKey = options.apiKey,
        .languageId = options.languageId,
        .trustedHosts = options.trustedHosts.value_or(L""),
        .usesSystemProxy = options.usesSystemProxy,
        .acceptsAnyCertificate = options.acceptsAnyCertificate,
        .timeLimit = std::chrono::seconds(options.timeLimitSeconds)};
}

CallResult ToResult(const product_services::CallResult& result)
{
    return {
        static_cast<ProductServicesOutcome>(result.outcome),
        result.resultCode.value_or(PRODUCT_SERVICES_NO_RESULT), result.text};
}

CallResult Upgrade(const Options& options)
{
    return ToResult(product_services::Upgrade(ToCallParams(options)));
}

int PrintResult(const CallResult& result, const Options& options)
{
    PrintLine(options.printsJson ? ToJson(result) : ToLine(result));
    return IsAnswered(result.outcome) ? 0 : 1;
}

BOOL CALLBACK FindVisibleWindow(HWND window, LPARAM isFound)
{
    if (IsWindowVisible(window)) {
        *reinterpret_cast<bool*>(isFound) = true;
        return FALSE;
    }
    return TRUE;
}

bool HasVisibleWindow(DWORD thread)
{
    bool isFound = false;
    EnumThreadWindows(thread, FindVisibleWindow, reinterpret_cast<LPARAM>(&isFound));
    return isFound;
}

} // namespace

CallResult CheckQuietly(const Options& options)
{
    product_services::CallParams params = ToCallParams(options);
    params.isQuiet = true;
    return ToResult(product_services::CheckForUpdates(params));
}

int RunGuardedCall(const Options& options)
{
    CallResult result;
    {
        const DWORD thread = GetCurrentThreadId();
        const Watchdog watchdog(std::chrono::seconds(options.timeLimitSeconds) + Grace, [&options, thread] {
            // While the upgrade center is open, there is no time limit.
            if (HasVisibleWindow(thread)) {
                return;
            }
            EndProcess(PrintResult(
                {PRODUCT_SERVICES_OUTCOME_TIMED_OUT, PRODUCT_SERVICES_NO_RESULT,
                 L"The time limit was exceeded."},
                options));
        });
        result = options.command == Command::Check ? CheckQuietly(options) : Upgrade(options);
    }
    return PrintResult(result, options);
}

} // namespace product_services_tool
