#include "support/data_file.h"
#include "support/library_fixture.h"

#include <commctrl.h>

using window_automation::ControlText;
using window_automation::FocusedWindowOfThread;
using window_automation::WaitForPixelColor;

namespace {

DWORD Style(HWND window, int index = GWL_STYLE)
{
    return static_cast<DWORD>(GetWindowLongPtrW(window, index));
}

COLORREF Colour(const nlohmann::ordered_json& redGreenBlue)
{
    return RGB(redGreenBlue[0].get<int>(), redGreenBlue[1].get<int>(), redGreenBlue[2].get<int>());
}

int picturesLoaded;

HBITMAP WINAPI NotePicture(HINSTANCE module, const wchar_t* name)
{
    ++picturesLoaded;
    return LoadBitmapW(module, name);
}

void ExpectCentered(HWND window)
{
    RECT area{};
    RECT position{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
    GetWindowRect(window, &position);
    EXPECT_NEAR(position.left + position.right, area.left + area.right, 2);
    EXPECT_NEAR(position.top + position.bottom, area.top + area.bottom, 2);
}

// As if Windows had put the dialog, which is at 0, 0 in its template, below a taskbar.
BOOL WINAPI GetRectBelowTaskbar(HWND window, RECT* rect)
{
    return GetWindowRect(window, rect) && OffsetRect(rect, 0, 60);
}

using UpgradeWindow = LibraryTest;

} // namespace

TEST_F(UpgradeWindow, ShowsTheTextsOfTheLanguage)
{
    InstallLanguage();
    records.Write(L"Cut & Paste\\1.0", L"key", L"product-key");
    host.productName = L"Cut & Paste";
    const Outcome outcome = Look([&](HWND center) {
        EXPECT_EQ(window_automation::WindowText(center), L"Cut & Paste - text 22");
        EXPECT_EQ(ControlText(center, IDC_UPGRADE_HEADING), L"Cut & Paste - text 22");
        EXPECT_TRUE(Style(GetDlgItem(center, IDC_UPGRADE_HEADING)) & SS_NOPREFIX)
            << "or \" P\" is underlined";
        EXPECT_EQ(ControlText(center, IDC_UPGRADE_OFFERS), L"Cut & Paste - text 22") << "for screen readers";
        EXPECT_EQ(ControlText(center, IDOK), L"text 38");
        EXPECT_EQ(ControlText(center, IDCANCEL), L"text 12");
        EXPECT_EQ(window_automation::ColumnHeading(List(center), 0), L"text 23");
        EXPECT_EQ(window_automation::ColumnHeading(List(center), 1), L"text 24");
    });
    EXPECT_EQ(outcome, L"540 text 67");
}

TEST_F(UpgradeWindow, ListsOffersInOrder)
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
        EXPECT_EQ(window_automation::ListRows(list, 2), rows);
        EXPECT_EQ(ListView_GetColumnWidth(list, 0), 250);
        EXPECT_EQ(ListView_GetColumnWidth(list, 1), 100);
        EXPECT_EQ(window_automation::ColumnAlignment(list, 0), LVCFMT_LEFT);
        EXPECT_EQ(window_automation::ColumnAlignment(list, 1), LVCFMT_CENTER);
        EXPECT_EQ(ListView_GetSelectedCount(list), 0u);
        window_automation::SelectRow(list, 0);
        window_automation::SelectRow(list, 2);
        EXPECT_EQ(ListView_GetSelectedCount(list), 1u) << "one at a time";
        RECT row{};
        ListView_GetItemRect(list, 1, &row, LVIR_LABEL);
        const POINT inText{row.left, (row.top + row.bottom) / 2};
        EXPECT_TRUE(WaitForPixelColor(list, inText, GetSysColor(COLOR_WINDOWTEXT), 50)) << "a row is painted";
    });
}

TEST_F(UpgradeWindow, IsCenteredWithIconAndTaskbarButton)
{
    Look([&](HWND center) {
        ExpectCentered(center);
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

TEST_F(UpgradeWindow, IsCenteredBelowATaskbar)
{
    ReplaceImport("GetWindowRect", GetRectBelowTaskbar);
    Look([](HWND center) { ExpectCentered(center); });
}

TEST_F(UpgradeWindow, SupportsTheKeyboard)
{
    Look([&](HWND center) {
        const HWND buy = GetDlgItem(center, IDOK);
        EXPECT_TRUE(window_automation::WaitFor([&] { return FocusedWindowOfThread(center) == buy; }, 3000));
        EXPECT_EQ(LOWORD(SendMessageW(center, DM_GETDEFID, 0, 0)), IDOK);
        for (const HWND next : {GetDlgItem(center, IDCANCEL), List(center), buy}) {
            PostMessageW(FocusedWindowOfThread(center), WM_KEYDOWN, VK_TAB, 0);
            EXPECT_TRUE(
                window_automation::WaitFor([&] { return FocusedWindowOfThread(center) == next; }, 3000));
        }
    });
}

TEST_F(UpgradeWindow, PaintsTheProductLinesPicture)
{
    const nlohmann::ordered_json table = ReadDataFile("library/pictures.json");
    for (const auto& [name, line] : table["lines"].items()) {
        SCOPED_TRACE(name);
        const std::wstring apiKey = Wide(line["api key"]);
        host.apiKey = apiKey.c_str();
        const auto& colours = table["colours"][line["picture"].get<std::string>()];
        Look([&](HWND center) {
            EXPECT_TRUE(WaitForPixelColor(center, {30, 400}, Colour(colours["left"])));
            EXPECT_TRUE(WaitForPixelColor(center, {600, 28}, Colour(colours["behind the heading"])))
                << "right of its text";
        });
    }
}

// The dialog is made, and ends before it is shown.
TEST_F(UpgradeWindow, LoadsNoPictureWithoutAKey)
{
    ReplaceImport("LoadBitmapW", NotePicture);
    host.apiKey = L"";
    EXPECT_EQ(ShowUpgrades(), Nothing);
    EXPECT_EQ(picturesLoaded, 0);
    host.apiKey = L"api-key";
    EXPECT_EQ(Look(), Quit);
    EXPECT_EQ(picturesLoaded, 1);
}
