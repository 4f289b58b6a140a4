#include "support/library_fixture.h"
#include "support/replies.h"

#include <algorithm>

namespace {

const Outcome Bought = L"930 Browser opened, continue running!";
const Outcome NoConnection = L"940 For upgrade center to appear, you need a stable internet connection!";

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

using UpgradeCenter = LibraryTest;

} // namespace

TEST_F(UpgradeCenter, ProbesThenRequestsOffers)
{
    EXPECT_EQ(Look(), Quit);
    EXPECT_TRUE(IsAsked(
        "^POST /check\\.php [^]*\r\nContent-Length: 0\r\n[^]*\r\n\r\nPOST /get_updates\\.php [^]*\r\n\r\n"
        "api_key=api-key&key=product-key&hardware_id=[0-9a-f]{64}&version=20\\.1&up=0$"));
}

TEST_F(UpgradeCenter, ClosesOnEveryExit)
{
    const std::tuple<const char*, UINT, WPARAM> ways[]{
        {"the button", WM_COMMAND, IDCANCEL},
        {"the Escape key", WM_KEYDOWN, VK_ESCAPE},
        {"the window's close command", WM_SYSCOMMAND, SC_CLOSE},
        {"command 16", WM_COMMAND, 16},
    };
    for (const auto& [name, message, parameter] : ways) {
        SCOPED_TRACE(name);
        const auto leave = [&what = message, &with = parameter](HWND center) {
            PostMessageW(center, what, with, 0);
        };
        EXPECT_EQ(ShowUpgrades(leave), Quit);
    }
    const User sends = [](HWND center) { SendMessageW(center, WM_COMMAND, IDCANCEL, 0); };
    EXPECT_EQ(ShowUpgrades(sends), Quit) << "while the center waits for a message";
}

TEST_F(UpgradeCenter, OpensTheSelectedOffersUrl)
{
    const auto buys = [this](int row) {
        return ShowUpgrades([row](HWND center) {
            window_automation::SelectRow(List(center), row);
            window_automation::ClickButton(center, IDOK);
        });
    };
    service.Answer(R"([{"name":"First","version":"2","url":""},)"
                   R"({"name":"Second","version":"3.1","url":"https://shop/second?a=b&c=%20"}])");
    EXPECT_EQ(buys(1), Bought);
    EXPECT_EQ(buys(0), Bought);
    const User buysWithEnter = [](HWND center) {
        window_automation::SelectRow(List(center), 0);
        PostMessageW(List(center), WM_KEYDOWN, VK_RETURN, 0);
    };
    service.Answer(Offer);
    EXPECT_EQ(ShowUpgrades(buysWithEnter), Bought);
    const std::vector<std::wstring> expected{L"https://shop/second?a=b&c=%20", L"", L"u"};
    EXPECT_EQ(opened, expected);
}

TEST_F(UpgradeCenter, IgnoresBuyWithoutSelection)
{
    const User buysNothing = [this](HWND center) {
        SendMessageW(center, WM_COMMAND, IDOK, 0);
        EXPECT_EQ(called.resultCode, Untouched) << "no offer is selected";
        const auto button = reinterpret_cast<LPARAM>(GetDlgItem(center, IDCANCEL));
        SendMessageW(center, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_SETFOCUS), button);
        EXPECT_EQ(called.resultCode, Untouched) << "Exit has the focus, and is not clicked";
    };
    EXPECT_EQ(Look(buysNothing), Quit);
    EXPECT_TRUE(opened.empty());
}

TEST_F(UpgradeCenter, ShowsNoWindowWithoutOffers)
{
    const HWND hostWindow =
        CreateWindowW(L"EDIT", L"", WS_POPUP | WS_VISIBLE, 0, 0, 80, 20, nullptr, nullptr, nullptr, nullptr);
    SetFocus(hostWindow);
    const HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROC, NoteMessage, nullptr, GetCurrentThreadId());
    for (const auto& [name, text, outcome] : RepliesTo("center")) {
        SCOPED_TRACE(name);
        service.Answer(text);
        noted.clear();
        EXPECT_EQ(ShowUpgrades(), outcome);
        EXPECT_TRUE(noted.empty()) << "message " << noted.front();
        EXPECT_EQ(GetFocus(), hostWindow);
    }
    service.Answer(Offer);
    EXPECT_EQ(Look(), Quit);
    EXPECT_EQ(std::count(noted.begin(), noted.end(), static_cast<UINT>(WM_SHOWWINDOW)), 1);
    UnhookWindowsHookEx(hook);
    DestroyWindow(hostWindow);
}

TEST_F(UpgradeCenter, RequestsNoOffersWithoutAKeyOrAConnection)
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

TEST_F(UpgradeCenter, ReadsTheRecordAfterTheProbe)
{
    service.AtProbe([&] { records.Write(L"Product\\1.0", L"key", L"changed"); });
    EXPECT_EQ(Look(), Quit);
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
