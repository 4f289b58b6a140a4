// The doctor's rules, with values that test_doctor.py does not find on its machines.
#include "doctor/finding_collector.h"
#include "doctor/machine_checks.h"
#include "doctor/service_checks.h"

#include <gtest/gtest.h>

using namespace product_services_tool;
using product_services_guard::ProxySource;
using product_services_guard::SystemProxy;

namespace {

struct Case
{
    const char* name;
    Finding finding;
    /// The printed line without the link.
    const wchar_t* line;
};

void ExpectLines(const std::vector<Case>& cases)
{
    for (const Case& row : cases) {
        const std::wstring line = ToLine(row.finding);
        EXPECT_EQ(line.substr(0, line.find(L" -> ")), row.line) << row.name;
    }
}

constexpr FileVersion OwnVersion{2, 3, 4};

Finding CheckVersion(const FileVersion& version)
{
    return CheckLibraryFile(
        {L"X.dll", L"C:\\X.dll", true, IMAGE_FILE_MACHINE_AMD64, version, L"Ours"}, OwnVersion, L"Ours");
}

std::string ToUtf16Bytes(const std::wstring& text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

std::wstring RepeatLine(int count, const std::wstring& end)
{
    std::wstring text;
    for (int i = 0; i < count; ++i) {
        text += L"text" + end;
    }
    return text;
}

Finding CheckTexts(const std::string& bytes)
{
    return CheckLanguageFile({L"DE", L"F", ERROR_SUCCESS, bytes});
}

Finding CheckOpenError(const wchar_t* code, DWORD error)
{
    return CheckLanguageFile({code, L"F", error, ""});
}

const TransferSettings Settings{.stepTimeout = std::chrono::seconds(5)};

TransferReport MakeReply(const std::string& reply, long httpStatus = 200)
{
    return {
        .step = TransferStep::ReplyEnd,
        .result = CURLE_OK,
        .lines = {L"Connected to a.example (1.2.3.4) port 443 (#0)"},
        .httpStatus = httpStatus,
        .pieceCount = 1,
        .reply = reply,
        .nameTime = 1000,
        .connectTime = 3000,
        .tlsTime = 7999};
}

Finding CheckUpdates(const TransferReport& report)
{
    return CheckUpdateQuery(report, Settings, L"a.example;*.b.example");
}

std::string MakeOffer(const std::string& url)
{
    return R"({"name":"B","version":"2","url":")" + url + "\"}";
}

} // namespace

TEST(Doctor, ChecksTheProgramFiles)
{
    const product_services_guard::PublisherResult trusted{PRODUCT_SERVICES_PUBLISHER_TRUSTED, L"So it is."};
    ExpectLines({
        {"only the library", CheckProgramFolder(L"C:\\App", {{.exists = false}, {.exists = true}}),
         L"ok       program folder: C:\\App"},
        {"older", CheckVersion({2, 3, 3}),
         L"warning  library: X.dll is version 2.3.3, older than this program, to which the other "
         L"findings apply"},
        {"newer", CheckVersion({2, 10, 0}),
         L"warning  library: X.dll is version 2.10.0, newer than this program, to which the other "
         L"findings apply"},
        {"signed", CheckSignature(L"X.dll", trusted), L"ok       signature: X.dll: So it is."},
        {"slow", CheckSignature(L"X.dll", std::nullopt),
         L"warning  signature: X.dll: Windows did not verify it in time"},
    });
}

TEST(Doctor, ChecksTheProduct)
{
    ExpectLines({
        {"a short API key", CheckApiKey(L"1234567"), L"ok       API key: 7 characters"},
        {"an empty key", CheckRecordKey({REG_SZ, L""}),
         L"error    product key: is empty: a call sends nothing"},
        {"no policy", CheckPolicy({}),
         L"ok       policy: Software\\Policies\\Tests Maker\\TestsMaker.ProductServices disables nothing"},
        {"a policy", CheckPolicy({.disablesCheck = true, .disablesUpgrade = true}),
         L"warning  policy: Software\\Policies\\Tests Maker\\TestsMaker.ProductServices disables update "
         L"checks and the upgrade center"},
        {"a scaled display", CheckDisplayScaling(150),
         L"warning  display scaling: 150 %: Windows scales up the upgrade center in guarded "
         L"calls; in direct calls and with the host's DPI awareness, its picture is not scaled"},
    });
}

TEST(Doctor, ChecksTheLanguageFile)
{
    const std::wstring notUtf16 =
        L"error    language file: F is not UTF-16 (little-endian), so texts are garbled or empty";
    ExpectLines({
        {"no line end after the last text", CheckTexts(ToUtf16Bytes(RepeatLine(87, L"\n") + L"text")),
         L"ok       language file: F"},
        {"a line too few", CheckTexts(ToUtf16Bytes(RepeatLine(87, L"\n"))),
         L"error    language file: F has 87 lines, expected 88"},
        {"a byte-order mark", CheckTexts(ToUtf16Bytes(L'\xFEFF' + RepeatLine(88, L"\n"))),
         L"error    language file: F begins with a byte-order mark, which becomes part of the first text"},
        {"carriage returns", CheckTexts(ToUtf16Bytes(RepeatLine(88, L"\r\n"))),
         L"error    language file: F has carriage returns, which become part of the texts"},
        {"an odd byte", CheckTexts(ToUtf16Bytes(RepeatLine(88, L"\n")) + "t"), notUtf16.c_str()},
        {"empty", CheckTexts(""), notUtf16.c_str()},
        {"missing for English", CheckOpenError(L"EN", ERROR_FILE_NOT_FOUND),
         L"ok       language file: F was not found, so English is used"},
        {"missing for an unknown language", CheckOpenError(L"US", ERROR_FILE_NOT_FOUND),
         L"ok       language file: F was not found, so English is used"},
        {"read-only", CheckOpenError(L"DE", ERROR_ACCESS_DENIED),
         L"error    language file: F is not writable by this user, so English is used"},
        {"in use", CheckOpenError(L"DE", ERROR_SHARING_VIOLATION),
         L"error    language file: F is in use by another program, so English is used"},
    });
}

TEST(Doctor, ChecksProxies)
{
    const SystemProxy fixedProxy{.source = ProxySource::FixedProxy, .proxy = L"a:1"};
    const SystemProxy deadScript{.source = ProxySource::Script, .candidates = {{L"a:1", false}}};
    ExpectLines({
        {"two variables", CheckProxyVariables({L"http://a:1", L"http://b:1", L""}),
         L"warning  proxy variables: https_proxy is http://a:1"},
        {"variables instead of Windows",
         CheckSystemProxy(SystemProxy{.source = ProxySource::Environment}, true),
         L"ok       system proxy: not used: https_proxy or all_proxy is set and takes precedence"},
        {"a fixed proxy", CheckSystemProxy(fixedProxy, true),
         L"ok       system proxy: Windows' proxy setting names a:1"},
        {"the bypass list",
         CheckSystemProxy(SystemProxy{.source = ProxySource::FixedProxy, .isBypassed = true}, true),
         L"ok       system proxy: Windows' proxy setting names the service in its bypass list, so the "
         L"service is contacted directly"},
        {"SOCKS", CheckSystemProxy(SystemProxy{.source = ProxySource::FixedProxy}, true),
         L"warning  system proxy: Windows' proxy setting names no HTTP proxy, so the service is contacted "
         L"directly"},
        {"a script that returns DIRECT", CheckSystemProxy(SystemProxy{.source = ProxySource::Script}, true),
         L"ok       system proxy: Windows' configuration script names no HTTP proxy, so the service is "
         L"contacted directly"},
        {"a script without a reachable proxy", CheckSystemProxy(deadScript, true),
         L"warning  system proxy: Windows' configuration script names no proxy that accepts a connection; "
         L"tried a:1 (no connection), so the service is contacted directly"},
        {"a script that cannot be run", CheckSystemProxy(SystemProxy{.isScriptUnanswered = true}, true),
         L"warning  system proxy: Windows has no HTTP proxy, so the service is contacted directly; a "
         L"configuration script is set, but it could not be fetched or run"},
        {"a slow Windows", CheckSystemProxy(std::nullopt, true),
         L"warning  system proxy: Windows did not answer in time"},
    });
}

TEST(Doctor, ChecksTransfers)
{
    const TransferReport silent{
        .step = TransferStep::Connection,
        .isTimedOut = true,
        .lines = {L"  Trying [::1]:443...", L"  Trying 1.2.3.4:443..."}};
    const TransferReport broken{
        .step = TransferStep::ReplyEnd, .result = CURLE_PARTIAL_FILE, .error = L"libcurl's reason"};
    ExpectLines({
        {"no connection", CheckConnection(silent, Settings),
         L"error    connection: 1.2.3.4:443 did not answer within 5 seconds"},
        {"a connection", CheckConnection(MakeReply("1"), Settings),
         L"ok       connection: a.example (1.2.3.4) port 443: name 1 ms, connection 2 ms, TLS 4 ms"},
        {"a broken connection", CheckProbe(broken, Settings), L"error    probe: libcurl's reason"},
    });
}

TEST(Doctor, ChecksReplies)
{
    const std::string good = MakeOffer("https://a.example/x");
    ExpectLines({
        {"a probe with an HTTP error", CheckProbe(MakeReply("1", 404), Settings),
         L"warning  probe: /check.php answers \"1\" (HTTP status 404)"},
        {"offers", CheckUpdates(MakeReply("[" + good + "," + MakeOffer("https://c.b.example/") + "]")),
         L"ok       update query: 2 offers on trusted hosts"},
        {"an ambiguous URL", CheckUpdates(MakeReply("[" + MakeOffer("https://a.example@b.example/") + "]")),
         L"error    update query: offer 1 of 1 does not have a URL of the form https://host[:port][/path]: "
         L"https://a.example@b.example/"},
        {"any host is trusted", CheckUpdateQuery(MakeReply("[" + good + "]"), Settings, std::nullopt),
         L"warning  update query: 1 offer; without --trusted-hosts any host is trusted"},
        {"nothing newer", CheckUpdates(MakeReply("")),
         L"ok       update query: nothing is newer: the reply is empty"},
        {"an HTTP error without a body", CheckUpdates(MakeReply("", 500)),
         L"error    update query: nothing is newer: the reply is empty (HTTP status 500)"},
        {"an empty list", CheckUpdates(MakeReply("[]")),
         L"error    update query: the list is empty; to say that nothing is newer the service must send an "
         L"empty body"},
        {"another status", CheckUpdates(MakeReply(R"({"status":3})")),
         L"error    update query: the service refuses with status 3"},
        {"an offer without a URL", CheckUpdates(MakeReply(R"([{"name":"A","version":"2"}])")),
         L"error    update query: the reply could not be parsed: \"[json.exception.type_error.302] type must "
         L"be string, but is null\""},
        {"up to date", CheckQuietCall({PRODUCT_SERVICES_OUTCOME_UP_TO_DATE}),
         L"ok       quiet check: UP_TO_DATE"},
    });
}

TEST(Doctor, RecommendsTheFirstError)
{
    const Finding ok{Severity::Ok, L"a", L"", L"anchor-a"};
    const Finding warning{Severity::Warning, L"b", L"", L"anchor-b"};
    const Finding error{Severity::Error, L"c", L"", L"anchor-c"};
    const Finding later{Severity::Error, L"d", L"", L"anchor-d"};
    EXPECT_EQ(Summarize({ok}), L"All is well (0 warnings).");
    EXPECT_EQ(Summarize({ok, warning}), L"All is well (1 warning).");
    EXPECT_EQ(
        Summarize({ok, warning, error, later}),
        L"2 errors, 1 warning. Begin with \"c\": docs/troubleshooting.md#anchor-c");
    EXPECT_EQ(ToLine(error), L"error    c:  -> docs/troubleshooting.md#anchor-c");
}
