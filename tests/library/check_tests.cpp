#include "support/import_hook.h"
#include "support/library_fixture.h"

namespace {

std::wstring box;
std::vector<DWORD> pauses;
std::function<void()> atPause;

int NoteBox(HWND owner, const wchar_t* text, const wchar_t* caption, UINT flags)
{
    box += (owner ? L"; owned box " : L"; box ") + std::to_wstring(flags) + L" " + caption + L": " + text;
    return IDOK;
}

void NotePause(DWORD milliseconds)
{
    pauses.push_back(milliseconds);
    atPause();
}

std::uintptr_t FailForThread(void*, unsigned, unsigned (*)(void*), void*, unsigned, unsigned*)
{
    ADD_FAILURE() << "a thread was started";
    return 0;
}

const Outcome Latest = Untouched + L"; box 16 Product: You are running the latest version";
const Outcome NoInternet = Untouched + L"; box 16 Product: No internet found!";

// Update checks whose message boxes and pauses are noted instead of taken.
class UpdateCheck : public LibraryTest
{
protected:
    UpdateCheck()
    {
        ReplaceImport(library, "MessageBoxW", NoteBox);
        ReplaceImport(library, "Sleep", NotePause);
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
    const Outcome noIndex = Untouched + L", [json.exception.type_error.305] cannot use operator[] with a ";
    const std::pair<std::string, Outcome> replies[]{
        {"", Latest},
        {R"({"status":0,"error":"no"})", NoInternet},
        {R"({"status":-0.9})", NoInternet},
        {R"({"status":false})", NoInternet},
        {R"({"status":1})", Untouched},
        {"<html>error</html>", NoJson},
        {"// a comment\n" + Offer, NoJson},
        {"[\"\xFF\"]", NoJson},
        {std::string(16300, '['), NoJson},
        {R"({"status":"0"})", MustBe + L"number, but is string"},
        {R"({"status":null})", MustBe + L"number, but is null"},
        {R"({"name":"X","version":"2","url":"u"})", noIndex + L"numeric argument with object"},
        {"1", noIndex + L"numeric argument with number"},
        {"[]", MustBe + L"string, but is null"},
        {"null", MustBe + L"string, but is null"},
        {R"([{"name":"X","version":"2"}])", MustBe + L"string, but is null"},
        {R"([{"name":1,"version":"2","url":null}])", MustBe + L"string, but is number"},
        {"[{\"name\":\"\xF0\x9F\x98\x80\",\"version\":\"2\",\"url\":\"u\"}]", BadConversion},
        {Offer, L"200 u"},
    };
    for (const auto& [reply, expected] : replies) {
        service.Answer(reply);
        EXPECT_EQ(Check(), expected) << reply.substr(0, 100);
    }
    host.apiKey = L"\xD83D";
    EXPECT_EQ(Check(), BadConversion);
}

TEST_F(UpdateCheck, TakesWhatEachTransferLeaves)
{
    const std::string chunks = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    const std::string offerChunk = "26\r\n" + Offer + "\r\n";
    const std::tuple<const char*, Reply, Outcome> transfers[]{
        {"redirect", Reply::Http(Offer, "301 Moved Permanently\r\nLocation: /check.php"), L"200 u"},
        {"error page", Reply::Http(Offer, "503 Busy"), L"200 u"},
        {"empty error page", Reply::Http("", "500 Internal Server Error"), Latest},
        {"last piece", {{chunks + "5\r\nfirst\r\n", offerChunk, "0\r\n\r\n"}, 50}, L"200 u"},
        {"piece after the offer", {{chunks + offerChunk, "1\r\n{\r\n", "0\r\n\r\n"}, 50}, NoJson},
        {"closed without a reply", {}, NoInternet},
        {"short body", {{"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n[{"}}, NoInternet},
    };
    for (const auto& [name, reply, expected] : transfers) {
        service.Answer(reply);
        EXPECT_EQ(Check(), expected) << name;
        EXPECT_FALSE(IsAsked("POST[^]*POST|^$")) << name;
    }
}

TEST_F(UpdateCheck, StartsNoThreadToResolveAName)
{
    ReplaceImport(library, "_beginthreadex", FailForThread);
    // This computer's name, which libcurl does not know by itself as it does "localhost".
    char name[256] = "http://";
    gethostname(name + 7, sizeof name - 7);
    SetEnvironmentVariableA("http_proxy", name);
    EXPECT_EQ(Check(), NoInternet);
}

TEST_F(UpdateCheck, WithoutAKeySendsNothingAndSaysNothing)
{
    host.apiKey = nullptr;
    EXPECT_EQ(Check(), Untouched);
    host.apiKey = L"api-key";
    for (const DWORD type : {DWORD{REG_SZ}, DWORD{REG_DWORD}, DWORD{REG_EXPAND_SZ}}) {
        records.Write(L"Product\\1.0", L"key", type == REG_SZ ? L"" : L"ab", type);
        EXPECT_EQ(Check(), Untouched) << type;
    }
    EXPECT_TRUE(IsAsked("^$"));
}

TEST_F(UpdateCheck, KeepsTheLanguageAndTheProductOfTheFirstCall)
{
    InstallLanguage();
    service.Answer("");
    EXPECT_EQ(Check(), Untouched + L"; box 16 Product: text 74");
    host.productName = L"Other";
    host.languageId = PRODUCT_SERVICES_LANGUAGE_EN;
    records.RemoveAll();
    records.Write(L"Product\\1.0", L"key", L"new-key");
    records.Write(L"Other\\1.0", L"key", L"other-key");
    EXPECT_EQ(Check(), Untouched + L"; box 16 Other: text 74");
    EXPECT_TRUE(IsAsked("&key=new-key&.*&version=&up=1")) << "read anew";
    records.RemoveAll();
    records.Write(L"Product\\1.0", L"version", L"20.1");
    EXPECT_EQ(Check(), Untouched) << "the key is gone";
}

TEST_F(UpdateCheck, TriesFiveTimesForARecordOfTheFirstCallsProduct)
{
    host.productName = L"Unknown";
    atPause = [&] { records.Write(L"Unknown\\1.0", L"key", L"1"); };
    EXPECT_EQ(Check(), L"950 No data of the installed product was found.");
    EXPECT_EQ(pauses, std::vector<DWORD>(5, 150));
}

TEST_F(UpdateCheck, GoesOnAsSoonAsTheRecordIsThereWithNullMembersToo)
{
    Export("CheckForUpdates")(nullptr);
    EXPECT_EQ(Check(), L"200 u");
    records.RemoveAll();
    atPause = [&] { pauses.size() == 2 ? records.Write(L"Product\\1.0", L"key", L"repaired") : void(); };
    host.productName = nullptr;
    wantsText = false;
    EXPECT_EQ(Check(), L"200 untouched");
    EXPECT_TRUE(IsAsked("&key=repaired&"));
}
