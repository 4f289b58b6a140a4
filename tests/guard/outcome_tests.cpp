// The outcomes of guarded calls.
#include "guard_fixture.h"

#include "support/text_assertions.h"
#include "ui/resource.h"

#include <optional>
#include <set>

namespace {

using GuardedCheck = GuardTest;
using GuardedUpgradeCenter = GuardTest;

const std::wstring LatestVersion = L"You are running the latest version";
const std::wstring NoInternet = L"No internet found!";
const std::wstring NoConnection = L"For upgrade center to appear, you need a stable internet connection!";

void BuyFirstOffer(HWND center)
{
    window_automation::SelectRow(GetDlgItem(center, IDC_UPGRADE_OFFERS), 0);
    window_automation::ClickButton(center, IDOK);
}

} // namespace

TEST_F(GuardedCheck, ClassifiesReplies)
{
    struct
    {
        const char* name;
        const char* reply;
        GuardedResult result;
        std::vector<std::wstring> boxes;
    } const cases[]{
        {"an offer", GoodOffer, NewerRelease, {}},
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
    for (const auto& [name, reply, result, expectedBoxes] : cases) {
        SCOPED_TRACE(name);
        boxes.clear();
        service.Answer(reply);
        EXPECT_EQ(Check(), result);
        EXPECT_EQ(boxes, expectedBoxes);
    }
}

TEST_F(GuardedCheck, ReportsParserErrorsInUtf16)
{
    service.Answer("[\"\u00E4\u00F6\u00FC \u4E2D\u6587 \U0001F600");
    const GuardedResult result = Check();
    EXPECT_EQ(result.outcome, PRODUCT_SERVICES_OUTCOME_INVALID_REPLY);
    EXPECT_EQ(result.text.substr(0, 32), L"[json.exception.parse_error.101]");
    EXPECT_TRUE(EndsWith(result.text, L"last read: '\"\u00E4\u00F6\u00FC \u4E2D\u6587 \U0001F600'"));
}

TEST_F(GuardedCheck, SurvivesDeepNesting)
{
    service.Answer(std::string(16300, '['));
    const GuardedResult result = Check();
    EXPECT_EQ(result.outcome, PRODUCT_SERVICES_OUTCOME_INVALID_REPLY);
    EXPECT_TRUE(
        Contains(result.text, L"column 16301: syntax error while parsing value - unexpected end of input"));
}

TEST_F(GuardedCheck, CatchesEveryException)
{
    service.Answer("");
    onMessageBox = [] { throw std::bad_alloc(); };
    EXPECT_EQ(Check(), (GuardedResult{PRODUCT_SERVICES_OUTCOME_FAILED, L"Out of memory."}));
    onMessageBox = [] { throw 1; };
    const std::wstring text = L"The call failed with an unknown exception.";
    EXPECT_EQ(Check(), (GuardedResult{PRODUCT_SERVICES_OUTCOME_FAILED, text}));
}

TEST_F(GuardedCheck, ShowsNothingIfQuiet)
{
    params.options |= PRODUCT_SERVICES_OPTION_QUIET;
    service.Answer("");
    EXPECT_EQ(Check(), (GuardedResult{PRODUCT_SERVICES_OUTCOME_UP_TO_DATE, LatestVersion}));
    service.Answer(R"({"status":0})");
    EXPECT_EQ(Check(), (GuardedResult{PRODUCT_SERVICES_OUTCOME_REFUSED, NoInternet}));
    service.Stop();
    EXPECT_EQ(Check().outcome, PRODUCT_SERVICES_OUTCOME_UNREACHABLE);
    EXPECT_EQ(boxes, std::vector<std::wstring>());
    EXPECT_EQ(cursorChanges, 0);
}

TEST_F(GuardedCheck, ReportsWhyTheServiceIsUnreachable)
{
    service.Stop();
    const GuardedResult result = Check();
    EXPECT_EQ(result.outcome, PRODUCT_SERVICES_OUTCOME_UNREACHABLE);
    EXPECT_TRUE(Contains(result.text, L"Failed to connect to 127."));
    EXPECT_EQ(boxes, std::vector{NoInternet});
    EXPECT_GT(cursorChanges, 0);
}

// libcurl's error 42 leads to a document that cannot be parsed, which must not become the outcome.
TEST_F(GuardedCheck, RequiresACertificate)
{
    params.options = 0;
    const GuardedResult result = Check();
    EXPECT_EQ(result.outcome, PRODUCT_SERVICES_OUTCOME_UNTRUSTED_CERTIFICATE);
    EXPECT_TRUE(EndsWith(result.text, L"is not encrypted, so there is no certificate to verify."));
    EXPECT_EQ(service.TakeRequests(), "");
}

TEST_F(GuardedCheck, SendsNothingWithoutAKey)
{
    const GuardedResult nothingSent{
        PRODUCT_SERVICES_OUTCOME_NOTHING_SENT, L"The API key or the product key is empty."};
    params.apiKey = nullptr;
    EXPECT_EQ(Check(), nothingSent);
    EXPECT_EQ(Upgrade(), nothingSent) << "a probe does not count";
    params.apiKey = L"api-key";
    records.Write(L"Product\\1.0", L"key", L"");
    EXPECT_EQ(Check(), nothingSent);
    EXPECT_EQ(service.TakeRequests().find("api_key"), std::string::npos);
}

TEST_F(GuardedCheck, ReportsAKeyThatCannotBeSent)
{
    params.apiKey = L"\U0001F600";
    const GuardedResult failed{
        PRODUCT_SERVICES_OUTCOME_FAILED, L"A key or the version cannot be sent: bad conversion"};
    EXPECT_EQ(Check(), failed);
    EXPECT_EQ(Upgrade(), failed);
}

TEST_F(GuardedCheck, ReportsAMissingRecord)
{
    params.productVersion = L"2.0";
    const GuardedResult noRecord{
        PRODUCT_SERVICES_OUTCOME_NO_PRODUCT_RECORD, L"No data was found for the installed product.", 950};
    EXPECT_EQ(Check(), noRecord);
    service.Stop();
    EXPECT_EQ(Upgrade(), noRecord) << "even if the service cannot be reached";
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
        EXPECT_EQ(Check(), (GuardedResult{outcome, url, isTrusted ? 200 : PRODUCT_SERVICES_NO_RESULT}));
    }
}

TEST_F(GuardedCheck, SendsNothingIfDisabledByPolicy)
{
    const struct
    {
        const char* name;
        const wchar_t* value;
        std::optional<DWORD> machine;
        std::optional<DWORD> user;
        std::uint32_t disabled;
    } cases[]{
        {"no policy", L"DisableUpdateCheck", {}, {}, 0},
        {"the computer's policy", L"DisableUpdateCheck", 1, {}, PRODUCT_SERVICES_DISABLED_CHECK_FOR_UPDATES},
        {"the user's policy", L"DisableUpgradeCenter", {}, 1, PRODUCT_SERVICES_DISABLED_UPGRADE},
        {"the computer's policy takes precedence", L"DisableUpdateCheck", 0, 1, 0},
    };
    constexpr const wchar_t* Path = product_family::PolicyRegistryPath;
    const auto getDisabledCalls = GetExport<decltype(&GetDisabledCalls)>("GetDisabledCalls");
    for (const auto& [name, value, machine, user, disabled] : cases) {
        SCOPED_TRACE(name);
        boxes.clear();
        service.Answer("");
        const MachineRegistry registry;
        for (const auto& [root, number] :
             {std::pair(HKEY_LOCAL_MACHINE, machine), {HKEY_CURRENT_USER, user}}) {
            if (number) {
                RegSetKeyValueW(root, Path, value, REG_DWORD, &*number, sizeof *number);
            }
        }
        EXPECT_EQ(getDisabledCalls(), disabled);
        const bool isCheckDisabled = disabled == PRODUCT_SERVICES_DISABLED_CHECK_FOR_UPDATES;
        const bool isUpgradeDisabled = disabled == PRODUCT_SERVICES_DISABLED_UPGRADE;
        EXPECT_STREQ(ToString(Check().outcome), isCheckDisabled ? "DISABLED_BY_POLICY" : "UP_TO_DATE");
        EXPECT_STREQ(ToString(Upgrade().outcome), isUpgradeDisabled ? "DISABLED_BY_POLICY" : "UP_TO_DATE");
        EXPECT_EQ(boxes.empty(), isCheckDisabled);
        const std::string requests = service.TakeRequests();
        EXPECT_EQ(requests.find("&up=1") == requests.npos, isCheckDisabled) << requests;
        EXPECT_EQ(requests.find("/check.php") == requests.npos, isUpgradeDisabled) << requests;
        RegDeleteTreeW(HKEY_CURRENT_USER, Path);
    }
    const std::wstring path = Path;
    RegDeleteKeyW(HKEY_CURRENT_USER, path.substr(0, path.rfind(L'\\')).c_str());
}

TEST_F(GuardedCheck, HasADelayForEachComputer)
{
    const auto getDelay = GetExport<decltype(&GetStartCheckDelay)>("GetStartCheckDelay");
    std::set<std::uint32_t> delays;
    for (const std::wstring guid : {L"one", L"another", L"one"}) {
        const MachineRegistry registry;
        const auto size = static_cast<DWORD>((guid.size() + 1) * sizeof(wchar_t));
        RegSetKeyValueW(
            HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Cryptography", L"MachineGuid", REG_SZ, guid.c_str(),
            size);
        delays.insert(getDelay());
    }
    EXPECT_EQ(delays.size(), 2u);
    EXPECT_LT(*delays.rbegin(), 120'000u);
}

TEST_F(GuardedUpgradeCenter, ClassifiesReplies)
{
    struct
    {
        const char* name;
        const char* probe;
        const char* reply;
        GuardedResult result;
    } const cases[]{
        {"an empty reply", "1", "", NoUpgrades},
        {"an empty list", "1", "[]", {PRODUCT_SERVICES_OUTCOME_UP_TO_DATE, L""}},
        {"a refusal with a reason",
         "1",
         R"({"status":0,"error":"why"})",
         {PRODUCT_SERVICES_OUTCOME_REFUSED, L"why", 940}},
        {"an unexpected reply to the probe",
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
    for (const auto& [name, probe, reply, result] : cases) {
        SCOPED_TRACE(name);
        service.AnswerProbe(probe);
        service.Answer(reply);
        EXPECT_EQ(Upgrade(), result);
    }
    EXPECT_EQ(boxes, std::vector<std::wstring>());
}

TEST_F(GuardedUpgradeCenter, ReportsTheUsersChoice)
{
    service.Answer(GoodOffer);
    EXPECT_EQ(UpgradeWith(ClickExit), UserQuit);
    EXPECT_EQ(opened, std::vector<std::wstring>());
    const GuardedResult browserOpened{
        PRODUCT_SERVICES_OUTCOME_BROWSER_OPENED, L"Browser opened, continue running!", 930};
    EXPECT_EQ(UpgradeWith(BuyFirstOffer), browserOpened);
    EXPECT_EQ(opened, std::vector{GoodUrl});
}

TEST_F(GuardedUpgradeCenter, ReportsQuitAsCancelled)
{
    service.Answer(GoodOffer);
    const DWORD caller = GetCurrentThreadId();
    const auto quit = [caller](HWND) { PostThreadMessageW(caller, WM_QUIT, 0, 0); };
    const GuardedResult cancelled{PRODUCT_SERVICES_OUTCOME_CANCELLED, L"The program was asked to quit."};
    EXPECT_EQ(UpgradeWith(quit), cancelled);
    MSG message;
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) << "the host gets it, too";
}

TEST_F(GuardedUpgradeCenter, BlocksUrlsOfOtherHosts)
{
    service.Answer(GoodOffer);
    params.trustedHosts = L"other.example";
    const GuardedResult untrusted{PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS, GoodUrl};
    EXPECT_EQ(UpgradeWith(BuyFirstOffer), untrusted);
    EXPECT_EQ(opened, std::vector<std::wstring>());
}
