#include "support/library_fixture.h"
#include "support/resource_counts.h"

#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

constexpr char Offer[] = R"([{"name":"X","version":"2","url":"https://a/b"}])";

class Endurance : public LibraryTest
{
protected:
    Endurance() { service.AnswerUpdates(Reply::Http(Offer)); }

    // Runs `work` until it has settled, then `times` more, and compares what the process holds.
    void ExpectLevel(int times, const std::function<void()>& work)
    {
        constexpr int Settling = 100;
        for (int i = 0; i < Settling; ++i) {
            work();
        }
        CountResources(); // which makes what it needs itself on its first run
        const ResourceCounts before = CountResources();
        for (int i = 0; i < times; ++i) {
            work();
            if (i % Settling == 0) {
                ASSERT_TRUE(HeapsAreSound()) << i;
            }
        }
        const ResourceCounts after = CountResources();
        EXPECT_GT(before.kernelHandles, 0);
        EXPECT_LE(after.gdiObjects, before.gdiObjects);
        EXPECT_LE(after.windows, before.windows);
        // A handle may be on its way out in another thread.
        EXPECT_LE(after.kernelHandles, before.kernelHandles + 3);
        constexpr std::size_t Slack = 512 * 1024;
        EXPECT_LE(after.privateBytes, before.privateBytes + Slack);
    }
};

} // namespace

TEST_F(Endurance, TheCountsSeeALeak)
{
    const ResourceCounts before = CountResources();
    HBITMAP bitmap = CreateBitmap(8, 8, 1, 32, nullptr);
    HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HWND window = CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 8, 8, nullptr, nullptr, nullptr, nullptr);
    std::vector<char> memory(8 << 20, 'x');
    const ResourceCounts after = CountResources();
    EXPECT_GT(after.gdiObjects, before.gdiObjects);
    EXPECT_GT(after.kernelHandles, before.kernelHandles);
    EXPECT_GT(after.windows, before.windows);
    EXPECT_GE(after.privateBytes, before.privateBytes + memory.size());
    DestroyWindow(window);
    CloseHandle(event);
    DeleteObject(bitmap);
}

TEST_F(Endurance, TheHeapChecksSeeDamage)
{
    if (const char* debug = std::getenv("WINEDEBUG"); !debug || !std::strstr(debug, "warn+heap")) {
        GTEST_SKIP() << "the heaps are not checked: WINEDEBUG has no warn+heap";
    }
    HANDLE heap = HeapCreate(0, 0, 0);
    auto* block = static_cast<char*>(HeapAlloc(heap, 0, 24));
    EXPECT_TRUE(HeapsAreSound());
    const char former = std::exchange(block[24], 'x');
    EXPECT_FALSE(HeapsAreSound());
    block[24] = former;
    HeapDestroy(heap);
}

TEST_F(Endurance, TenThousandChecksLeaveNothingBehind)
{
    service.ForgetsRequests();
    ExpectLevel(10000, [&] { ASSERT_EQ(Check().code, 200u); });
}

TEST_F(Endurance, AThousandUpgradeCentersLeaveNothingBehind)
{
    service.ForgetsRequests();
    ExpectLevel(1000, [&] {
        const Outcome outcome =
            ShowUpgrades([](DWORD hostThread) { automation::Press(ShownDialog(hostThread), IDCANCEL); });
        ASSERT_EQ(outcome.code, 540u);
    });
}

TEST_F(Endurance, TheHostsThreadsLeaveNothingBehind)
{
    ExpectLevel(500, [] { std::thread([] {}).join(); });
}
