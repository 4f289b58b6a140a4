#include "support/library_fixture.h"

namespace {

std::wstring box;

int NoteBox(HWND owner, const wchar_t* text, const wchar_t* caption, UINT flags)
{
    EXPECT_EQ(owner, nullptr);
    EXPECT_EQ(flags, static_cast<UINT>(MB_OK | MB_ICONERROR)) << "the good news, too";
    box += std::wstring(L", box ") + caption + L": " + text;
    return IDOK;
}

BOOL WINAPI GiveComputerName(wchar_t* name, DWORD* size)
{
    wcscpy_s(name, *size, L"DRAWING-PC");
    *size = 10;
    return TRUE;
}

std::uintptr_t FailForThread(void*, unsigned, unsigned (*)(void*), void*, unsigned, unsigned*)
{
    ADD_FAILURE() << "a thread was started";
    return 0;
}

const Outcome Latest = L"nothing, box Product: You are running the latest version";
const Outcome NoInternet = L"nothing, box Product: No internet found!";

// Update checks whose message boxes are noted instead of shown.
class UpdateCheck : public LibraryTest
{
protected:
    void Load() override
    {
        LibraryTest::Load();
        ReplaceImport(library, "MessageBoxW", NoteBox);
    }

    // With the box that it shows.
    Outcome Check()
    {
        box.clear();
        return LibraryTest::Check() + box;
    }
};

} // namespace

TEST_F(UpdateCheck, PostsTheQueryAndReportsTheFirstOffer)
{
    service.Answer(R"([{"name":"X","version":"2","url":"\u00fc"},{"name":"Y","version":"3","url":"b"}])");
    EXPECT_EQ(Check(), L"200 \xFC");
    EXPECT_TRUE(IsAsked(
        "^POST /get_updates\\.php HTTP/1\\.1\r\nHost: [^\r]*\r\nAccept: \\*/\\*\r\nContent-Length: \\d+\r\n"
        "Content-Type: application/x-www-form-urlencoded\r\n\r\n"
        "api_key=api-key&key=product-key&hardware_id=[0-9a-f]{64}&version=20\\.1&up=1$"));
}

TEST_F(UpdateCheck, ReadsEachReplyAsItsKind)
{
    const Outcome noIndex = L"nothing, [json.exception.type_error.305] cannot use operator[] with a ";
    const std::tuple<const char*, std::string, Outcome> replies[]{
        {"nothing", "", Latest},
        {"a refusal", R"({"status":0,"error":"no"})", NoInternet},
        {"status: a fraction above 0", R"({"status":0.9})", NoInternet},
        {"status: a fraction below 0", R"({"status":-0.9})", NoInternet},
        {"status: false", R"({"status":false})", NoInternet},
        {"status: true", R"({"status":true})", Nothing},
        {"status: another number", R"({"status":1})", Nothing},
        {"status: 2 to the power of 32", R"({"status":4294967296})", NoInternet},
        {"status: 2 to the power of 32, and 1", R"({"status":4294967297})", Nothing},
        {"status: beyond every number", R"({"status":1e999})",
         L"nothing, [json.exception.out_of_range.406] number overflow parsing '1e999'"},
        {"status: a text", R"({"status":"0"})", MustBe + L"number, but is string"},
        {"an error page", "<html>error</html>", NoJson},
        {"a comment", "// a comment\n" + Offer, NoJson},
        {"nesting without an end", std::string(16300, '['), NoJson},
        {"an object without a status", R"({"name":"X"})", noIndex + L"numeric argument with object"},
        {"a number", "1", noIndex + L"numeric argument with number"},
        {"no offers", "[]", MustBe + L"string, but is null"},
        {"no name", R"([{"version":2,"url":3}])", MustBe + L"string, but is null"},
        {"no version", R"([{"name":"X","url":3}])", MustBe + L"string, but is null"},
        {"no url", R"([{"name":"X","version":"2"}])", MustBe + L"string, but is null"},
        {"name: a number", R"([{"name":1,"version":true,"url":"u"}])", MustBe + L"string, but is number"},
        {"version: a truth", R"([{"name":"","version":true,"url":[]}])", MustBe + L"string, but is boolean"},
        {"name: not convertible", R"([{"name":"\ud83d\ude00","version":"","url":"u"}])", BadConversion},
        {"url: not convertible", R"([{"name":"","version":"","url":"\ud83d\ude00"}])", BadConversion},
        {"an offer", Offer, L"200 u"},
    };
    for (const auto& [name, reply, outcome] : replies) {
        SCOPED_TRACE(name);
        service.Answer(reply);
        EXPECT_EQ(Check(), outcome);
    }
}

TEST_F(UpdateCheck, TakesWhatEachTransferLeaves)
{
    const std::string chunks = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    const std::tuple<const char*, std::string, Outcome> transfers[]{
        {"a redirect", HttpReply(Offer, "301 Moved Permanently\r\nLocation: /check.php"), L"200 u"},
        {"an error page", HttpReply(Offer, "503 Busy"), L"200 u"},
        {"an empty error page", HttpReply("", "500 Internal Server Error"), Latest},
        {"two pieces", chunks + "1\r\n[\r\n26\r\n" + Offer + "\r\n0\r\n\r\n", L"200 u"},
        {"closed without a reply", "", NoInternet},
        {"a short body", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n[{", NoInternet},
    };
    for (const auto& [name, reply, outcome] : transfers) {
        SCOPED_TRACE(name);
        service.Send(reply);
        EXPECT_EQ(Check(), outcome);
        EXPECT_FALSE(IsAsked("POST[^]*POST|^$")) << "asked more than once, or not at all";
    }
    service.Stop();
    EXPECT_EQ(Check(), NoInternet) << "the connection is refused";
}

TEST_F(UpdateCheck, StartsNoThreadToResolveAName)
{
    ReplaceImport(library, "_beginthreadex", FailForThread);
    // This computer's name, which libcurl does not know by itself as it does "localhost".
    char name[256] = "http://";
    gethostname(name + 7, sizeof name - 7);
    SetEnvironmentVariableA("http_proxy", name);
    EXPECT_EQ(Check(), NoInternet);
    SetEnvironmentVariableA("http_proxy", nullptr);
}

TEST_F(UpdateCheck, WithoutAKeySendsNothingAndSaysNothing)
{
    for (const wchar_t* apiKey : {static_cast<const wchar_t*>(nullptr), L""}) {
        host.apiKey = apiKey;
        EXPECT_EQ(Check(), Nothing);
    }
    host.apiKey = L"api-key";
    records.Write(L"Product\\1.0", L"key", L"");
    EXPECT_EQ(Check(), Nothing);
    EXPECT_TRUE(IsAsked("^$"));
}

TEST_F(UpdateCheck, SendsItsValuesAsTheyAre)
{
    records.RemoveAll();
    records.Write(L"Product\\1.0", L"key", L"A&B=%+\xFC");
    host.apiKey = L"a b";
    EXPECT_EQ(Check(), L"200 u");
    EXPECT_TRUE(IsAsked("api_key=a b&key=A&B=%\\+\xC3\xBC&hardware_id=\\w{64}&version=&up=1$"));
    host.apiKey = L"\xD83D";
    EXPECT_EQ(Check(), BadConversion);
    EXPECT_TRUE(IsAsked("^$"));
}

TEST_F(UpdateCheck, SendsAHashOfTheMachinesIdOrElseOfItsName)
{
    // SHA-256 of "ProductServices machine identifier", a line feed, and the id or the name, in UTF-16.
    const std::string ofTheId = "45c42dc13b5eaa0660c4e6582b9f9d958981a621e0d3b02dbcc1af9bfe59596f";
    const std::string ofTheName = "fe9baf79c4ab944c6092b1abec782d121c1b65d2e837c12de2966e8848379f77";
    const std::tuple<const char*, const wchar_t*, DWORD, std::string> machines[]{
        {"an id", L"01234567-89ab-cdef-0123-456789abcdef", REG_SZ, ofTheId},
        {"an empty id", L"", REG_SZ, ofTheName},
        {"an id that is no text", L"0123", REG_BINARY, ofTheName},
        {"no id", nullptr, REG_SZ, ofTheName},
    };
    for (const auto& [name, id, type, hash] : machines) {
        SCOPED_TRACE(name);
        const MachineRegistry machine;
        if (id) {
            RegSetKeyValueW(
                HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Cryptography", L"MachineGuid", type, id,
                static_cast<DWORD>((std::wcslen(id) + 1) * sizeof *id));
        }
        Reload();
        ReplaceImport(library, "GetComputerNameW", GiveComputerName);
        EXPECT_EQ(Check(), L"200 u");
        EXPECT_TRUE(IsAsked(("&hardware_id=" + hash + "&").c_str()));
    }
}

TEST_F(UpdateCheck, KeepsTheLanguageAndTheProductOfTheFirstCall)
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
    EXPECT_EQ(Check(), L"nothing, box Other: text 57") << "the caption is each call's own";
    EXPECT_TRUE(IsAsked("&key=new-key&.*&version=&")) << "read anew";
}

TEST_F(UpdateCheck, TriesFiveTimesForARecord)
{
    host.productName = L"Unknown";
    atPause = [&] { records.Write(L"Unknown\\1.0", L"key", L"1"); };
    EXPECT_EQ(Check(), NoRecord) << "there was none when the product was chosen";
    EXPECT_EQ(pauses, 5);
}

TEST_F(UpdateCheck, GoesOnAsSoonAsTheRecordIsThere)
{
    EXPECT_EQ(Check(), L"200 u");
    EXPECT_EQ(pauses, 0);
    records.RemoveAll();
    atPause = [&] {
        if (pauses == 2) {
            records.Write(L"Product\\1.0", L"key", L"repaired");
        }
    };
    EXPECT_EQ(Check(), L"200 u");
    EXPECT_EQ(pauses, 2);
}

TEST_F(UpdateCheck, TakesNullForNoText)
{
    Export("CheckForUpdates")(nullptr);
    Export("Upgrade")(nullptr);
    EXPECT_TRUE(IsAsked("^$"));
    EXPECT_EQ(Check(), L"200 u");
    wantsText = false;
    EXPECT_EQ(Check(), L"200 " + std::wstring(64 * 1024, L'#'));
    host.productName = nullptr;
    host.productVersion = nullptr;
    service.Answer("");
    EXPECT_EQ(Check(), L"nothing, box : You are running the latest version");
    Reload();
    EXPECT_EQ(Check().substr(0, 4), L"950 ") << "a product without a name has no record";
}
