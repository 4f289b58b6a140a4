// How long a guarded call takes, who may make one, and when it gives up.
#include "guard_fixture.h"

#include <atomic>

namespace {

using TimeLimit = GuardTest;
using CancelFlag = GuardTest;
using OneCallAtATime = GuardTest;

constexpr char GoodOffer[] = R"([{"name":"X","version":"2","url":"https://shop.example/x"}])";

class Stopwatch
{
public:
    std::uint64_t Ms() const { return GetTickCount64() - m_start; }

private:
    std::uint64_t m_start = GetTickCount64();
};

std::function<void()> atTimer;

void CALLBACK OnTimer(HWND, UINT, UINT_PTR timer, DWORD)
{
    KillTimer(nullptr, timer);
    atTimer();
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
        {"within its head", "HTTP/1.1 200 OK\r\nContent-"},
        {"within its body", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n[{"},
    };
    params.timeLimitMs = 400;
    params.options |= PRODUCT_SERVICES_OPTION_QUIET;
    for (const auto& [name, beginning] : cases) {
        SCOPED_TRACE(name);
        service.Hang(beginning);
        const Stopwatch stopwatch;
        EXPECT_EQ(Check(), TimedOut);
        EXPECT_GE(stopwatch.Ms(), 350u);
        EXPECT_LT(stopwatch.Ms(), 1400u);
    }
}

TEST_F(TimeLimit, CoversAllTransfersOfACall)
{
    params.timeLimitMs = 600;
    service.AtProbe([] { Sleep(400); });
    service.Hang();
    const Stopwatch stopwatch;
    EXPECT_EQ(Upgrade(), TimedOut);
    EXPECT_LT(stopwatch.Ms(), 950u) << "the query had no 600 ms of its own";
}

TEST_F(TimeLimit, ExcludesTimeWithAWindowOpen)
{
    params.timeLimitMs = 500;
    service.Answer(GoodOffer);
    const auto waits = [](HWND center) {
        Sleep(700);
        window_automation::ClickButton(center, IDCANCEL);
    };
    EXPECT_EQ(UpgradeWith(waits), UserQuit);
}

TEST_F(CancelFlag, EndsATransferAndPreventsACall)
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
    EXPECT_LT(stopwatch.Ms(), 1300u);
    host.join();

    service.TakeRequests();
    service.Answer(GoodOffer);
    EXPECT_EQ(Check(), Cancelled);
    EXPECT_EQ(service.TakeRequests(), "");
    cancelFlag = 0;
    EXPECT_EQ(Check().outcome, PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE);
}

TEST_F(OneCallAtATime, RejectsASecondCall)
{
    std::atomic<int> refused = 0;
    const auto callAgain = [&] {
        EXPECT_EQ(Check(), Busy);
        ++refused;
    };
    service.AtProbe(callAgain);
    service.Answer(GoodOffer);
    atTimer = callAgain;
    SetTimer(nullptr, 0, USER_TIMER_MINIMUM, OnTimer);
    const auto exitsOnceBothWereRefused = [&](HWND center) {
        EXPECT_TRUE(window_automation::WaitFor([&] { return refused == 2; }))
            << refused << " of 2 were refused";
        window_automation::ClickButton(center, IDCANCEL);
    };
    EXPECT_EQ(UpgradeWith(exitsOnceBothWereRefused), UserQuit) << "the first call is not disturbed";
    EXPECT_EQ(Check().outcome, PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE);
}

TEST_F(OneCallAtATime, AllowsQuietChecksOnAnyThread)
{
    params.options |= PRODUCT_SERVICES_OPTION_QUIET;
    service.Answer(GoodOffer);
    EXPECT_EQ(Check().outcome, PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE);
    std::thread([&] { EXPECT_EQ(Check().outcome, PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE); }).join();
    EXPECT_EQ(Check().outcome, PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE);
}

// Runs `work` on a thread of its own, which need not return from it.
static HANDLE StartThread(std::function<void()>& work)
{
    const LPTHREAD_START_ROUTINE run = [](void* parameter) -> DWORD {
        (*static_cast<std::function<void()>*>(parameter))();
        return 0;
    };
    return CreateThread(nullptr, 0, run, &work, 0, nullptr);
}

TEST_F(OneCallAtATime, RecoversFromAThreadThatExited)
{
    service.Answer(GoodOffer);
    atTimer = [] { ExitThread(0); };
    std::function<void()> leaves = [this] {
        SetTimer(nullptr, 0, USER_TIMER_MINIMUM, OnTimer);
        Upgrade();
    };
    const HANDLE thread = StartThread(leaves);
    ASSERT_EQ(WaitForSingleObject(thread, 10'000), WAIT_OBJECT_0);
    CloseHandle(thread);
    const auto exits = [](HWND center) { window_automation::ClickButton(center, IDCANCEL); };
    EXPECT_EQ(UpgradeWith(exits), UserQuit);
}

TEST_F(OneCallAtATime, RecoversFromATerminatedThread)
{
    params.options |= PRODUCT_SERVICES_OPTION_QUIET;
    service.Hang();
    std::function<void()> checks = [this] { Check(); };
    const HANDLE thread = StartThread(checks);
    EXPECT_TRUE(window_automation::WaitFor([this] { return service.IsHanging(); })) << "no query arrived";
    EXPECT_EQ(Check(), Busy);
    TerminateThread(thread, 0);
    ASSERT_EQ(WaitForSingleObject(thread, 10'000), WAIT_OBJECT_0);
    CloseHandle(thread);
    service.Answer(GoodOffer);
    EXPECT_EQ(Check().outcome, PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE);
}
