#include "checks.h"
#include "service/service_reply.h"
#include "service/text_conversion.h"
#include "service/update_query.h"
#include "trusted_hosts.h"

#include <exception>
#include <windows.h>

#include <winhttp.h>

namespace doctor {
namespace {

using namespace product_services;

std::wstring Quoted(const std::string& body)
{
    constexpr std::size_t Shown = 160;
    std::wstring text;
    for (const char sign : body.substr(0, Shown)) {
        text += sign >= ' ' && sign <= '~' ? static_cast<wchar_t>(sign) : L'?';
    }
    return L"\"" + text + (body.size() > Shown ? L"...\"" : L"\"");
}

// An HTTP status changes nothing for the library, so it is told beside what does.
std::wstring StatusOf(const WebAnswer& answer)
{
    return answer.status == 200 ? L"" : L" (HTTP status " + std::to_wstring(answer.status) + L")";
}

Finding Say(State state, const std::wstring& sentence, const wchar_t* row)
{
    return {state, L"update query", sentence, row};
}

Finding ReadOffers(ServiceReply& reply, const std::wstring& trustedHosts)
{
    const std::size_t count = reply.size();
    if (count == 0) {
        return Say(
            State::Wrong, L"the list of offers is empty; nothing newer is an empty reply", rows::Nothing);
    }
    for (std::size_t index = 0; index < count; ++index) {
        const UpgradeOffer offer = ReadOffer(reply, index);
        if (!trustedHosts.empty() && !product_services_guard::IsTrustedAddress(offer.url, trustedHosts)) {
            return Say(
                State::Wrong,
                L"offer " + std::to_wstring(index + 1) + L" of " + std::to_wstring(count) +
                    L" leads to none of the trusted hosts (" + trustedHosts + L"): " + offer.url,
                rows::Code);
        }
    }
    const wchar_t* trust = trustedHosts.empty() ? L"; any address is trusted" : L", all to trusted hosts";
    return Say(
        trustedHosts.empty() ? State::Note : State::Ok,
        std::to_wstring(count) + (count == 1 ? L" offer" : L" offers") + trust, rows::Code);
}

Finding ReadReply(const WebAnswer& answer, const std::wstring& trustedHosts)
{
    if (answer.body.empty()) {
        const State state = answer.status == 200 ? State::Ok : State::Wrong;
        return Say(state, L"the reply is empty: nothing newer" + StatusOf(answer), rows::Box);
    }
    ServiceReply reply = ParseServiceReply(answer.body);
    if (const auto status = ReadStatus(reply)) {
        const auto& error = reply["error"];
        const std::wstring cause = error.is_string() ? L": " + Quoted(error.get<std::string>()) : L"";
        return Say(
            State::Wrong,
            L"the service refuses with status " + std::to_wstring(*status) + cause + StatusOf(answer),
            *status == 0 ? rows::Box : rows::Nothing);
    }
    return ReadOffers(reply, trustedHosts);
}

Finding NotTried(const wchar_t* why)
{
    return Say(State::Note, std::wstring(L"not sent, since ") + why, rows::Nothing);
}

} // namespace

Finding CheckTls(const WebAnswer& probe)
{
    if (probe.stage == WebAnswer::Stage::NotSent) {
        return {State::Wrong, L"TLS", L"no request could be sent: " + Cause(probe), RowOf(probe, rows::Box)};
    }
    if (probe.certificate.empty()) {
        return {State::Note, L"TLS", L"works; Windows does not show the certificate", rows::Box};
    }
    return {
        State::Note, L"TLS",
        L"works; the certificate, any of which the library accepts, is " + probe.certificate, rows::Box};
}

Finding CheckProbe(const WebAnswer& probe)
{
    if (probe.stage != WebAnswer::Stage::Answered) {
        return {State::Wrong, L"probe", L"/check.php: " + Cause(probe), RowOf(probe, rows::Code)};
    }
    if (probe.body != "1") {
        return {
            State::Wrong, L"probe",
            L"/check.php answers " + Quoted(probe.body) + L" and not exactly \"1\"" + StatusOf(probe),
            rows::Code};
    }
    return {State::Ok, L"probe", L"/check.php answers \"1\"" + StatusOf(probe), rows::Code};
}

Finding CheckQuery(const Patient& patient, const Record& record, const Route& route)
{
    if (patient.product.apiKey.empty()) {
        return NotTried(L"the api key is empty");
    }
    if (record.key.text.empty()) {
        return NotTried(L"there is no record with a key");
    }
    try {
        const std::string body =
            BuildUpdateQuery(patient.product.apiKey, record.key.text, record.version.text, L"1");
        const WebAnswer answer = Post(patient.serviceAddress + L"/get_updates.php", body, route);
        if (answer.stage != WebAnswer::Stage::Answered) {
            return Say(State::Wrong, L"/get_updates.php: " + Cause(answer), RowOf(answer, rows::Box));
        }
        return ReadReply(answer, patient.product.trustedHosts);
    } catch (const std::exception& error) {
        return Say(State::Wrong, L"the reply makes no sense: " + Quoted(error.what()), rows::Exception);
    }
}

} // namespace doctor
