#include "guard_fixture.h"

#include "support/resource_counts.h"

#include "ui/resource.h"

#include <automation.h>

#include <atomic>

TEST_F(GuardTest, GivesBackWhatEachCallReports)
{
    const Guard guard(app);
    service.Answer(R"([{"name":"X","version":"2","url":"https://new.example"}])");
    EXPECT_EQ(Check(guard), L"reported 200: https://new.example");
    service.Answer("");
    EXPECT_EQ(Upgrade(guard), NoUpgrades);
}

// The record in the registry is found by name and version.
TEST_F(GuardTest, PassesNameVersionKeyAndLanguageOn)
{
    const Guard guard(app);
    WriteLanguage(L"PL", L"po polsku");
    record.languageId = PRODUCT_SERVICES_LANGUAGE_PL;
    service.Answer("");
    EXPECT_EQ(Upgrade(guard), L"reported 920: po polsku");
    EXPECT_NE(service.TakeRequests().find("api-key"), std::string::npos);
}

TEST_F(GuardTest, SaysThatNothingIsReportedAndKeepsNoTextOfTheCallBefore)
{
    const Guard guard(app);
    service.Answer("");
    ASSERT_EQ(Upgrade(guard), NoUpgrades);
    record.apiKey = L"";
    EXPECT_EQ(Upgrade(guard), L"nothing reported: ");
    EXPECT_EQ(Check(guard), L"nothing reported: ");
}

TEST_F(GuardTest, TakesTheLargerRecordOfANewerHost)
{
    const Guard guard(app);
    struct
    {
        GuardedCall known;
        char newer[24];
    } larger{record, "of the host's alone"};
    larger.known.size = sizeof larger;
    service.Answer("");
    EXPECT_EQ(guard.Upgrade(&larger.known), PRODUCT_SERVICES_REPORTED);
    EXPECT_EQ(larger.known.resultCode, PRODUCT_SERVICES_NO_UPGRADES);
    EXPECT_STREQ(larger.newer, "of the host's alone");
}

// It ends before trustedHosts, and what stands in the place of options is not read.
TEST_F(GuardTest, TakesTheShorterRecordOfAnOlderHost)
{
    const Guard guard(app);
    record.size = 56;
    record.options = 0xFFFFFFFF;
    record.trustedHosts = L"no host!";
    service.Answer("");
    EXPECT_EQ(Upgrade(guard), NoUpgrades);
}

TEST_F(GuardTest, SaysWhichOptionsOrHostsOfARecordAreBad)
{
    const Guard guard(app);
    record.options = PRODUCT_SERVICES_QUIET | 0x14;
    EXPECT_EQ(Check(guard), L"bad record: This version knows no such options: 0x14.");
    record.options = PRODUCT_SERVICES_QUIET;
    EXPECT_EQ(
        Upgrade(guard), L"bad record: PRODUCT_SERVICES_QUIET is for checks: the upgrade center is a window.");
    record.options = 0;
    record.trustedHosts = L"good.example;https://bad.example";
    EXPECT_EQ(
        Check(guard), L"bad record: trustedHosts has an entry that names no host: \"https://bad.example\".");
    EXPECT_EQ(service.TakeRequests(), "");
}

// Works the upgrade center that the thread shows next.
static std::thread Use(const std::function<void(HWND center)>& user)
{
    return std::thread([user, thread = GetCurrentThreadId()] { user(automation::WaitForDialog(thread)); });
}

static std::function<void()> atTimer;

static void CALLBACK OnTimer(HWND, UINT, UINT_PTR timer, DWORD)
{
    KillTimer(nullptr, timer);
    atTimer();
}

TEST_F(GuardTest, RefusesASecondCallWhileOneRuns)
{
    const Guard guard(app);
    std::atomic<int> refused = 0;
    const auto callAgain = [&] {
        GuardedCall second = record;
        second.apiKey = L""; // it would ask for nothing
        wchar_t secondText[100] = L"#";
        second.text = secondText;
        second.textCapacity = 100;
        refused += guard.Check(&second) == PRODUCT_SERVICES_NOT_CALLED;
        EXPECT_EQ(second.resultCode, 0xFFFFFFFF);
        EXPECT_STREQ(secondText, L"Another call has not ended yet.");
    };
    service.AtProbe(callAgain);
    service.Answer(Offer);
    atTimer = callAgain;
    SetTimer(nullptr, 0, USER_TIMER_MINIMUM, OnTimer);
    std::thread user = Use([&](HWND center) {
        EXPECT_TRUE(automation::WaitFor([&] { return refused == 2; })) << "by another thread and by a timer";
        automation::Press(center, IDCANCEL);
    });
    EXPECT_EQ(Upgrade(guard), L"reported 540: User chose to quit!");
    user.join();
    EXPECT_EQ(Check(guard), L"reported 200: u");
}

TEST_F(GuardTest, HasTheCenterEnlargedByTheSystemUnlessTheHostScales)
{
    const Guard guard(app);
    const DPI_AWARENESS_CONTEXT former =
        SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE);
    const auto seen = [&](std::uint32_t options) {
        DPI_AWARENESS ofTheCenter = DPI_AWARENESS_INVALID;
        std::thread user = Use([&](HWND center) {
            ofTheCenter = GetAwarenessFromDpiAwarenessContext(GetWindowDpiAwarenessContext(center));
            automation::Press(center, IDCANCEL);
        });
        record.options = options;
        EXPECT_EQ(Upgrade(guard), L"reported 540: User chose to quit!");
        user.join();
        const auto afterwards = GetAwarenessFromDpiAwarenessContext(GetThreadDpiAwarenessContext());
        EXPECT_EQ(afterwards, DPI_AWARENESS_PER_MONITOR_AWARE) << "the host's is put back";
        return ofTheCenter;
    };
    EXPECT_EQ(seen(0), DPI_AWARENESS_UNAWARE);
    EXPECT_EQ(seen(PRODUCT_SERVICES_HOST_SCALING), DPI_AWARENESS_PER_MONITOR_AWARE);
    record.size = 56;
    EXPECT_EQ(seen(PRODUCT_SERVICES_HOST_SCALING), DPI_AWARENESS_UNAWARE) << "an older record has no options";
    SetThreadDpiAwarenessContext(former);
}

static std::wstring shown;

static int WINAPI NoteShown(HWND, const wchar_t* message, const wchar_t*, UINT)
{
    shown += message;
    return IDOK;
}

TEST_F(GuardTest, WithholdsTheMessageOfAQuietCheckAlone)
{
    product_services_guard::ImportHook hook;
    ReplaceImport(hook, "MessageBoxW", NoteShown);
    service.Answer("");
    record.options = PRODUCT_SERVICES_QUIET;
    {
        const Guard guard(app);
        EXPECT_EQ(Check(guard), L"message withheld: You are running the latest version");
        EXPECT_EQ(shown, L"");
        HostContext host{L"Product", L"1.0", L"api-key", 120, nullptr, 0, nullptr, nullptr, nullptr, 0};
        void* const check = reinterpret_cast<void*>(
            GetProcAddress(GetModuleHandleW(L"ProductServices.dll"), "CheckForUpdates"));
        reinterpret_cast<decltype(&CheckForUpdates)>(check)(&host); // without the guard
        EXPECT_EQ(std::exchange(shown, {}), L"You are running the latest version");
    }
    // The guard of the call before is freed and must have left the library as it was.
    record.options = 0;
    EXPECT_EQ(Check(Guard(app)), L"nothing reported: ");
    EXPECT_EQ(shown, L"You are running the latest version");
}

TEST_F(GuardTest, ReportsAnAddressOfTrustedHostsAlone)
{
    const Guard guard(app);
    record.trustedHosts = L"good.example";
    service.Answer(R"([{"name":"X","version":"2","url":"https://good.example/x"}])");
    EXPECT_EQ(Check(guard), L"reported 200: https://good.example/x");
    service.Answer(R"([{"name":"X","version":"2","url":"https://bad.example/x"}])");
    EXPECT_EQ(Check(guard), L"untrusted address: https://bad.example/x");
    record.trustedHosts = nullptr;
    EXPECT_EQ(Check(guard), L"reported 200: https://bad.example/x");
}

static std::wstring opened;

static HINSTANCE WINAPI
NoteOpened(HWND, const wchar_t*, const wchar_t* file, const wchar_t*, const wchar_t*, int)
{
    opened += file;
    return reinterpret_cast<HINSTANCE>(INT_PTR{33});
}

TEST_F(GuardTest, OpensAnAddressOfTrustedHostsAlone)
{
    product_services_guard::ImportHook hook;
    ReplaceImport(hook, "ShellExecuteW", NoteOpened);
    const Guard guard(app);
    service.Answer(R"([{"name":"X","version":"2","url":"https://shop.example/x"}])");
    const auto buy = [&] {
        std::thread user = Use([](HWND center) {
            automation::SelectRow(GetDlgItem(center, IDC_UPGRADE_OFFERS), 0);
            automation::Press(center, IDOK);
        });
        std::wstring seen = Upgrade(guard);
        user.join();
        return seen;
    };
    record.trustedHosts = L"other.example";
    EXPECT_EQ(buy(), L"untrusted address: https://shop.example/x");
    EXPECT_EQ(opened, L"");
    record.trustedHosts = L"shop.example";
    EXPECT_TRUE(buy().starts_with(L"reported 930: "));
    EXPECT_EQ(opened, L"https://shop.example/x");
}

TEST_F(GuardTest, WritesNothingToARecordThatIsTooSmall)
{
    const Guard guard(app);
    constexpr std::uint32_t SmallestSize = 56; // of every version
    for (const std::uint32_t size : {0U, 1U, SmallestSize - 1}) {
        SCOPED_TRACE(size);
        record.size = size;
        EXPECT_EQ(
            Upgrade(guard), L"bad record 77, isTextCut is neither 0 nor 1: " + std::wstring(1000, L'#'));
    }
    EXPECT_EQ(guard.Check(nullptr), PRODUCT_SERVICES_BAD_RECORD);
    EXPECT_EQ(guard.Upgrade(nullptr), PRODUCT_SERVICES_BAD_RECORD);
    EXPECT_EQ(service.TakeRequests(), "");
}

TEST_F(GuardTest, CutsATextAtAWholeCharacter)
{
    const Guard guard(app);
    WriteLanguage(L"EN", L"a\U0001F600z");
    service.Answer("");
    struct
    {
        const char* name;
        std::uint32_t capacity;
        const wchar_t* seen;
    } const cases[]{
        {"room to spare", 6, L"reported 920: a\U0001F600z"},
        {"just enough", 5, L"reported 920: a\U0001F600z"},
        {"after the pair", 4, L"reported 920, cut: a\U0001F600"},
        {"within the pair", 3, L"reported 920, cut: a"},
        {"before the pair", 2, L"reported 920, cut: a"},
        {"the NUL alone", 1, L"reported 920, cut: "},
    };
    for (const auto& [name, capacity, seen] : cases) {
        SCOPED_TRACE(name);
        record.textCapacity = capacity;
        EXPECT_EQ(Upgrade(guard), seen);
        EXPECT_EQ(text.substr(capacity), std::wstring(1000 - capacity, L'#'));
    }
}

TEST_F(GuardTest, SaysOfABufferWithoutRoomWhetherThereWasAText)
{
    const Guard guard(app);
    service.Answer("");
    const std::wstring untouched(1000, L'#');
    record.textCapacity = 0;
    EXPECT_EQ(Upgrade(guard), L"reported 920, cut: " + untouched);
    record.text = nullptr;
    record.textCapacity = 1000;
    EXPECT_EQ(Upgrade(guard), L"reported 920, cut: " + untouched);
    record.apiKey = L"";
    EXPECT_EQ(Upgrade(guard), L"nothing reported: " + untouched);
}

TEST_F(GuardTest, GivesTheTextOfAnErrorInUtf16)
{
    const Guard guard(app);
    service.Answer("[\"\u00E4\u00F6\u00FC \u4E2D\u6587 \U0001F600");
    const std::wstring error = L"last read: '\"\u00E4\u00F6\u00FC \u4E2D\u6587 \U0001F600'";
    for (const std::wstring& seen : {Check(guard), Upgrade(guard)}) {
        EXPECT_TRUE(seen.starts_with(L"call failed: [json.exception.parse_error.101]")) << seen.c_str();
        EXPECT_TRUE(seen.ends_with(error)) << seen.c_str();
    }
}

TEST_F(GuardTest, GivesASentenceForWhatIsNoExceptionAndCutsAnErrorThatIsLongerThanTheRoom)
{
    InstallLibrary(app, "stand_in_library.dll");
    const Guard guard(app);
    record.productName = L"";
    EXPECT_EQ(Check(guard), L"call failed: An error without a text left the call.");
    record.productName = L"Product";
    text.resize(0x100001);
    record.text = text.data();
    record.textCapacity = 0x100001;
    EXPECT_TRUE(Check(guard) == L"call failed: " + std::wstring(0xFFFFF, L'x'));
}

TEST_F(GuardTest, GivesTheLibraryRoomForTheLargestLanguageFile)
{
    InstallLibrary(app, "stand_in_library.dll");
    constexpr std::uintmax_t Large = 0x300000, Page = 0x1000;
    const std::wstring roomForLarge = L"reported 920: " + std::to_wstring(Large + Page) + L" guarded";
    EXPECT_EQ(Upgrade(Guard(app)), L"reported 920: 2097152 guarded") << "without language files";
    for (const wchar_t* code :
         {L"EN", L"CZ", L"DE", L"ES", L"FR", L"IT", L"JA", L"PL", L"RU", L"TW", L"ZH", L"US"}) {
        const std::filesystem::path file = LanguageFile(code);
        WriteLanguage(code, L"");
        std::filesystem::resize_file(file, Large);
        EXPECT_EQ(Upgrade(Guard(app)), roomForLarge) << "with " << file << " as the largest";
        std::filesystem::resize_file(file, Large / 2);
    }
}

// ProductServices.dll itself stays loaded.
TEST_F(GuardTest, LeavesNothingBehindWhenItIsFreedAfterAnException)
{
    service.Answer("<html>");
    ExpectLevel(100, [&] { ASSERT_TRUE(Check(Guard(app)).starts_with(L"call failed: [json")); });
}
