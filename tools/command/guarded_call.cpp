#include "guarded_call.h"

#include "text.h"
#include "watchdog.h"

#include <windows.h>

namespace product_services_tool {
namespace {

// Longer than any text that a service sends for users to read.
constexpr std::size_t TextCapacity = 65536;

// What a call takes besides its transfers, such as 750 ms without a record.
constexpr std::chrono::seconds Grace{2};

using GuardedFunction = decltype(&GuardedCheckForUpdates);

CallResult Call(GuardedFunction function, const Options& options, std::uint32_t flags)
{
    std::wstring text(TextCapacity, L'\0');
    GuardedCallParams params{};
    params.size = sizeof params;
    params.languageId = options.languageId;
    params.productName = options.product.c_str();
    params.productVersion = options.version.c_str();
    params.apiKey = options.apiKey.c_str();
    params.trustedHosts = options.trustedHosts ? options.trustedHosts->c_str() : nullptr;
    params.options = flags;
    if (options.acceptsAnyCertificate) {
        params.options |= PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE;
    }
    if (options.usesSystemProxy) {
        params.options |= PRODUCT_SERVICES_OPTION_SYSTEM_PROXY;
    }
    params.timeLimitMs = options.timeLimitSeconds * 1000;
    params.resultText = text.data();
    params.resultTextCapacity = static_cast<std::uint32_t>(text.size());
    const ProductServicesOutcome outcome = function(&params);
    text.resize(text.find(L'\0'));
    return {outcome, params.resultCode, text};
}

int Print(const CallResult& result, const Options& options)
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
    return Call(GuardedCheckForUpdates, options, PRODUCT_SERVICES_OPTION_QUIET);
}

int RunGuardedCall(const Options& options)
{
    CallResult result;
    {
        const DWORD thread = GetCurrentThreadId();
        const Watchdog watchdog(std::chrono::seconds(options.timeLimitSeconds) + Grace, [&options, thread] {
            // The upgrade center is open, and the user has all the time.
            if (HasVisibleWindow(thread)) {
                return;
            }
            EndProcess(Print(
                {PRODUCT_SERVICES_OUTCOME_TIMED_OUT, PRODUCT_SERVICES_NO_RESULT,
                 L"The time limit was exceeded."},
                options));
        });
        result = options.command == Command::Check ? CheckQuietly(options) : Call(GuardedUpgrade, options, 0);
    }
    return Print(result, options);
}

} // namespace product_services_tool
