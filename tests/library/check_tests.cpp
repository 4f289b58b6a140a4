#include "support/import_hook.h"
#include "support/library_fixture.h"

#include <regex>

namespace {

std::wstring box;
std::vector<DWORD> pauses;
std::function<void()> atPause;

int WINAPI NoteBox(HWND owner, const wchar_t* text, const wchar_t* caption, UINT flags)
{
    box += (owner ? L"owned " : L"") + std::to_wstring(flags) + L" " + caption + L": " + text;
    return IDOK;
}

void WINAPI NotePause(DWORD milliseconds)
{
    pauses.push_back(milliseconds);
    atPause();
}

int threads = 0;

std::uintptr_t NoteThread(void*, unsigned, unsigned (*)(void*), void*, unsigned, unsigned*)
{
    ++threads;
    return 0;
}

// Update checks whose message boxes and pauses are noted instead of taken.
class UpdateCheck : public LibraryTest
{
protected:
    UpdateCheck()
    {
        ReplaceImport(library, "MessageBoxW", NoteBox);
        ReplaceImport(library, "Sleep", NotePause);
    }

    // What a check leaves behind, and the box that it shows.
    std::pair<Outcome, std::wstring> CheckAndBox()
    {
        box.clear();
        Outcome outcome = Check();
        return {outcome, box};
    }

    std::string LastRequest() { return service.TakeRequests().back(); }
};

using Result = std::pair<Outcome, std::wstring>;

const Result Nothing{Untouched, L""};
const Result Latest{Untouched, L"16 Product: You are running the latest version"};
const Result NoInternet{Untouched, L"16 Product: No internet found!"};
const Result Offered{{200, L"u"}, L""};

constexpr char Offer[] = R"([{"name":"X","version":"2","url":"u"}])";

Result Error(const std::string& text)
{
    return {{NothingReported, L"untouched", text}, L""};
}

Result TypeError(int id, const std::string& text)
{
    return Error("[json.exception.type_error." + std::to_string(id) + "] " + text);
}

} // namespace

TEST_F(UpdateCheck, PostsTheQueryAndReportsTheFirstOffer)
{
    service.Answer(
        R"([{"name":"X","version":"2","url":"https://a/\u00fc"},{"name":"Y","version":"3","url":"b"}])");
    EXPECT_EQ(Check(), (Outcome{200, L"https://a/\xFC"}));
    const std::string request = LastRequest();
    EXPECT_TRUE(std::regex_match(
        request, std::regex("POST /get_updates\\.php HTTP/1\\.1\r\nHost: " TESTS_ADDRESS
                            ":18444\r\nAccept: \\*/\\*\r\n"
                            "Content-Length: \\d+\r\nContent-Type: application/x-www-form-urlencoded\r\n\r\n"
                            "api_key=api-key&key=product-key&hardware_id=[0-9a-f]{64}&version=20\\.1&up=1")))
        << request;
}

TEST_F(UpdateCheck, ReadsEachReplyAsItsKind)
{
    const Result parseError = Error("[json.exception.parse_error.101]");
    const std::string number = "type must be number, but is ";
    const std::string string = "type must be string, but is ";
    const std::string index = "cannot use operator[] with a numeric argument with ";
    const std::pair<std::string, Result> replies[]{
        {"", Latest},
        {R"({"status":0,"error":"no"})", NoInternet},
        {R"({"status":-0.9})", NoInternet},
        {R"({"status":false})", NoInternet},
        {R"({"status":1})", Nothing},
        {R"({"status":true})", Nothing},
        {"<html>error</html>", parseError},
        {"// a comment\n" + std::string(Offer), parseError},
        {"[\"\xFF\"]", parseError},
        {std::string(16300, '['), parseError},
        {R"({"status":"0"})", TypeError(302, number + "string")},
        {R"({"status":null})", TypeError(302, number + "null")},
        {R"({"name":"X","version":"2","url":"u"})", TypeError(305, index + "object")},
        {"1", TypeError(305, index + "number")},
        {"[]", TypeError(302, string + "null")},
        {"null", TypeError(302, string + "null")},
        {R"([{"name":"X","version":"2"}])", TypeError(302, string + "null")},
        {R"([{"name":1,"version":"2","url":null}])", TypeError(302, string + "number")},
        {R"([{"name":"X","version":["2"],"url":"u"}])", TypeError(302, string + "array")},
        {R"([["name"]])", TypeError(305, "cannot use operator[] with a string argument with array")},
        {"[{\"name\":\"\xF0\x9F\x98\x80\",\"version\":\"2\",\"url\":\"u\"}]", Error("bad conversion")},
        {Offer, Offered},
    };
    for (const auto& [reply, expected] : replies) {
        service.Answer(reply);
        Result actual = CheckAndBox();
        std::string& error = actual.first.exception;
        error.resize(std::min(error.size(), expected.first.exception.size()));
        EXPECT_EQ(actual, expected) << reply.substr(0, 100);
    }
    host.apiKey = L"\xD83D";
    EXPECT_EQ(CheckAndBox(), Error("bad conversion"));
}

TEST_F(UpdateCheck, TakesWhatEachTransferLeaves)
{
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n";
    const std::string chunks = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    const std::string offerChunk = "26\r\n" + std::string(Offer) + "\r\n";
    const std::tuple<const char*, Reply, Result> transfers[]{
        {"redirect", Reply::Http(Offer, "301 Moved Permanently\r\nLocation: /check.php"), Offered},
        {"error page", Reply::Http(Offer, "503 Busy"), Offered},
        {"empty error page", Reply::Http("", "500 Internal Server Error"), Latest},
        {"last piece", {{chunks + "5\r\nfirst\r\n", offerChunk, "0\r\n\r\n"}, 50}, Offered},
        {"piece after the offer",
         {{chunks + offerChunk, "1\r\n{\r\n", "0\r\n\r\n"}, 50},
         Error("[json.exception.parse_error.101]")},
        {"closed without a reply", {}, NoInternet},
        {"reset in the reply", {{head + "[{"}, 20, true}, NoInternet},
        {"body shorter than announced", {{head + "[{"}}, NoInternet},
        {"no HTTP", {{"SSH-2.0-something\r\n"}}, NoInternet},
    };
    for (const auto& [name, reply, expected] : transfers) {
        service.Answer(reply);
        Result actual = CheckAndBox();
        actual.first.exception.resize(expected.first.exception.size());
        EXPECT_EQ(actual, expected) << name;
        EXPECT_EQ(service.TakeRequests().size(), 1u) << name;
    }
    service.Stop();
    EXPECT_EQ(CheckAndBox(), NoInternet) << "refused";
}

TEST_F(UpdateCheck, StartsNoThreadToResolveAName)
{
    ReplaceImport(library, "_beginthreadex", NoteThread);
    // This computer's name, which libcurl does not know by itself as it does "localhost".
    char name[256] = "http://";
    gethostname(name + 7, sizeof name - 7);
    SetEnvironmentVariableA("http_proxy", name);
    EXPECT_EQ(CheckAndBox(), NoInternet);
    EXPECT_EQ(threads, 0);
}

TEST_F(UpdateCheck, WithoutAKeySendsNothingAndSaysNothing)
{
    for (const wchar_t* apiKey : {L"", static_cast<const wchar_t*>(nullptr)}) {
        host.apiKey = apiKey;
        EXPECT_EQ(CheckAndBox(), Nothing);
    }
    host.apiKey = L"api-key";
    for (const DWORD type : {REG_SZ, REG_DWORD, REG_EXPAND_SZ}) {
        records.Write(L"Product\\1.0", L"key", type == REG_SZ ? L"" : L"ab", type);
        EXPECT_EQ(CheckAndBox(), Nothing) << type;
    }
    EXPECT_TRUE(service.TakeRequests().empty());
}

TEST_F(UpdateCheck, KeepsTheLanguageAndTheProductOfTheFirstCall)
{
    InstallLanguage();
    records.Write(L"Other\\2.0", L"key", L"other-key");
    service.Answer("");
    EXPECT_EQ(CheckAndBox(), (Result{Untouched, L"16 Product: text 74"}));
    host.productName = L"Other";
    host.productVersion = L"2.0";
    host.languageId = PRODUCT_SERVICES_LANGUAGE_EN;
    records.Write(L"Product\\1.0", L"key", L"new-key");
    records.Remove(L"Product\\1.0", L"version");
    EXPECT_EQ(CheckAndBox(), (Result{Untouched, L"16 Other: text 74"}));
    EXPECT_TRUE(std::regex_search(LastRequest(), std::regex("&key=new-key&.*&version=&up=1"))) << "read anew";
    records.Remove(L"Product\\1.0", L"key");
    EXPECT_EQ(CheckAndBox(), Nothing);
}

TEST_F(UpdateCheck, TriesFiveTimesForARecordOfTheFirstCallsProduct)
{
    host.productName = L"Unknown";
    atPause = [&] { records.Write(L"Unknown\\1.0", L"key", L"1"); };
    for (const char* call : {"first", "second"}) {
        EXPECT_EQ(Check(), (Outcome{950, L"No data of the installed product was found."})) << call;
    }
    EXPECT_EQ(pauses, std::vector<DWORD>(10, 150));
}

TEST_F(UpdateCheck, GoesOnAsSoonAsTheRecordIsThereWithNullMembersToo)
{
    reinterpret_cast<decltype(&CheckForUpdates)>(
        reinterpret_cast<void*>(GetProcAddress(library, "CheckForUpdates")))(nullptr);
    service.Answer(Offer);
    EXPECT_EQ(CheckAndBox(), Offered);
    records.RemoveAll();
    atPause = [&] { pauses.size() == 2 ? records.Write(L"Product\\1.0", L"key", L"repaired") : void(); };
    host.productName = nullptr;
    wantsText = false;
    EXPECT_EQ(Check(), (Outcome{200, L"untouched"}));
    EXPECT_EQ(pauses.size(), 2u);
    EXPECT_NE(LastRequest().find("&key=repaired&"), std::string::npos);
}
