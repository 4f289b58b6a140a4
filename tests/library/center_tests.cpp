#include "support/center_fixture.h"

#include <algorithm>

namespace {

const Outcome Bought = L"930 Browser opened, continue running!";
const Outcome NoConnection = L"940 For upgrade center to appear, you need a stable internet connection!";

std::vector<std::wstring> opened;

HINSTANCE NoteOpened(
    HWND, const wchar_t* verb, const wchar_t* file, const wchar_t* parameters, const wchar_t* folder,
    int show)
{
    EXPECT_EQ(verb, nullptr) << "the default action";
    EXPECT_EQ(parameters, nullptr);
    EXPECT_EQ(folder, nullptr);
    EXPECT_EQ(show, SW_SHOWNORMAL);
    opened.emplace_back(file);
    return nullptr; // a failure, which nobody looks at
}

std::vector<UINT> noted;

// Notes of the thread's windows when a dialog is about to become visible, and when any gets or loses the
// focus.
LRESULT CALLBACK NoteMessage(int, WPARAM, LPARAM parameter)
{
    const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(parameter);
    const bool isDialog = GetClassLongPtrW(sent.hwnd, GCW_ATOM) == 0x8002;
    const bool isShown = sent.message == WM_SHOWWINDOW && sent.wParam && isDialog;
    if (isShown || sent.message == WM_SETFOCUS || sent.message == WM_KILLFOCUS) {
        noted.push_back(sent.message);
    }
    return 0;
}

class UpgradeCenter : public CenterTest
{
protected:
    void Load() override
    {
        CenterTest::Load();
        ReplaceImport(library, "ShellExecuteW", NoteOpened);
        opened.clear();
    }
};

} // namespace

TEST_F(UpgradeCenter, ProbesTheServiceAndAsksForItsOffers)
{
    EXPECT_EQ(Look([](HWND) {}), Quit);
    EXPECT_TRUE(IsAsked(
        "^POST /check\\.php [^]*\r\nContent-Length: 0\r\n[^]*\r\n\r\nPOST /get_updates\\.php [^]*\r\n\r\n"
        "api_key=api-key&key=product-key&hardware_id=[0-9a-f]{64}&version=20\\.1&up=0$"));
}

TEST_F(UpgradeCenter, IsLeftByEveryWayOut)
{
    const std::tuple<const char*, UINT, WPARAM> ways[]{
        {"the button", WM_COMMAND, IDCANCEL},
        {"the Escape key", WM_KEYDOWN, VK_ESCAPE},
        {"the window's close command", WM_SYSCOMMAND, SC_CLOSE},
        {"command 16", WM_COMMAND, 16},
    };
    for (const auto& [name, message, parameter] : ways) {
        SCOPED_TRACE(name);
        const User posts = [&way = message, &with = parameter](HWND center) {
            PostMessageW(center, way, with, 0);
        };
        EXPECT_EQ(ShowUpgrades(posts), Quit);
    }
    const User sends = [](HWND center) { SendMessageW(center, WM_COMMAND, IDCANCEL, 0); };
    EXPECT_EQ(ShowUpgrades(sends), Quit) << "while the center waits for a message";
}

TEST_F(UpgradeCenter, OpensTheAddressOfTheSelectedOffer)
{
    const User buysSecond = [](HWND center) {
        automation::SelectRow(List(center), 1);
        automation::Press(center, IDOK);
    };
    EXPECT_EQ(ShowUpgrades(buysSecond), Bought);
    const User buysFirstWithEnter = [](HWND center) {
        automation::SelectRow(List(center), 0);
        PostMessageW(List(center), WM_KEYDOWN, VK_RETURN, 0);
    };
    EXPECT_EQ(ShowUpgrades(buysFirstWithEnter), Bought);
    service.Answer(R"([{"name":"X","version":"2","url":""}])");
    EXPECT_EQ(ShowUpgrades(buysFirstWithEnter), Bought);
    const std::vector<std::wstring> expected{L"https://shop/second?a=b&c=%20", L"https://shop/first", L""};
    EXPECT_EQ(opened, expected);
}

TEST_F(UpgradeCenter, StaysOpenWhenNothingIsSelected)
{
    const User buysNothing = [](HWND center) {
        SendMessageW(center, WM_COMMAND, IDOK, 0);
        EXPECT_TRUE(IsWindowVisible(center));
        // The button says more than that it was clicked.
        const auto button = reinterpret_cast<LPARAM>(GetDlgItem(center, IDCANCEL));
        SendMessageW(center, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_SETFOCUS), button);
        EXPECT_TRUE(IsWindowVisible(center));
    };
    EXPECT_EQ(Look(buysNothing), Quit);
    EXPECT_TRUE(opened.empty());
}

TEST_F(UpgradeCenter, ShowsNoWindowAndTakesNoFocusWithoutOffers)
{
    const std::tuple<const char*, std::string, Outcome> replies[]{
        {"nothing", "", L"920 No upgrades found!"},
        {"a refusal", R"({"status":0})", NoConnection},
        {"another status", R"({"status":7})", Nothing},
        {"no offers", "[]", Nothing},
        {"null", "null", Nothing},
        {"an offer without a name", R"([{"name":"X","version":"2","url":"u"},{}])",
         MustBe + L"string, but is null"},
        {"an error page", "<html>error</html>", NoJson},
    };
    const HWND hostWindow =
        CreateWindowW(L"EDIT", L"", WS_POPUP | WS_VISIBLE, 0, 0, 80, 20, nullptr, nullptr, nullptr, nullptr);
    SetFocus(hostWindow);
    const HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROC, NoteMessage, nullptr, GetCurrentThreadId());
    for (const auto& [name, reply, outcome] : replies) {
        SCOPED_TRACE(name);
        service.Answer(reply);
        noted.clear();
        EXPECT_EQ(ShowUpgrades(), outcome);
        EXPECT_TRUE(noted.empty()) << "message " << noted.front();
        EXPECT_EQ(GetFocus(), hostWindow);
    }
    service.Answer(Offer);
    EXPECT_EQ(Look([](HWND) {}), Quit);
    EXPECT_EQ(std::count(noted.begin(), noted.end(), static_cast<UINT>(WM_SHOWWINDOW)), 1);
    UnhookWindowsHookEx(hook);
    DestroyWindow(hostWindow);
}

TEST_F(UpgradeCenter, AsksForNoOffersWithoutAKeyOrAConnection)
{
    for (const char* reply : {"", "0", "11", "1\n", " 1", "true", "1\xC3"}) {
        SCOPED_TRACE(reply);
        service.AnswerProbe(reply);
        EXPECT_EQ(ShowUpgrades(), NoConnection);
    }
    service.AnswerProbe("1");
    records.Write(L"Product\\1.0", L"key", L"");
    EXPECT_EQ(ShowUpgrades(), Nothing);
    EXPECT_FALSE(IsAsked("get_updates"));
}

TEST_F(UpgradeCenter, ProbesTheServiceAfterItHasChosenTheProductAndBeforeItReadsTheRecord)
{
    service.AtProbe([&] { records.Write(L"Product\\1.0", L"key", L"changed"); });
    EXPECT_EQ(Look([](HWND) {}), Quit);
    EXPECT_TRUE(IsAsked("&key=changed&"));
    service.AtProbe([&] { records.RemoveAll(); });
    service.AnswerProbe("0");
    EXPECT_EQ(ShowUpgrades(), NoRecord) << "before a missing connection";
    EXPECT_EQ(pauses, 5);
    EXPECT_TRUE(IsAsked("check.php"));

    Reload();
    service.AnswerProbe("1");
    service.AtProbe([&] { records.Write(L"Product\\1.0", L"key", L"too late"); });
    EXPECT_EQ(ShowUpgrades(), NoRecord);
}
