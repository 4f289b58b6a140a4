#include "platform/machine_identifier.h"
#include "product_family.h"
#include "service/curl_error_texts.h"
#include "service/service_client.h"
#include "service/text_conversion.h"
#include "service/update_query.h"
#include "support/recording_curl.h"

#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <stdexcept>

using namespace product_services;
using ServiceClient::Post;

TEST(Post, SetsFourOptionsAndReleasesInOrder)
{
    recordingCurl = {.pieces = {"first piece, and a long one", std::string("la\0t", 4)}};
    EXPECT_EQ(Post("a=1&b=\xC3\xA9", L"https://service/\xE9"), std::string("la\0t", 4));
    EXPECT_EQ(
        recordingCurl.calls,
        (std::vector<std::string>{
            "global_init 3", "easy_init", "append first Expect:", "setopt 10002 https://service/\xC3\xA9",
            "setopt 10015 a=1&b=\xC3\xA9", "setopt 20011", "setopt 64 0", "perform", "cleanup",
            "free null form", "free list"}));
    EXPECT_EQ(recordingCurl.cursorDuringTransfer, LoadCursorW(nullptr, IDC_WAIT));
    EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_WAIT)) << "the wait cursor comes back and stays";
}

TEST(Post, WithoutAHandleSendsAndReleasesNothing)
{
    recordingCurl = {.pieces = {"old reply"}};
    Post("", L"u");
    recordingCurl = {.givesHandle = false};
    EXPECT_EQ(Post("", L"u"), "");
    EXPECT_EQ(
        recordingCurl.calls, (std::vector<std::string>{"global_init 3", "easy_init", "append first Expect:"}));
    recordingCurl = {};
    EXPECT_EQ(Post("", L"u"), "") << "the buffer is emptied for every post";
}

TEST(Post, TurnsEveryFailureIntoADocument)
{
    std::uint64_t checksum = 14695981039346656037u;
    int withText = 0;
    for (int code = 1; code < 110; ++code) {
        recordingCurl = {.pieces = {"half a reply"}, .result = static_cast<CURLcode>(code)};
        const std::string document = Post("", L"u");
        const wchar_t* text = FindCurlErrorText(static_cast<CURLcode>(code));
        EXPECT_EQ(
            document, (code == 34 ? "" : "{\"status\":0,\"error\":\"") + ToUtf8(text ? text : L"") + "\"}");
        EXPECT_EQ(nlohmann::json::accept(document), code != 21 && code != 34 && code != 42) << code;
        withText += text ? 1 : 0;
        for (const char c : std::to_string(code) + document) {
            checksum = (checksum ^ static_cast<unsigned char>(c)) * 1099511628211u;
        }
    }
    EXPECT_EQ(withText, 60);
    EXPECT_EQ(checksum, 13759305094798970943u) << "a text is another, or under another code";
}

TEST(Probe, HoldsForExactlyOne)
{
    const auto isReachable = [](RecordingCurl curl) {
        recordingCurl = curl;
        return ServiceClient::IsServiceReachable();
    };
    EXPECT_TRUE(isReachable({.pieces = {"1"}}));
    EXPECT_EQ(recordingCurl.calls[3], "setopt 10002 http://" TESTS_ADDRESS ":18444/check.php");
    EXPECT_EQ(recordingCurl.calls[4], "setopt 10015 ");
    for (const char* reply : {"", "1\n", " 1", "11", "0", "true", "1\xC3", "\xF0\x9F\x98\x80"}) {
        EXPECT_FALSE(isReachable({.pieces = {reply}})) << reply;
    }
    EXPECT_FALSE(isReachable({.pieces = {"1"}, .result = CURLE_COULDNT_CONNECT}));
}

TEST(UpdateQuery, InsertsItsValuesAsTheyAreWithAHashOfTheMachinesId)
{
    // The machine's registry is this key of the test's own, since the real id is nobody's to change.
    HKEY machine = nullptr;
    const std::wstring path = std::wstring(product_family::RecordRegistryPath) + L" machine";
    RegCreateKeyW(HKEY_CURRENT_USER, path.c_str(), &machine);
    const wchar_t guid[] = L"01234567-89ab-cdef-0123-456789abcdef";
    RegSetKeyValueW(machine, L"SOFTWARE\\Microsoft\\Cryptography", L"MachineGuid", REG_SZ, guid, sizeof guid);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, machine);
    EXPECT_EQ(
        BuildUpdateQuery(L"a b", L"A&B=%+", L"\xFC\x20AC", L"0"),
        "api_key=a b&key=A&B=%+&hardware_id="
        "45c42dc13b5eaa0660c4e6582b9f9d958981a621e0d3b02dbcc1af9bfe59596f&version=\xC3\xBC\xE2\x82\xAC&up=0");
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegCloseKey(machine);
    RegDeleteTreeW(HKEY_CURRENT_USER, path.c_str());
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
    for (const char* utf8 : {"\xF0\x9F\x98\x80", "\xFF", "a\xE2\x82"}) {
        EXPECT_EQ(message([&] { ToWide(utf8); }), "bad conversion") << utf8;
    }
    for (const wchar_t* wide : {L"\xD83D\xDE00", L"\xD83D", L"a\xDE00"}) {
        EXPECT_EQ(message([&] { ToUtf8(wide); }), "bad conversion");
    }
}
