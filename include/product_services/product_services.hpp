/// @file
/// The guarded calls for C++20 and later. This wrapper consists of this header only and calls the DLL through
/// the C interface of guarded_calls.h, so it works with any compiler.
///
/// @since 1.0
#ifndef PRODUCT_SERVICES_PRODUCT_SERVICES_HPP
#define PRODUCT_SERVICES_PRODUCT_SERVICES_HPP

#include "product_services/guarded_calls.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <version>

#ifdef __cpp_lib_jthread
#include <condition_variable>
#include <mutex>
#include <stop_token>
#endif

/// The guarded calls in C++.
namespace product_services {

/// The same as ProductServicesOutcome. A newer DLL may return other values; treat them like Failed.
enum class Outcome : std::uint32_t
{
    Failed = PRODUCT_SERVICES_OUTCOME_FAILED,                     ///< ..._OUTCOME_FAILED.
    NewerRelease = PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE,        ///< ..._OUTCOME_NEWER_RELEASE.
    UpToDate = PRODUCT_SERVICES_OUTCOME_UP_TO_DATE,               ///< ..._OUTCOME_UP_TO_DATE.
    BrowserOpened = PRODUCT_SERVICES_OUTCOME_BROWSER_OPENED,      ///< ..._OUTCOME_BROWSER_OPENED.
    UserQuit = PRODUCT_SERVICES_OUTCOME_USER_QUIT,                ///< ..._OUTCOME_USER_QUIT.
    NoProductRecord = PRODUCT_SERVICES_OUTCOME_NO_PRODUCT_RECORD, ///< ..._OUTCOME_NO_PRODUCT_RECORD.
    NothingSent = PRODUCT_SERVICES_OUTCOME_NOTHING_SENT,          ///< ..._OUTCOME_NOTHING_SENT.
    Refused = PRODUCT_SERVICES_OUTCOME_REFUSED,                   ///< ..._OUTCOME_REFUSED.
    OtherStatus = PRODUCT_SERVICES_OUTCOME_OTHER_STATUS,          ///< ..._OUTCOME_OTHER_STATUS.
    Unreachable = PRODUCT_SERVICES_OUTCOME_UNREACHABLE,           ///< ..._OUTCOME_UNREACHABLE.
    TimedOut = PRODUCT_SERVICES_OUTCOME_TIMED_OUT,                ///< ..._OUTCOME_TIMED_OUT.
    Cancelled = PRODUCT_SERVICES_OUTCOME_CANCELLED,               ///< ..._OUTCOME_CANCELLED.
    UntrustedCertificate =
        PRODUCT_SERVICES_OUTCOME_UNTRUSTED_CERTIFICATE,            ///< ..._OUTCOME_UNTRUSTED_CERTIFICATE.
    UntrustedAddress = PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS, ///< ..._OUTCOME_UNTRUSTED_ADDRESS.
    InvalidReply = PRODUCT_SERVICES_OUTCOME_INVALID_REPLY,         ///< ..._OUTCOME_INVALID_REPLY.
    Busy = PRODUCT_SERVICES_OUTCOME_BUSY,                          ///< ..._OUTCOME_BUSY.
    InvalidParameter = PRODUCT_SERVICES_OUTCOME_INVALID_PARAMETER, ///< ..._OUTCOME_INVALID_PARAMETER.
    DisabledByPolicy = PRODUCT_SERVICES_OUTCOME_DISABLED_BY_POLICY ///< ..._OUTCOME_DISABLED_BY_POLICY.
};

/// The parameters of a call.
struct CallParams
{
    /// GuardedCallParams::productName.
    std::wstring productName = {};
    /// GuardedCallParams::productVersion.
    std::wstring productVersion = {};
    /// GuardedCallParams::apiKey.
    std::wstring apiKey = {};
    /// A ProductServicesLanguage.
    std::int32_t languageId = 0;
    /// GuardedCallParams::trustedHosts. Empty for any host.
    std::wstring trustedHosts = {};
    /// PRODUCT_SERVICES_OPTION_QUIET.
    bool isQuiet = false;
    /// PRODUCT_SERVICES_OPTION_SYSTEM_PROXY.
    bool usesSystemProxy = false;
    /// PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE.
    bool acceptsAnyCertificate = false;
    /// PRODUCT_SERVICES_OPTION_HOST_DPI_AWARENESS.
    bool usesHostDpiAwareness = false;
    /// GuardedCallParams::timeLimitMs. If it is not set, the DLL's default of 30 seconds.
    std::optional<std::chrono::milliseconds> timeLimit = std::nullopt;
#ifdef __cpp_lib_jthread
    /// Ends the transfers of the call when a stop is requested, as GuardedCallParams::cancelFlag does.
    std::stop_token stopToken = {};
#endif
};

/// For CallParams::timeLimit: no limit.
inline constexpr std::chrono::milliseconds NoTimeLimit = (std::chrono::milliseconds::max)();

/// The result of a call.
struct [[nodiscard]] CallResult
{
    /// How the call ended.
    Outcome outcome = Outcome::Failed;
    /// The text that ProductServicesOutcome describes. With NewerRelease, it is the download URL.
    std::wstring text;
    /// The ProductServicesResultCode that the call reported, if any.
    std::optional<std::uint32_t> resultCode;
    /// Whether the text was longer than 65,535 characters and was truncated.
    bool isTextTruncated = false;
};

/// The result of VerifyPublisher or StartVerifiedFile.
struct [[nodiscard]] PublisherResult
{
    /// Start the file only if this is PRODUCT_SERVICES_PUBLISHER_TRUSTED.
    ProductServicesPublisherResult status = PRODUCT_SERVICES_PUBLISHER_FILE_ERROR;
    /// A sentence that describes the result.
    std::wstring text;
};

namespace detail {

constexpr std::uint32_t TextCapacity = 0x10000;

// A limit that is too large or not positive becomes the nearest valid one.
inline std::uint32_t ToTimeLimitMs(const std::optional<std::chrono::milliseconds>& limit)
{
    if (!limit) {
        return 0;
    }
    if (*limit == NoTimeLimit) {
        return PRODUCT_SERVICES_NO_TIME_LIMIT;
    }
    return static_cast<std::uint32_t>(
        std::clamp<std::chrono::milliseconds::rep>(limit->count(), 1, PRODUCT_SERVICES_NO_TIME_LIMIT - 1));
}

inline std::uint32_t ToOptions(const CallParams& params)
{
    std::uint32_t options = 0;
    options |= params.isQuiet ? std::uint32_t{PRODUCT_SERVICES_OPTION_QUIET} : 0;
    options |= params.usesSystemProxy ? std::uint32_t{PRODUCT_SERVICES_OPTION_SYSTEM_PROXY} : 0;
    options |= params.acceptsAnyCertificate ? std::uint32_t{PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE} : 0;
    options |= params.usesHostDpiAwareness ? std::uint32_t{PRODUCT_SERVICES_OPTION_HOST_DPI_AWARENESS} : 0;
    return options;
}

inline CallResult Call(decltype(&GuardedUpgrade) function, const CallParams& params)
{
    std::atomic<std::uint32_t> isCancelled = 0;
    static_assert(sizeof isCancelled == sizeof(std::uint32_t));
#ifdef __cpp_lib_jthread
    const std::stop_callback cancel(params.stopToken, [&isCancelled] { isCancelled = 1; });
#endif
    // Unlike a vector, this does not set the memory to zero.
    const std::unique_ptr<wchar_t[]> text(new wchar_t[TextCapacity]);
    text[0] = L'\0';
    GuardedCallParams call{};
    call.size = sizeof call;
    call.languageId = params.languageId;
    call.productName = params.productName.c_str();
    call.productVersion = params.productVersion.c_str();
    call.apiKey = params.apiKey.c_str();
    call.trustedHosts = params.trustedHosts.empty() ? nullptr : params.trustedHosts.c_str();
    call.options = ToOptions(params);
    call.timeLimitMs = ToTimeLimitMs(params.timeLimit);
    call.cancelFlag = reinterpret_cast<const volatile std::uint32_t*>(&isCancelled);
    call.resultText = text.get();
    call.resultTextCapacity = TextCapacity;
    call.resultCode = PRODUCT_SERVICES_NO_RESULT;

    CallResult result;
    result.outcome = static_cast<Outcome>(function(&call));
    result.text = text.get();
    result.isTextTruncated = call.isTextTruncated != 0;
    if (call.resultCode != PRODUCT_SERVICES_NO_RESULT) {
        result.resultCode = call.resultCode;
    }
    return result;
}

} // namespace detail

/// Asks the service whether a newer release exists.
[[nodiscard]] inline CallResult CheckForUpdates(const CallParams& params)
{
    return detail::Call(&GuardedCheckForUpdates, params);
}

/// Shows the upgrade center.
[[nodiscard]] inline CallResult Upgrade(const CallParams& params)
{
    return detail::Call(&GuardedUpgrade, params);
}

/// Returns true if an administrator has disabled update checks. Do not show a command for them then.
[[nodiscard]] inline bool IsUpdateCheckDisabled()
{
    return (GetDisabledCalls() & PRODUCT_SERVICES_DISABLED_CHECK_FOR_UPDATES) != 0;
}

/// Returns true if an administrator has disabled the upgrade center. Do not show a command for it then.
[[nodiscard]] inline bool IsUpgradeCenterDisabled()
{
    return (GetDisabledCalls() & PRODUCT_SERVICES_DISABLED_UPGRADE) != 0;
}

#ifdef __cpp_lib_jthread
/// Waits for the time that GetStartCheckDelay returns; call it on a worker thread. Returns false at once if a
/// stop is requested. Do not make a check then.
[[nodiscard]] inline bool WaitForStartCheck(const std::stop_token& stopToken)
{
    std::mutex mutex;
    std::unique_lock lock(mutex);
    const std::chrono::milliseconds delay(GetStartCheckDelay());
    std::condition_variable_any().wait_for(lock, stopToken, delay, [] { return false; });
    return !stopToken.stop_requested();
}
#endif

/// Verifies that a downloaded file is signed by one of the publishers, as ::VerifyPublisher does.
/// `publishers` has one name in each line.
[[nodiscard]] inline PublisherResult VerifyPublisher(const std::wstring& path, const std::wstring& publishers)
{
    wchar_t text[1024] = L"";
    const auto status = ::VerifyPublisher(path.c_str(), publishers.c_str(), text, 1024);
    return {status, text};
}

/// Verifies a downloaded file and starts it if it is trusted, as ::StartVerifiedFile does.
[[nodiscard]] inline PublisherResult StartVerifiedFile(
    const std::wstring& path, const std::wstring& publishers, const std::wstring& arguments = {})
{
    wchar_t text[1024] = L"";
    const auto status = ::StartVerifiedFile(path.c_str(), publishers.c_str(), arguments.c_str(), text, 1024);
    return {status, text};
}

} // namespace product_services

#endif
