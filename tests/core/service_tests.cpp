#include "../benchmarks/curl_stand_in.h"
#include "service/service_client.h"
#include "service/text_conversion.h"
#include "service/update_query.h"
#include "support/tests_family.h"

#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <windows.h>

using namespace product_services;

namespace {

using Texts = std::vector<std::string>;

constexpr char Body[] = "a=1&b=\xC3\xA9"; // e with an acute accent, as in the address

// What the next transfer delivers, each piece in elements of this size, and how it ends.
Texts pieces;
std::size_t elementSize = 1;
CURLcode result = CURLE_OK;

// What the last one saw.
std::string sentUrl;
std::string sentBody;
HCURSOR cursorDuringTransfer = nullptr;

std::string Post(const Texts& answer, int withResult = CURLE_OK)
{
    pieces = answer;
    result = static_cast<CURLcode>(withResult);
    curlCalls.clear();
    return ServiceClient::Post(Body, L"https://service/\xE9");
}

} // namespace

CURLcode PerformTransfer(const CurlTransfer& transfer)
{
    sentUrl = transfer.url;
    sentBody = transfer.body;
    cursorDuringTransfer = SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    for (std::string& piece : pieces) {
        const std::size_t taken =
            transfer.write(piece.data(), elementSize, piece.size() / elementSize, nullptr);
        EXPECT_EQ(taken, piece.size()) << "or libcurl ends the transfer";
    }
    return result;
}

TEST(Post, CallsLibcurlInThisOrderAndSetsFourOptions)
{
    Post({"reply"});
    const Texts expected{
        "global_init 3",
        "easy_init",
        "slist_append null Expect:",
        "setopt 10002 https://service/\xC3\xA9",
        "setopt 10015 a=1&b=\xC3\xA9",
        "setopt 20011 function",
        "setopt 64 0",
        "perform",
        "cleanup handle",
        "formfree null",
        "slist_free_all list",
    };
    EXPECT_EQ(curlCalls, expected);
    EXPECT_EQ(sentBody, Body) << "libcurl reads it during the transfer";
}

TEST(Post, SendsAndReleasesNothingWithoutAHandle)
{
    Post({"an earlier reply"});
    curlGivesHandle = false;
    EXPECT_EQ(Post({"never read"}), "");
    curlGivesHandle = true;
    const Texts expected{"global_init 3", "easy_init", "slist_append null Expect:"};
    EXPECT_EQ(curlCalls, expected);
}

TEST(Post, ShowsTheWaitCursorDuringTheTransferAndAfterIt)
{
    const HCURSOR waitCursor = LoadCursorW(nullptr, IDC_WAIT);
    SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    Post({"reply"});
    EXPECT_EQ(cursorDuringTransfer, waitCursor);
    EXPECT_EQ(GetCursor(), waitCursor) << "the transfer had set the arrow";
}

TEST(Post, ReturnsTheLastPieceOfTheReply)
{
    EXPECT_EQ(Post({"one piece"}), "one piece");
    EXPECT_EQ(Post({"a long first piece", "last"}), "last");
    EXPECT_EQ(Post({}), "") << "nothing of the reply before";
    EXPECT_EQ(Post({std::string("a\0b", 3)}), std::string("a\0b", 3));
    elementSize = 2;
    EXPECT_EQ(Post({"in pairs"}), "in pairs");
    elementSize = 1;
}

TEST(Post, TurnsEveryFailureIntoADocument)
{
    const std::map<int, std::string> documents{
#include "failure_documents.inc"
    };
    EXPECT_EQ(documents.size(), 60u);
    for (int code = 1; code <= 120; ++code) {
        SCOPED_TRACE(code);
        const std::string document = Post({"half a reply"}, code);
        const auto known = documents.find(code);
        EXPECT_EQ(document, known != documents.end() ? known->second : R"({"status":0,"error":""})");
        const bool isJson = code != 21 && code != 34 && code != 42;
        EXPECT_EQ(nlohmann::json::accept(document), isJson);
    }
}

TEST(Probe, HoldsTheServiceForReachableWhenItAnswersExactlyOne)
{
    const std::tuple<const char*, const char*, bool> replies[]{
        {"the digit one", "1", true},
        {"nothing", "", false},
        {"another digit", "0", false},
        {"two digits", "11", false},
        {"a line break behind it", "1\n", false},
        {"a space before it", " 1", false},
        {"a word", "true", false},
        {"half a character behind it", "1\xC3", false},
        {"a character outside the basic plane", "\xF0\x9F\x98\x80", false},
    };
    for (const auto& [name, reply, isReachable] : replies) {
        SCOPED_TRACE(name);
        result = CURLE_OK;
        pieces = {reply};
        EXPECT_EQ(ServiceClient::IsServiceReachable(), isReachable);
        EXPECT_EQ(sentUrl, ToUtf8(ServiceUrl) + "/check.php");
        EXPECT_EQ(sentBody, "");
        result = CURLE_RECV_ERROR;
        EXPECT_FALSE(ServiceClient::IsServiceReachable()) << "the transfer failed";
    }
}

TEST(TextConversion, TakesTheCharactersOfTheBasicPlaneThereAndBack)
{
    const std::tuple<const char*, std::wstring, std::string> texts[]{
        {"nothing", L"", ""},
        {"a NUL within", {L"a\0b", 3}, {"a\0b", 3}},
        {"two bytes", L"\xFC", "\xC3\xBC"},
        {"three bytes", L"\x20AC\x7248", "\xE2\x82\xAC\xE7\x89\x88"},
        {"the last before the surrogates", L"\xD7FF", "\xED\x9F\xBF"},
        {"the first behind them", L"\xE000", "\xEE\x80\x80"},
        {"the last of all", L"\xFFFF", "\xEF\xBF\xBF"},
    };
    for (const auto& [name, wide, utf8] : texts) {
        SCOPED_TRACE(name);
        EXPECT_EQ(ToUtf8(wide), utf8);
        EXPECT_EQ(ToWide(utf8), wide);
    }
}

TEST(TextConversion, RefusesWhatIsNoCharacterOfTheBasicPlane)
{
    for (const char* utf8 : {"\xFF", "a\xC3", "\xC0\x80", "\xED\xA0\xBD", "\xF0\x9F\x98\x80", "a\x80z"}) {
        EXPECT_THROW(ToWide(utf8), std::range_error) << utf8;
    }
    for (const wchar_t* wide : {L"\xD800", L"a\xDFFF", L"\xDBFFz", L"\xDC00", L"\xD83D\xDE00"}) {
        EXPECT_THROW(ToUtf8(wide), std::range_error) << wide;
    }
}

TEST(UpdateQuery, InsertsItsValuesAsTheyAre)
{
    const std::string query = BuildUpdateQuery(L"a b", L"A&B=%+", L"\xFC\x20AC", L"0");
    const std::string start = "api_key=a b&key=A&B=%+&hardware_id=";
    EXPECT_EQ(query.substr(0, start.size()), start);
    EXPECT_EQ(query.substr(start.size() + 64), "&version=\xC3\xBC\xE2\x82\xAC&up=0");
}
