#include "support/library_fixture.h"

#include "ui/resource.h"

#include <commctrl.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>

using namespace std::chrono_literals;
using automation::ControlText;

namespace {

constexpr char TwoOffers[] = R"([{"name":"First","version":"2","url":"https://shop/first"},)"
                             R"({"name":"Second","version":"3.1","url":"https://shop/second?a=b&c=%20"}])";

int dialogsShown = 0;

// Sees every dialog of the thread that is about to become visible, however short.
LRESULT CALLBACK CountShownDialogs(int code, WPARAM wParam, LPARAM lParam)
{
    const auto* message = reinterpret_cast<const CWPSTRUCT*>(lParam);
    wchar_t className[16] = {};
    GetClassNameW(message->hwnd, className, 16);
    const bool shows = (message->message == WM_SHOWWINDOW && message->wParam) ||
                       (message->message == WM_WINDOWPOSCHANGING &&
                        (reinterpret_cast<const WINDOWPOS*>(message->lParam)->flags & SWP_SHOWWINDOW));
    if (shows && !wcscmp(className, L"#32770")) {
        ++dialogsShown;
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

std::string OpenedAddressesFile()
{
    const char* path = std::getenv("OPENED_ADDRESSES");
    return path ? std::string("Z:") + path : std::string();
}

// The addresses that the stand-in for the browser was given, once there are `count` of them.
std::vector<std::string> OpenedAddresses(std::size_t count)
{
    std::vector<std::string> addresses;
    automation::WaitFor([&] {
        addresses.clear();
        std::ifstream file(OpenedAddressesFile());
        for (std::string line; std::getline(file, line);) {
            addresses.push_back(line);
        }
        return addresses.size() >= count;
    });
    return addresses;
}

std::wstring ColumnText(HWND list, int index, LVCOLUMNW& column)
{
    wchar_t text[64] = {};
    column = {};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT;
    column.pszText = text;
    column.cchTextMax = 64;
    SendMessageW(list, LVM_GETCOLUMNW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&column));
    return text;
}

class UpgradeCenter : public LibraryTest
{
protected:
    UpgradeCenter()
    {
        std::ofstream(OpenedAddressesFile(), std::ios::trunc);
        service.AnswerUpdates(Reply::Http(TwoOffers));
    }

    static HWND List(HWND center) { return GetDlgItem(center, IDC_UPGRADE_OFFERS); }

    static void Exit(HWND center) { automation::Press(center, IDCANCEL); }

    // Shows the center to somebody who looks at it and leaves.
    Outcome Look(const std::function<void(HWND)>& look)
    {
        return ShowUpgrades([&](DWORD hostThread) {
            const HWND center = ShownDialog(hostThread);
            look(center);
            Exit(center);
        });
    }
};

const Outcome Quit{540, L"User chose to quit!", ""};
const Outcome Bought{930, L"Browser opened, continue running!", ""};
const Outcome NoConnection{940, L"For upgrade center to appear, you need a stable internet connection!", ""};

} // namespace

TEST_F(UpgradeCenter, ListsTheOffersInTheOrderOfTheReply)
{
    EXPECT_EQ(
        Look([&](HWND center) {
            EXPECT_EQ(automation::WindowText(center), L"Product - Upgrade center");
            EXPECT_EQ(ControlText(center, IDC_UPGRADE_HEADING), L"Product - Upgrade center");
            EXPECT_EQ(ControlText(center, IDOK), L"Buy now");
            EXPECT_EQ(ControlText(center, IDCANCEL), L"Exit");

            LVCOLUMNW column;
            EXPECT_EQ(ColumnText(List(center), 0, column), L"Product name");
            EXPECT_EQ(column.cx, 250);
            EXPECT_EQ(column.fmt & LVCFMT_JUSTIFYMASK, LVCFMT_LEFT);
            EXPECT_EQ(ColumnText(List(center), 1, column), L"Product version");
            EXPECT_EQ(column.cx, 100);
            EXPECT_EQ(column.fmt & LVCFMT_JUSTIFYMASK, LVCFMT_CENTER);

            EXPECT_EQ(
                automation::ListRows(List(center), 2),
                (std::vector<std::vector<std::wstring>>{{L"First", L"2"}, {L"Second", L"3.1"}}));
            EXPECT_EQ(SendMessageW(List(center), LVM_GETSELECTEDCOUNT, 0, 0), 0);
        }),
        Quit);
    const std::vector<std::string> requests = service.Requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0], "/check.php ");
    EXPECT_EQ(requests[1].rfind("/get_updates.php api_key=api-key&key=product-key&hardware_id=", 0), 0u);
    EXPECT_NE(requests[1].find("&version=20.1&up=0"), std::string::npos);
}

TEST_F(UpgradeCenter, LooksAsItsTemplateSays)
{
    Look([&](HWND center) {
        RECT client;
        GetClientRect(center, &client);
        EXPECT_EQ(client.right, 663);
        EXPECT_EQ(client.bottom, 421);
        const auto style = static_cast<DWORD>(GetWindowLongPtrW(center, GWL_STYLE));
        EXPECT_EQ(style & (WS_POPUP | WS_BORDER | WS_SYSMENU), WS_POPUP | WS_BORDER | WS_SYSMENU);
        EXPECT_NE(style & WS_CAPTION, static_cast<DWORD>(WS_CAPTION));
        EXPECT_TRUE(GetWindowLongPtrW(center, GWL_EXSTYLE) & WS_EX_APPWINDOW);
        EXPECT_EQ(GetWindow(center, GW_OWNER), nullptr);
        EXPECT_NE(SendMessageW(center, WM_GETICON, ICON_BIG, 0), 0);
        EXPECT_EQ(SendMessageW(center, WM_GETICON, ICON_SMALL, 0), 0);

        const auto listStyle = static_cast<DWORD>(GetWindowLongPtrW(List(center), GWL_STYLE));
        const DWORD expected = LVS_REPORT | LVS_SINGLESEL | LVS_ALIGNLEFT | WS_TABSTOP;
        EXPECT_EQ(listStyle & expected, expected);
        // Wine's list view turns its border into a sunken edge.
        EXPECT_TRUE(
            (listStyle & WS_BORDER) || (GetWindowLongPtrW(List(center), GWL_EXSTYLE) & WS_EX_CLIENTEDGE));
        // Left, top, width and height in dialog units.
        const std::pair<int, RECT> places[]{
            {IDOK, {316, 238, 50, 14}},
            {IDCANCEL, {376, 238, 50, 14}},
            {IDC_UPGRADE_OFFERS, {166, 30, 259, 201}},
            {IDC_UPGRADE_HEADING, {167, 13, 258, 8}},
        };
        for (auto [id, place] : places) {
            RECT actual;
            GetWindowRect(GetDlgItem(center, id), &actual);
            MapWindowPoints(nullptr, center, reinterpret_cast<POINT*>(&actual), 2);
            MapDialogRect(center, &place);
            EXPECT_EQ(actual.left, place.left) << id;
            EXPECT_EQ(actual.top, place.top) << id;
            EXPECT_EQ(actual.right - actual.left, place.right) << id;
            EXPECT_EQ(actual.bottom - actual.top, place.bottom) << id;
        }
        // Under no owner and with no position in the template, in the middle of the screen.
        RECT window;
        GetWindowRect(center, &window);
        EXPECT_NEAR(window.left + window.right, GetSystemMetrics(SM_CXSCREEN), 2);
    });
}

TEST_F(UpgradeCenter, IsLeftByEveryWayOut)
{
    const std::pair<const char*, std::function<void(HWND)>> ways[]{
        {"Exit", [](HWND center) { Exit(center); }},
        {"Escape", [](HWND center) { PostMessageW(List(center), WM_KEYDOWN, VK_ESCAPE, 0); }},
        {"close", [](HWND center) { PostMessageW(center, WM_CLOSE, 0, 0); }},
        {"system menu", [](HWND center) { PostMessageW(center, WM_SYSCOMMAND, SC_CLOSE, 0); }},
        {"command 16", [](HWND center) { PostMessageW(center, WM_COMMAND, 16, 0); }},
        {"command 2", [](HWND center) { PostMessageW(center, WM_COMMAND, 2, 0); }},
        {"sent from elsewhere", [](HWND center) { SendMessageW(center, WM_COMMAND, 2, 0); }},
    };
    for (const auto& [name, leave] : ways) {
        EXPECT_EQ(ShowUpgrades([&](DWORD hostThread) { leave(ShownDialog(hostThread)); }), Quit) << name;
    }
}

TEST_F(UpgradeCenter, OpensTheAddressOfTheSelectedOffer)
{
    if (OpenedAddressesFile().empty()) {
        GTEST_SKIP() << "nothing stands in for the browser: OPENED_ADDRESSES is not set";
    }
    const auto buyer = [](int row, const std::function<void(HWND)>& buy) {
        return [row, buy](DWORD hostThread) {
            const HWND center = ShownDialog(hostThread);
            automation::SelectRow(List(center), row);
            buy(center);
        };
    };
    EXPECT_EQ(ShowUpgrades(buyer(1, [](HWND center) { automation::Press(center, IDOK); })), Bought);
    EXPECT_EQ(OpenedAddresses(1), std::vector<std::string>{"https://shop/second?a=b&c=%20"});
    EXPECT_EQ(
        ShowUpgrades(buyer(0, [](HWND center) { PostMessageW(List(center), WM_KEYDOWN, VK_RETURN, 0); })),
        Bought);
    EXPECT_EQ(
        OpenedAddresses(2),
        (std::vector<std::string>{"https://shop/second?a=b&c=%20", "https://shop/first"}));

    service.AnswerUpdates(Reply::Http(R"([{"name":"X","version":"2","url":""}])"));
    EXPECT_EQ(ShowUpgrades(buyer(0, [](HWND center) { automation::Press(center, IDOK); })), Bought);
}

TEST_F(UpgradeCenter, StaysOpenWithoutASelection)
{
    EXPECT_EQ(
        Look([&](HWND center) {
            SendMessageW(center, WM_COMMAND, IDOK, 0);
            EXPECT_TRUE(IsWindowVisible(center));
            EXPECT_EQ(context.resultCode, NothingReported);
            EXPECT_EQ(SendMessageW(List(center), LVM_GETSELECTEDCOUNT, 0, 0), 0);
        }),
        Quit);
    EXPECT_TRUE(OpenedAddresses(0).empty());
}

TEST_F(UpgradeCenter, ShowsNoWindowWithoutOffers)
{
    const std::tuple<const char*, Reply, Outcome> replies[]{
        {"empty", Reply::Http(""), {920, L"No upgrades found!", ""}},
        {"refusal", Reply::Http(R"({"status":0})"), NoConnection},
        {"closed without a reply", Reply::Nothing(), NoConnection},
        {"other status", Reply::Http(R"({"status":7})"), Untouched},
        {"empty list", Reply::Http("[]"), Untouched},
        {"empty object", Reply::Http("{}"), Untouched},
        {"null", Reply::Http("null"), Untouched},
    };
    HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROC, CountShownDialogs, nullptr, GetCurrentThreadId());
    for (const auto& [name, reply, outcome] : replies) {
        service.AnswerUpdates(reply);
        EXPECT_EQ(ShowUpgrades(), outcome) << name;
    }
    const std::size_t requests = service.Requests().size();
    context.apiKey = L"";
    EXPECT_EQ(ShowUpgrades(), Untouched);
    EXPECT_EQ(service.Requests().size(), requests + 1) << "the probe alone";
    EXPECT_EQ(dialogsShown, 0);

    context.apiKey = L"api-key";
    service.AnswerUpdates(Reply::Http(TwoOffers));
    Look([](HWND) {});
    EXPECT_GT(dialogsShown, 0) << "the hook sees a dialog that is shown";
    UnhookWindowsHookEx(hook);
}

TEST_F(UpgradeCenter, LetsTheErrorsOfAMalformedReplyLeave)
{
    const std::pair<std::string, std::string> errors[]{
        {"<html>", "[json.exception.parse_error.101]"},
        {R"({"status":"0"})", "[json.exception.type_error.302] type must be number, but is string"},
        {R"({"name":"X"})", "[json.exception.type_error.305]"},
        {"7", "[json.exception.type_error.305]"},
        {R"([{"name":"X","version":"2","url":"u"},{"name":"Y"}])",
         "[json.exception.type_error.302] type must be string, but is null"},
        {"[{\"name\":\"\xF0\x9F\x98\x80\",\"version\":\"2\",\"url\":\"u\"}]", "bad conversion"},
    };
    for (const auto& [reply, error] : errors) {
        service.AnswerUpdates(Reply::Http(reply));
        const Outcome outcome = ShowUpgrades();
        EXPECT_EQ(outcome.exception.substr(0, error.size()), error) << reply;
        EXPECT_EQ(outcome.code, NothingReported) << reply;
    }
}

TEST_F(UpgradeCenter, ProbesBeforeItLooksForTheRecord)
{
    context.productName = L"Unknown";
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(ShowUpgrades().code, 950u);
    EXPECT_GE(GetTickCount64() - start, 740u);
    EXPECT_EQ(service.Requests(), std::vector<std::string>{"/check.php "});
    service.Answer("/check.php", Reply::Http("0"));
    EXPECT_EQ(ShowUpgrades().code, 950u) << "comes before a missing connection";
    EXPECT_EQ(service.Requests().size(), 2u);
}

TEST_F(UpgradeCenter, NeedsAConnection)
{
    for (const Reply& reply : {Reply::Http("1\n"), Reply::Http(""), Reply::Nothing()}) {
        service.Answer("/check.php", reply);
        EXPECT_EQ(ShowUpgrades(), NoConnection);
    }
    EXPECT_EQ(service.Requests().size(), 3u) << "no offers were asked for";
}

TEST_F(UpgradeCenter, PaintsThePictureOfTheProductLine)
{
    const std::pair<const wchar_t*, const wchar_t*> pictures[]{
        {L"known1a-111111-aaaaaaa", L"332"},
        {L"known2b-222222-bbbbbbb", L"333"},
        {L"known3c-333333-ccccccc", L"333"},
        {L"known4d-444444-ddddddd", L"333"},
        {L"known5e-555555-eeeeeee", L"1077"},
        {L"known6f-666666-fffffff", L"335"},
        {L"KNOWN1A-111111-aaaaaaa", L"343"},
        {L"known1a-111111-aaaaaaa ", L"343"},
        {L"x", L"343"},
    };
    const std::filesystem::path folder = FAMILY_PICTURES;
    for (const auto& [apiKey, picture] : pictures) {
        const auto file = folder / (std::wstring(L"background_") + picture + L".bmp");
        HDC original = CreateCompatibleDC(nullptr);
        HGDIOBJ bitmap = LoadImageW(nullptr, file.c_str(), IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE);
        ASSERT_NE(bitmap, nullptr) << file;
        SelectObject(original, bitmap);
        context.apiKey = apiKey;
        Look([&](HWND center) {
            UpdateWindow(center);
            HDC painted = GetDC(center);
            // At the corners, in the picture, and behind the transparent heading, right of its text.
            for (const POINT point : {POINT{0, 0}, {120, 200}, {60, 300}, {240, 10}, {660, 418}, {600, 28}}) {
                EXPECT_TRUE(automation::WaitFor(
                    [&] {
                        return GetPixel(painted, point.x, point.y) == GetPixel(original, point.x, point.y);
                    },
                    2000))
                    << picture << L" at " << point.x << ", " << point.y;
            }
            ReleaseDC(center, painted);
        });
        DeleteDC(original);
        DeleteObject(bitmap);
    }
}

TEST_F(UpgradeCenter, ShowsOffersOfAnyLengthAndScript)
{
    service.AnswerUpdates(Reply::Http(
        "[{\"name\":\"" + std::string(10000, 'x') + "\",\"version\":\"" + std::string(300, '9') +
        "\",\"url\":\"u\"},"
        "{\"name\":\"\xD7\xA2\xD7\x91\xD7\xA8\xD7\x99\xD7\xAA\",\"version\":\"\xE7\x89\x88\",\"url\":\"u\"},"
        "{\"name\":\"\",\"version\":\"\",\"url\":\"\"}]"));
    EXPECT_EQ(
        Look([](HWND center) {
            const auto rows = automation::ListRows(List(center), 2);
            ASSERT_EQ(rows.size(), 3u);
            EXPECT_EQ(rows[0][0].substr(0, 200), std::wstring(200, L'x'));
            EXPECT_EQ(rows[1], (std::vector<std::wstring>{L"\x5E2\x5D1\x5E8\x5D9\x5EA", L"\x7248"}));
            EXPECT_EQ(rows[2], (std::vector<std::wstring>{L"", L""}));
        }),
        Quit);
}
