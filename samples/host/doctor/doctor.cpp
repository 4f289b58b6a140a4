#include "doctor.h"

#include "checks.h"
#include "unattended_user.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
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

void AddService(Findings& findings, const Patient& patient, const Record& record)
{
    const Route route = ReadRoute(patient.serviceAddress);
    findings.push_back(CheckProxyVariables(route));
    findings.push_back(CheckWindowsProxy(patient.serviceAddress));
    findings.push_back(CheckName(route.First()));
    if (findings.back().state != State::Ok) {
        return;
    }
    findings.push_back(CheckConnection(route.First()));
    if (findings.back().state != State::Ok || route.isForeign) {
        return;
    }
    const WebAnswer probe = Post(patient.serviceAddress + L"/check.php", "", route);
    findings.push_back(CheckTls(probe));
    if (probe.stage == WebAnswer::Stage::NotSent) {
        return;
    }
    findings.push_back(CheckProbe(probe));
    findings.push_back(CheckQuery(patient, record, route));
}

Findings FindAll(const Patient& patient, const Record& record)
{
    Findings findings;
    for (const wchar_t* library : {L"ProductServices.dll", L"ProductServicesGuard.dll"}) {
        findings.push_back(CheckLibrary(library));
        findings.push_back(CheckSignature(library));
    }
    findings.push_back(CheckApiKey(patient.product.apiKey));
    findings.push_back(CheckRecord(patient, record));
    if (!record.place.empty()) {
        findings.push_back(CheckMember(L"key", record.key));
        findings.push_back(CheckMember(L"version", record.version));
    }
    findings.push_back(CheckLanguageFile(patient.product.languageId));
    AddService(findings, patient, record);
    findings.push_back(CheckCall(patient.product));
    findings.push_back(CheckScreen());
    return findings;
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

void PrintLines(const Findings& findings)
{
    for (const Finding& finding : findings) {
        std::wstring line = NameOf(finding.state);
        line.resize(7, L' ');
        line += finding.check + L": " + finding.sentence;
        PrintLine(finding.state == State::Ok ? line : line + L" -> " + Page + finding.row);
    }
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

} // namespace

bool Examine(const Patient& patient, Output output)
{
    const Record record = ReadRecord(patient);
    Findings findings = FindAll(patient, record);
    for (Finding& finding : findings) {
        Mask(finding.sentence, patient.product.apiKey);
        Mask(finding.sentence, record.key.text);
    }
    if (output == Output::Json) {
        PrintJson(findings);
    } else {
        PrintLines(findings);
    }
    return std::none_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.state == State::Wrong;
    });
}

} // namespace doctor
