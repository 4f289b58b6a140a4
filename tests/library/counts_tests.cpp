#include "support/library_fixture.h"
#include "support/resource_counts.h"

using Counts = LibraryTest;

// Runs `work` until it has settled, then `times` more: what the process holds does not grow.
static void ExpectLevel(int times, const std::function<void()>& work)
{
    auto before = CountResources();
    for (int i = -50; i < times; ++i) {
        work();
        before = i < 0 ? CountResources() : before;
    }
    before["kernel handles"] += 3; // one may be on its way out in another thread
    before["private bytes"] += 512 * 1024;
    for (const auto& [name, count] : CountResources()) {
        EXPECT_LE(count, before[name]) << name;
    }
}

TEST_F(Counts, SeeALeak)
{
    auto before = CountResources();
    CreateBitmap(8, 8, 1, 32, nullptr);
    CreateEventW(nullptr, FALSE, FALSE, nullptr);
    CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 8, 8, nullptr, nullptr, nullptr, nullptr);
    TlsAlloc();
    const std::vector<char> memory(8 << 20, 'x');
    for (const auto& [name, count] : CountResources()) {
        EXPECT_GT(count, before[name]) << name;
    }
}

TEST_F(Counts, StayLevelOverTwoHundredLoadsOfTheLibrary)
{
    FreeLibrary(library);
    ExpectLevel(200, [&] {
        library = LoadLibraryW(L"ProductServicesForTests.dll");
        // In turn, since each load makes the texts anew.
        const bool isPolish = host.languageId == PRODUCT_SERVICES_LANGUAGE_PL;
        isPolish ? void(host.languageId = PRODUCT_SERVICES_LANGUAGE_EN) : InstallLanguage();
        service.Answer(Offer);
        ASSERT_EQ(Check(), L"200 u");
        service.Answer("");
        ASSERT_EQ(ShowUpgrades(), isPolish ? L"920 No upgrades found!" : L"920 text 70");
        service.TakeRequests();
        FreeLibrary(library);
        ASSERT_EQ(GetModuleHandleW(L"ProductServicesForTests.dll"), nullptr);
    });
    library = nullptr;
}

TEST_F(Counts, StayLevelOverTwoThousandChecksAndTwoHundredUpgradeCenters)
{
    const User leave = [](HWND center) { automation::Press(center, IDCANCEL); };
    ExpectLevel(2000, [&] { ASSERT_TRUE(Check() == L"200 u" && IsAsked("POST")); });
    ExpectLevel(200, [&] { ASSERT_TRUE(ShowUpgrades(leave) == Quit && IsAsked("POST")); });
}
