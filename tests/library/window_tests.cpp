#include "support/library_fixture.h"

#include <commctrl.h>

using automation::ControlText;
using automation::FocusBeside;
using automation::HasColour;

namespace {

DWORD Style(HWND window, int index = GWL_STYLE)
{
    return static_cast<DWORD>(GetWindowLongPtrW(window, index));
}

// A picture's colours on its left and behind the heading.
struct Picture
{
    COLORREF left;
    COLORREF behindHeading;
};

constexpr Picture Picture332{RGB(0x15, 0x43, 0x72), RGB(0xF3, 0xF6, 0xFB)};
constexpr Picture Picture333{RGB(0x0F, 0x58, 0x4F), RGB(0xF3, 0xF8, 0xF8)};
constexpr Picture Picture335{RGB(0x59, 0x2C, 0x1D), RGB(0xFB, 0xF7, 0xF4)};
constexpr Picture Picture343{RGB(0x31, 0x3C, 0x5A), RGB(0xF5, 0xF6, 0xF9)};
constexpr Picture Picture1077{RGB(0x65, 0x2A, 0x4F), RGB(0xF9, 0xF5, 0xF8)};

using UpgradeWindow = LibraryTest;

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

TEST_F(UpgradeWindow, PaintsThePictureOfTheProductLine)
{
    const std::tuple<const char*, const wchar_t*, Picture> lines[]{
        {"key 1", L"known1a-111111-aaaaaaa", Picture332},
        {"key 2", L"known2b-222222-bbbbbbb", Picture333},
        {"key 3", L"known3c-333333-ccccccc", Picture333},
        {"key 4", L"known4d-444444-ddddddd", Picture333},
        {"key 5", L"known5e-555555-eeeeeee", Picture1077},
        {"key 6", L"known6f-666666-fffffff", Picture335},
        {"another key", L"api-key", Picture343},
        {"a key and a space", L"known1a-111111-aaaaaaa ", Picture343},
        {"a key cut short", L"known1a-111111-aaaaaa", Picture343},
        {"a key in other letters", L"Known1a-111111-aaaaaaa", Picture343},
    };
    for (const auto& [name, apiKey, picture] : lines) {
        SCOPED_TRACE(name);
        host.apiKey = apiKey;
        Look([&picture = picture](HWND center) {
            EXPECT_TRUE(HasColour(center, {30, 400}, picture.left));
            EXPECT_TRUE(HasColour(center, {600, 28}, picture.behindHeading)) << "right of its text";
        });
    }
}
