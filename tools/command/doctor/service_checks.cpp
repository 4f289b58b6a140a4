#include "doctor/service_checks.h"

#include "calls/text_copy.h"
#include "doctor/run_with_timeout.h"
#include "service/service_reply.h"
#include "url/trusted_url.h"

#include <exception>

namespace product_services_tool {
namespace {

using product_services::ServiceReply;
using product_services_guard::FromUtf8;

constexpr wchar_t Connection[] = L"connection";
constexpr wchar_t Certificate[] = L"certificate";
constexpr wchar_t Probe[] = L"probe";
constexpr wchar_t UpdateQuery[] = L"update query";

// Returns the rest of the last line that starts with `beginning`.
std::wstring FindLine(const TransferReport& report, const std::wstring& beginning)
{
    std::wstring rest;
    for (const std::wstring& line : report.lines) {
        rest = line.starts_with(beginning) ? line.substr(beginning.size()) : rest;
    }
    return rest;
}

std::wstring FormatMilliseconds(curl_off_t begin, curl_off_t end)
{
    return std::to_wstring((end - begin) / 1000) + L" ms";
}

std::wstring DescribeTimeout(TransferStep step, const std::wstring& address)
{
    switch (step) {
    case TransferStep::Name:
        return L"the DNS lookup of the service or of its proxy timed out after ";
    case TransferStep::Connection:
        return address + L" did not answer within ";
    case TransferStep::TlsAnswer:
        return address + L" accepted the connection, but sent nothing within ";
    case TransferStep::TlsHandshake:
        return address + L" did not complete the TLS handshake within ";
    case TransferStep::ReplyStart:
        return L"no reply came within ";
    default:
        return L"the reply did not end within ";
    }
}

// Explains why a transfer failed.
Finding MakeTransferError(
    const wchar_t* check, const TransferReport& report, const TransferSettings& settings)
{
    if (!report.isTimedOut) {
        return {Severity::Error, check, report.error, help_anchors::NoConnection};
    }
    const std::wstring address = FindLine(report, L"  Trying ");
    const std::wstring message = DescribeTimeout(report.step, address.substr(0, address.find(L"...")));
    return {Severity::Error, check, message + ToText(settings.stepTimeout), help_anchors::Hanging};
}

// Returns the beginning of a text, in quotation marks.
std::wstring Quote(const std::string& text)
{
    constexpr std::size_t MaxLength = 160;
    return L'"' + FromUtf8(text.substr(0, MaxLength)) + (text.size() > MaxLength ? L"...\"" : L"\"");
}

std::wstring FormatHttpStatus(const TransferReport& report)
{
    return L"HTTP status " + std::to_wstring(report.httpStatus);
}

// Returns what prevents the library from getting the reply that was sent, if anything does.
std::optional<Finding> FindTransferError(
    const wchar_t* check, const TransferReport& report, const TransferSettings& settings)
{
    if (report.result != CURLE_OK) {
        return MakeTransferError(check, report, settings);
    }
    if (report.httpStatus / 100 == 3) {
        const std::wstring message = FormatHttpStatus(report) + L" redirects to " + report.redirectUrl +
                                     L", but redirects are not followed";
        return Finding{Severity::Error, check, message, help_anchors::NoUpdate};
    }
    if (report.pieceCount > 1) {
        const std::wstring message = L"the reply arrived in " + std::to_wstring(report.pieceCount) +
                                     L" pieces, of which the library keeps only the last";
        return Finding{Severity::Error, check, message, help_anchors::InvalidReply};
    }
    return std::nullopt;
}

// Mentions the status of an HTTP error, although the library reads such a reply like any other.
Finding MentionHttpStatus(Finding finding, const TransferReport& report)
{
    if (report.httpStatus >= 400) {
        finding.severity = finding.severity == Severity::Ok ? Severity::Warning : finding.severity;
        finding.message += L" (" + FormatHttpStatus(report) + L')';
    }
    return finding;
}

// Returns an empty text if the URL may be reported and opened.
std::wstring FindUrlError(const std::wstring& url, const std::optional<std::wstring>& trustedHosts)
{
    if (product_services_guard::IsTrustedUrl(url, trustedHosts ? trustedHosts->c_str() : nullptr)) {
        return {};
    }
    return product_services_guard::WindowsParsesIdentically(url)
               ? L" does not lead to a trusted host (" + trustedHosts.value_or(L"") + L"): " + url
               : L" does not have a URL of the form https://host[:port][/path]: " + url;
}

Finding CheckOffers(ServiceReply& reply, const std::optional<std::wstring>& trustedHosts)
{
    Finding finding{Severity::Error, UpdateQuery, L"", help_anchors::InvalidReply};
    if (reply.empty()) {
        finding.message =
            L"the list is empty; to say that nothing is newer the service must send an empty body";
        return finding;
    }
    finding.helpAnchor = help_anchors::UntrustedUrl;
    const std::wstring count = std::to_wstring(reply.size());
    for (std::size_t index = 0; index < reply.size(); ++index) {
        const std::wstring error = FindUrlError(product_services::ReadOffer(reply, index).url, trustedHosts);
        if (!error.empty()) {
            finding.message = L"offer ";
            finding.message += std::to_wstring(index + 1) + L" of ";
            finding.message += count;
            finding.message += error;
            return finding;
        }
    }
    finding.severity = trustedHosts ? Severity::Ok : Severity::Warning;
    finding.message =
        count + (reply.size() == 1 ? L" offer" : L" offers") +
        (trustedHosts ? L" on trusted hosts" : L"; without --trusted-hosts any host is trusted");
    return finding;
}

Finding CheckRefusal(std::int32_t status, const ServiceReply& reply)
{
    std::wstring message = L"the service refuses with status " + std::to_wstring(status);
    const auto error = reply.find("error");
    if (error != reply.end() && error->is_string()) {
        message += L": " + Quote(error->get<std::string>());
    }
    const wchar_t* const help = status == 0 ? help_anchors::NoConnection : help_anchors::Nothing;
    return {Severity::Error, UpdateQuery, message, help};
}

Finding CheckUpdateReply(const TransferReport& report, const std::optional<std::wstring>& trustedHosts)
{
    if (report.reply.empty()) {
        const Severity severity = report.httpStatus >= 400 ? Severity::Error : Severity::Ok;
        return {severity, UpdateQuery, L"nothing is newer: the reply is empty", help_anchors::NoUpdate};
    }
    try {
        ServiceReply reply = product_services::ParseServiceReply(report.reply);
        const std::optional<std::int32_t> status = product_services::ReadStatus(reply);
        return status ? CheckRefusal(*status, reply) : CheckOffers(reply, trustedHosts);
    } catch (const std::exception& error) {
        const std::wstring message = L"the reply could not be parsed: " + Quote(error.what());
        return {Severity::Error, UpdateQuery, message, help_anchors::InvalidReply};
    }
}

const wchar_t* HelpAnchorFor(ProductServicesOutcome outcome)
{
    switch (outcome) {
    case PRODUCT_SERVICES_OUTCOME_NO_PRODUCT_RECORD:
        return help_anchors::NoRecord;
    case PRODUCT_SERVICES_OUTCOME_UNREACHABLE:
    case PRODUCT_SERVICES_OUTCOME_REFUSED:
        return help_anchors::NoConnection;
    case PRODUCT_SERVICES_OUTCOME_TIMED_OUT:
        return help_anchors::Hanging;
    case PRODUCT_SERVICES_OUTCOME_UNTRUSTED_CERTIFICATE:
        return help_anchors::Certificate;
    case PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS:
        return help_anchors::UntrustedUrl;
    case PRODUCT_SERVICES_OUTCOME_INVALID_REPLY:
        return help_anchors::InvalidReply;
    default:
        return help_anchors::Nothing;
    }
}

} // namespace

Finding CheckConnection(const TransferReport& report, const TransferSettings& settings)
{
    if (report.step < TransferStep::ReplyStart) {
        return MakeTransferError(Connection, report, settings);
    }
    const std::wstring server = FindLine(report, L"Connected to ");
    const std::wstring times = L": name " + FormatMilliseconds(0, report.nameTime) + L", connection " +
                               FormatMilliseconds(report.nameTime, report.connectTime) + L", TLS " +
                               FormatMilliseconds(report.connectTime, report.tlsTime);
    // Some versions of libcurl append the number of the connection.
    const std::wstring message = server.substr(0, server.find(L" (#")) + times;
    return {Severity::Ok, Connection, message, help_anchors::NoConnection};
}

Finding CheckCertificate(const TransferReport& report, bool acceptsAnyCertificate)
{
    if (report.certificateError.empty()) {
        const std::wstring message =
            L"a guarded call accepts it (a direct call does not verify the issuer): " + report.certificate;
        return {Severity::Ok, Certificate, message, help_anchors::Certificate};
    }
    const std::wstring message =
        L"a guarded call refuses it (a direct call does not verify the issuer): " + report.certificateError;
    const Severity severity = acceptsAnyCertificate ? Severity::Warning : Severity::Error;
    return {severity, Certificate, message, help_anchors::Certificate};
}

Finding CheckProbe(const TransferReport& report, const TransferSettings& settings)
{
    if (const std::optional<Finding> error = FindTransferError(Probe, report, settings)) {
        return *error;
    }
    Finding finding{
        Severity::Ok, Probe, L"/check.php answers " + Quote(report.reply), help_anchors::NoConnection};
    if (report.reply != "1") {
        finding.severity = Severity::Error;
        finding.message += L" instead of exactly \"1\"";
    }
    return MentionHttpStatus(finding, report);
}

Finding CheckUpdateQuery(
    const TransferReport& report, const TransferSettings& settings,
    const std::optional<std::wstring>& trustedHosts)
{
    if (const std::optional<Finding> error = FindTransferError(UpdateQuery, report, settings)) {
        return *error;
    }
    return MentionHttpStatus(CheckUpdateReply(report, trustedHosts), report);
}

Finding CheckQuietCall(const CallResult& result)
{
    Severity severity = IsAnswered(result.outcome) ? Severity::Ok : Severity::Error;
    if (result.outcome == PRODUCT_SERVICES_OUTCOME_DISABLED_BY_POLICY) {
        severity = Severity::Warning;
    }
    return {severity, L"quiet check", ToLine(result), HelpAnchorFor(result.outcome)};
}

} // namespace product_services_tool
