#include "support/data_file.h"
#include "support/library_fixture.h"

#include <commctrl.h>

using window_automation::ControlText;
using window_automation::WaitForFocus;
using window_automation::WaitForPixelColor;

namespace {

// Those of the styles that the window has.
DWORD FindStyles(HWND window, DWORD styles, int index = GWL_STYLE)
{
    return static_cast<DWORD>(GetWindowLongPtrW(window, index)) & styles;
}

COLORREF ToColorRef(const nlohmann::ordered_json& redGreenBlue)
{
    return RGB(redGreenBlue[0].get<int>(), redGreenBlue[1].get<int>(), redGreenBlue[2].get<int>());
}

int picturesLoaded;

HBITMAP WINAPI RecordLoadBitmap(HINSTANCE module, const wchar_t* name)
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

// As if Windows had moved the dialog, which is at 0, 0 in its template, below a taskbar.
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
    const Outcome outcome = OpenAndExit([&](HWND center) {
        EXPECT_EQ(window_automation::WindowText(center), L"Cut & Paste - text 22");
        EXPECT_EQ(ControlText(center, IDC_UPGRADE_HEADING), L"Cut & Paste - text 22");
        EXPECT_EQ(FindStyles(GetDlgItem(center, IDC_UPGRADE_HEADING), SS_NOPREFIX), DWORD{SS_NOPREFIX})
            << "or a blank is underlined";
        EXPECT_EQ(ControlText(center, IDC_UPGRADE_OFFERS), L"Cut & Paste - text 22") << "for screen readers";
        EXPECT_EQ(ControlText(center, IDOK), L"text 38");
        EXPECT_EQ(ControlText(center, IDCANCEL), L"text 12");
        EXPECT_EQ(window_automation::ColumnHeading(OfferList(center), 0), L"text 23");
        EXPECT_EQ(window_automation::ColumnHeading(OfferList(center), 1), L"text 24");
    });
    EXPECT_EQ(outcome, L"540 text 67");
    host.productName = nullptr;
    OpenAndExit([](HWND center) { EXPECT_EQ(window_automation::WindowText(center), L" - text 22"); });
}

TEST_F(UpgradeWindow, ListsOffersInOrder)
{
    const std::string longName(300, 'x');
    service.Answer(
        R"([{"name":")" + longName + R"(","version":"2","url":"a"},)" +
        "{\"name\":\"\xE7\x89\x88\",\"version\":\"\",\"url\":\"b\"},"
        R"({"name":"Third","version":"3.1","url":"c"}])");
    OpenAndExit([&](HWND center) {
        const HWND list = OfferList(center);
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
    OpenAndExit([&](HWND center) {
        ExpectCentered(center);
        const LPARAM icon = SendMessageW(center, WM_GETICON, ICON_BIG, 0);
        EXPECT_EQ(reinterpret_cast<HICON>(icon), LoadIconW(dll, MAKEINTRESOURCEW(IDI_LIBRARY)));
        EXPECT_EQ(SendMessageW(center, WM_GETICON, ICON_SMALL, 0), 0);
        // The system adds WS_EX_CONTROLPARENT, which must not be lost.
        constexpr DWORD ExtendedStyles = WS_EX_APPWINDOW | WS_EX_CONTROLPARENT;
        EXPECT_EQ(FindStyles(center, ExtendedStyles, GWL_EXSTYLE), ExtendedStyles);
        EXPECT_EQ(FindStyles(center, WS_CAPTION), DWORD{WS_BORDER}) << "a border, and no caption bar";
        EXPECT_EQ(GetWindow(center, GW_OWNER), nullptr);
    });
}

TEST_F(UpgradeWindow, IsCenteredBelowATaskbar)
{
    ReplaceImport("GetWindowRect", GetRectBelowTaskbar);
    OpenAndExit([](HWND center) { ExpectCentered(center); });
}

TEST_F(UpgradeWindow, SupportsTheKeyboard)
{
    OpenAndExit([&](HWND center) {
        const HWND buy = GetDlgItem(center, IDOK);
        EXPECT_TRUE(WaitForFocus(buy));
        EXPECT_EQ(LOWORD(SendMessageW(center, DM_GETDEFID, 0, 0)), IDOK);
        for (const HWND next : {GetDlgItem(center, IDCANCEL), OfferList(center), buy}) {
            PostMessageW(window_automation::FocusedWindowOfThread(center), WM_KEYDOWN, VK_TAB, 0);
            EXPECT_TRUE(WaitForFocus(next));
        }
    });
}

TEST_F(UpgradeWindow, PaintsTheProductLinesPicture)
{
    const nlohmann::ordered_json table = ReadDataFile("library/pictures.json");
    records.Write(L"P        P\\1.0", L"key", L"product-key");
    host.productName = L"P        P";
    for (const auto& [name, line] : table["lines"].items()) {
        SCOPED_TRACE(name);
        const std::wstring apiKey = ToWide(line["api key"]);
        host.apiKey = apiKey.c_str();
        const auto& colours = table["colours"][line["picture"].get<std::string>()];
        OpenAndExit([&](HWND center) {
            EXPECT_TRUE(WaitForPixelColor(center, {30, 400}, ToColorRef(colours["left"])));
            EXPECT_TRUE(WaitForPixelColor(center, {200, 28}, GetSysColor(COLOR_WINDOWTEXT), 60))
                << "the heading is painted";
            EXPECT_TRUE(WaitForPixelColor(center, {270, 28}, ToColorRef(colours["behind the heading"])))
                << "between its letters";
        });
    }
}

// The dialog is created, but closes before it is shown.
TEST_F(UpgradeWindow, LoadsNoPictureWithoutAKey)
{
    ReplaceImport("LoadBitmapW", RecordLoadBitmap);
    host.apiKey = L"";
    EXPECT_EQ(RunUpgrade(), Nothing);
    EXPECT_EQ(picturesLoaded, 0);
    host.apiKey = L"api-key";
    EXPECT_EQ(OpenAndExit(), Quit);
    EXPECT_EQ(picturesLoaded, 1);
}
