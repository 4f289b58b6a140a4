#include "support/center_fixture.h"

#include <set>

using automation::ControlText;
using automation::FocusBeside;
using automation::HasColour;

namespace {

DWORD Style(HWND window, int index = GWL_STYLE)
{
    return static_cast<DWORD>(GetWindowLongPtrW(window, index));
}

// In the corner, on the left, and behind the heading, right of its text.
constexpr POINT PicturePoints[]{{5, 5}, {30, 400}, {600, 28}};

// A picture's colours there.
std::vector<COLORREF> Colours(HMODULE library, int picture)
{
    const HDC dc = CreateCompatibleDC(nullptr);
    const HGDIOBJ bitmap = LoadBitmapW(library, MAKEINTRESOURCEW(picture));
    const HGDIOBJ former = SelectObject(dc, bitmap);
    std::vector<COLORREF> colours;
    for (const POINT& at : PicturePoints) {
        colours.push_back(GetPixel(dc, at.x, at.y));
    }
    SelectObject(dc, former);
    DeleteObject(bitmap);
    DeleteDC(dc);
    return colours;
}

using UpgradeWindow = CenterTest;

} // namespace

TEST_F(UpgradeWindow, HasTheTextsOfTheTable)
{
    InstallLanguage();
    records.Write(L"Cut & Paste\\1.0", L"key", L"product-key");
    host.productName = L"Cut & Paste";
    const Outcome outcome = Look([&](HWND center) {
        EXPECT_EQ(automation::WindowText(center), L"Cut & Paste - text 22");
        EXPECT_EQ(ControlText(center, IDC_UPGRADE_HEADING), L"Cut & Paste - text 22");
        EXPECT_TRUE(Style(GetDlgItem(center, IDC_UPGRADE_HEADING)) & SS_NOPREFIX)
            << "or \" P\" is underlined";
        EXPECT_EQ(ControlText(center, IDC_UPGRADE_OFFERS), L"Cut & Paste - text 22") << "for screen readers";
        EXPECT_EQ(ControlText(center, IDOK), L"text 38");
        EXPECT_EQ(ControlText(center, IDCANCEL), L"text 12");
        EXPECT_EQ(automation::ColumnText(List(center), 0), L"text 23");
        EXPECT_EQ(automation::ColumnText(List(center), 1), L"text 24");
    });
    EXPECT_EQ(outcome, L"540 text 67");
}

TEST_F(UpgradeWindow, ListsNamesAndVersionsInTheirOrderWithNoneSelected)
{
    const std::string longName(300, 'x');
    service.Answer(
        R"([{"name":")" + longName + R"(","version":"2","url":"a"},)" +
        "{\"name\":\"\xE7\x89\x88\",\"version\":\"\",\"url\":\"b\"},"
        R"({"name":"Third","version":"3.1","url":"c"}])");
    Look([&](HWND center) {
        const HWND list = List(center);
        const std::vector<std::vector<std::wstring>> rows{
            {std::wstring(300, L'x'), L"2"}, {L"\x7248", L""}, {L"Third", L"3.1"}};
        EXPECT_EQ(automation::ListRows(list, 2), rows);
        EXPECT_EQ(ListView_GetColumnWidth(list, 0), 250);
        EXPECT_EQ(ListView_GetColumnWidth(list, 1), 100);
        EXPECT_EQ(automation::ColumnAlignment(list, 0), LVCFMT_LEFT);
        EXPECT_EQ(automation::ColumnAlignment(list, 1), LVCFMT_CENTER);
        EXPECT_EQ(ListView_GetSelectedCount(list), 0u);
        automation::SelectRow(list, 0);
        automation::SelectRow(list, 2);
        EXPECT_EQ(ListView_GetSelectedCount(list), 1u) << "one at a time";
        RECT row{};
        ListView_GetItemRect(list, 1, &row, LVIR_LABEL);
        const POINT inText{row.left, (row.top + row.bottom) / 2};
        EXPECT_TRUE(HasColour(list, inText, GetSysColor(COLOR_WINDOWTEXT), 50)) << "a row is painted";
    });
}

TEST_F(UpgradeWindow, StandsInTheMiddleOfTheScreenWithAnIconAndATaskbarButton)
{
    Look([&](HWND center) {
        RECT screen{};
        RECT window{};
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &screen, 0);
        GetWindowRect(center, &window);
        EXPECT_NEAR(window.left + window.right, screen.left + screen.right, 2);
        EXPECT_NEAR(window.top + window.bottom, screen.top + screen.bottom, 2);

        const LPARAM icon = SendMessageW(center, WM_GETICON, ICON_BIG, 0);
        EXPECT_EQ(reinterpret_cast<HICON>(icon), LoadIconW(library, MAKEINTRESOURCEW(IDI_LIBRARY)));
        EXPECT_EQ(SendMessageW(center, WM_GETICON, ICON_SMALL, 0), 0);
        EXPECT_TRUE(Style(center, GWL_EXSTYLE) & WS_EX_APPWINDOW);
        EXPECT_TRUE(Style(center, GWL_EXSTYLE) & WS_EX_CONTROLPARENT)
            << "which the system adds, and it keeps";
        EXPECT_NE(Style(center) & WS_CAPTION, static_cast<DWORD>(WS_CAPTION))
            << "a border, and no caption bar";
        EXPECT_EQ(GetWindow(center, GW_OWNER), nullptr);
    });
}

TEST_F(UpgradeWindow, IsWorkedWithTheKeyboard)
{
    Look([&](HWND center) {
        const HWND buy = GetDlgItem(center, IDOK);
        EXPECT_TRUE(automation::WaitFor([&] { return FocusBeside(center) == buy; }, 3000));
        EXPECT_EQ(LOWORD(SendMessageW(center, DM_GETDEFID, 0, 0)), IDOK);
        for (const HWND next : {GetDlgItem(center, IDCANCEL), List(center), buy}) {
            PostMessageW(FocusBeside(center), WM_KEYDOWN, VK_TAB, 0);
            EXPECT_TRUE(automation::WaitFor([&] { return FocusBeside(center) == next; }, 3000));
        }
    });
}

TEST_F(UpgradeWindow, HasRoomForItsTextsInEveryLanguage)
{
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const auto built = std::filesystem::path(program).parent_path() / "lang";
    std::filesystem::copy(built, "lang", std::filesystem::copy_options::recursive);
    records.Write(L"Example Draft\\1.0", L"key", L"product-key");
    host.productName = L"Example Draft";
    for (const int id : {130, 140, 150, 160, 170, 180, 190, 200, 220, 230}) {
        SCOPED_TRACE(id);
        Reload();
        host.languageId = id;
        Look([&](HWND center) {
            EXPECT_NE(automation::WindowText(center), L"Example Draft - Upgrade center")
                << "there is no file";
            const HWND list = List(center);
            // Windows keeps free 4 pixels on either side of a button's caption, and 6 in a column's head.
            for (const int part : {IDC_UPGRADE_HEADING, IDOK, IDCANCEL}) {
                RECT room{};
                GetClientRect(GetDlgItem(center, part), &room);
                EXPECT_LE(ListView_GetStringWidth(list, ControlText(center, part).c_str()), room.right - 8);
            }
            EXPECT_LE(ListView_GetStringWidth(list, automation::ColumnText(list, 0).c_str()), 250 - 12);
            EXPECT_LE(ListView_GetStringWidth(list, automation::ColumnText(list, 1).c_str()), 100 - 12);
        });
    }
}

TEST_F(UpgradeWindow, PaintsThePictureOfTheProductLine)
{
    const std::tuple<const char*, const wchar_t*, int> lines[]{
        {"key 1", L"known1a-111111-aaaaaaa", IDB_BACKGROUND_332},
        {"key 2", L"known2b-222222-bbbbbbb", IDB_BACKGROUND_333},
        {"key 3", L"known3c-333333-ccccccc", IDB_BACKGROUND_333},
        {"key 4", L"known4d-444444-ddddddd", IDB_BACKGROUND_333},
        {"key 5", L"known5e-555555-eeeeeee", IDB_BACKGROUND_1077},
        {"key 6", L"known6f-666666-fffffff", IDB_BACKGROUND_335},
        {"another key", L"api-key", IDB_BACKGROUND_343},
        {"a key and a space", L"known1a-111111-aaaaaaa ", IDB_BACKGROUND_343},
        {"a key cut short", L"known1a-111111-aaaaaa", IDB_BACKGROUND_343},
        {"a key in other letters", L"Known1a-111111-aaaaaaa", IDB_BACKGROUND_343},
    };
    std::set<std::vector<COLORREF>> different;
    for (const auto& [name, apiKey, picture] : lines) {
        SCOPED_TRACE(name);
        const std::vector<COLORREF> colours = Colours(library, picture);
        different.insert(colours);
        host.apiKey = apiKey;
        Look([&](HWND center) {
            for (std::size_t i = 0; i < colours.size(); ++i) {
                EXPECT_TRUE(HasColour(center, PicturePoints[i], colours[i])) << "at point " << i;
            }
        });
    }
    EXPECT_EQ(different.size(), 5u) << "the pictures are not told apart at these points";
}
