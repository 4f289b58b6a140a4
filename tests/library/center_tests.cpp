#include "support/import_hook.h"
#include "support/library_fixture.h"

#include "ui/resource.h"

#include <commctrl.h>

using automation::ControlText;

namespace {

constexpr char TwoOffers[] = R"([{"name":"First","version":"2","url":"https://shop/first"},)"
                             R"({"name":"Second","version":"3.1","url":"https://shop/second?a=b&c=%20"}])";

const Outcome Bought = L"930 Browser opened, continue running!";
const Outcome NoConnection = L"940 For upgrade center to appear, you need a stable internet connection!";

std::vector<std::wstring> opened;
int dialogsShown = 0;

HINSTANCE NoteOpened(HWND, const wchar_t*, const wchar_t* file, const wchar_t*, const wchar_t*, int show)
{
    opened.emplace_back(show == SW_SHOWNORMAL ? file : L"opened otherwise");
    return nullptr;
}

// Sees every dialog of the thread that is about to become visible, however short.
LRESULT NoteShownDialog(int, WPARAM, LPARAM parameter)
{
    const auto& message = *reinterpret_cast<const CWPSTRUCT*>(parameter);
    const bool isDialog = GetClassLongPtrW(message.hwnd, GCW_ATOM) == 0x8002;
    dialogsShown += isDialog && message.message == WM_SHOWWINDOW && message.wParam;
    return 0;
}

HWND List(HWND center)
{
    return GetDlgItem(center, IDC_UPGRADE_OFFERS);
}

// Text and alignment of a column.
std::wstring Column(HWND list, int index)
{
    LVCOLUMNW column{};
    column.mask = LVCF_FMT;
    ListView_GetColumn(list, index, &column);
    return automation::ColumnText(list, index) + L" " + std::to_wstring(column.fmt & LVCFMT_JUSTIFYMASK);
}

// Whether a point from `at` to the right gets this colour within seconds, since painting takes its time.
bool HasColour(HWND window, POINT at, int width, COLORREF colour)
{
    const HDC painted = GetDC(window);
    int tried = 0;
    const auto look = [&] { return GetPixel(painted, at.x + tried++ % width, at.y) == colour; };
    const bool has = automation::WaitFor(look, 3000);
    ReleaseDC(window, painted);
    return has;
}

class UpgradeCenter : public LibraryTest
{
protected:
    UpgradeCenter() { service.Answer(TwoOffers); }

    // Shows the center to somebody who looks at it and leaves.
    Outcome Look(const User& look)
    {
        return ShowUpgrades([&](HWND center) {
            look(center);
            automation::Press(center, IDCANCEL);
        });
    }
};

} // namespace

TEST_F(UpgradeCenter, ShowsTheOffersInOrderWithTheTextsOfTheTableAsItsTemplateSays)
{
    InstallLanguage();
    service.Answer(
        R"([{"name":")" + std::string(300, 'x') + R"(","version":"2","url":"a"},)" +
        "{\"name\":\"\xE7\x89\x88\",\"version\":\"\",\"url\":\"b\"}]");
    const Outcome outcome = Look([&](HWND center) {
        EXPECT_EQ(automation::WindowText(center), L"Product - text 22");
        EXPECT_EQ(ControlText(center, IDC_UPGRADE_HEADING), L"Product - text 22");
        EXPECT_EQ(ControlText(center, IDOK) + ControlText(center, IDCANCEL), L"text 38text 12");
        EXPECT_EQ(Column(List(center), 0) + Column(List(center), 1), L"text 23 0text 24 2");
        const std::vector<std::vector<std::wstring>> rows{{std::wstring(300, L'x'), L"2"}, {L"\x7248", L""}};
        EXPECT_EQ(automation::ListRows(List(center), 2), rows);

        RECT window;
        GetWindowRect(center, &window);
        EXPECT_NEAR(window.left + window.right, GetSystemMetrics(SM_CXSCREEN), 2) << "centred";
        EXPECT_TRUE(GetWindowLongPtrW(center, GWL_EXSTYLE) & WS_EX_APPWINDOW);
        EXPECT_TRUE(GetWindowLongPtrW(GetDlgItem(center, IDC_UPGRADE_HEADING), GWL_STYLE) & SS_NOPREFIX);
        const auto icon = reinterpret_cast<HICON>(SendMessageW(center, WM_GETICON, ICON_BIG, 0));
        EXPECT_EQ(icon, LoadIconW(library, MAKEINTRESOURCEW(IDI_LIBRARY)));
        EXPECT_EQ(LOWORD(SendMessageW(center, DM_GETDEFID, 0, 0)), IDOK);
        EXPECT_EQ(GetNextDlgTabItem(center, GetDlgItem(center, IDCANCEL), FALSE), List(center));
        RECT row{LVIR_LABEL, 0, 0, 0};
        SendMessageW(List(center), LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&row));
        const POINT inText{row.left, (row.top + row.bottom) / 2};
        EXPECT_TRUE(HasColour(List(center), inText, 50, GetSysColor(COLOR_WINDOWTEXT))) << "a row is painted";
    });
    EXPECT_EQ(outcome, L"540 text 67");
    EXPECT_TRUE(IsAsked("^POST /check\\.php [^]*\r\n\r\nPOST /get_updates\\.php "
                        "[^]*\r\n\r\napi_key=api-key&key=product-key&hardware_id=[^]*&version=20\\.1&up=0$"));
}

TEST_F(UpgradeCenter, HasRoomForItsTextsInEveryLanguage)
{
    SetCurrentDirectoryW(L"..\\bin"); // where the build has put the language files
    records.Write(L"Example Draft\\1.0", L"key", L"product-key");
    host.productName = L"Example Draft";
    for (const int id : {130, 140, 150, 160, 170, 180, 190, 200, 220, 230}) {
        FreeLibrary(library);
        library = LoadLibraryW(L"ProductServicesForTests.dll");
        host.languageId = id;
        Look([&](HWND center) {
            EXPECT_NE(automation::WindowText(center), L"Example Draft - Upgrade center") << "no file " << id;
            const HWND list = List(center);
            // Windows keeps free 4 pixels on either side of a button's caption, and 6 in a column's head.
            for (const int part : {IDC_UPGRADE_HEADING, IDOK, IDCANCEL}) {
                RECT room{};
                GetClientRect(GetDlgItem(center, part), &room);
                EXPECT_LE(ListView_GetStringWidth(list, ControlText(center, part).c_str()), room.right - 8)
                    << id;
            }
            EXPECT_LE(ListView_GetStringWidth(list, automation::ColumnText(list, 0).c_str()), 250 - 12) << id;
            EXPECT_LE(ListView_GetStringWidth(list, automation::ColumnText(list, 1).c_str()), 100 - 12) << id;
        });
    }
}

TEST_F(UpgradeCenter, IsLeftByEveryWayOut)
{
    const std::pair<UINT, WPARAM> ways[]{
        {WM_KEYDOWN, VK_ESCAPE}, {WM_SYSCOMMAND, SC_CLOSE}, {WM_COMMAND, 16}};
    for (const auto& way : ways) {
        const User leave = [&](HWND center) { PostMessageW(center, way.first, way.second, 0); };
        EXPECT_EQ(ShowUpgrades(leave), Quit) << way.first;
    }
}

TEST_F(UpgradeCenter, OpensTheAddressOfTheSelectedOffer)
{
    ReplaceImport(library, "ShellExecuteW", NoteOpened);
    const User buysSecond = [](HWND center) {
        SendMessageW(center, WM_COMMAND, IDOK, 0); // without a selection, which does nothing
        automation::SelectRow(List(center), 1);
        automation::Press(center, IDOK);
    };
    const User buysFirstWithEnter = [](HWND center) {
        automation::SelectRow(List(center), 0);
        PostMessageW(List(center), WM_KEYDOWN, VK_RETURN, 0);
    };
    EXPECT_EQ(ShowUpgrades(buysSecond), Bought);
    EXPECT_EQ(ShowUpgrades(buysFirstWithEnter), Bought);
    const std::vector<std::wstring> expected{L"https://shop/second?a=b&c=%20", L"https://shop/first"};
    EXPECT_EQ(opened, expected);
}

TEST_F(UpgradeCenter, ShowsNoWindowWithoutOffers)
{
    const std::pair<const char*, Outcome> replies[]{
        {"", L"920 No upgrades found!"},
        {R"({"status":0})", NoConnection},
        {R"({"status":7})", Untouched},
        {"[]", Untouched},
        {R"([{"name":"X","version":"2","url":"u"},{"name":"Y"}])", MustBe + L"string, but is null"},
    };
    SetWindowsHookExW(WH_CALLWNDPROC, NoteShownDialog, nullptr, GetCurrentThreadId());
    for (const auto& [reply, expected] : replies) {
        service.Answer(reply);
        EXPECT_EQ(ShowUpgrades(), expected) << reply;
    }
    service.Answer(TwoOffers);
    EXPECT_EQ(Look([](HWND) {}), Quit);
    EXPECT_EQ(dialogsShown, 1) << "only the one with offers";
}

TEST_F(UpgradeCenter, AsksForNoOffersWithoutKeyConnectionOrRecord)
{
    records.Write(L"Product\\1.0", L"key", L"");
    EXPECT_EQ(ShowUpgrades(), Untouched);
    for (const char* reply : {"", "1\n", "11", "1\xC3", "\xF0\x9F\x98\x80"}) {
        service.AnswerProbe(Reply::Http(reply));
        EXPECT_EQ(ShowUpgrades(), NoConnection) << reply;
    }
    records.RemoveAll();
    EXPECT_EQ(ShowUpgrades().substr(0, 3), L"950") << "comes before a missing connection";
    EXPECT_FALSE(IsAsked("get_updates"));
}

TEST_F(UpgradeCenter, PaintsThePictureOfTheProductLine)
{
    const std::pair<const wchar_t*, int> pictures[]{
        {L"known1a-111111-aaaaaaa", 332},  {L"known3c-333333-ccccccc", 333},
        {L"known5e-555555-eeeeeee", 1077}, {L"known6f-666666-fffffff", 335},
        {L"known1a-111111-aaaaaaa ", 343},
    };
    for (const auto& [apiKey, picture] : pictures) {
        const HDC original = CreateCompatibleDC(nullptr);
        SelectObject(original, LoadBitmapW(library, MAKEINTRESOURCEW(picture)));
        host.apiKey = apiKey;
        Look([&, number = picture](HWND center) {
            // In a corner, and behind the transparent heading, right of its text.
            for (const POINT at : {POINT{660, 418}, {600, 28}}) {
                EXPECT_TRUE(HasColour(center, at, 1, GetPixel(original, at.x, at.y))) << number;
            }
        });
        DeleteDC(original);
    }
}
