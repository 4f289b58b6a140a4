#include "doctor/doctor.h"

#include "doctor/finding_collector.h"
#include "doctor/machine_checks.h"
#include "doctor/run_with_timeout.h"
#include "doctor/service_checks.h"
#include "guarded_call.h"
#include "platform/family.h"
#include "platform/product_record.h"
#include "service/request_updates.h"
#include "service/service_client.h"
#include "text.h"

#include <algorithm>

namespace product_services_tool {
namespace {

constexpr DWORD MaxPathLength = 32768;

// After this time, Windows marks the window of a program that waits as not responding.
constexpr unsigned MaxStepSeconds = 5;

// The time that a call needs beyond its time limit.
constexpr std::chrono::seconds CallGrace{3};

std::wstring GetOwnFolder()
{
    std::wstring path(MaxPathLength, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MaxPathLength));
    return path.substr(0, path.rfind(L'\\'));
}

Finding MakeSkippedFinding(const wchar_t* check, const std::wstring& reason, const wchar_t* helpAnchor)
{
    return {Severity::Warning, check, L"skipped: " + reason, helpAnchor};
}

void AddProgramFiles(FindingCollector& findings, const Options& options)
{
    const std::wstring folder = options.programFolder.empty() ? GetOwnFolder() : options.programFolder;
    const std::vector<LibraryFile> files = ReadLibraryFiles(folder);
    findings.Add(CheckProgramFolder(folder, files));
    for (const LibraryFile& file : files) {
        if (file.exists) {
            findings.Add(CheckLibraryFile(file, ProductVersion, product_services::Family.packageId));
            findings.Add(CheckSignature(file.name, ReadPublisher(file.path)));
        }
    }
}

void AddProduct(FindingCollector& findings, const Options& options, const StoredRecord& record)
{
    findings.Add(CheckApiKey(options.apiKey));
    findings.Add(CheckRecord(record, options.product, options.version));
    if (!record.keyPath.empty()) {
        findings.Add(CheckRecordKey(record.key));
        findings.Add(CheckRecordVersion(record.version));
    }
}

// Returns the proxy for transfers. It is empty if proxy variables are set, because libcurl reads these
// itself.
std::string AddProxies(FindingCollector& findings, const Options& options)
{
    const ProxyVariables variables = GetProxyVariables();
    findings.AddSecretsOfProxy(variables.httpsProxy);
    findings.AddSecretsOfProxy(variables.allProxy);
    findings.Add(CheckProxyVariables(variables));
    const std::optional<product_services_guard::SystemProxy> system = QuerySystemProxy();
    if (system) {
        findings.AddSecretsOfProxy(system->proxy);
        for (const product_services_guard::ProxyCandidate& candidate : system->candidates) {
            findings.AddSecretsOfProxy(candidate.proxy);
        }
    }
    findings.Add(CheckSystemProxy(system, options.usesSystemProxy));
    return system && options.usesSystemProxy ? ToUtf8(system->proxy) : std::string();
}

// Returns false if the service hangs.
bool AddUpdateQuery(FindingCollector& findings, const Options& options, const TransferSettings& settings)
{
    product_services::ProductRecord record(
        product_services::FindProductRecord(options.product, options.version));
    record.Load();
    if (GetPolicy().disablesCheck) {
        findings.Add(MakeSkippedFinding(
            L"update query", L"update checks are disabled by policy", help_anchors::Nothing));
        return true;
    }
    if (options.apiKey.empty() || record.Read(L"key").empty()) {
        findings.Add(
            MakeSkippedFinding(L"update query", L"a key is empty or missing", help_anchors::Nothing));
        return true;
    }
    const TransferReport report = WatchTransfer(settings, [record, apiKey = options.apiKey] {
        product_services::RequestUpdates(record, apiKey, product_services::UpdateQuery::Check);
    });
    findings.Add(CheckUpdateQuery(report, settings, options.trustedHosts));
    return !report.isTimedOut;
}

// Returns false if the service hangs.
bool AddService(FindingCollector& findings, const Options& options, TransferSettings settings)
{
    const TransferReport probe =
        WatchTransfer(settings, [] { product_services::ServiceClient::IsServiceReachable(); });
    if (!findings.Add(CheckConnection(probe, settings))) {
        return !probe.isTimedOut;
    }
    const bool isCertificateAccepted = findings.Add(CheckCertificate(probe, options.acceptsAnyCertificate));
    findings.Add(CheckProbe(probe, settings));
    if (!isCertificateAccepted) {
        findings.Add(MakeSkippedFinding(
            L"update query", L"keys are not sent to a server whose certificate is refused",
            help_anchors::Certificate));
        return !probe.isTimedOut;
    }
    settings.requiresCertificate = !options.acceptsAnyCertificate;
    const bool isQueryAnswered = AddUpdateQuery(findings, options, settings);
    return isQueryAnswered && !probe.isTimedOut;
}

void AddQuietCall(FindingCollector& findings, const Options& options)
{
    const std::optional<CallResult> result =
        RunWithTimeout(std::chrono::seconds(options.timeLimitSeconds) + CallGrace, [options] {
            return CheckQuietly(options);
        });
    findings.Add(CheckQuietCall(result.value_or(CallResult{
        PRODUCT_SERVICES_OUTCOME_TIMED_OUT, PRODUCT_SERVICES_NO_RESULT, L"The time limit was exceeded."})));
}

} // namespace

int RunDoctor(const Options& options)
{
    const StoredRecord record = ReadStoredRecord(options.product, options.version);
    FindingCollector findings(options.printsJson);
    findings.AddSecretKey(options.apiKey);
    findings.AddSecretKey(record.key.text);
    AddProgramFiles(findings, options);
    AddProduct(findings, options, record);
    findings.Add(CheckPolicy(GetPolicy()));
    findings.Add(CheckLanguageFile(ReadLanguageFile(options.languageId)));
    findings.Add(CheckDisplayScaling(GetDisplayScaling()));
    TransferSettings settings;
    settings.proxy = AddProxies(findings, options);
    settings.stepTimeout = std::chrono::seconds(std::min(options.timeLimitSeconds, MaxStepSeconds));
    if (AddService(findings, options, settings)) {
        AddQuietCall(findings, options);
    } else {
        findings.Add(MakeSkippedFinding(L"quiet check", L"the service hangs", help_anchors::Hanging));
    }
    return findings.Finish();
}

} // namespace product_services_tool
