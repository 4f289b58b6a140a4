#include "support/library_fixture.h"

#include <regex>

using namespace std::chrono_literals;

namespace {

std::vector<std::wstring> boxes;
std::vector<DWORD> pauses;
std::function<void()> atPause;

int WINAPI NoteBox(HWND owner, const wchar_t* text, const wchar_t* caption, UINT flags)
{
    boxes.push_back((owner ? L"owned " : L"") + std::to_wstring(flags) + L" " + caption + L": " + text);
    return IDOK;
}

void WINAPI NotePause(DWORD milliseconds)
{
    pauses.push_back(milliseconds);
    atPause();
}

// Update checks whose message boxes and pauses are noted instead of taken.
class UpdateCheck : public LibraryTest
{
protected:
    // What a check leaves behind, and the box that it shows.
    std::pair<Outcome, std::wstring> CheckAndBox()
    {
        boxes.clear();
        Outcome outcome = Check();
        return {outcome, boxes.empty() ? L"" : boxes.size() == 1 ? boxes[0] : L"several boxes"};
    }

    Outcome Answered(const std::string& reply)
    {
        service.AnswerUpdates(Reply::Http(reply));
        return Check();
    }

    ImportHook boxHook{library, "MessageBoxW", NoteBox};
    ImportHook pauseHook{library, "Sleep", NotePause};
};

const std::wstring Latest = L"16 Product: You are running the latest version";
const std::wstring NoInternet = L"16 Product: No internet found!";

constexpr char Offer[] = R"([{"name":"X","version":"2","url":"u"}])";
const Outcome Offered{200, L"u", ""};

Outcome Error(const std::string& text)
{
    return {NothingReported, L"untouched", text};
}

Outcome TypeError(int id, const std::string& text)
{
    return Error("[json.exception.type_error." + std::to_string(id) + "] " + text);
}

} // namespace

TEST_F(UpdateCheck, PostsTheQueryAndReportsTheFirstOffer)
{
    EXPECT_EQ(
        Answered(
            R"([{"name":"X","version":"2","url":"https://a/\u00fc"},{"name":"Y","version":"3","url":"b"}])"),
        (Outcome{200, L"https://a/\xFC", ""}));
    records.Remove(L"Product", L"1.0", L"version");
    EXPECT_EQ(Answered(Offer), Offered) << "a record without a version";
    const std::vector<std::string> requests = service.TakeRequests();
    ASSERT_EQ(requests.size(), 2u);
    for (const auto& [request, version] : {std::pair{requests[0], "20\\.1"}, {requests[1], ""}}) {
        const std::regex expected(
            "POST /get_updates\\.php HTTP/1\\.1\r\nHost: " TESTS_ADDRESS ":18444\r\nAccept: \\*/\\*\r\n"
            "Content-Length: \\d+\r\nContent-Type: application/x-www-form-urlencoded\r\n\r\n"
            "api_key=api-key&key=product-key&hardware_id=[0-9a-f]{64}&version=" +
            std::string(version) + "&up=1");
        EXPECT_TRUE(std::regex_match(request, expected)) << request;
    }
}

TEST_F(UpdateCheck, ReadsEachReplyAsItsKind)
{
    const std::string parseError = "[json.exception.parse_error.101]";
    const std::string number = "type must be number, but is ";
    const std::string string = "type must be string, but is ";
    const std::string index = "cannot use operator[] with a numeric argument with ";
    const std::tuple<std::string, Outcome, std::wstring> replies[]{
        {"", Untouched, Latest},
        {R"({"status":0,"error":"no"})", Untouched, NoInternet},
        {R"({"status":-0.9})", Untouched, NoInternet},
        {R"({"status":false})", Untouched, NoInternet},
        {R"({"status":4294967296})", Untouched, NoInternet},
        {R"({"status":1})", Untouched, L""},
        {R"({"status":true})", Untouched, L""},
        {R"({"status":200,"url":"https://a"})", Untouched, L""},
        {"<html>error</html>", Error(parseError), L""},
        {"// a comment\n" + std::string(Offer), Error(parseError), L""},
        {R"([{"name":"X","version":"2","url":"u"})", Error(parseError), L""},
        {"[\"\xFF\"]", Error(parseError), L""},
        {std::string(16300, '['), Error(parseError), L""},
        {R"({"status":"0"})", TypeError(302, number + "string"), L""},
        {R"({"status":null})", TypeError(302, number + "null"), L""},
        {R"({"name":"X","version":"2","url":"u"})", TypeError(305, index + "object"), L""},
        {"1", TypeError(305, index + "number"), L""},
        {"\"text\"", TypeError(305, index + "string"), L""},
        {"[]", TypeError(302, string + "null"), L""},
        {"null", TypeError(302, string + "null"), L""},
        {R"([{"name":"X","version":"2"}])", TypeError(302, string + "null"), L""},
        {R"([{"name":1,"version":"2","url":null}])", TypeError(302, string + "number"), L""},
        {R"([{"name":"X","version":["2"],"url":"u"}])", TypeError(302, string + "array"), L""},
        {R"([["name"]])", TypeError(305, "cannot use operator[] with a string argument with array"), L""},
        {"[{\"name\":\"\xF0\x9F\x98\x80\",\"version\":\"2\",\"url\":\"u\"}]", Error("bad conversion"), L""},
        {Offer, Offered, L""},
    };
    for (const auto& [reply, outcome, shown] : replies) {
        service.AnswerUpdates(Reply::Http(reply));
        auto [actual, box] = CheckAndBox();
        actual.exception.resize(std::min(actual.exception.size(), outcome.exception.size()));
        EXPECT_EQ(actual, outcome) << reply.substr(0, 100);
        EXPECT_EQ(box, shown) << reply.substr(0, 100);
    }
    host.apiKey = L"\xD83D";
    EXPECT_EQ(Check(), Error("bad conversion"));
}

TEST_F(UpdateCheck, WithoutAKeySendsNothingAndSaysNothing)
{
    for (const wchar_t* apiKey : {L"", static_cast<const wchar_t*>(nullptr)}) {
        host.apiKey = apiKey;
        EXPECT_EQ(CheckAndBox(), std::pair(Untouched, std::wstring()));
    }
    host.apiKey = L"api-key";
    for (const auto& [data, type] : {std::pair{L"", REG_SZ}, {L"ab", REG_DWORD}, {L"ab", REG_EXPAND_SZ}}) {
        records.WriteValue(L"Product", L"1.0", L"key", data, type);
        EXPECT_EQ(CheckAndBox(), std::pair(Untouched, std::wstring())) << type;
    }
    EXPECT_TRUE(service.TakeRequests().empty());
}

TEST_F(UpdateCheck, KeepsTheLanguageAndTheProductOfTheFirstCall)
{
    InstallLanguage();
    records.Write(L"Other", L"2.0", L"other-key", L"2");
    service.AnswerUpdates(Reply::Http(""));
    EXPECT_EQ(CheckAndBox(), std::pair(Untouched, std::wstring(L"16 Product: text 74")));

    host = {L"Other", L"2.0", L"api-key", PRODUCT_SERVICES_LANGUAGE_EN, nullptr, 0, &anyText, nullptr, nullptr, 0};
    records.WriteValue(L"Product", L"1.0", L"key", L"new-key");
    records.Remove(L"Product", L"1.0", L"version");
    EXPECT_EQ(CheckAndBox(), std::pair(Untouched, std::wstring(L"16 Other: text 74")));
    EXPECT_NE(service.TakeRequests().back().find("&key=new-key&"), std::string::npos) << "read anew";
    EXPECT_EQ(Answered(Offer), Offered);
    EXPECT_NE(service.TakeRequests().back().find("&version=&"), std::string::npos) << "read anew";
}

TEST_F(UpdateCheck, TriesFiveTimesForARecordOfTheFirstCallsProduct)
{
    host.productName = L"Unknown";
    atPause = [] {};
    const Outcome noRecord{950, L"No data of the installed product was found.", ""};
    EXPECT_EQ(Check(), noRecord);
    EXPECT_EQ(pauses, std::vector<DWORD>(5, 150));
    records.Write(L"Unknown", L"1.0", L"key", L"1");
    EXPECT_EQ(Check(), noRecord) << "an unknown product stays unknown";
}

TEST_F(UpdateCheck, GoesOnAsSoonAsTheRecordIsThere)
{
    EXPECT_EQ(Answered(Offer), Offered);
    RegDeleteTreeW(HKEY_CURRENT_USER, product_family::RecordRegistryPath);
    atPause = [&] { pauses.size() == 2 ? records.Write(L"Product", L"1.0", L"repaired", L"1") : void(); };
    EXPECT_EQ(Check(), Offered);
    EXPECT_EQ(pauses.size(), 2u);
    EXPECT_NE(service.TakeRequests().back().find("&key=repaired&"), std::string::npos);
}

TEST_F(UpdateCheck, TakesANullContextAndNullMembers)
{
    reinterpret_cast<decltype(&CheckForUpdates)>(
        reinterpret_cast<void*>(GetProcAddress(library, "CheckForUpdates")))(nullptr);
    EXPECT_EQ(Answered(Offer), Offered);
    host.resultText = nullptr;
    host.productName = nullptr;
    EXPECT_EQ(Check().code, 200u);
}

TEST_F(UpdateCheck, TakesFaultsOnTheWayForARefusal)
{
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n";
    const std::pair<const char*, Reply> faults[]{
        {"closed without a reply", {}},
        {"reset before the request", {{}, 0ms, true, true}},
        {"reset in the reply", {{head + "[{"}, 20ms, true}},
        {"body shorter than announced", {{head + "[{"}}},
        {"no HTTP", {{"SSH-2.0-something\r\n"}}},
    };
    for (const auto& [name, reply] : faults) {
        service.AnswerUpdates(reply);
        EXPECT_EQ(CheckAndBox(), std::pair(Untouched, NoInternet)) << name;
    }
    service.Stop();
    EXPECT_EQ(CheckAndBox(), std::pair(Untouched, NoInternet)) << "refused";
}

TEST_F(UpdateCheck, TakesTheBodyOfAnyHttpStatus)
{
    for (const char* status : {"301 Moved Permanently\r\nLocation: /check.php", "404 Not Found", "503 Busy"}) {
        service.AnswerUpdates(Reply::Http(Offer, status));
        EXPECT_EQ(Check(), Offered) << status;
    }
    EXPECT_EQ(service.TakeRequests().size(), 3u) << "no redirect was followed";
    service.AnswerUpdates(Reply::Http("", "500 Internal Server Error"));
    EXPECT_EQ(CheckAndBox(), std::pair(Untouched, Latest));
}

TEST_F(UpdateCheck, KeepsTheLastPieceOfAReply)
{
    const std::string head = "HTTP/1.1 200 OK\r\nConnection: close\r\nTransfer-Encoding: chunked\r\n\r\n";
    const std::string offer = "26\r\n" + std::string(Offer) + "\r\n";
    service.AnswerUpdates({{head + "5\r\nfirst\r\n", offer, "0\r\n\r\n"}, 50ms});
    EXPECT_EQ(Check(), Offered);
    service.AnswerUpdates({{head + offer, "1\r\n{\r\n", "0\r\n\r\n"}, 50ms});
    EXPECT_EQ(Check().exception.substr(0, 32), "[json.exception.parse_error.101]");
}
