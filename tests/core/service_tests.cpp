#include "service/service_client.h"
#include "service/text_conversion.h"
#include "support/curl_stub.h"

#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <windows.h>

using namespace product_services;

namespace {

using Texts = std::vector<std::string>;

constexpr char Body[] = "a=1&b=\xC3\xA9"; // e with an acute accent, as in the URL

// The chunks that the next transfer delivers in elements of this size, and its result.
Texts chunks;
std::size_t elementSize = 1;
CURLcode transferResult = CURLE_OK;

// What the last transfer saw.
std::string sentBody;
HCURSOR cursorDuringTransfer = nullptr;

std::string Post(const Texts& replyChunks, int result = CURLE_OK)
{
    chunks = replyChunks;
    transferResult = static_cast<CURLcode>(result);
    curlCalls.clear();
    return ServiceClient::Post(Body, L"https://service/\xE9");
}

} // namespace

CURLcode PerformTransfer(const CurlTransfer& transfer)
{
    sentBody = transfer.body;
    cursorDuringTransfer = SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    for (std::string& chunk : chunks) {
        const std::size_t accepted =
            transfer.write(chunk.data(), elementSize, chunk.size() / elementSize, nullptr);
        EXPECT_EQ(accepted, chunk.size()) << "or libcurl ends the transfer";
    }
    return transferResult;
}

TEST(Post, CallsLibcurlInOrder)
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

TEST(Post, SendsNothingWithoutAHandle)
{
    Post({"an earlier reply"});
    curlInitSucceeds = false;
    EXPECT_EQ(Post({"never read"}), "");
    curlInitSucceeds = true;
    const Texts expected{"global_init 3", "easy_init", "slist_append null Expect:"};
    EXPECT_EQ(curlCalls, expected);
}

TEST(Post, ShowsTheWaitCursor)
{
    const HCURSOR waitCursor = LoadCursorW(nullptr, IDC_WAIT);
    SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    Post({"reply"});
    EXPECT_EQ(cursorDuringTransfer, waitCursor);
    EXPECT_EQ(GetCursor(), waitCursor) << "the transfer had set the arrow";
}

TEST(Post, ReturnsTheLastChunk)
{
    EXPECT_EQ(Post({"one chunk"}), "one chunk");
    EXPECT_EQ(Post({"a long first chunk", "last"}), "last");
    EXPECT_EQ(Post({}), "") << "not the previous reply";
    EXPECT_EQ(Post({std::string("a\0b", 3)}), std::string("a\0b", 3));
    elementSize = 2;
    EXPECT_EQ(Post({"in pairs"}), "in pairs");
    elementSize = 1;
}

TEST(Post, ReturnsADocumentForEachFailure)
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

TEST(TextConversion, AcceptsOnlyTheBasicMultilingualPlane)
{
    const std::wstring accepted(L"a\0\xFC\x20AC\xD7FF\xE000\xFFFF", 7);
    EXPECT_EQ(ToWide(ToUtf8(accepted)), accepted);
    for (const char* utf8 : {"\xFF", "a\xC3", "\xC0\x80", "\xED\xA0\xBD", "\xF0\x9F\x98\x80", "a\x80z"}) {
        EXPECT_THROW(ToWide(utf8), std::range_error) << utf8;
    }
    for (const wchar_t* wide : {L"\xD800", L"a\xDFFF", L"\xDBFFz", L"\xDC00", L"\xD83D\xDE00"}) {
        EXPECT_THROW(ToUtf8(wide), std::range_error) << wide;
    }
}
