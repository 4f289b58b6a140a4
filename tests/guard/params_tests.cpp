// The structure of a guarded call: its size, its options, and what is written into it.
#include "guard_fixture.h"

#include <cstddef>
#include <cstring>

namespace {

using Params = GuardTest;

} // namespace

TEST_F(Params, AreReadUpToTheSize)
{
    wchar_t text[100];
    GuardedCallParams complete = params;
    complete.trustedHosts = L"not a host!";
    complete.resultText = text;
    complete.resultTextCapacity = 100;
    // Each structure ends after the member.
    const struct
    {
        const char* member;
        std::size_t end;
        ProductServicesOutcome outcome;
    } cases[]{
        {"size", 4, PRODUCT_SERVICES_OUTCOME_NO_PRODUCT_RECORD},
        {"languageId", 8, PRODUCT_SERVICES_OUTCOME_NO_PRODUCT_RECORD},
        {"productName", 16, PRODUCT_SERVICES_OUTCOME_NO_PRODUCT_RECORD},
        {"productVersion", 24, PRODUCT_SERVICES_OUTCOME_NOTHING_SENT},
        {"apiKey", 32, PRODUCT_SERVICES_OUTCOME_UNTRUSTED_CERTIFICATE},
        {"half of trustedHosts", 36, PRODUCT_SERVICES_OUTCOME_UNTRUSTED_CERTIFICATE},
        {"trustedHosts", 40, PRODUCT_SERVICES_OUTCOME_INVALID_PARAMETER},
        {"options", 44, PRODUCT_SERVICES_OUTCOME_INVALID_PARAMETER},
        {"timeLimitMs", 48, PRODUCT_SERVICES_OUTCOME_INVALID_PARAMETER},
    };
    for (const auto& [member, end, outcome] : cases) {
        SCOPED_TRACE(member);
        Reload();
        // The page ends with the structure, so that reading past it is an access violation. A structure is
        // aligned: if its last member has 4 bytes, it is followed by 4 bytes of the page, which make up no
        // valid pointer.
        auto* const page = static_cast<char*>(VirtualAlloc(nullptr, 0x2000, MEM_RESERVE, PAGE_NOACCESS));
        ASSERT_TRUE(VirtualAlloc(page, 0x1000, MEM_COMMIT, PAGE_READWRITE));
        std::memset(page, 0xFF, 0x1000);
        const std::size_t alignedEnd =
            (end + alignof(GuardedCallParams) - 1) & ~(alignof(GuardedCallParams) - 1);
        auto* const truncated = reinterpret_cast<GuardedCallParams*>(page + 0x1000 - alignedEnd);
        complete.size = static_cast<std::uint32_t>(end);
        std::memcpy(truncated, &complete, end);
        EXPECT_STREQ(ToString(Export("GuardedCheckForUpdates")(truncated)), ToString(outcome));
        VirtualFree(page, 0, MEM_RELEASE);
    }
}

TEST_F(Params, AreWrittenUpToTheSize)
{
    const struct
    {
        const char* member;
        std::size_t end;
        const wchar_t* text;
        std::uint32_t resultCode;
        std::uint32_t isTextTruncated;
    } cases[]{
        {"cancelFlag", offsetof(GuardedCallParams, resultText), L"#", 77, 77},
        {"resultText", offsetof(GuardedCallParams, resultTextCapacity), L"#", 77, 77},
        {"resultTextCapacity", offsetof(GuardedCallParams, resultCode), L"No upgrades found!", 77, 77},
        {"resultCode", offsetof(GuardedCallParams, isTextTruncated), L"No upgrades found!", 920, 77},
        {"isTextTruncated", offsetof(GuardedCallParams, reserved), L"No upgrades found!", 920, 0},
        {"reserved", sizeof(GuardedCallParams), L"No upgrades found!", 920, 0},
        {"a newer host's member", sizeof(GuardedCallParams) + 24, L"No upgrades found!", 920, 0},
    };
    service.Answer("");
    for (const auto& [member, end, text, resultCode, isTextTruncated] : cases) {
        SCOPED_TRACE(member);
        wchar_t buffer[100] = L"#";
        struct
        {
            GuardedCallParams known;
            char newer[24];
        } larger{params, "the host's own"};
        larger.known.size = static_cast<std::uint32_t>(end);
        larger.known.resultText = buffer;
        larger.known.resultTextCapacity = 100;
        larger.known.resultCode = 77;
        larger.known.isTextTruncated = 77;
        EXPECT_STREQ(ToString(Export("GuardedUpgrade")(&larger.known)), "UP_TO_DATE");
        EXPECT_STREQ(buffer, text);
        EXPECT_EQ(larger.known.resultCode, resultCode);
        EXPECT_EQ(larger.known.isTextTruncated, isTextTruncated);
        EXPECT_STREQ(larger.newer, "the host's own");
    }
}

TEST_F(Params, AreNotWrittenWithoutASize)
{
    for (const std::uint32_t size : {0U, 3U}) {
        SCOPED_TRACE(size);
        GuardedCallParams call = params;
        call.size = size;
        const GuardedCallParams before = call;
        EXPECT_STREQ(ToString(Export("GuardedUpgrade")(&call)), "INVALID_PARAMETER");
        EXPECT_EQ(std::memcmp(&call, &before, sizeof call), 0);
    }
    EXPECT_STREQ(ToString(Export("GuardedCheckForUpdates")(nullptr)), "INVALID_PARAMETER");
    EXPECT_STREQ(ToString(Export("GuardedUpgrade")(nullptr)), "INVALID_PARAMETER");
    EXPECT_EQ(service.TakeRequests(), "");
}

TEST_F(Params, AreValidated)
{
    const auto invalid = [](const wchar_t* text) {
        return GuardedResult{PRODUCT_SERVICES_OUTCOME_INVALID_PARAMETER, text};
    };
    params.options = PRODUCT_SERVICES_OPTION_QUIET | 0x110;
    EXPECT_EQ(Check(), invalid(L"Unknown option flags: 0x110."));
    params.options = PRODUCT_SERVICES_OPTION_QUIET;
    EXPECT_EQ(Upgrade(), invalid(L"PRODUCT_SERVICES_OPTION_QUIET cannot be used with GuardedUpgrade."));
    params.options = 0;
    params.trustedHosts = L"good.example;https://bad.example";
    EXPECT_EQ(Check(), invalid(L"trustedHosts contains an invalid entry: \"https://bad.example\"."));
    EXPECT_EQ(service.TakeRequests(), "");
}

// The request has a key from the record, which is found by name and version.
TEST_F(Params, ReachTheLibrary)
{
    std::filesystem::create_directories("lang/PL");
    WriteFile("lang/PL/Vemo_PL.lang", std::wstring(70, L'\n') + L"po polsku" + std::wstring(18, L'\n'));
    params.languageId = PRODUCT_SERVICES_LANGUAGE_PL;
    service.Answer("");
    EXPECT_EQ(Upgrade(), (GuardedResult{PRODUCT_SERVICES_OUTCOME_UP_TO_DATE, L"po polsku", 920}));
    EXPECT_NE(service.TakeRequests().find("api_key=api-key&key=product-key&"), std::string::npos);
}

TEST_F(Params, TruncateTheTextAtAWholeCharacter)
{
    const struct
    {
        const char* name;
        std::uint32_t capacity;
        std::wstring text;
        bool isTruncated;
    } cases[]{
        {"more than enough", 6, L"a\U0001F600z", false},
        {"just enough", 5, L"a\U0001F600z", false},
        {"after the pair", 4, L"a\U0001F600", true},
        {"within the pair", 3, L"a", true},
        {"before the pair", 2, L"a", true},
        {"the NUL only", 1, L"", true},
    };
    service.Answer("{\"status\":0,\"error\":\"a\xF0\x9F\x98\x80z\"}");
    for (const auto& [name, capacity, text, isTruncated] : cases) {
        SCOPED_TRACE(name);
        std::wstring buffer(20, L'#');
        GuardedCallParams call = params;
        call.resultText = buffer.data();
        call.resultTextCapacity = capacity;
        EXPECT_STREQ(ToString(Export("GuardedUpgrade")(&call)), "REFUSED");
        EXPECT_EQ(buffer.substr(0, text.size() + 1), text + L'\0');
        EXPECT_EQ(buffer.substr(capacity), std::wstring(20 - capacity, L'#'));
        EXPECT_EQ(call.isTextTruncated, isTruncated ? 1u : 0u);
    }
}

TEST_F(Params, AllowNoBuffer)
{
    service.Answer("");
    wchar_t untouched = L'#';
    GuardedCallParams call = params;
    call.resultText = &untouched;
    EXPECT_STREQ(ToString(Export("GuardedUpgrade")(&call)), "UP_TO_DATE");
    EXPECT_EQ(untouched, L'#') << "its capacity is 0";
    EXPECT_EQ(call.isTextTruncated, 1u);
    call.resultText = nullptr;
    call.resultTextCapacity = 100;
    EXPECT_STREQ(ToString(Export("GuardedUpgrade")(&call)), "UP_TO_DATE");
    EXPECT_EQ(call.isTextTruncated, 1u);
}
