#include "support/library_fixture.h"
#include "support/resource_counts.h"

#include <set>

using ResourceLeaks = LibraryTest;

TEST_F(ResourceLeaks, AreDetected)
{
    auto before = CountResources();
    CreateBitmap(8, 8, 1, 32, nullptr);
    CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const std::vector<std::wstring> texts(100, std::wstring(100, L'x'));
    VirtualAlloc(nullptr, 8 << 20, MEM_COMMIT, PAGE_READWRITE);
    for (const auto& [name, count] : CountResources()) {
        EXPECT_GT(count, before[name]) << name;
    }
}

TEST_F(ResourceLeaks, DoNotOccurOver30Loads)
{
    InstallLanguage();
    // Wine keeps an icon for each address of the DLL.
    std::set<HMODULE> addresses;
    const auto work = [&] {
        Reload();
        addresses.insert(dll);
        // Alternate between texts from a file and the built-in ones.
        const bool isPolish = host.languageId == PRODUCT_SERVICES_LANGUAGE_PL;
        host.languageId = isPolish ? PRODUCT_SERVICES_LANGUAGE_EN : PRODUCT_SERVICES_LANGUAGE_PL;
        service.AnswerProbe("1");
        service.Answer("");
        ASSERT_EQ(RunUpgrade(), isPolish ? L"920 No upgrades found!" : L"920 text 70");
        service.AnswerProbe("\xFF"); // an exception that the library catches
        ASSERT_EQ(RunUpgrade().substr(0, 3), L"940");
        service.Answer("<html>error</html>");
        ASSERT_EQ(Check(), NoJson);
        service.TakeRequests();
    };
    constexpr std::ptrdiff_t BitmapsOfAnIcon = 3;
    ExpectNoGrowth(30, work, [&] { return BitmapsOfAnIcon * static_cast<std::ptrdiff_t>(addresses.size()); });
}

TEST_F(ResourceLeaks, DoNotOccurOver100ChecksAnd20UpgradeCenters)
{
    ExpectNoGrowth(100, [&] {
        ASSERT_EQ(Check(), L"200 u");
        service.TakeRequests();
    });
    ExpectNoGrowth(20, [&] {
        ASSERT_EQ(OpenAndExit(), Quit);
        service.TakeRequests();
    });
}
