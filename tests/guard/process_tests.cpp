// The effects of guarded calls on the host's process.
#include "guard_fixture.h"

#include "support/resource_counts.h"

namespace {

using HostProcess = GuardTest;

std::string ToString(DPI_AWARENESS_CONTEXT context)
{
    const std::pair<DPI_AWARENESS_CONTEXT, const char*> names[]{
        {DPI_AWARENESS_CONTEXT_UNAWARE, "unaware"},
        {DPI_AWARENESS_CONTEXT_UNAWARE_GDISCALED, "unaware, GDI-scaled"},
        {DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE, "per monitor"},
    };
    for (const auto& [known, name] : names) {
        if (AreDpiAwarenessContextsEqual(context, known)) {
            return name;
        }
    }
    return "another";
}

DPI_AWARENESS GetThreadAwareness()
{
    return GetAwarenessFromDpiAwarenessContext(GetThreadDpiAwarenessContext());
}

} // namespace

TEST_F(HostProcess, RunsDpiUnawareUnlessOptedOut)
{
    const DPI_AWARENESS_CONTEXT previous =
        SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE);
    service.Answer(GoodOffer);
    // Wine 8 cannot scale a window's text and lines.
    const bool isGdiScaled = IsValidDpiAwarenessContext(DPI_AWARENESS_CONTEXT_UNAWARE_GDISCALED);
    const struct
    {
        const char* name;
        std::uint32_t options;
        std::string context;
    } cases[]{
        {"by default", 0, isGdiScaled ? "unaware, GDI-scaled" : "unaware"},
        {"with the host's awareness", PRODUCT_SERVICES_OPTION_HOST_DPI_AWARENESS, "per monitor"},
    };
    for (const auto& [name, options, context] : cases) {
        SCOPED_TRACE(name);
        params.options = PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE | options;
        std::string seen = "no window";
        const auto lookAndExit = [&seen](HWND center) {
            seen = ToString(GetWindowDpiAwarenessContext(center));
            ClickExit(center);
        };
        EXPECT_EQ(UpgradeWith(lookAndExit), UserQuit);
        EXPECT_EQ(seen, context);
        EXPECT_EQ(GetThreadAwareness(), DPI_AWARENESS_PER_MONITOR_AWARE) << "the host's is restored";
    }
    onMessageBox = [] {
        EXPECT_EQ(GetThreadAwareness(), DPI_AWARENESS_PER_MONITOR_AWARE) << "a message box stays sharp";
    };
    params.options = PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE;
    service.Answer("");
    EXPECT_EQ(Check().outcome, PRODUCT_SERVICES_OUTCOME_UP_TO_DATE);
    EXPECT_EQ(boxes.size(), 1u);
    SetThreadDpiAwarenessContext(previous);
}

TEST_F(HostProcess, CanLoadBothLibraries)
{
    const HMODULE direct = LoadLibraryW(L"TestProductServices.dll");
    void* const address = reinterpret_cast<void*>(GetProcAddress(direct, "CheckForUpdates"));
    const auto check = reinterpret_cast<decltype(&CheckForUpdates)>(address);
    wchar_t text[100] = L"";
    HostContext host{L"Product", L"1.0", L"api-key", 120, nullptr, 0, text, nullptr, nullptr, 0};
    for (int round = 0; round < 2; ++round) {
        service.Answer(GoodOffer);
        EXPECT_EQ(Check(), NewerRelease);
        service.Answer(R"([{"name":"X","version":"2","url":"calc.exe"}])");
        check(&host);
        EXPECT_STREQ(text, L"calc.exe") << "direct calls are not guarded";
        EXPECT_EQ(Check().outcome, PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS);
    }
    FreeLibrary(direct);
}

TEST_F(HostProcess, LeaksNothingAfterAnExceptionAndUnload)
{
    service.Answer("<html>");
    ExpectNoGrowth(30, [&] {
        Reload();
        ASSERT_EQ(Check().outcome, PRODUCT_SERVICES_OUTCOME_INVALID_REPLY);
        service.TakeRequests();
    });
}
