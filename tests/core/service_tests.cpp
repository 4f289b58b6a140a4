#include "platform/machine_identifier.h"
#include "service/curl_error_texts.h"
#include "service/service_client.h"
#include "service/text_conversion.h"
#include "product_family.h"
#include "service/update_query.h"
#include "support/recording_curl.h"

#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <stdexcept>

using namespace product_services;
using recording_curl::AnswerWith;
using recording_curl::Recorded;

TEST(Post, SetsFourOptionsAndReleasesInOrder)
{
    AnswerWith({.pieces = {"reply"}});
    SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    EXPECT_EQ(ServiceClient::Post("a=1&b=\xC3\xA9", L"https://service/\xE9"), "reply");
    EXPECT_EQ(
        Recorded().calls,
        (std::vector<std::string>{
            "global_init 3", "easy_init", "append first Expect:", "setopt 10002", "setopt 10015",
            "setopt 20011", "setopt 64 0", "perform", "cleanup", "free null form", "free list"}));
    EXPECT_EQ(Recorded().url, "https://service/\xC3\xA9");
    EXPECT_EQ(Recorded().body, "a=1&b=\xC3\xA9");
    EXPECT_EQ(Recorded().cursorDuringTransfer, LoadCursorW(nullptr, IDC_WAIT));
    EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_WAIT)) << "the wait cursor stays";
}

TEST(Post, WithoutAHandleSendsAndReleasesNothing)
{
    AnswerWith({.pieces = {"old reply"}});
    ServiceClient::Post("", L"https://service");
    AnswerWith({.pieces = {"never sent"}, .givesHandle = false});
    EXPECT_EQ(ServiceClient::Post("", L"https://service"), "");
    EXPECT_EQ(
        Recorded().calls, (std::vector<std::string>{"global_init 3", "easy_init", "append first Expect:"}));
}

TEST(Post, KeepsTheLastPieceOfAReply)
{
    AnswerWith({.pieces = {"first piece, and a long one", "second", "3rd"}});
    EXPECT_EQ(ServiceClient::Post("", L"u"), "3rd");
    AnswerWith({});
    EXPECT_EQ(ServiceClient::Post("", L"u"), "") << "the buffer is emptied for every post";
    AnswerWith({.pieces = {std::string("a\0b", 3)}});
    EXPECT_EQ(ServiceClient::Post("", L"u"), std::string("a\0b", 3));
}

TEST(Post, TurnsEveryFailureIntoADocument)
{
    int withText = 0;
    for (int code = 1; code < 100; ++code) {
        AnswerWith({.result = static_cast<CURLcode>(code), .pieces = {"half a reply"}});
        const std::string document = ServiceClient::Post("", L"u");
        const wchar_t* text = FindCurlErrorText(static_cast<CURLcode>(code));
        withText += text ? 1 : 0;
        const std::string utf8 = text ? ToUtf8(text) : "";
        EXPECT_EQ(document, (code == 34 ? "" : "{\"status\":0,\"error\":\"") + utf8 + "\"}");
        const auto parsed = nlohmann::json::parse(document, nullptr, false);
        EXPECT_EQ(parsed.is_discarded(), code == 21 || code == 34 || code == 42) << code;
    }
    EXPECT_EQ(withText, 60);
}

TEST(CurlErrorText, IsTheDocumentedOne)
{
    const std::pair<int, std::wstring> texts[]{
        {1, L"The URL you passed to libcurl used a protocol that this libcurl does not support."},
        {6, L"Couldn't resolve host. The given remote host was not resolved."},
        {7, L"Failed to connect() to host or proxy."},
        {28, L"Operation timeout. The specified time-out period was reached according to the conditions."},
        {34, L"This is an odd error that mainly occurs due to internal confusion."},
        {42, L"Aborted by callback. A callback returned \"abort\" to libcurl."},
        {60,
         L"The remote server's SSL certificate or SSH md5 fingerprint was deemed not OK. This error code has "
         L"been unified with CURLE_SSL_CACERT since 7.62.0. Its previous value was 51."},
        {83, L"Issuer check failed"},
    };
    for (const auto& [code, text] : texts) {
        EXPECT_EQ(FindCurlErrorText(static_cast<CURLcode>(code)), text);
    }
    for (int code : {0, 8, 40, 51, 84, 99, 1000}) {
        EXPECT_EQ(FindCurlErrorText(static_cast<CURLcode>(code)), nullptr) << code;
    }
}

TEST(Probe, HoldsForExactlyOne)
{
    AnswerWith({.pieces = {"1"}});
    EXPECT_TRUE(ServiceClient::IsServiceReachable());
    EXPECT_EQ(Recorded().url, "http://" TESTS_ADDRESS ":18444/check.php");
    EXPECT_EQ(Recorded().body, "");
    for (const char* reply :
         {"", "1\n", " 1", "1 ", "11", "0", "true", "\xFF", "1\xC3", "\xF0\x9F\x98\x80"}) {
        AnswerWith({.pieces = {reply}});
        EXPECT_FALSE(ServiceClient::IsServiceReachable()) << reply;
    }
    AnswerWith({.result = CURLE_COULDNT_CONNECT, .pieces = {"1"}});
    EXPECT_FALSE(ServiceClient::IsServiceReachable());
    AnswerWith({.pieces = {"1"}, .givesHandle = false});
    EXPECT_FALSE(ServiceClient::IsServiceReachable());
}

TEST(UpdateQuery, InsertsItsValuesAsTheyAre)
{
    const std::string machine = ToUtf8(MachineIdentifier());
    EXPECT_EQ(
        BuildUpdateQuery(L"ABC123", L"K-1", L"20.1", L"1"),
        "api_key=ABC123&key=K-1&hardware_id=" + machine + "&version=20.1&up=1");
    EXPECT_EQ(
        BuildUpdateQuery(L"a b", L"A&B=%+", L"\xFC\x20AC", L"0"),
        "api_key=a b&key=A&B=%+&hardware_id=" + machine + "&version=\xC3\xBC\xE2\x82\xAC&up=0");
}

TEST(MachineIdentifier, IsStableAndHexadecimal)
{
    const std::wstring identifier = MachineIdentifier();
    EXPECT_EQ(identifier.size(), 64u);
    EXPECT_EQ(identifier.find_first_not_of(L"0123456789abcdef"), identifier.npos);
    EXPECT_EQ(MachineIdentifier(), identifier);
}

TEST(TextConversion, RefusesWhatDoesNotFitOneUnit)
{
    EXPECT_EQ(ToWide("a\xC3\xBC\xE2\x82\xAC"), L"a\xFC\x20AC");
    EXPECT_EQ(ToUtf8(L"a\xFC\x20AC"), "a\xC3\xBC\xE2\x82\xAC");
    EXPECT_EQ(ToWide(std::string("a\0b", 3)), std::wstring(L"a\0b", 3));
    const auto message = [](const std::function<void()>& conversion) -> std::string {
        try {
            conversion();
        } catch (const std::range_error& error) {
            return error.what();
        }
        return "no error";
    };
    for (const char* utf8 : {"\xF0\x9F\x98\x80", "\xFF", "\xC3", "a\xE2\x82"}) {
        EXPECT_EQ(message([&] { ToWide(utf8); }), "bad conversion") << utf8;
    }
    for (const wchar_t* wide : {L"\xD83D\xDE00", L"\xD83D", L"a\xDE00"}) {
        EXPECT_EQ(message([&] { ToUtf8(wide); }), "bad conversion");
    }
}
