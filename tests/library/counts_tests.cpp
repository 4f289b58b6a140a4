#include "support/library_fixture.h"
#include "support/resource_counts.h"

namespace {

constexpr char Offer[] = R"([{"name":"X","version":"2","url":"https://a/b"}])";

// Runs `work` until it has settled, then `times` more: what the process holds does not grow.
void ExpectLevel(int times, const std::function<void()>& work)
{
    ResourceCounts before{};
    for (int i = -50; i < times; ++i) {
        if (i == 0) {
            CountResources(); // which makes what it needs itself on its first run
            before = CountResources();
        }
        work();
    }
    const ResourceCounts after = CountResources();
    EXPECT_LE(after.gdiObjects, before.gdiObjects);
    EXPECT_LE(after.windows, before.windows);
    EXPECT_LE(after.tlsIndexes, before.tlsIndexes);
    // A handle may be on its way out in another thread.
    EXPECT_LE(after.kernelHandles, before.kernelHandles + 3);
    EXPECT_LE(after.privateBytes, before.privateBytes + 512 * 1024);
}

} // namespace

using Counts = LibraryTest;

TEST_F(Counts, SeeALeak)
{
    const ResourceCounts before = CountResources();
    CreateBitmap(8, 8, 1, 32, nullptr);
    CreateEventW(nullptr, FALSE, FALSE, nullptr);
    CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 8, 8, nullptr, nullptr, nullptr, nullptr);
    TlsAlloc();
    const std::vector<char> memory(8 << 20, 'x');
    const ResourceCounts after = CountResources();
    EXPECT_GT(after.gdiObjects, before.gdiObjects);
    EXPECT_GT(after.kernelHandles, before.kernelHandles);
    EXPECT_GT(after.windows, before.windows);
    EXPECT_GT(after.tlsIndexes, before.tlsIndexes);
    EXPECT_GE(after.privateBytes, before.privateBytes + memory.size());
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
        ASSERT_EQ(Check().code, 200u);
        service.Answer("");
        ASSERT_EQ(ShowUpgrades(), (Outcome{920, isPolish ? L"No upgrades found!" : L"text 70"}));
        service.TakeRequests();
        FreeLibrary(library);
        ASSERT_EQ(GetModuleHandleW(L"ProductServicesForTests.dll"), nullptr);
    });
    library = nullptr;
}

TEST_F(Counts, StayLevelOverTwoThousandChecks)
{
    service.Answer(Offer);
    ExpectLevel(2000, [&] {
        ASSERT_EQ(Check().code, 200u);
        service.TakeRequests();
    });
}

TEST_F(Counts, StayLevelOverTwoHundredUpgradeCenters)
{
    service.Answer(Offer);
    ExpectLevel(200, [&] {
        ASSERT_EQ(ShowUpgrades([](HWND center) { automation::Press(center, IDCANCEL); }).code, 540u);
        service.TakeRequests();
    });
}
