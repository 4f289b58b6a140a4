// What the doctor finds, as rules over plain values.
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
    /// As it is printed, but for the link.
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

Finding CheckLibrary(WORD machine, const FileVersion& version, const wchar_t* packageId)
{
    return CheckLibraryFile({L"X.dll", L"C:\\X.dll", true, machine, version, packageId}, OwnVersion, L"Ours");
}

Finding CheckFolder(bool hasGuard, bool hasLibrary)
{
    return CheckProgramFolder(L"C:\\App", {{.exists = hasGuard}, {.exists = hasLibrary}});
}

Finding CheckPublisher(ProductServicesPublisherResult status)
{
    return CheckSignature(L"X.dll", product_services_guard::PublisherResult{status, L"So it is."});
}

std::string Utf16(const std::wstring& text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

std::wstring Lines(int count, const std::wstring& end)
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

Finding CheckUnopened(const wchar_t* code, DWORD error)
{
    return CheckLanguageFile({code, L"F", error, ""});
}

SystemProxy FromScript(const std::vector<product_services_guard::ProxyCandidate>& candidates)
{
    SystemProxy system{.source = ProxySource::Script, .candidates = candidates};
    if (!candidates.empty() && candidates.back().isReachable) {
        system.proxy = candidates.back().proxy;
    }
    return system;
}

const TransferSettings Settings{.stepTimeout = std::chrono::seconds(5)};

TransferReport StuckIn(TransferStep step)
{
    return {
        .step = step,
        .isTimedOut = true,
        .result = CURLE_ABORTED_BY_CALLBACK,
        .lines = {L"  Trying [::1]:443...", L"  Trying 1.2.3.4:443..."}};
}

TransferReport Failed(TransferStep step)
{
    return {.step = step, .result = CURLE_COULDNT_CONNECT, .error = L"libcurl's reason"};
}

TransferReport Reply(const std::string& reply, long httpStatus = 200, int pieceCount = 1)
{
    return {
        .step = TransferStep::ReplyEnd,
        .result = CURLE_OK,
        .lines = {L"Connected to a.example (1.2.3.4) port 443 (#0)"},
        .certificate = L"Subject:CN=a",
        .httpStatus = httpStatus,
        .redirectUrl = L"https://b.example/",
        .pieceCount = pieceCount,
        .reply = reply,
        .nameTime = 1000,
        .connectTime = 3000,
        .tlsTime = 7999};
}

TransferReport WithCertificateError(TransferReport report)
{
    report.certificateError = L"It has expired.";
    return report;
}

Finding CheckUpdates(const TransferReport& report)
{
    return CheckUpdateQuery(report, Settings, L"a.example;*.b.example");
}

const std::string Good = R"({"name":"A","version":"2","url":"https://a.example/x"})";

std::string Offer(const std::string& url)
{
    return R"({"name":"B","version":"2","url":")" + url + "\"}";
}

} // namespace

TEST(Doctor, ChecksTheFilesOfAProgram)
{
    ExpectLines({
        {"no DLL", CheckFolder(false, false),
         L"error    program folder: C:\\App has neither DLL; --program names the application's folder"},
        {"both", CheckFolder(true, true),
         L"warning  program folder: C:\\App has both DLLs; an application needs only the one that it loads"},
        {"the guard", CheckFolder(true, false), L"ok       program folder: C:\\App"},
        {"the library", CheckFolder(false, true), L"ok       program folder: C:\\App"},
        {"no program", CheckLibrary(0, OwnVersion, L"Ours"),
         L"error    library: X.dll is corrupt or not for 64-bit Windows (x64)"},
        {"32 bits", CheckLibrary(IMAGE_FILE_MACHINE_I386, OwnVersion, L"Ours"),
         L"error    library: X.dll is corrupt or not for 64-bit Windows (x64)"},
        {"another package", CheckLibrary(IMAGE_FILE_MACHINE_AMD64, OwnVersion, L"Theirs"),
         L"error    library: X.dll belongs to the package \"Theirs\" instead of Ours"},
        {"older", CheckLibrary(IMAGE_FILE_MACHINE_AMD64, {2, 3, 3}, L"Ours"),
         L"warning  library: X.dll is version 2.3.3, older than this program, whose version the other "
         L"findings are about"},
        {"newer", CheckLibrary(IMAGE_FILE_MACHINE_AMD64, {2, 10, 0}, L"Ours"),
         L"warning  library: X.dll is version 2.10.0, newer than this program, whose version the other "
         L"findings are about"},
        {"ours", CheckLibrary(IMAGE_FILE_MACHINE_AMD64, OwnVersion, L"Ours"),
         L"ok       library: X.dll is version 2.3.4 of Ours"},
        {"signed", CheckPublisher(PRODUCT_SERVICES_PUBLISHER_TRUSTED),
         L"ok       signature: X.dll: So it is."},
        {"not signed", CheckPublisher(PRODUCT_SERVICES_PUBLISHER_NOT_SIGNED),
         L"warning  signature: X.dll: So it is."},
        {"modified", CheckPublisher(PRODUCT_SERVICES_PUBLISHER_FILE_MODIFIED),
         L"error    signature: X.dll: So it is."},
        {"slow", CheckSignature(L"X.dll", std::nullopt),
         L"warning  signature: X.dll: Windows did not verify it in time"},
    });
}

TEST(Doctor, ChecksTheProduct)
{
    ExpectLines({
        {"an empty API key", CheckApiKey(L""), L"error    API key: is empty: a call sends nothing"},
        {"an API key", CheckApiKey(L"draft20-7k"), L"ok       API key: draf... (10 characters)"},
        {"a short API key", CheckApiKey(L"1234567"), L"ok       API key: 7 characters"},
        {"a record", CheckRecord({.keyPath = L"HKEY"}, L"P", L"1"), L"ok       record: HKEY"},
        {"a key", CheckRecordKey({REG_SZ, L"DEMO-2026"}), L"ok       product key: DEMO... (9 characters)"},
        {"no key", CheckRecordKey({}), L"error    product key: is missing: a call sends nothing"},
        {"an empty key", CheckRecordKey({REG_SZ, L""}),
         L"error    product key: is empty: a call sends nothing"},
        {"a key that is a number", CheckRecordKey({REG_DWORD, L""}),
         L"error    product key: has the type 4 and must be REG_SZ: a call sends nothing"},
        {"a version", CheckRecordVersion({REG_SZ, L"2026.1"}), L"ok       stored version: 2026.1"},
        {"no version", CheckRecordVersion({}),
         L"error    stored version: is missing: the service is asked for an empty version and has nothing "
         L"newer"},
        {"a version with variables", CheckRecordVersion({REG_EXPAND_SZ, L""}),
         L"error    stored version: has the type 2 and must be REG_SZ: the service is asked for an empty "
         L"version and has nothing newer"},
        {"an ordinary screen", CheckDisplayScaling(100), L"ok       display scaling: 100 %"},
        {"a fine screen", CheckDisplayScaling(150),
         L"warning  display scaling: 150 %: the upgrade center is enlarged by Windows in a guarded call; in "
         L"a direct call and with the host's own DPI awareness its picture stays small"},
    });
}

TEST(Doctor, ChecksTheLanguageFile)
{
    const std::wstring notUtf16 =
        L"error    language file: F is not UTF-16 (little-endian), so that texts are odd or empty";
    ExpectLines({
        {"as it should be", CheckTexts(Utf16(Lines(88, L"\n"))), L"ok       language file: F"},
        {"no end of the last line", CheckTexts(Utf16(Lines(87, L"\n") + L"text")),
         L"ok       language file: F"},
        {"a line too few", CheckTexts(Utf16(Lines(87, L"\n"))),
         L"error    language file: F has 87 lines and must have 88"},
        {"a byte-order mark", CheckTexts(Utf16(L'\xFEFF' + Lines(88, L"\n"))),
         L"error    language file: F begins with a byte-order mark, which becomes part of the first text"},
        {"carriage returns", CheckTexts(Utf16(Lines(88, L"\r\n"))),
         L"error    language file: F has carriage returns, which become part of the texts"},
        {"UTF-8", CheckTexts("text\ntext\n"), notUtf16.c_str()},
        {"half a character", CheckTexts(Utf16(Lines(88, L"\n")) + "t"), notUtf16.c_str()},
        {"half a surrogate pair", CheckTexts(Utf16(Lines(88, L"\xD800\n"))), notUtf16.c_str()},
        {"empty", CheckTexts(""), notUtf16.c_str()},
        {"missing", CheckUnopened(L"DE", ERROR_PATH_NOT_FOUND),
         L"error    language file: F does not exist: English is shown"},
        {"missing for English", CheckUnopened(L"EN", ERROR_FILE_NOT_FOUND),
         L"ok       language file: F does not exist: English is shown"},
        {"missing for an unknown language", CheckUnopened(L"US", ERROR_FILE_NOT_FOUND),
         L"ok       language file: F does not exist: English is shown"},
        {"read-only", CheckUnopened(L"DE", ERROR_ACCESS_DENIED),
         L"error    language file: F may not be written to by the user: English is shown"},
        {"in use", CheckUnopened(L"DE", ERROR_SHARING_VIOLATION),
         L"error    language file: F is in use by another program: English is shown"},
    });
}

TEST(Doctor, ChecksProxies)
{
    ExpectLines({
        {"no variable", CheckProxyVariables({}),
         L"ok       proxy variables: neither https_proxy nor all_proxy is set"},
        {"https_proxy", CheckProxyVariables({L"http://a:1", L"http://b:1", L""}),
         L"warning  proxy variables: https_proxy is http://a:1"},
        {"all_proxy", CheckProxyVariables({L"", L"http://b:1", L"*.c"}),
         L"warning  proxy variables: all_proxy is http://b:1; no_proxy is *.c"},
        {"no proxy in Windows", CheckSystemProxy(SystemProxy{}, true),
         L"ok       system proxy: Windows has no HTTP proxy, so that the service is asked directly"},
        {"variables are set", CheckSystemProxy(SystemProxy{.source = ProxySource::Environment}, true),
         L"ok       system proxy: not used: https_proxy or all_proxy is set and takes precedence"},
        {"a fixed proxy",
         CheckSystemProxy(SystemProxy{.source = ProxySource::FixedProxy, .proxy = L"a:1"}, true),
         L"ok       system proxy: Windows' proxy setting names a:1"},
        {"a fixed proxy that is not wanted",
         CheckSystemProxy(SystemProxy{.source = ProxySource::FixedProxy, .proxy = L"a:1"}, false),
         L"ok       system proxy: Windows' proxy setting names a:1; not used: --no-system-proxy is set"},
        {"the bypass list",
         CheckSystemProxy(SystemProxy{.source = ProxySource::FixedProxy, .isBypassed = true}, true),
         L"ok       system proxy: Windows' proxy setting names the service in its bypass list, so that the "
         L"service is asked directly"},
        {"SOCKS", CheckSystemProxy(SystemProxy{.source = ProxySource::FixedProxy}, true),
         L"warning  system proxy: Windows' proxy setting names no HTTP proxy, so that the service is asked "
         L"directly"},
        {"a script that says DIRECT", CheckSystemProxy(FromScript({}), true),
         L"ok       system proxy: Windows' configuration script names no HTTP proxy, so that the service is "
         L"asked directly"},
        {"the second of a script", CheckSystemProxy(FromScript({{L"a:1", false}, {L"b:2", true}}), true),
         L"ok       system proxy: Windows' configuration script names b:2; tried a:1 (no connection), b:2 "
         L"(connected)"},
        {"none of a script", CheckSystemProxy(FromScript({{L"a:1", false}}), true),
         L"warning  system proxy: Windows' configuration script names no proxy that accepts a connection; "
         L"tried a:1 (no connection), so that the service is asked directly"},
        {"a script that is not there", CheckSystemProxy(SystemProxy{.isScriptUnanswered = true}, true),
         L"warning  system proxy: Windows has no HTTP proxy, so that the service is asked directly; a "
         L"configuration script is set, but it could not be fetched or run"},
        {"a slow Windows", CheckSystemProxy(std::nullopt, true),
         L"warning  system proxy: Windows did not answer in time"},
    });
}

TEST(Doctor, ChecksHowFarATransferGets)
{
    ExpectLines({
        {"hangs in the look-up", CheckConnection(StuckIn(TransferStep::Name), Settings),
         L"error    connection: the DNS lookup of the service or of its proxy timed out after 5 seconds"},
        {"hangs in the connection", CheckConnection(StuckIn(TransferStep::Connection), Settings),
         L"error    connection: 1.2.3.4:443 did not answer within 5 seconds"},
        {"hangs before TLS", CheckConnection(StuckIn(TransferStep::TlsAnswer), Settings),
         L"error    connection: 1.2.3.4:443 accepted the connection, but sent nothing within 5 seconds"},
        {"hangs in TLS", CheckConnection(StuckIn(TransferStep::TlsHandshake), Settings),
         L"error    connection: 1.2.3.4:443 did not complete the TLS handshake within 5 seconds"},
        {"fails", CheckConnection(Failed(TransferStep::Connection), Settings),
         L"error    connection: libcurl's reason"},
        {"gets to the request", CheckConnection(Reply("1"), Settings),
         L"ok       connection: a.example (1.2.3.4) port 443: name 1 ms, connection 2 ms, TLS 4 ms"},
        {"a certificate", CheckCertificate(Reply("1"), false),
         L"ok       certificate: a guarded call accepts it (a direct call accepts any): Subject:CN=a"},
        {"a certificate that is refused", CheckCertificate(WithCertificateError(Reply("1")), false),
         L"error    certificate: a guarded call refuses it (a direct call accepts any): It has expired."},
        {"any certificate is wanted", CheckCertificate(WithCertificateError(Reply("1")), true),
         L"warning  certificate: a guarded call refuses it (a direct call accepts any): It has expired."},
        {"hangs before the reply", CheckProbe(StuckIn(TransferStep::ReplyStart), Settings),
         L"error    probe: no reply came within 5 seconds"},
        {"hangs in the reply", CheckProbe(StuckIn(TransferStep::ReplyEnd), Settings),
         L"error    probe: the reply did not end within 5 seconds"},
        {"breaks off", CheckProbe(Failed(TransferStep::ReplyEnd), Settings),
         L"error    probe: libcurl's reason"},
    });
}

TEST(Doctor, ChecksReplies)
{
    ExpectLines({
        {"a probe", CheckProbe(Reply("1"), Settings), L"ok       probe: /check.php answers \"1\""},
        {"a probe with a line end", CheckProbe(Reply("1\n"), Settings),
         L"error    probe: /check.php answers \"1?\" instead of exactly \"1\""},
        {"a probe that is not found", CheckProbe(Reply("1", 404), Settings),
         L"warning  probe: /check.php answers \"1\" (HTTP status 404)"},
        {"a redirect", CheckProbe(Reply("1", 307), Settings),
         L"error    probe: HTTP status 307 redirects to https://b.example/, but redirects are not followed"},
        {"pieces", CheckUpdates(Reply("[" + Good + "]", 200, 2)),
         L"error    update query: the reply arrived in 2 pieces, of which the library keeps only the last"},
        {"an offer", CheckUpdates(Reply("[" + Good + "]")),
         L"ok       update query: 1 offer on trusted hosts"},
        {"offers", CheckUpdates(Reply("[" + Good + "," + Offer("https://c.b.example/") + "]")),
         L"ok       update query: 2 offers on trusted hosts"},
        {"a later offer elsewhere", CheckUpdates(Reply("[" + Good + "," + Offer("https://b.example/") + "]")),
         L"error    update query: offer 2 of 2 does not lead to a trusted host (a.example;*.b.example): "
         L"https://b.example/"},
        {"an offer that parsers read differently",
         CheckUpdates(Reply("[" + Offer("https://a.example@b.example/") + "]")),
         L"error    update query: offer 1 of 1 does not have a URL of the form https://host[:port][/path]: "
         L"https://a.example@b.example/"},
        {"any host is trusted", CheckUpdateQuery(Reply("[" + Good + "]"), Settings, std::nullopt),
         L"warning  update query: 1 offer; without --trusted-hosts any host is trusted"},
        {"nothing newer", CheckUpdates(Reply("", 200, 0)),
         L"ok       update query: nothing is newer: the reply is empty"},
        {"an error without a word", CheckUpdates(Reply("", 500, 0)),
         L"error    update query: nothing is newer: the reply is empty (HTTP status 500)"},
        {"an empty list", CheckUpdates(Reply("[]")),
         L"error    update query: the list is empty; to say that nothing is newer the service must send an "
         L"empty body"},
        {"a refusal", CheckUpdates(Reply(R"({"status":0,"error":"unknown product key"})")),
         L"error    update query: the service refuses with status 0: \"unknown product key\""},
        {"another status", CheckUpdates(Reply(R"({"status":3})")),
         L"error    update query: the service refuses with status 3"},
        {"an offer without a URL", CheckUpdates(Reply(R"([{"name":"A","version":"2"}])")),
         L"error    update query: the reply could not be parsed: \"[json.exception.type_error.302] type must "
         L"be string, but is null\""},
        {"a later offer that is none", CheckUpdates(Reply("[" + Good + ",1]")),
         L"error    update query: the reply could not be parsed: \"[json.exception.type_error.305] cannot "
         L"use operator[] with a string argument with number\""},
        {"a newer release",
         CheckQuietCall({PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE, 200, L"https://a.example/"}),
         L"ok       quiet check: NEWER_RELEASE: https://a.example/"},
        {"up to date", CheckQuietCall({PRODUCT_SERVICES_OUTCOME_UP_TO_DATE}),
         L"ok       quiet check: UP_TO_DATE"},
        {"a refused call", CheckQuietCall({PRODUCT_SERVICES_OUTCOME_REFUSED, 940, L"No."}),
         L"error    quiet check: REFUSED: No."},
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
