// The C++ wrapper, with fake guarded calls.
#include <product_services/product_services.hpp>

#include <cstdint>
#include <gtest/gtest.h>
#include <thread>

namespace {

// What the wrapper passed.
GuardedCallParams received{};
std::wstring receivedTexts;
std::string calledFunction;

// What the fake calls return.
ProductServicesOutcome outcome = PRODUCT_SERVICES_OUTCOME_UP_TO_DATE;
std::uint32_t resultCode = PRODUCT_SERVICES_NO_RESULT;
std::wstring text;
std::function<void()> duringCall;

std::uint32_t CopyText(wchar_t* buffer, std::uint32_t capacity)
{
    const std::size_t length = text.copy(buffer, capacity - 1);
    buffer[length] = L'\0';
    return length < text.size() ? 1 : 0;
}

ProductServicesOutcome FakeCall(const char* function, GuardedCallParams& params)
{
    calledFunction = function;
    received = params;
    receivedTexts = std::wstring(params.productName) + L", " + params.productVersion + L", " + params.apiKey +
                    L", " + (params.trustedHosts ? params.trustedHosts : L"any host");
    if (duringCall) {
        duringCall();
    }
    params.resultCode = resultCode;
    params.isTextTruncated = CopyText(params.resultText, params.resultTextCapacity);
    return outcome;
}

} // namespace

ProductServicesOutcome PRODUCT_SERVICES_CALL GuardedCheckForUpdates(GuardedCallParams* params)
{
    return FakeCall("check", *params);
}

ProductServicesOutcome PRODUCT_SERVICES_CALL GuardedUpgrade(GuardedCallParams* params)
{
    return FakeCall("upgrade", *params);
}

ProductServicesPublisherResult PRODUCT_SERVICES_CALL
VerifyPublisher(const wchar_t* path, const wchar_t* publisher, wchar_t* buffer, std::uint32_t capacity)
{
    receivedTexts = std::wstring(path) + L", " + publisher;
    CopyText(buffer, capacity);
    return PRODUCT_SERVICES_PUBLISHER_TRUSTED;
}

ProductServicesPublisherResult PRODUCT_SERVICES_CALL StartVerifiedFile(
    const wchar_t* path, const wchar_t* publishers, const wchar_t* arguments, wchar_t* buffer,
    std::uint32_t capacity)
{
    receivedTexts = std::wstring(path) + L", " + publishers + L", " + arguments;
    CopyText(buffer, capacity);
    return PRODUCT_SERVICES_PUBLISHER_NOT_STARTED;
}

namespace product_services {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(Wrapper, PassesDefaults)
{
    EXPECT_EQ(Upgrade({}).outcome, Outcome::UpToDate);
    EXPECT_EQ(calledFunction, "upgrade");
    EXPECT_EQ(receivedTexts, L", , , any host");
    EXPECT_EQ(received.size, sizeof(GuardedCallParams));
    EXPECT_EQ(received.languageId, 0);
    EXPECT_EQ(received.options, 0u);
    EXPECT_EQ(received.timeLimitMs, 0u);
}

TEST(Wrapper, PassesTextsAndLanguage)
{
    const CallParams params{
        .productName = L"Draft",
        .productVersion = L"2026.1",
        .apiKey = L"api-key",
        .languageId = 140,
        .trustedHosts = L"example.com"};
    EXPECT_EQ(CheckForUpdates(params).outcome, Outcome::UpToDate);
    EXPECT_EQ(calledFunction, "check");
    EXPECT_EQ(receivedTexts, L"Draft, 2026.1, api-key, example.com");
    EXPECT_EQ(received.languageId, 140);
}

TEST(Wrapper, PassesOptionsAndTimeLimit)
{
    const struct
    {
        const char* name;
        CallParams params;
        std::uint32_t options;
        std::uint32_t timeLimitMs;
    } cases[]{
        {"quiet", {.isQuiet = true}, PRODUCT_SERVICES_OPTION_QUIET, 0},
        {"system proxy", {.usesSystemProxy = true}, PRODUCT_SERVICES_OPTION_SYSTEM_PROXY, 0},
        {"any certificate", {.acceptsAnyCertificate = true}, PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE, 0},
        {"DPI awareness", {.usesHostDpiAwareness = true}, PRODUCT_SERVICES_OPTION_HOST_DPI_AWARENESS, 0},
        {"a limit", {.timeLimit = seconds(15)}, 0, 15'000},
        {"no limit", {.timeLimit = NoTimeLimit}, 0, PRODUCT_SERVICES_NO_TIME_LIMIT},
        {"a limit of zero", {.timeLimit = milliseconds(0)}, 0, 1},
        {"a limit that is too large", {.timeLimit = milliseconds(0x100000000)}, 0, 0xFFFFFFFE},
    };
    for (const auto& [name, params, options, timeLimitMs] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(CheckForUpdates(params).outcome, Outcome::UpToDate);
        EXPECT_EQ(received.options, options);
        EXPECT_EQ(received.timeLimitMs, timeLimitMs);
    }
}

TEST(Wrapper, SetsTheCancelFlagOnStop)
{
    std::stop_source source;
    duringCall = [&source] {
        EXPECT_EQ(*received.cancelFlag, 0u);
        source.request_stop();
        EXPECT_EQ(*received.cancelFlag, 1u);
    };
    EXPECT_EQ(CheckForUpdates({.stopToken = source.get_token()}).outcome, Outcome::UpToDate);
    duringCall = nullptr;
}

TEST(Wrapper, ReturnsTheCallsResult)
{
    outcome = PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE;
    resultCode = 200;
    text.assign(65'535, L'x');
    CallResult result = CheckForUpdates({});
    EXPECT_EQ(result.outcome, Outcome::NewerRelease);
    EXPECT_EQ(result.resultCode, 200u);
    EXPECT_TRUE(result.text == text) << "it has " << result.text.size() << " characters";
    EXPECT_FALSE(result.isTextTruncated);

    text += L'y';
    resultCode = PRODUCT_SERVICES_NO_RESULT;
    result = CheckForUpdates({});
    EXPECT_EQ(result.resultCode, std::nullopt);
    EXPECT_TRUE(result.text == std::wstring(65'535, L'x'))
        << "it has " << result.text.size() << " characters";
    EXPECT_TRUE(result.isTextTruncated);
}

TEST(Wrapper, ReturnsThePublisherResult)
{
    text = L"a sentence";
    PublisherResult result = product_services::VerifyPublisher(L"setup.exe", L"Example Maker");
    EXPECT_EQ(receivedTexts, L"setup.exe, Example Maker");
    EXPECT_EQ(result.status, PRODUCT_SERVICES_PUBLISHER_TRUSTED);
    EXPECT_EQ(result.text, L"a sentence");

    result = product_services::StartVerifiedFile(L"setup.exe", L"Example Maker", L"/quiet");
    EXPECT_EQ(receivedTexts, L"setup.exe, Example Maker, /quiet");
    EXPECT_EQ(result.status, PRODUCT_SERVICES_PUBLISHER_NOT_STARTED);
    EXPECT_EQ(result.text, L"a sentence");
}

} // namespace product_services
