#include "doctor.h"

#include "checks.h"
#include "unattended_user.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <windows.h>

namespace doctor {
namespace {

constexpr wchar_t Page[] = L"docs/troubleshooting.md#";

const wchar_t* NameOf(State state)
{
    switch (state) {
    case State::Ok:
        return L"ok";
    case State::Note:
        return L"note";
    default:
        return L"wrong";
    }
}

std::string InUtf8(const std::wstring& text)
{
    const int size = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(), length, nullptr, nullptr);
    return utf8;
}

// A key may come back in an address or in an error's text.
void Mask(std::wstring& sentence, const std::wstring& key)
{
    constexpr std::size_t Shortest = 4;
    if (key.size() < Shortest) {
        return;
    }
    for (std::size_t at = sentence.find(key); at != sentence.npos; at = sentence.find(key)) {
        sentence.replace(
            at, key.size(), key.size() < 2 * Shortest ? L"..." : key.substr(0, Shortest) + L"...");
    }
}

void Print(const Finding& finding)
{
    std::wstring line = NameOf(finding.state);
    line.resize(7, L' ');
    line += finding.check + L": " + finding.sentence;
    PrintLine(finding.state == State::Ok ? line : line + L" -> " + Page + finding.row);
}

void PrintJson(const Findings& findings)
{
    auto list = nlohmann::ordered_json::array();
    for (const Finding& finding : findings) {
        list.push_back(
            {{"state", InUtf8(NameOf(finding.state))},
             {"check", InUtf8(finding.check)},
             {"sentence", InUtf8(finding.sentence)},
             {"link", InUtf8(std::wstring(Page) + finding.row)}});
    }
    std::puts(list.dump(2).c_str());
}

// What is found, each line of which is printed at once: where the machine hangs, the last one shows it.
class Report
{
public:
    Report(Output output, std::vector<std::wstring> secrets) : m_output(output), m_secrets(std::move(secrets))
    {
    }

    // Says whether all is well with it.
    bool Add(Finding finding)
    {
        for (const std::wstring& secret : m_secrets) {
            Mask(finding.sentence, secret);
        }
        if (m_output == Output::Lines) {
            Print(finding);
        }
        m_findings.push_back(std::move(finding));
        return m_findings.back().state == State::Ok;
    }

    const Findings& All() const { return m_findings; }

private:
    Output m_output;
    std::vector<std::wstring> m_secrets;
    Findings m_findings;
};

void AddService(Report& report, const Patient& patient, const Record& record)
{
    const Route route = ReadRoute(patient.serviceAddress);
    report.Add(CheckProxyVariables(route));
    report.Add(CheckWindowsProxy(patient.serviceAddress));
    if (!report.Add(CheckName(route.First())) || !report.Add(CheckConnection(route.First())) ||
        route.isForeign) {
        return;
    }
    const WebAnswer probe = Post(patient.serviceAddress + L"/check.php", "", route);
    report.Add(CheckTls(probe));
    if (probe.stage == WebAnswer::Stage::NotSent) {
        return;
    }
    report.Add(CheckProbe(probe));
    report.Add(CheckQuery(patient, record, route));
}

void AddAll(Report& report, const Patient& patient, const Record& record)
{
    for (const wchar_t* library : {L"ProductServices.dll", L"ProductServicesGuard.dll"}) {
        report.Add(CheckLibrary(library));
        report.Add(CheckSignature(library));
    }
    report.Add(CheckApiKey(patient.product.apiKey));
    report.Add(CheckRecord(patient, record));
    if (!record.place.empty()) {
        report.Add(CheckMember(L"key", record.key));
        report.Add(CheckMember(L"version", record.version));
    }
    report.Add(CheckLanguageFile(patient.product.languageId));
    AddService(report, patient, record);
    // The last step towards the service; the library waits there without a limit.
    const bool isHanging = report.All().back().row == std::wstring_view(rows::Hanging);
    report.Add(CheckCall(patient.product, isHanging));
    report.Add(CheckScreen());
}

} // namespace

bool Examine(const Patient& patient, Output output)
{
    const Record record = ReadRecord(patient);
    Report report(output, {patient.product.apiKey, record.key.text});
    AddAll(report, patient, record);
    if (output == Output::Json) {
        PrintJson(report.All());
    }
    const Findings& findings = report.All();
    return std::none_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.state == State::Wrong;
    });
}

} // namespace doctor
