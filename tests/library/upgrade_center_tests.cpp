#include "support/library_fixture.h"
#include "support/replies.h"

#include <algorithm>

namespace {

const Outcome Bought = L"930 Browser opened, continue running!";
const Outcome NoConnection = L"940 For upgrade center to appear, you need a stable internet connection!";

std::vector<UINT> recordedMessages;

// Records when a dialog of the thread is about to become visible, and when any window of it gets or loses the
// focus.
LRESULT CALLBACK RecordMessage(int, WPARAM, LPARAM parameter)
{
    const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(parameter);
    const bool isDialog = GetClassLongPtrW(sent.hwnd, GCW_ATOM) == 0x8002;
    const bool isShown = sent.message == WM_SHOWWINDOW && sent.wParam && isDialog;
    if (isShown || sent.message == WM_SETFOCUS || sent.message == WM_KILLFOCUS) {
        recordedMessages.push_back(sent.message);
    }
    return 0;
}

using UpgradeCenter = LibraryTest;

} // namespace

TEST_F(UpgradeCenter, ProbesThenRequestsOffers)
{
    EXPECT_EQ(OpenAndExit(), Quit);
    EXPECT_TRUE(RequestsMatch(
        "^POST /check\\.php [^]*\r\nContent-Length: 0\r\n[^]*\r\n\r\nPOST /get_updates\\.php [^]*\r\n\r\n"
        "api_key=api-key&key=product-key&hardware_id=[0-9a-f]{64}&version=20\\.1&up=0$"));
}

TEST_F(UpgradeCenter, ClosesOnEveryExit)
{
    const std::tuple<const char*, UINT, WPARAM> exits[]{
        {"the button", WM_COMMAND, IDCANCEL},
        {"the Escape key", WM_KEYDOWN, VK_ESCAPE},
        {"the window's close command", WM_SYSCOMMAND, SC_CLOSE},
        {"command 16", WM_COMMAND, 16},
    };
    for (const auto& [name, message, parameter] : exits) {
        SCOPED_TRACE(name);
        const DialogAction leave = [command = message, argument = parameter](HWND center) {
            PostMessageW(center, command, argument, 0);
        };
        EXPECT_EQ(RunUpgrade(leave), Quit);
    }
    const DialogAction sendExit = [](HWND center) { SendMessageW(center, WM_COMMAND, IDCANCEL, 0); };
    EXPECT_EQ(RunUpgrade(sendExit), Quit) << "while the center waits for a message";
}

TEST_F(UpgradeCenter, OpensTheSelectedOffersUrl)
{
    const auto buy = [this](int row) {
        return RunUpgrade([row](HWND center) {
            window_automation::SelectRow(OfferList(center), row);
            window_automation::ClickButton(center, IDOK);
        });
    };
    service.Answer(R"([{"name":"First","version":"2","url":""},)"
                   R"({"name":"Second","version":"3.1","url":"https://shop/second?a=b&c=%20"}])");
    EXPECT_EQ(buy(1), Bought);
    EXPECT_EQ(buy(0), Bought);
    const DialogAction buyWithEnter = [](HWND center) {
        window_automation::SelectRow(OfferList(center), 0);
        PostMessageW(OfferList(center), WM_KEYDOWN, VK_RETURN, 0);
    };
    service.Answer(Offer);
    EXPECT_EQ(RunUpgrade(buyWithEnter), Bought);
    const std::vector<std::wstring> expected{L"https://shop/second?a=b&c=%20", L"", L"u"};
    EXPECT_EQ(opened, expected);
}

TEST_F(UpgradeCenter, IgnoresBuyWithoutSelection)
{
    const DialogAction clickBuy = [this](HWND center) {
        SendMessageW(center, WM_COMMAND, IDOK, 0);
        EXPECT_EQ(lastContext.resultCode, UntouchedCode) << "no offer is selected";
        const auto button = reinterpret_cast<LPARAM>(GetDlgItem(center, IDCANCEL));
        SendMessageW(center, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_SETFOCUS), button);
        EXPECT_EQ(lastContext.resultCode, UntouchedCode) << "Exit got the focus, but was not clicked";
    };
    EXPECT_EQ(OpenAndExit(clickBuy), Quit);
    EXPECT_EQ(opened, std::vector<std::wstring>());
}

TEST_F(UpgradeCenter, ShowsNoWindowWithoutOffers)
{
    const HWND hostWindow =
        CreateWindowW(L"EDIT", L"", WS_POPUP | WS_VISIBLE, 0, 0, 80, 20, nullptr, nullptr, nullptr, nullptr);
    SetFocus(hostWindow);
    const HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROC, RecordMessage, nullptr, GetCurrentThreadId());
    for (const auto& [name, text, outcome] : RepliesTo("center")) {
        SCOPED_TRACE(name);
        service.Answer(text);
        recordedMessages.clear();
        EXPECT_EQ(RunUpgrade(), outcome);
        EXPECT_EQ(recordedMessages, std::vector<UINT>());
        EXPECT_EQ(GetFocus(), hostWindow);
    }
    service.Answer(Offer);
    EXPECT_EQ(OpenAndExit(), Quit);
    EXPECT_EQ(
        std::count(recordedMessages.begin(), recordedMessages.end(), static_cast<UINT>(WM_SHOWWINDOW)), 1);
    UnhookWindowsHookEx(hook);
    DestroyWindow(hostWindow);
}

TEST_F(UpgradeCenter, RequestsNoOffersWithoutAKeyOrAConnection)
{
    for (const char* reply : {"", "0", "11", "1\n", " 1", "true", "1\xC3"}) {
        SCOPED_TRACE(reply);
        service.AnswerProbe(reply);
        EXPECT_EQ(RunUpgrade(), NoConnection);
    }
    service.AnswerProbe("1");
    records.Write(L"Product\\1.0", L"key", L"");
    EXPECT_EQ(RunUpgrade(), Nothing);
    EXPECT_TRUE(RequestsMatch("^((?!get_updates)[^])*$"));
}

TEST_F(UpgradeCenter, ReadsTheRecordAfterTheProbe)
{
    service.OnProbe([&] { records.Write(L"Product\\1.0", L"key", L"changed"); });
    EXPECT_EQ(OpenAndExit(), Quit);
    EXPECT_TRUE(RequestsMatch("&key=changed&"));
    service.OnProbe([&] { records.RemoveAll(); });
    service.AnswerProbe("0");
    EXPECT_EQ(RunUpgrade(), NoRecord) << "which precedes a missing connection";
    EXPECT_EQ(sleepCount, 5);
    EXPECT_TRUE(RequestsMatch("check.php"));

    Reload();
    service.AnswerProbe("1");
    service.OnProbe([&] { records.Write(L"Product\\1.0", L"key", L"too late"); });
    EXPECT_EQ(RunUpgrade(), NoRecord);
}
