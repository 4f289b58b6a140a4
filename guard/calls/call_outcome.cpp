#include "calls/call_outcome.h"

#include "calls/text_copy.h"
#include "service/service_reply.h"
#include "text/text_ids.h"
#include "url/trusted_url.h"

#include <optional>

namespace product_services_guard {
namespace {

using product_services::ServiceReply;

// The upgrade center probes the service first.
bool IsQuerySent(const CallEvents& events, GuardedFunction function)
{
    return events.transferCount == (function == GuardedFunction::CheckForUpdates ? 1 : 2);
}

// A failed transfer explains whatever the library reported after it, except a missing record, which does not
// depend on the transfer.
std::optional<CallOutcome> FindTransferError(const CallEvents& events)
{
    if (events.transferResult == CURLE_OK) {
        return std::nullopt;
    }
    if (events.isCancelled) {
        return CallOutcome{PRODUCT_SERVICES_OUTCOME_CANCELLED, L"The call was cancelled."};
    }
    if (events.resultCode == PRODUCT_SERVICES_NO_PRODUCT_RECORD) {
        return std::nullopt;
    }
    if (!events.certificateError.empty()) {
        return CallOutcome{PRODUCT_SERVICES_OUTCOME_UNTRUSTED_CERTIFICATE, events.certificateError};
    }
    if (events.isTimedOut) {
        return CallOutcome{PRODUCT_SERVICES_OUTCOME_TIMED_OUT, L"The time limit was exceeded."};
    }
    return CallOutcome{PRODUCT_SERVICES_OUTCOME_UNREACHABLE, events.transferError};
}

// Returns the service's text, as in {"status":0,"error":"unknown product"}, or else the library's message.
std::wstring RefusalText(const CallEvents& events, const std::wstring& message)
{
    const ServiceReply reply = ServiceReply::parse(events.reply, nullptr, false);
    const auto error = reply.find("error");
    return error != reply.end() && error->is_string() ? FromUtf8(error->get<std::string>()) : message;
}

CallOutcome CheckDownloadUrl(const std::wstring& url, const wchar_t* trustedHosts)
{
    if (!IsTrustedUrl(url, trustedHosts)) {
        return {PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS, url};
    }
    return {PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE, url, PRODUCT_SERVICES_SUCCESS};
}

CallOutcome TranslateResult(const CallEvents& events, std::uint32_t code, const wchar_t* trustedHosts)
{
    const std::wstring& text = events.resultText;
    switch (code) {
    case PRODUCT_SERVICES_SUCCESS:
        return CheckDownloadUrl(text, trustedHosts);
    case PRODUCT_SERVICES_USER_QUIT:
        return {PRODUCT_SERVICES_OUTCOME_USER_QUIT, text, code};
    case PRODUCT_SERVICES_BROWSER_OPENED:
        return {PRODUCT_SERVICES_OUTCOME_BROWSER_OPENED, text, code};
    case PRODUCT_SERVICES_NO_UPGRADES:
        return {PRODUCT_SERVICES_OUTCOME_UP_TO_DATE, text, code};
    case PRODUCT_SERVICES_NO_CONNECTION:
        return {PRODUCT_SERVICES_OUTCOME_REFUSED, RefusalText(events, text), code};
    case PRODUCT_SERVICES_NO_PRODUCT_RECORD:
        return {PRODUCT_SERVICES_OUTCOME_NO_PRODUCT_RECORD, text, code};
    default:
        return {PRODUCT_SERVICES_OUTCOME_INVALID_REPLY, text};
    }
}

CallOutcome TranslateMessage(const CallEvents& events, product_services::TextId message)
{
    if (message == product_services::text_ids::LatestVersion) {
        return {PRODUCT_SERVICES_OUTCOME_UP_TO_DATE, events.messageText};
    }
    return {PRODUCT_SERVICES_OUTCOME_REFUSED, RefusalText(events, events.messageText)};
}

// Explains a call in which the library has neither reported nor shown anything.
CallOutcome ExplainSilence(const CallEvents& events, GuardedFunction function)
{
    if (!IsQuerySent(events, function)) {
        return {PRODUCT_SERVICES_OUTCOME_NOTHING_SENT, L"The API key or the product key is empty."};
    }
    const ServiceReply reply = product_services::ParseServiceReply(events.reply);
    if (const std::optional<std::int32_t> status = product_services::ReadStatus(reply)) {
        return {
            PRODUCT_SERVICES_OUTCOME_OTHER_STATUS,
            L"The service answered with status " + std::to_wstring(*status) + L"."};
    }
    if (!reply.empty()) {
        return {PRODUCT_SERVICES_OUTCOME_CANCELLED, L"The program was asked to quit."};
    }
    return {PRODUCT_SERVICES_OUTCOME_UP_TO_DATE};
}

} // namespace

CallOutcome DetermineOutcome(const CallEvents& events, GuardedFunction function, const wchar_t* trustedHosts)
{
    if (const std::optional<CallOutcome> error = FindTransferError(events)) {
        return *error;
    }
    if (!events.blockedUrl.empty()) {
        return {PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS, events.blockedUrl};
    }
    // Without a transfer, the library has handled the empty reply buffer like an empty reply.
    const bool hasRecord = events.resultCode != PRODUCT_SERVICES_NO_PRODUCT_RECORD;
    if (events.transferCount == 0 && hasRecord && (events.resultCode || events.message)) {
        return {PRODUCT_SERVICES_OUTCOME_FAILED, L"libcurl could not be initialised."};
    }
    if (events.resultCode) {
        return TranslateResult(events, *events.resultCode, trustedHosts);
    }
    return events.message ? TranslateMessage(events, *events.message) : ExplainSilence(events, function);
}

CallOutcome TranslateException(const CallEvents& events, GuardedFunction function, const char* what)
{
    if (const std::optional<CallOutcome> error = FindTransferError(events)) {
        return *error;
    }
    if (!IsQuerySent(events, function)) {
        return {PRODUCT_SERVICES_OUTCOME_FAILED, L"A key or the version cannot be sent: " + FromUtf8(what)};
    }
    return {PRODUCT_SERVICES_OUTCOME_INVALID_REPLY, FromUtf8(what)};
}

} // namespace product_services_guard
