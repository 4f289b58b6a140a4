#include "doctor/finding_collector.h"

#include "calls/text_copy.h"
#include "text.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace product_services_tool {
namespace {

constexpr std::size_t SeverityWidth = 9;
constexpr std::size_t ShownKeyLength = 4;

// The beginning of a shorter key would be more than half of it, so nothing of it is shown.
constexpr std::size_t MinShownKeyLength = 2 * ShownKeyLength;
// An even shorter key is part of many words, so it is not replaced.
constexpr std::size_t MinReplacedKeyLength = 4;

constexpr const wchar_t* SeverityNames[]{L"ok", L"warning", L"error"};

std::wstring ToString(Severity severity)
{
    return SeverityNames[static_cast<int>(severity)];
}

std::wstring HelpLink(const Finding& finding)
{
    return std::wstring(L"docs/troubleshooting.md#") + finding.helpAnchor;
}

bool IsError(const Finding& finding)
{
    return finding.severity == Severity::Error;
}

// "2 errors"
std::wstring CountFindings(const std::vector<Finding>& findings, Severity severity)
{
    const auto count = std::count_if(findings.begin(), findings.end(), [severity](const Finding& finding) {
        return finding.severity == severity;
    });
    return std::to_wstring(count) + L' ' + ToString(severity) + (count == 1 ? L"" : L"s");
}

void ReplaceAll(std::wstring& text, const std::wstring& secret, const std::wstring& mask)
{
    std::size_t position = text.find(secret);
    while (position != text.npos) {
        text.replace(position, secret.size(), mask);
        position = text.find(secret, position + mask.size());
    }
}

} // namespace

std::wstring MaskKey(const std::wstring& key)
{
    const std::wstring length = std::to_wstring(key.size()) + L" characters";
    return key.size() < MinShownKeyLength ? length : key.substr(0, ShownKeyLength) + L"... (" + length + L")";
}

std::wstring ToLine(const Finding& finding)
{
    std::wstring line = ToString(finding.severity);
    line.resize(SeverityWidth, L' ');
    line += finding.check + (L": " + ToOneLine(finding.message));
    return finding.severity == Severity::Ok ? line : line + L" -> " + HelpLink(finding);
}

std::wstring ToJson(const std::vector<Finding>& findings)
{
    auto list = nlohmann::ordered_json::array();
    for (const Finding& finding : findings) {
        list.push_back(
            {{"severity", ToUtf8(ToString(finding.severity))},
             {"check", ToUtf8(finding.check)},
             {"message", ToUtf8(finding.message)},
             {"link", ToUtf8(HelpLink(finding))}});
    }
    return product_services_guard::FromUtf8(list.dump(2));
}

std::wstring Summarize(const std::vector<Finding>& findings)
{
    const std::wstring warnings = CountFindings(findings, Severity::Warning);
    const auto first = std::find_if(findings.begin(), findings.end(), IsError);
    if (first == findings.end()) {
        return L"All is well (" + warnings + L").";
    }
    return CountFindings(findings, Severity::Error) + L", " + warnings + L". Begin with \"" + first->check +
           L"\": " + HelpLink(*first);
}

void FindingCollector::AddSecretKey(const std::wstring& key)
{
    if (key.size() >= MinReplacedKeyLength) {
        m_secrets.emplace_back(
            key, key.size() < MinShownKeyLength ? L"..." : key.substr(0, ShownKeyLength) + L"...");
    }
}

void FindingCollector::AddSecretsOfProxy(const std::wstring& proxy)
{
    const std::size_t scheme = proxy.find(L"://");
    const std::size_t start = scheme == proxy.npos ? 0 : scheme + 3;
    const std::size_t end = proxy.rfind(L'@');
    if (end != proxy.npos && end > start) {
        m_secrets.emplace_back(proxy.substr(start, end + 1 - start), L"...@");
    }
}

bool FindingCollector::Add(Finding finding)
{
    for (const auto& [secret, mask] : m_secrets) {
        ReplaceAll(finding.message, secret, mask);
    }
    if (!m_printsJson) {
        PrintLine(ToLine(finding));
    }
    m_findings.push_back(std::move(finding));
    return !IsError(m_findings.back());
}

int FindingCollector::Finish() const
{
    PrintLine(m_printsJson ? ToJson(m_findings) : Summarize(m_findings));
    return std::any_of(m_findings.begin(), m_findings.end(), IsError) ? 1 : 0;
}

} // namespace product_services_tool
