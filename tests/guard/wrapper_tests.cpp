// The C++ wrapper over guarded calls that are the test's own.
#include <product_services/product_services.hpp>

#include <gtest/gtest.h>

namespace {

// What the wrapper asks for.
std::wstring asked;
// What it is answered.
std::uint32_t outcome = PRODUCT_SERVICES_NOTHING_REPORTED;
std::uint32_t code = 0;
std::wstring text;

std::uint32_t CopyText(wchar_t* buffer, std::uint32_t capacity)
{
    const std::size_t length = text.copy(buffer, capacity - 1);
    buffer[length] = L'\0';
    return length < text.size() ? 1 : 0;
}

std::uint32_t Answer(const wchar_t* name, GuardedCall* call)
{
    asked = std::wstring(name) + L", " + call->productName + L", " + call->productVersion + L", " +
            call->apiKey + L", " + std::to_wstring(call->languageId) + L", " +
            std::to_wstring(call->options) + L", " + (call->trustedHosts ? call->trustedHosts : L"any host");
    EXPECT_EQ(call->size, sizeof(GuardedCall));
    call->resultCode = code;
    call->isTextCut = CopyText(call->text, call->textCapacity);
    return outcome;
}

} // namespace

std::uint32_t GuardedCheckForUpdates(GuardedCall* call)
{
    return Answer(L"check", call);
}

std::uint32_t GuardedUpgrade(GuardedCall* call)
{
    return Answer(L"upgrade", call);
}

std::uint32_t UseWindowsProxy(const wchar_t* serviceAddress, wchar_t* buffer, std::uint32_t capacity)
{
    asked = std::to_wstring(capacity) + L" for " + (serviceAddress ? serviceAddress : L"no script");
    CopyText(buffer, capacity);
    return outcome;
}

std::uint32_t VerifyPublisher(
    const wchar_t* path, const wchar_t* publisher, wchar_t* buffer, std::uint32_t capacity)
{
    asked = std::to_wstring(capacity) + L" for " + path + L", " + publisher;
    CopyText(buffer, capacity);
    return outcome;
}

namespace product_services {

static const Product Draft{L"Draft", L"2026.1", L"api-key", 140, L"example.com", PRODUCT_SERVICES_QUIET};

TEST(Wrapper, PassesAllMembersOfTheProductOn)
{
    CheckForUpdates(Draft);
    EXPECT_EQ(asked, L"check, Draft, 2026.1, api-key, 140, 1, example.com");
    Upgrade(Draft);
    EXPECT_EQ(asked, L"upgrade, Draft, 2026.1, api-key, 140, 1, example.com");
    Upgrade({});
    EXPECT_EQ(asked, L"upgrade, , , , 0, 0, any host");
}

// Which member holds the text of a call.
static std::wstring Filled(const CallResult& result)
{
    std::wstring filled;
    if (result.report) {
        filled += L"report " + std::to_wstring(result.report->code) + L": " + result.report->text;
    }
    if (result.error) {
        filled += L"error: " + *result.error;
    }
    if (result.untrustedAddress) {
        filled += L"untrusted address: " + *result.untrustedAddress;
    }
    if (result.withheldMessage) {
        filled += L"withheld message: " + *result.withheldMessage;
    }
    return filled;
}

// As values: the wrapper throws nothing of its own.
TEST(Wrapper, GivesTheTextAsWhatTheOutcomeMakesIt)
{
    const struct
    {
        ProductServicesOutcome outcome;
        const wchar_t* filled;
    } cases[]{
        {PRODUCT_SERVICES_NOTHING_REPORTED, L""},
        {PRODUCT_SERVICES_REPORTED, L"report 540: a text"},
        {PRODUCT_SERVICES_CALL_FAILED, L"error: a text"},
        {PRODUCT_SERVICES_NOT_CALLED, L"error: a text"},
        {PRODUCT_SERVICES_BAD_RECORD, L"error: a text"},
        {PRODUCT_SERVICES_UNTRUSTED_ADDRESS, L"untrusted address: a text"},
        {PRODUCT_SERVICES_MESSAGE_WITHHELD, L"withheld message: a text"},
    };
    code = 540;
    text = L"a text";
    for (const auto& row : cases) {
        SCOPED_TRACE(row.outcome);
        outcome = row.outcome;
        const CallResult result = CheckForUpdates(Draft);
        EXPECT_EQ(result.outcome, row.outcome);
        EXPECT_EQ(Filled(result), row.filled);
        EXPECT_FALSE(result.isTextCut);
    }
}

TEST(Wrapper, HasRoomFor65535Characters)
{
    outcome = PRODUCT_SERVICES_REPORTED;
    text.assign(65'535, L'x');
    const CallResult whole = CheckForUpdates(Draft);
    EXPECT_TRUE(whole.report && whole.report->text == text);
    EXPECT_FALSE(whole.isTextCut);
    text += L'y';
    const CallResult cut = CheckForUpdates(Draft);
    EXPECT_TRUE(cut.report && cut.report->text == std::wstring(65'535, L'x'));
    EXPECT_TRUE(cut.isTextCut);
}

TEST(Wrapper, GivesTheProxyThatWasFoundForTheAddress)
{
    outcome = PRODUCT_SERVICES_PROXY_TAKEN;
    text = L"http://proxy.example:80";
    const ProxyResult result = product_services::UseWindowsProxy(L"https://service.example");
    EXPECT_EQ(asked, L"1024 for https://service.example");
    EXPECT_EQ(result.found, PRODUCT_SERVICES_PROXY_TAKEN);
    EXPECT_EQ(result.text, L"http://proxy.example:80");
    product_services::UseWindowsProxy();
    EXPECT_EQ(asked, L"1024 for no script");
}

TEST(Wrapper, GivesWhatIsSaidOfAPublisher)
{
    outcome = PRODUCT_SERVICES_PUBLISHER_TRUSTED;
    text = L"a sentence";
    const PublisherResult result = product_services::VerifyPublisher(L"setup.exe", L"Example Maker");
    EXPECT_EQ(asked, L"1024 for setup.exe, Example Maker");
    EXPECT_EQ(result.found, PRODUCT_SERVICES_PUBLISHER_TRUSTED);
    EXPECT_EQ(result.text, L"a sentence");
}

} // namespace product_services
