#include "support/library_fixture.h"
#include "support/replies.h"

#include <bcrypt.h>

namespace {

BOOL WINAPI GetComputerNameStub(wchar_t* name, DWORD* size)
{
    wcscpy_s(name, *size, L"DRAWING-PC");
    *size = 10;
    return TRUE;
}

// Unlike that of Windows, Wine's function accepts null.
wchar_t* WINAPI StrCpyStub(wchar_t* buffer, const wchar_t* text)
{
    EXPECT_NE(buffer, nullptr);
    return lstrcpyW(buffer, text);
}

// The hash of the text in UTF-16, in lower-case hexadecimal digits.
std::string ComputeSha256(std::wstring text)
{
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0);
    unsigned char digest[32] = {};
    const auto size = static_cast<ULONG>(text.size() * sizeof(wchar_t));
    BCryptHash(
        algorithm, nullptr, 0, reinterpret_cast<unsigned char*>(text.data()), size, digest, sizeof digest);
    BCryptCloseAlgorithmProvider(algorithm, 0);
    char digits[65];
    for (int i = 0; i < 32; ++i) {
        std::snprintf(digits + 2 * i, 3, "%02x", digest[i]);
    }
    return digits;
}

const Outcome Latest = L"nothing, box Product: You are running the latest version";
const Outcome NoInternet = L"nothing, box Product: No internet found!";

using UpdateCheck = LibraryTest;

} // namespace

TEST_F(UpdateCheck, PostsTheQueryAndReportsTheFirstOffer)
{
    service.Answer(R"([{"name":"X","version":"2","url":"\u00fc"},{"name":"Y","version":"3","url":"b"}])");
    EXPECT_EQ(Check(), L"200 \xFC");
    EXPECT_TRUE(RequestsMatch(
        "^POST /get_updates\\.php HTTP/1\\.1\r\nHost: [^\r]*\r\nAccept: \\*/\\*\r\nContent-Length: \\d+\r\n"
        "Content-Type: application/x-www-form-urlencoded\r\n\r\n"
        "api_key=api-key&key=product-key&hardware_id=[0-9a-f]{64}&version=20\\.1&up=1$"));
}

TEST_F(UpdateCheck, HandlesEachReply)
{
    const std::vector<Reply> replies = RepliesTo("check");
    EXPECT_GT(replies.size(), 20u);
    for (const auto& [name, text, outcome] : replies) {
        SCOPED_TRACE(name);
        service.Answer(text);
        EXPECT_EQ(Check(), outcome);
    }
}

TEST_F(UpdateCheck, HandlesEachTransfer)
{
    const std::string chunks = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    const std::tuple<const char*, std::string, Outcome> transfers[]{
        {"a redirect", HttpReply(Offer, "301 Moved Permanently\r\nLocation: /check.php"), L"200 u"},
        {"an error page", HttpReply(Offer, "503 Busy"), L"200 u"},
        {"an empty error page", HttpReply("", "500 Internal Server Error"), Latest},
        {"two chunks", chunks + "1\r\n[\r\n26\r\n" + Offer + "\r\n0\r\n\r\n", L"200 u"},
        {"closed without a reply", "", NoInternet},
        {"a short body", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n[{", NoInternet},
    };
    for (const auto& [name, reply, outcome] : transfers) {
        SCOPED_TRACE(name);
        service.Send(reply);
        EXPECT_EQ(Check(), outcome);
        EXPECT_TRUE(RequestsMatch("^POST((?!POST)[^])*$")) << "not exactly one";
    }
    service.Stop();
    EXPECT_EQ(Check(), NoInternet) << "the connection is refused";
}

TEST_F(UpdateCheck, ResolvesNamesWithoutAThread)
{
    ImportHook thread;
    EXPECT_FALSE(thread.Install(dll, "_beginthreadex", nullptr)) << "libcurl resolves names in a thread";
}

TEST_F(UpdateCheck, SendsNothingWithoutAKey)
{
    for (const wchar_t* apiKey : {static_cast<const wchar_t*>(nullptr), L""}) {
        host.apiKey = apiKey;
        EXPECT_EQ(Check(), Nothing);
    }
    host.apiKey = L"api-key";
    records.Write(L"Product\\1.0", L"key", L"");
    EXPECT_EQ(Check(), Nothing);
    EXPECT_TRUE(RequestsMatch("^$"));
}

TEST_F(UpdateCheck, SendsValuesUnencoded)
{
    records.RemoveAll();
    records.Write(L"Product\\1.0", L"key", L"A&B=%+\xFC");
    host.apiKey = L"a b";
    EXPECT_EQ(Check(), L"200 u");
    EXPECT_TRUE(RequestsMatch("api_key=a b&key=A&B=%\\+\xC3\xBC&hardware_id=\\w{64}&version=&up=1$"));
    host.apiKey = L"\xD83D";
    EXPECT_EQ(Check(), L"nothing, bad conversion");
    EXPECT_TRUE(RequestsMatch("^$"));
}

TEST_F(UpdateCheck, HashesMachineGuidOrComputerName)
{
    const std::wstring prefix =
        std::wstring(L"ProductServices machine identifier\n") + product_family::PackageId + L"\n";
    const std::string hashOfGuid = ComputeSha256(prefix + L"01234567-89ab-cdef-0123-456789abcdef");
    const std::string hashOfName = ComputeSha256(prefix + L"DRAWING-PC");
    ASSERT_EQ(hashOfGuid.size(), 64u);
    const std::tuple<const char*, const wchar_t*, DWORD, std::string> machines[]{
        {"a GUID", L"01234567-89ab-cdef-0123-456789abcdef", REG_SZ, hashOfGuid},
        {"an empty GUID", L"", REG_SZ, hashOfName},
        {"a GUID that is not REG_SZ", L"0123", REG_BINARY, hashOfName},
        {"no GUID", nullptr, REG_SZ, hashOfName},
    };
    for (const auto& [name, guid, type, hash] : machines) {
        SCOPED_TRACE(name);
        const MachineRegistry machine;
        if (guid) {
            RegSetKeyValueW(
                HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Cryptography", L"MachineGuid", type, guid,
                static_cast<DWORD>((std::wcslen(guid) + 1) * sizeof *guid));
        }
        Reload();
        ReplaceImport("GetComputerNameW", GetComputerNameStub);
        EXPECT_EQ(Check(), L"200 u");
        EXPECT_TRUE(RequestsMatch("&hardware_id=" + hash + "&"));
    }
}

TEST_F(UpdateCheck, KeepsTheFirstCallsLanguageAndProduct)
{
    InstallLanguage();
    service.Answer("");
    EXPECT_EQ(Check(), L"nothing, box Product: text 74");
    host.productName = L"Other";
    host.languageId = PRODUCT_SERVICES_LANGUAGE_EN;
    service.Answer(R"({"status":0})");
    records.RemoveAll();
    records.Write(L"Other\\1.0", L"key", L"other-key");
    EXPECT_EQ(Check(), L"950 text 73");
    records.Write(L"Product\\1.0", L"key", L"new-key");
    EXPECT_EQ(Check(), L"nothing, box Other: text 57") << "the caption is that of the current call";
    EXPECT_TRUE(RequestsMatch("&key=new-key&.*&version=&")) << "the record is read again";
}

TEST_F(UpdateCheck, RetriesUntilTheRecordCanBeRead)
{
    EXPECT_EQ(Check(), L"200 u");
    EXPECT_EQ(sleepCount, 0);
    records.RemoveAll();
    onSleep = [&] {
        if (sleepCount == 2) {
            records.Write(L"Product\\1.0", L"key", L"repaired");
        }
    };
    EXPECT_EQ(Check(), L"200 u");
    EXPECT_EQ(sleepCount, 2);

    records.RemoveAll();
    Reload();
    onSleep = [&] { records.Write(L"Product\\1.0", L"key", L"too late"); };
    EXPECT_EQ(Check(), NoRecord) << "there was none when the product was chosen";
    EXPECT_EQ(sleepCount, 5);
}

TEST_F(UpdateCheck, AcceptsNullTexts)
{
    GetExport<decltype(&CheckForUpdates)>("CheckForUpdates")(nullptr);
    GetExport<decltype(&Upgrade)>("Upgrade")(nullptr);
    EXPECT_TRUE(RequestsMatch("^$"));
    EXPECT_EQ(Check(), L"200 u");
    ReplaceImport("StrCpyW", StrCpyStub);
    passTextBuffer = false;
    EXPECT_EQ(Check(), L"200 " + std::wstring(64 * 1024, L'#'));
    host.productName = nullptr;
    host.productVersion = nullptr;
    service.Answer("");
    EXPECT_EQ(Check(), L"nothing, box : You are running the latest version");
    Reload();
    EXPECT_EQ(Check().substr(0, 4), L"950 ") << "a product without a name has no record";
}
