#include "update_calls.h"

#include "sample_product.h"
#include "user_language.h"

using product_services::CallParams;
using product_services::CallResult;
using product_services::Outcome;

namespace {

constexpr wchar_t ProductVersion[] = L"2026.1";

CallParams MakeParams()
{
    return {
        .productName = SAMPLE_PRODUCT_NAME,
        .productVersion = ProductVersion,
        .apiKey = SAMPLE_PRODUCT_API_KEY,
        .languageId = UserLanguageId(),
        .trustedHosts = SAMPLE_PRODUCT_TRUSTED_HOSTS,
        .usesSystemProxy = true,
        .timeLimit = std::chrono::seconds(15),
    };
}

std::wstring WithDetails(const std::wstring& text, const std::wstring& details)
{
    return details.empty() ? text : text + L"\n\n" + details;
}

// For outcomes that the library shows in a message box after a check, and not after an upgrade.
Notice TellUnlessTold(Call call, Notice::Kind kind, const std::wstring& text)
{
    return {call == Call::Upgrade ? kind : Notice::Kind::StatusOnly, text};
}

} // namespace

CallResult MakeCall(Call call, const std::stop_token& stopToken)
{
    CallParams params = MakeParams();
    params.isQuiet = call == Call::CheckAtStart;
    params.stopToken = stopToken;
    return call == Call::Upgrade ? product_services::Upgrade(params)
                                 : product_services::CheckForUpdates(params);
}

Notice MakeNotice(Call call, const CallResult& result)
{
    using enum Notice::Kind;
    switch (result.outcome) {
    case Outcome::NewerRelease:
        return {Information, L"A newer release is available.", result.text};
    case Outcome::UpToDate:
        return TellUnlessTold(
            call, Information,
            call == Call::Upgrade ? L"There are no upgrades for you at present."
                                  : L"This is the latest release.");
    case Outcome::BrowserOpened:
        return {StatusOnly, L"The purchase page is open in your browser."};
    case Outcome::UserQuit:
    case Outcome::Cancelled:
        return {StatusOnly, L"Ready."};
    case Outcome::NoProductRecord:
    case Outcome::NothingSent:
        return {Warning, L"This installation is incomplete. Please install the product again."};
    case Outcome::Refused:
        return TellUnlessTold(
            call, Warning, WithDetails(L"The update service refused the request.", result.text));
    case Outcome::Unreachable:
    case Outcome::TimedOut:
        return TellUnlessTold(
            call, Warning,
            L"The update service could not be reached. Check your connection or try again later.");
    case Outcome::UntrustedCertificate:
        return {
            Warning,
            WithDetails(
                L"The connection to the update service is not secure, so nothing was sent. Please tell "
                L"your administrator.",
                result.text)};
    case Outcome::UntrustedAddress:
        // The text is the address, which the user is not to be led to.
        return {Warning, L"The update service named an address that is not ours. It was not opened."};
    case Outcome::DisabledByPolicy:
        return {StatusOnly, L"Your administrator has disabled this."};
    case Outcome::Busy:
        return {Information, L"Another request is still in progress. Please try again in a moment."};
    case Outcome::InvalidReply:
    case Outcome::OtherStatus:
        return {
            Warning,
            WithDetails(L"The update service gave no usable answer. Please try again later.", result.text)};
    case Outcome::InvalidParameter:
    case Outcome::Failed:
        break;
    }
    return {Warning, WithDetails(L"The request to the update service failed.", result.text)};
}

std::wstring ProductTitle()
{
    return std::wstring(SAMPLE_PRODUCT_NAME) + L" " + ProductVersion;
}
