#include "platform/machine_identifier.h"
#include "service/service_client.h"
#include "service/update_query.h"
#include "support/product_records.h"

#include <cstdarg>
#include <curl/curl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#undef curl_easy_setopt

using namespace product_services;

// A stand-in for libcurl at link time, which notes the calls and answers as told.
namespace {

bool givesHandle = true;
std::string reply; // of an even length, since it is passed in elements of two bytes
CURLcode result = CURLE_OK;

std::string calls;
HCURSOR cursorDuringTransfer = nullptr;
curl_write_callback writeReply = nullptr;
curl_slist object{}; // the handle and the list

template <typename Answer>
Answer Note(const std::string& call, Answer answer)
{
    calls += call + "\n";
    return answer;
}

std::string Post(CURLcode withResult, const std::string& withReply)
{
    result = withResult;
    reply = withReply;
    calls.clear();
    return ServiceClient::Post("a=1&b=\xC3\xA9", L"https://service/\xE9");
}

} // namespace

CURLcode curl_easy_setopt(CURL*, CURLoption option, ...)
{
    std::va_list arguments{};
    va_start(arguments, option);
    std::string value;
    if (option == CURLOPT_WRITEFUNCTION) {
        writeReply = va_arg(arguments, curl_write_callback);
    } else {
        value = option < CURLOPTTYPE_OBJECTPOINT ? std::to_string(va_arg(arguments, long))
                                                 : va_arg(arguments, const char*);
    }
    va_end(arguments);
    return Note("setopt " + std::to_string(option) + " " + value, CURLE_OK);
}

CURLcode curl_easy_perform(CURL*)
{
    cursorDuringTransfer = SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    writeReply(reply.data(), 2, reply.size() / 2, nullptr);
    return Note("perform", result);
}

// clang-format off
CURLcode curl_global_init(long flags) { return Note("global_init " + std::to_string(flags), CURLE_OK); }
CURL* curl_easy_init() { return Note("easy_init", givesHandle ? &object : nullptr); }
void curl_easy_cleanup(CURL*) { Note("cleanup", 0); }
curl_slist* curl_slist_append(curl_slist*, const char* text) { return Note(std::string("append ") + text, &object); }
void curl_slist_free_all(curl_slist* list) { Note(list ? "free list" : "free null list", 0); }
void curl_formfree(curl_httppost* form) { Note(form ? "free form" : "free null form", 0); }
// clang-format on

TEST(Post, SetsFourOptionsAndReleasesInOrder)
{
    const std::string withZero("la\0t", 4);
    EXPECT_EQ(Post(CURLE_OK, withZero), withZero);
    const std::string start = "global_init 3\neasy_init\nappend Expect:\n";
    EXPECT_EQ(
        calls, start + "setopt 10002 https://service/\xC3\xA9\nsetopt 10015 a=1&b=\xC3\xA9\n"
                       "setopt 20011 \nsetopt 64 0\nperform\ncleanup\nfree null form\nfree list\n");
    EXPECT_EQ(cursorDuringTransfer, LoadCursorW(nullptr, IDC_WAIT));
    EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_WAIT)) << "the wait cursor comes back and stays";

    givesHandle = false;
    EXPECT_EQ(Post(CURLE_OK, "unread"), "") << "without a handle, after another reply";
    EXPECT_EQ(calls, start) << "nothing sent, nothing released";
}

TEST(Post, TurnsEveryFailureIntoADocument)
{
    std::uint64_t checksum = 14695981039346656037u;
    for (int code = 1; code < 110; ++code) {
        const std::string document = Post(static_cast<CURLcode>(code), "half a reply");
        EXPECT_EQ(nlohmann::json::accept(document), code != 21 && code != 34 && code != 42) << document;
        for (const char c : std::to_string(code) + document) {
            checksum = (checksum ^ static_cast<unsigned char>(c)) * 1099511628211u;
        }
    }
    EXPECT_EQ(checksum, 13759305094798970943u) << "a text is another, or under another code";
}

TEST(UpdateQuery, InsertsItsValuesAsTheyAreWithAHashOfTheMachinesId)
{
    // The machine's registry is this key of the test's own, since the real id is nobody's to change.
    const ProductRecords records;
    const wchar_t guid[] = L"01234567-89ab-cdef-0123-456789abcdef";
    records.Write(L"Machine\\SOFTWARE\\Microsoft\\Cryptography", L"MachineGuid", guid);
    HKEY machine = nullptr;
    RegOpenKeyW(HKEY_CURRENT_USER, records.Path(L"Machine").c_str(), &machine);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, machine);
    EXPECT_EQ(
        BuildUpdateQuery(L"a b", L"A&B=%+", L"\xFC\x20AC", L"0"),
        "api_key=a b&key=A&B=%+&hardware_id="
        "45c42dc13b5eaa0660c4e6582b9f9d958981a621e0d3b02dbcc1af9bfe59596f&version=\xC3\xBC\xE2\x82\xAC&up=0");
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
}
