#include "support/library_fixture.h"

#include <filesystem>
#include <fstream>

using namespace std::chrono_literals;

namespace {

class UpdateCheck : public LibraryTest
{
};

class TransportFaults : public LibraryTest
{
};

constexpr char NoType302[] = "[json.exception.type_error.302] type must be string, but is ";
constexpr char No305[] =
    "[json.exception.type_error.305] cannot use operator[] with a numeric argument with ";

} // namespace

TEST_F(UpdateCheck, PostsTheQueryAndReportsTheFirstOffer)
{
    service.AnswerUpdates(Reply::Http(
        R"([{"name":"X","version":"2","url":"https://a/\u00fc"},{"name":"Y","version":"3","url":"https://b"}])"));
    EXPECT_EQ(Check(), (Outcome{200, L"https://a/\xFC", ""}));

    ASSERT_EQ(service.Requests().size(), 1u);
    const std::string request = service.Requests()[0];
    const std::string start = "/get_updates.php api_key=api-key&key=product-key&hardware_id=";
    EXPECT_EQ(request.substr(0, start.size()), start);
    EXPECT_EQ(request.substr(start.size() + 64), "&version=20.1&up=1");
    const std::string head = service.LastRequest();
    EXPECT_EQ(head.rfind("POST /get_updates.php HTTP/1.1\r\nHost: " TESTS_ADDRESS ":18444\r\nAccept: */*\r\n", 0), 0u)
        << head;
    EXPECT_EQ(head.find("Expect"), head.npos);
    EXPECT_EQ(head.find("User-Agent"), head.npos);
}

TEST_F(UpdateCheck, WithoutAKeySendsNothingAndSaysNothing)
{
    for (const wchar_t* apiKey : {L"", static_cast<const wchar_t*>(nullptr)}) {
        context.apiKey = apiKey;
        EXPECT_EQ(Check(), Untouched);
    }
    context.apiKey = L"api-key";
    records.Write(L"Product", L"1.0", L"", L"20.1");
    EXPECT_EQ(Check(), Untouched);
    records.WriteValue(L"Product", L"1.0", L"key", REG_DWORD, {1, 0, 0, 0});
    EXPECT_EQ(Check(), Untouched);
    EXPECT_TRUE(service.Requests().empty());
}

TEST_F(UpdateCheck, TellsTheUserOfAnEmptyReplyAndOfARefusal)
{
    const std::pair<Reply, std::wstring> boxes[]{
        {Reply::Http(""), L"Product: You are running the latest version"},
        {Reply::Http("", "404 Not Found"), L"Product: You are running the latest version"},
        {Reply::Http("", "302 Found"), L"Product: You are running the latest version"},
        {Reply::Http(R"({"status":0,"error":"no"})"), L"Product: No internet found!"},
        {Reply::Http(R"({"status":0})", "500 Internal Server Error"), L"Product: No internet found!"},
        {Reply::Http(R"({"status":0.9})"), L"Product: No internet found!"},
        {Reply::Http(R"({"status":-0.9})"), L"Product: No internet found!"},
        {Reply::Http(R"({"status":false})"), L"Product: No internet found!"},
        {Reply::Http(R"({"status":4294967296})"), L"Product: No internet found!"},
    };
    for (const auto& [reply, box] : boxes) {
        service.AnswerUpdates(reply);
        std::wstring said;
        EXPECT_EQ(Check(ReadsMessageBox(said)), Untouched);
        EXPECT_EQ(said, box) << reply.pieces[0];
    }
}

TEST_F(UpdateCheck, ShowsTheErrorIconWithoutAnOwner)
{
    service.AnswerUpdates(Reply::Http(""));
    HWND owner = nullptr;
    HICON icon = nullptr;
    EXPECT_EQ(
        Check([&](DWORD hostThread) {
            constexpr int IconId = 1088;
            const HWND box = ShownDialog(hostThread);
            owner = GetWindow(box, GW_OWNER);
            icon = reinterpret_cast<HICON>(SendDlgItemMessageW(box, IconId, STM_GETICON, 0, 0));
            automation::Press(box, IDOK);
        }),
        Untouched);
    EXPECT_EQ(owner, nullptr);
    EXPECT_EQ(icon, LoadIconW(nullptr, IDI_ERROR));
}

TEST_F(UpdateCheck, ReadsNothingMoreFromAReplyWithAnotherStatus)
{
    for (const char* reply :
         {R"({"status":1})", R"({"status":true})", R"({"status":-1})",
          R"({"status":200,"url":"https://a"})"}) {
        service.AnswerUpdates(Reply::Http(reply));
        EXPECT_EQ(Check(), Untouched) << reply;
    }
}

TEST_F(UpdateCheck, LetsTheErrorsOfAMalformedReplyLeave)
{
    const std::string parseError = "[json.exception.parse_error.101]";
    const std::pair<std::string, std::string> errors[]{
        {"<html>error</html>", parseError},
        {"[{\"name\":\"X\",\"version\":\"2\",\"url\":\"u\"}", parseError},
        {"[\"\xFF\"]", parseError},
        {"[\"\\ud800\"]", parseError},
        {" ", parseError},
        {R"({"status":"0"})", "[json.exception.type_error.302] type must be number, but is string"},
        {R"({"status":null})", "[json.exception.type_error.302] type must be number, but is null"},
        {R"({"status":[0]})", "[json.exception.type_error.302] type must be number, but is array"},
        {R"({"name":"X","version":"2","url":"u"})", std::string(No305) + "object"},
        {"{}", std::string(No305) + "object"},
        {"1", std::string(No305) + "number"},
        {"\"text\"", std::string(No305) + "string"},
        {"true", std::string(No305) + "boolean"},
        {"[]", std::string(NoType302) + "null"},
        {"null", std::string(NoType302) + "null"},
        {"[null]", std::string(NoType302) + "null"},
        {R"([{"name":"X","version":"2"}])", std::string(NoType302) + "null"},
        {R"([{"name":1,"version":"2","url":null}])", std::string(NoType302) + "number"},
        {R"([{"name":"X","version":["2"],"url":"u"}])", std::string(NoType302) + "array"},
        {R"([{"name":"X","version":"2","url":{}}])", std::string(NoType302) + "object"},
        {R"([{"name":"X","version":"2","url":true}])", std::string(NoType302) + "boolean"},
        {R"([["name"]])", "[json.exception.type_error.305]"},
        {"[{\"name\":\"\xF0\x9F\x98\x80\",\"version\":\"2\",\"url\":\"u\"}]", "bad conversion"},
    };
    for (const auto& [reply, error] : errors) {
        service.AnswerUpdates(Reply::Http(reply));
        const Outcome outcome = Check();
        EXPECT_EQ(outcome.exception.substr(0, error.size()), error) << reply;
        EXPECT_EQ(outcome.code, NothingReported) << reply;
        EXPECT_EQ(outcome.text, L"untouched") << reply;
    }
    service.AnswerUpdates(Reply::Http(R"([{"name":"X","version":"2","url":"u"}])"));
    EXPECT_EQ(Check(), (Outcome{200, L"u", ""})) << "the library works on after errors";

    context.apiKey = L"\xD83D";
    EXPECT_EQ(Check(), (Outcome{NothingReported, L"untouched", "bad conversion"}));
}

TEST_F(UpdateCheck, KeepsTheLanguageAndTheProductOfTheFirstCall)
{
    namespace fs = std::filesystem;
    const fs::path folder =
        fs::temp_directory_path() / ("languages-" + std::to_string(GetCurrentProcessId()));
    fs::create_directories(folder / "lang/DE");
    std::wstring lines;
    for (int id = 0; id < 88; ++id) {
        lines += L"Zeile|" + std::to_wstring(id) + L"\n";
    }
    std::ofstream(folder / "lang/DE/Vemo_DE.lang", std::ios::binary)
        .write(reinterpret_cast<const char*>(lines.data()), static_cast<std::streamsize>(lines.size() * 2));
    const fs::path former = fs::current_path();
    fs::current_path(folder);
    records.Write(L"Other", L"2.0", L"other-key", L"2");

    service.AnswerUpdates(Reply::Http(""));
    std::wstring said;
    context.languageId = 140;
    EXPECT_EQ(Check(ReadsMessageBox(said)), Untouched);
    EXPECT_EQ(said, L"Product: Zeile\n74");

    EXPECT_NE(service.Requests().back().find("&key=product-key&"), std::string::npos);

    records.Write(L"Product", L"1.0", L"new-key", L"20.2");
    context.languageId = 120;
    context.productName = L"Other";
    context.productVersion = L"2.0";
    EXPECT_EQ(Check(ReadsMessageBox(said)), Untouched);
    EXPECT_EQ(said, L"Other: Zeile\n74") << "the caption is the caller's, the text is German";
    EXPECT_NE(service.Requests().back().find("&key=new-key&"), std::string::npos) << "read anew";
    EXPECT_NE(service.Requests().back().find("&version=20.2&"), std::string::npos) << "read anew";

    fs::current_path(former);
    fs::remove_all(folder);
}

TEST_F(UpdateCheck, IgnoresANullContextAndTakesNullMembers)
{
    const auto check = reinterpret_cast<decltype(&CheckForUpdates)>(
        reinterpret_cast<void*>(GetProcAddress(Library(), "CheckForUpdates")));
    check(nullptr);
    service.AnswerUpdates(Reply::Http(R"([{"name":"X","version":"2","url":"u"}])"));
    EXPECT_EQ(Check().code, 200u);
    context.resultText = nullptr;
    context.productName = nullptr;
    EXPECT_EQ(Check().code, 200u);
}

TEST_F(TransportFaults, OnTheWayAreARefusal)
{
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n";
    const std::pair<const char*, Reply> faults[]{
        {"closed without a reply", Reply::Nothing()},
        {"reset before the request", {{}, 0ms, true, true}},
        {"reset without a reply", {{}, 0ms, true}},
        {"reset in the reply", {{head + "[{"}, 20ms, true}},
        {"body shorter than announced", {{head + "[{"}}},
        {"no HTTP", {{"SSH-2.0-something\r\n"}}},
        {"broken chunks", {{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzzz\r\n"}}},
    };
    for (const auto& [name, reply] : faults) {
        service.AnswerUpdates(reply);
        std::wstring said;
        EXPECT_EQ(Check(ReadsMessageBox(said)), Untouched) << name;
        EXPECT_EQ(said, L"Product: No internet found!") << name;
    }
    service.Stop();
    std::wstring said;
    EXPECT_EQ(Check(ReadsMessageBox(said)), Untouched);
    EXPECT_EQ(said, L"Product: No internet found!") << "refused";
}

TEST_F(TransportFaults, OfHttpDoNotMatterWhereThereIsABody)
{
    const std::string offer = R"([{"name":"X","version":"2","url":"u"}])";
    for (const char* status :
         {"201 Created", "301 Moved Permanently\r\nLocation: /check.php", "404 Not Found",
          "503 Unavailable"}) {
        service.AnswerUpdates(Reply::Http(offer, status));
        EXPECT_EQ(Check(), (Outcome{200, L"u", ""})) << status;
    }
    EXPECT_EQ(service.Requests().size(), 4u) << "no redirect was followed";

    const Reply whole = Reply::Http(offer);
    const std::string reply = whole.pieces[0];
    const std::size_t body = reply.size() - offer.size();
    service.AnswerUpdates({{reply.substr(0, 9), reply.substr(9, body - 9), reply.substr(body)}, 400ms});
    EXPECT_EQ(Check(), (Outcome{200, L"u", ""})) << "a slow server";
    service.AnswerUpdates({{reply}, 20ms, true});
    EXPECT_EQ(Check(), (Outcome{200, L"u", ""})) << "reset after the reply";
}

TEST_F(TransportFaults, OfSizeEndInTheLastPiece)
{
    const std::string offer = R"([{"name":"X","version":"2","url":"u"}])";
    service.AnswerUpdates(Reply::Http(std::string(50'000'000, ' ') + offer));
    const Outcome outcome = Check();
    // Where the last piece begins is up to the network.
    EXPECT_TRUE(
        outcome == (Outcome{200, L"u", ""}) ||
        outcome.exception.rfind("[json.exception.parse_error.101]", 0) == 0)
        << outcome.exception;
}

TEST_F(TransportFaults, LeaveTheLastPieceOfAReplyInPieces)
{
    const std::string head = "HTTP/1.1 200 OK\r\nConnection: close\r\nTransfer-Encoding: chunked\r\n\r\n";
    const std::string offer = R"([{"name":"X","version":"2","url":"last"}])";
    service.AnswerUpdates({{head + "5\r\nfirst\r\n", "29\r\n" + offer + "\r\n", "0\r\n\r\n"}, 50ms});
    EXPECT_EQ(Check(), (Outcome{200, L"last", ""}));

    service.AnswerUpdates({{head + "29\r\n" + offer + "\r\n", "1\r\n{\r\n", "0\r\n\r\n"}, 50ms});
    EXPECT_EQ(Check().exception.substr(0, 32), "[json.exception.parse_error.101]");
}
