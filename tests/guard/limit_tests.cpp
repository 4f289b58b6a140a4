// Time limits, cancellation, and one guarded call at a time.
#include "guard_fixture.h"

#include <optional>

namespace {

using TimeLimit = GuardTest;
using CancelFlag = GuardTest;
using OneCallAtATime = GuardTest;

class Stopwatch
{
public:
    std::uint64_t Ms() const { return GetTickCount64() - m_start; }

private:
    std::uint64_t m_start = GetTickCount64();
};

// On a busy machine, a call ends late. Without a limit, libcurl would wait for minutes.
constexpr std::uint64_t MaxDurationMs = 3000;

std::function<void()> onTimer;

void CALLBACK OnTimer(HWND, UINT, UINT_PTR timer, DWORD)
{
    KillTimer(nullptr, timer);
    onTimer();
}

// Runs `work` on a thread that may end before `work` returns.
HANDLE StartThread(std::function<void()>& work)
{
    const LPTHREAD_START_ROUTINE run = [](void* parameter) -> DWORD {
        (*static_cast<std::function<void()>*>(parameter))();
        return 0;
    };
    return CreateThread(nullptr, 0, run, &work, 0, nullptr);
}

} // namespace

TEST_F(TimeLimit, EndsASilentTransfer)
{
    const struct
    {
        const char* name;
        const char* beginning;
    } cases[]{
        {"before the reply", ""},
        {"in its headers", "HTTP/1.1 200 OK\r\nContent-"},
        {"in its body", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n[{"},
    };
    params.timeLimitMs = 400;
    params.options |= PRODUCT_SERVICES_OPTION_QUIET;
    for (const auto& [name, beginning] : cases) {
        SCOPED_TRACE(name);
        service.Hang(beginning);
        const Stopwatch stopwatch;
        EXPECT_EQ(Check(), TimedOut);
        EXPECT_GE(stopwatch.Ms(), 350u);
        EXPECT_LT(stopwatch.Ms(), MaxDurationMs);
    }
}

TEST_F(TimeLimit, CoversAllTransfersOfACall)
{
    params.timeLimitMs = 3000;
    std::optional<Stopwatch> query;
    service.OnProbe([&] {
        Sleep(2700);
        query.emplace();
    });
    service.Hang();
    EXPECT_EQ(Upgrade(), TimedOut);
    ASSERT_TRUE(query) << "the service was not probed";
    EXPECT_LT(query->Ms(), 2900u) << "the query had three seconds for itself";
}

TEST_F(TimeLimit, ExcludesTimeWithAWindowOpen)
{
    params.timeLimitMs = 1500;
    service.Answer(GoodOffer);
    const auto waitAndExit = [](HWND center) {
        Sleep(1700);
        ClickExit(center);
    };
    EXPECT_EQ(UpgradeWith(waitAndExit), UserQuit);
}

TEST_F(CancelFlag, EndsATransfer)
{
    volatile std::uint32_t cancelFlag = 0;
    params.cancelFlag = &cancelFlag;
    params.options |= PRODUCT_SERVICES_OPTION_QUIET;
    service.Hang();
    const Stopwatch stopwatch;
    std::thread host([&] {
        Sleep(300);
        cancelFlag = 1;
    });
    EXPECT_EQ(Check(), Cancelled);
    EXPECT_GE(stopwatch.Ms(), 250u);
    EXPECT_LT(stopwatch.Ms(), MaxDurationMs);
    host.join();
}

TEST_F(CancelFlag, PreventsACall)
{
    volatile std::uint32_t cancelFlag = 1;
    params.cancelFlag = &cancelFlag;
    service.Answer(GoodOffer);
    EXPECT_EQ(Check(), Cancelled);
    EXPECT_EQ(service.TakeRequests(), "");
    cancelFlag = 0;
    EXPECT_EQ(Check(), NewerRelease);
}

TEST_F(OneCallAtATime, RejectsASecondCall)
{
    std::atomic<int> rejected = 0;
    const auto callAgain = [&] {
        EXPECT_EQ(Check(), Busy);
        ++rejected;
    };
    service.OnProbe(callAgain); // on the server's thread
    service.Answer(GoodOffer);
    onTimer = callAgain;
    SetTimer(nullptr, 0, USER_TIMER_MINIMUM, OnTimer);
    const auto exitWhenBothAreRejected = [&](HWND center) {
        EXPECT_TRUE(window_automation::WaitFor([&] { return rejected == 2; }))
            << rejected << " of 2 calls were rejected";
        ClickExit(center);
    };
    EXPECT_EQ(UpgradeWith(exitWhenBothAreRejected), UserQuit) << "the first call is not disturbed";
    EXPECT_EQ(Check(), NewerRelease);
}

TEST_F(OneCallAtATime, AllowsQuietChecksOnAnyThread)
{
    params.options |= PRODUCT_SERVICES_OPTION_QUIET;
    service.Answer(GoodOffer);
    EXPECT_EQ(Check(), NewerRelease);
    std::thread([&] { EXPECT_EQ(Check(), NewerRelease); }).join();
    EXPECT_EQ(Check(), NewerRelease);
}

TEST_F(OneCallAtATime, RecoversFromAThreadThatExited)
{
    service.Answer(GoodOffer);
    onTimer = [] { ExitThread(0); };
    std::function<void()> upgradeUntilTimer = [this] {
        SetTimer(nullptr, 0, USER_TIMER_MINIMUM, OnTimer);
        Export("GuardedUpgrade")(&params);
    };
    const HANDLE thread = StartThread(upgradeUntilTimer);
    ASSERT_EQ(WaitForSingleObject(thread, 10'000), WAIT_OBJECT_0);
    CloseHandle(thread);
    EXPECT_EQ(UpgradeWith(ClickExit), UserQuit);
}

TEST_F(OneCallAtATime, RecoversFromATerminatedThread)
{
    params.options |= PRODUCT_SERVICES_OPTION_QUIET;
    service.Hang();
    std::function<void()> check = [this] { Check(); };
    const HANDLE thread = StartThread(check);
    EXPECT_TRUE(window_automation::WaitFor([this] { return service.IsHanging(); })) << "no query arrived";
    EXPECT_EQ(Check(), Busy);
    TerminateThread(thread, 0);
    ASSERT_EQ(WaitForSingleObject(thread, 10'000), WAIT_OBJECT_0);
    CloseHandle(thread);
    service.Answer(GoodOffer);
    EXPECT_EQ(Check(), NewerRelease);
}
