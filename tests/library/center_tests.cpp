#include "support/import_hook.h"
#include "support/library_fixture.h"

#include "ui/resource.h"

#include <commctrl.h>

using automation::ControlText;
using automation::Press;

namespace {

constexpr char TwoOffers[] = R"([{"name":"First","version":"2","url":"https://shop/first"},)"
                             R"({"name":"Second","version":"3.1","url":"https://shop/second?a=b&c=%20"}])";

const Outcome Bought = L"930 Browser opened, continue running!";
const Outcome NoConnection = L"940 For upgrade center to appear, you need a stable internet connection!";

std::vector<std::wstring> opened;
int dialogsShown = 0;

HINSTANCE NoteOpened(
    HWND, const wchar_t* verb, const wchar_t* file, const wchar_t* parameters, const wchar_t* folder,
    int show)
{
    const bool isPlain = !verb && !parameters && !folder && show == SW_SHOWNORMAL;
    opened.emplace_back(isPlain ? file : L"opened otherwise");
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

// Text, width and alignment of a column.
std::wstring Column(HWND list, int index)
{
    LVCOLUMNW column{};
    column.mask = LVCF_WIDTH | LVCF_FMT;
    ListView_GetColumn(list, index, &column);
    return automation::ColumnText(list, index) + L" " + std::to_wstring(column.cx) + L" " +
           std::to_wstring(column.fmt & LVCFMT_JUSTIFYMASK);
}

// Whether a point from `at` to the right gets this colour within seconds, since painting takes its time.
bool HasColour(HWND window, POINT at, int width, COLORREF colour)
{
    HDC painted = GetDC(window);
    bool has = false;
    const auto look = [&] {
        for (int x = 0; x < width; ++x) {
            has = has || GetPixel(painted, at.x + x, at.y) == colour;
        }
        return has;
    };
    automation::WaitFor(look, 3000);
    ReleaseDC(window, painted);
    return has;
}

int TextWidth(HWND center, const std::wstring& text)
{
    const HDC dc = GetDC(center);
    SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageW(center, WM_GETFONT, 0, 0)));
    SIZE size{};
    GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
    ReleaseDC(center, dc);
    return size.cx;
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
            Press(center, IDCANCEL);
        });
    }
};

} // namespace

TEST_F(UpgradeCenter, ListsTheOffersInTheOrderOfTheReplyWithTheTextsOfTheTable)
{
    InstallLanguage();
    service.Answer(
        R"([{"name":")" + std::string(300, 'x') + R"(","version":"2","url":"a"},)" +
        "{\"name\":\"\xD7\xA2\xE7\x89\x88\",\"version\":\"\",\"url\":\"b\"}]");
    const Outcome outcome = Look([&](HWND center) {
        EXPECT_EQ(automation::WindowText(center), L"Product - text 22");
        EXPECT_EQ(ControlText(center, IDC_UPGRADE_HEADING), L"Product - text 22");
        EXPECT_EQ(ControlText(center, IDOK) + ControlText(center, IDCANCEL), L"text 38text 12");
        EXPECT_EQ(Column(List(center), 0) + Column(List(center), 1), L"text 23 250 0text 24 100 2");
        const std::vector<std::vector<std::wstring>> rows{
            {std::wstring(300, L'x'), L"2"}, {L"\x5E2\x7248", L""}};
        EXPECT_EQ(automation::ListRows(List(center), 2), rows);
        EXPECT_EQ(ListView_GetSelectedCount(List(center)), 0u);
    });
    EXPECT_EQ(outcome, L"540 text 67");
    EXPECT_TRUE(IsAsked("^POST /check\\.php [^]*\r\n\r\nPOST /get_updates\\.php "
                        "[^]*\r\n\r\napi_key=api-key&key=product-key&hardware_id=[^]*&version=20\\.1&up=0$"));
}

TEST_F(UpgradeCenter, LooksAndIsOperatedAsItsTemplateSays)
{
    records.Write(L"R&D\\1.0", L"key", L"product-key");
    host.productName = L"R&D";
    Look([&](HWND center) {
        RECT client;
        RECT window;
        GetClientRect(center, &client);
        GetWindowRect(center, &window);
        EXPECT_EQ(std::pair(client.right, client.bottom), std::pair(663L, 421L));
        EXPECT_NEAR(window.left + window.right, GetSystemMetrics(SM_CXSCREEN), 2) << "centred";
        EXPECT_TRUE(GetWindowLongPtrW(center, GWL_EXSTYLE) & WS_EX_APPWINDOW);
        EXPECT_TRUE(GetWindowLongPtrW(GetDlgItem(center, IDC_UPGRADE_HEADING), GWL_STYLE) & SS_NOPREFIX);
        EXPECT_EQ(GetWindow(center, GW_OWNER), nullptr);
        const auto icon = reinterpret_cast<HICON>(SendMessageW(center, WM_GETICON, ICON_BIG, 0));
        EXPECT_EQ(icon, LoadIconW(library, MAKEINTRESOURCEW(IDI_LIBRARY)));
        EXPECT_EQ(SendMessageW(center, WM_GETICON, ICON_SMALL, 0), 0);

        EXPECT_EQ(LOWORD(SendMessageW(center, DM_GETDEFID, 0, 0)), IDOK);
        GUITHREADINFO focus{};
        focus.cbSize = sizeof focus;
        GetGUIThreadInfo(GetWindowThreadProcessId(center, nullptr), &focus);
        EXPECT_EQ(focus.hwndFocus, GetDlgItem(center, IDOK));
        EXPECT_EQ(GetNextDlgTabItem(center, GetDlgItem(center, IDOK), FALSE), GetDlgItem(center, IDCANCEL));
        EXPECT_EQ(GetNextDlgTabItem(center, GetDlgItem(center, IDCANCEL), FALSE), List(center));
        RECT row{LVIR_LABEL, 0, 0, 0};
        SendMessageW(List(center), LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&row));
        const POINT inText{row.left, (row.top + row.bottom) / 2};
        EXPECT_TRUE(HasColour(List(center), inText, 50, GetSysColor(COLOR_WINDOWTEXT))) << "a row is painted";
    });
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
            // Windows keeps free 4 pixels on either side of a button's caption, and 6 in a column's head.
            for (const auto& [control, edges] :
                 {std::pair{IDC_UPGRADE_HEADING, 0}, {IDOK, 8}, {IDCANCEL, 8}}) {
                RECT room{};
                GetClientRect(GetDlgItem(center, control), &room);
                EXPECT_LE(TextWidth(center, ControlText(center, control)), room.right - edges) << id;
            }
            EXPECT_LE(TextWidth(center, automation::ColumnText(List(center), 0)), 250 - 12) << id;
            EXPECT_LE(TextWidth(center, automation::ColumnText(List(center), 1)), 100 - 12) << id;
        });
    }
}

TEST_F(UpgradeCenter, IsLeftByEveryWayOut)
{
    const std::pair<const char*, User> ways[]{
        {"Escape", [](HWND center) { PostMessageW(List(center), WM_KEYDOWN, VK_ESCAPE, 0); }},
        {"system menu", [](HWND center) { PostMessageW(center, WM_SYSCOMMAND, SC_CLOSE, 0); }},
        {"command 16", [](HWND center) { PostMessageW(center, WM_COMMAND, 16, 0); }},
        {"sent from elsewhere", [](HWND center) { SendMessageW(center, WM_COMMAND, 2, 0); }},
    };
    for (const auto& [name, leave] : ways) {
        EXPECT_EQ(ShowUpgrades(leave), Quit) << name;
    }
}

TEST_F(UpgradeCenter, OpensTheAddressOfTheSelectedOffer)
{
    ReplaceImport(library, "ShellExecuteW", NoteOpened);
    const User buysSecond = [](HWND center) {
        SendMessageW(center, WM_COMMAND, IDOK, 0);
        EXPECT_TRUE(IsWindowVisible(center)) << "without a selection it stays open";
        automation::SelectRow(List(center), 1);
        Press(center, IDOK);
    };
    const User buysFirstWithEnter = [](HWND center) {
        automation::SelectRow(List(center), 0);
        PostMessageW(List(center), WM_KEYDOWN, VK_RETURN, 0);
    };
    EXPECT_EQ(ShowUpgrades(buysSecond), Bought);
    EXPECT_EQ(ShowUpgrades(buysFirstWithEnter), Bought);
    service.Answer(R"([{"name":"X","version":"2","url":""}])");
    EXPECT_EQ(ShowUpgrades(buysFirstWithEnter), Bought);
    const std::vector<std::wstring> expected{L"https://shop/second?a=b&c=%20", L"https://shop/first", L""};
    EXPECT_EQ(opened, expected);
}

TEST_F(UpgradeCenter, ShowsNoWindowWithoutOffers)
{
    const std::tuple<const char*, Reply, Outcome> replies[]{
        {"empty", Reply::Http(""), L"920 No upgrades found!"},
        {"refusal", Reply::Http(R"({"status":0})"), NoConnection},
        {"closed without a reply", {}, NoConnection},
        {"other status", Reply::Http(R"({"status":7})"), Untouched},
        {"empty list", Reply::Http("[]"), Untouched},
        {"empty object", Reply::Http("{}"), Untouched},
        {"no JSON", Reply::Http("<html>"), NoJson},
        {"status", Reply::Http(R"({"status":"0"})"), MustBe + L"number, but is string"},
        {"second offer", Reply::Http(R"([{"name":"X","version":"2","url":"u"},{"name":"Y"}])"),
         MustBe + L"string, but is null"},
    };
    SetWindowsHookExW(WH_CALLWNDPROC, NoteShownDialog, nullptr, GetCurrentThreadId());
    for (const auto& [name, reply, expected] : replies) {
        service.Answer(reply);
        EXPECT_EQ(ShowUpgrades(), expected) << name;
    }
    service.Answer(TwoOffers);
    IsAsked("");
    host.apiKey = L"";
    EXPECT_EQ(ShowUpgrades(), Untouched);
    host.apiKey = L"api-key";
    records.Write(L"Product\\1.0", L"key", L"");
    EXPECT_EQ(ShowUpgrades(), Untouched);
    EXPECT_FALSE(IsAsked("get_updates"));
    EXPECT_EQ(dialogsShown, 0);

    records.Write(L"Product\\1.0", L"key", L"product-key");
    EXPECT_EQ(Look([](HWND) {}), Quit);
    EXPECT_GT(dialogsShown, 0) << "the hook sees a dialog that is shown";
}

TEST_F(UpgradeCenter, ProbesBeforeItLooksForTheRecord)
{
    for (const char* reply : {"", "1\n", " 1", "11", "true", "1\xC3", "\xF0\x9F\x98\x80"}) {
        service.AnswerProbe(Reply::Http(reply));
        EXPECT_EQ(ShowUpgrades(), NoConnection) << reply;
    }
    service.AnswerProbe({});
    EXPECT_EQ(ShowUpgrades(), NoConnection);
    records.RemoveAll();
    EXPECT_EQ(ShowUpgrades().substr(0, 3), L"950") << "comes before a missing connection";
    EXPECT_FALSE(IsAsked("get_updates"));
}

TEST_F(UpgradeCenter, PaintsThePictureOfTheProductLine)
{
    const std::pair<const wchar_t*, int> pictures[]{
        {L"known1a-111111-aaaaaaa", 332}, {L"known2b-222222-bbbbbbb", 333},  {L"known3c-333333-ccccccc", 333},
        {L"known4d-444444-ddddddd", 333}, {L"known5e-555555-eeeeeee", 1077}, {L"known6f-666666-fffffff", 335},
        {L"KNOWN1A-111111-aaaaaaa", 343}, {L"known1a-111111-aaaaaaa ", 343},
    };
    for (const auto& [apiKey, picture] : pictures) {
        HDC original = CreateCompatibleDC(nullptr);
        HGDIOBJ former = SelectObject(original, LoadBitmapW(library, MAKEINTRESOURCEW(picture)));
        host.apiKey = apiKey;
        Look([&, number = picture](HWND center) {
            // At the corners, in the picture, and behind the transparent heading, right of its text.
            for (const POINT at : {POINT{0, 0}, {120, 200}, {60, 300}, {660, 418}, {600, 28}}) {
                EXPECT_TRUE(HasColour(center, at, 1, GetPixel(original, at.x, at.y)))
                    << number << " " << at.x;
            }
        });
        DeleteObject(SelectObject(original, former));
        DeleteDC(original);
    }
}
