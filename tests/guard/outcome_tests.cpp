// What a guarded call makes of each thing that can happen.
#include "guard_fixture.h"

#include "ui/resource.h"

namespace {

using GuardedCheck = GuardTest;
using GuardedUpgradeCenter = GuardTest;

constexpr char GoodOffer[] = R"([{"name":"X","version":"2","url":"https://shop.example/x"}])";
const std::wstring LatestVersion = L"You are running the latest version";
const std::wstring NoInternet = L"No internet found!";
const std::wstring NoConnection = L"For upgrade center to appear, you need a stable internet connection!";

const auto exits = [](HWND center) { window_automation::ClickButton(center, IDCANCEL); };
const auto buys = [](HWND center) {
    window_automation::SelectRow(GetDlgItem(center, IDC_UPGRADE_OFFERS), 0);
    window_automation::ClickButton(center, IDOK);
};

} // namespace

TEST_F(GuardedCheck, ClassifiesReplies)
{
    struct
    {
        const char* name;
        const char* reply;
        Ended ended;
        std::vector<std::wstring> boxes;
    } const cases[]{
        {"an offer", GoodOffer, {PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE, L"https://shop.example/x", 200}, {}},
        {"an empty reply", "", {PRODUCT_SERVICES_OUTCOME_UP_TO_DATE, LatestVersion}, {LatestVersion}},
        {"a refusal with a reason",
         R"({"status":0,"error":"unknown key: \u00fc"})",
         {PRODUCT_SERVICES_OUTCOME_REFUSED, L"unknown key: \u00fc"},
         {NoInternet}},
        {"a refusal without a reason",
         R"({"status":0})",
         {PRODUCT_SERVICES_OUTCOME_REFUSED, NoInternet},
         {NoInternet}},
        {"a refusal whose reason is not a string",
         R"({"status":0,"error":5})",
         {PRODUCT_SERVICES_OUTCOME_REFUSED, NoInternet},
         {NoInternet}},
        {"another status",
         R"({"status":7})",
         {PRODUCT_SERVICES_OUTCOME_OTHER_STATUS, L"The service answered with status 7."},
         {}},
        {"an empty list",
         "[]",
         {PRODUCT_SERVICES_OUTCOME_INVALID_REPLY,
          L"[json.exception.type_error.302] type must be string, but is null"},
         {}},
        {"a character outside the Basic Multilingual Plane",
         "[{\"name\":\"\xF0\x9F\x98\x80\",\"version\":\"2\",\"url\":\"u\"}]",
         {PRODUCT_SERVICES_OUTCOME_INVALID_REPLY, L"bad conversion"},
         {}},
    };
    for (const auto& [name, reply, ended, expectedBoxes] : cases) {
        SCOPED_TRACE(name);
        boxes.clear();
        service.Answer(reply);
        EXPECT_EQ(Check(), ended);
        EXPECT_EQ(boxes, expectedBoxes);
    }
}

TEST_F(GuardedCheck, ReportsParserErrorsInUtf16)
{
    service.Answer("[\"\u00E4\u00F6\u00FC \u4E2D\u6587 \U0001F600");
    const Ended ended = Check();
    EXPECT_EQ(ended.outcome, PRODUCT_SERVICES_OUTCOME_INVALID_REPLY);
    EXPECT_TRUE(ended.text.starts_with(L"[json.exception.parse_error.101]")) << testing::PrintToString(ended);
    EXPECT_TRUE(ended.text.ends_with(L"last read: '\"\u00E4\u00F6\u00FC \u4E2D\u6587 \U0001F600'"))
        << testing::PrintToString(ended);
}

TEST_F(GuardedCheck, ShowsNothingIfQuiet)
{
    params.options |= PRODUCT_SERVICES_OPTION_QUIET;
    service.Answer("");
    EXPECT_EQ(Check(), (Ended{PRODUCT_SERVICES_OUTCOME_UP_TO_DATE, LatestVersion}));
    service.Answer(R"({"status":0})");
    EXPECT_EQ(Check(), (Ended{PRODUCT_SERVICES_OUTCOME_REFUSED, NoInternet}));
    service.Stop();
    EXPECT_EQ(Check().outcome, PRODUCT_SERVICES_OUTCOME_UNREACHABLE);
    EXPECT_EQ(boxes, std::vector<std::wstring>());
    EXPECT_EQ(cursorChanges, 0);
}

TEST_F(GuardedCheck, ReportsWhyTheServiceIsUnreachable)
{
    service.Stop();
    const Ended ended = Check();
    EXPECT_EQ(ended.outcome, PRODUCT_SERVICES_OUTCOME_UNREACHABLE);
    EXPECT_NE(ended.text.find(L"Failed to connect to 127.1."), ended.text.npos)
        << testing::PrintToString(ended);
    EXPECT_EQ(boxes, std::vector{NoInternet});
    EXPECT_GT(cursorChanges, 0);
}

// The document for libcurl's error 42, which the library cannot parse, must not hide that.
TEST_F(GuardedCheck, RequiresACertificate)
{
    params.options = 0;
    const Ended ended = Check();
    EXPECT_EQ(ended.outcome, PRODUCT_SERVICES_OUTCOME_UNTRUSTED_CERTIFICATE);
    EXPECT_TRUE(ended.text.ends_with(L"is not encrypted, so there is no certificate to verify."))
        << testing::PrintToString(ended);
    EXPECT_EQ(service.TakeRequests(), "");
}

TEST_F(GuardedCheck, SendsNothingWithoutAKey)
{
    const Ended nothingSent{
        PRODUCT_SERVICES_OUTCOME_NOTHING_SENT, L"The API key or the product key is empty."};
    params.apiKey = nullptr;
    EXPECT_EQ(Check(), nothingSent);
    EXPECT_EQ(Upgrade(), nothingSent) << "the probe alone does not count";
    params.apiKey = L"api-key";
    records.Write(L"Product\\1.0", L"key", L"");
    EXPECT_EQ(Check(), nothingSent);
    EXPECT_EQ(service.TakeRequests().find("api_key"), std::string::npos);
}

TEST_F(GuardedCheck, ReportsAKeyThatCannotBeSent)
{
    params.apiKey = L"\U0001F600";
    const Ended failed{
        PRODUCT_SERVICES_OUTCOME_FAILED, L"A key or the version cannot be sent: bad conversion"};
    EXPECT_EQ(Check(), failed);
    EXPECT_EQ(Upgrade(), failed);
}

TEST_F(GuardedCheck, ReportsAMissingRecord)
{
    params.productVersion = L"2.0";
    const Ended noRecord{
        PRODUCT_SERVICES_OUTCOME_NO_PRODUCT_RECORD, L"No data of the installed product was found.", 950};
    EXPECT_EQ(Check(), noRecord);
    service.Stop();
    EXPECT_EQ(Upgrade(), noRecord) << "whether or not the service is reached";
}

TEST_F(GuardedCheck, ReportsOnlyStrictHttpsUrls)
{
    const struct
    {
        const char* name;
        const wchar_t* trustedHosts;
        std::wstring url;
        ProductServicesOutcome outcome;
    } cases[]{
        {"any host", nullptr, L"https://any.example/x", PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE},
        {"another scheme", nullptr, L"http://any.example/x", PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS},
        {"a program", nullptr, L"calc.exe", PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS},
        {"an empty URL", nullptr, L"", PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS},
        {"a host of the list", L"a.example;b.example", L"https://b.example/x",
         PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE},
        {"another host", L"a.example", L"https://b.example/x", PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS},
    };
    for (const auto& [name, trustedHosts, url, outcome] : cases) {
        SCOPED_TRACE(name);
        params.trustedHosts = trustedHosts;
        service.Answer(
            R"([{"name":"X","version":"2","url":")" + std::string(url.begin(), url.end()) + R"("}])");
        const bool isTrusted = outcome == PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE;
        EXPECT_EQ(Check(), (Ended{outcome, url, isTrusted ? 200 : PRODUCT_SERVICES_NO_RESULT}));
    }
}

TEST_F(GuardedUpgradeCenter, ClassifiesReplies)
{
    struct
    {
        const char* name;
        const char* probe;
        const char* reply;
        Ended ended;
    } const cases[]{
        {"an empty reply", "1", "", NoUpgrades},
        {"an empty list", "1", "[]", {PRODUCT_SERVICES_OUTCOME_UP_TO_DATE, L""}},
        {"a refusal with a reason",
         "1",
         R"({"status":0,"error":"why"})",
         {PRODUCT_SERVICES_OUTCOME_REFUSED, L"why", 940}},
        {"another answer of the probe",
         "0",
         GoodOffer,
         {PRODUCT_SERVICES_OUTCOME_REFUSED, NoConnection, 940}},
        {"another status",
         "1",
         R"({"status":-1})",
         {PRODUCT_SERVICES_OUTCOME_OTHER_STATUS, L"The service answered with status -1."}},
        {"an object without a status",
         "1",
         R"({"name":"X"})",
         {PRODUCT_SERVICES_OUTCOME_INVALID_REPLY,
          L"[json.exception.type_error.305] cannot use operator[] with a numeric argument with object"}},
    };
    for (const auto& [name, probe, reply, ended] : cases) {
        SCOPED_TRACE(name);
        service.AnswerProbe(probe);
        service.Answer(reply);
        EXPECT_EQ(Upgrade(), ended);
    }
    EXPECT_EQ(boxes, std::vector<std::wstring>());
}

TEST_F(GuardedUpgradeCenter, ReportsTheUsersChoice)
{
    service.Answer(GoodOffer);
    EXPECT_EQ(UpgradeWith(exits), UserQuit);
    EXPECT_EQ(opened, std::vector<std::wstring>());
    const Ended browserOpened{
        PRODUCT_SERVICES_OUTCOME_BROWSER_OPENED, L"Browser opened, continue running!", 930};
    EXPECT_EQ(UpgradeWith(buys), browserOpened);
    EXPECT_EQ(opened, std::vector<std::wstring>{L"https://shop.example/x"});
}

TEST_F(GuardedUpgradeCenter, ReportsQuitAsCancelled)
{
    service.Answer(GoodOffer);
    const DWORD caller = GetCurrentThreadId();
    const auto quits = [caller](HWND) { PostThreadMessageW(caller, WM_QUIT, 0, 0); };
    EXPECT_EQ(
        UpgradeWith(quits), (Ended{PRODUCT_SERVICES_OUTCOME_CANCELLED, L"The program was asked to quit."}));
    MSG message;
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE))
        << "the host still learns of it";
}

TEST_F(GuardedUpgradeCenter, BlocksUrlsOfOtherHosts)
{
    service.Answer(GoodOffer);
    params.trustedHosts = L"other.example";
    const Ended untrusted{PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS, L"https://shop.example/x"};
    EXPECT_EQ(UpgradeWith(buys), untrusted);
    EXPECT_EQ(opened, std::vector<std::wstring>());
}
