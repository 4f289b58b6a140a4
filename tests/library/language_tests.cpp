#include "support/library_fixture.h"
#include "ui/resource.h"

#include <commctrl.h>

namespace {

void ExpectRoom(int textId, HWND window, const std::wstring& text, int room)
{
    const HDC dc = GetDC(window);
    SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageW(window, WM_GETFONT, 0, 0)));
    SIZE size{};
    GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
    ReleaseDC(window, dc);
    EXPECT_LE(size.cx, room) << "text " << textId << " is " << size.cx - room << " pixels too wide";
}

class Language : public LibraryTest, public testing::WithParamInterface<int>
{
};

} // namespace

TEST_P(Language, EveryTextOfTheUpgradeCenterHasRoom)
{
    SetCurrentDirectoryW(L"..\\bin"); // where the build has put the language files
    records.Write(L"Example Draft\\1.0", L"key", L"product-key");
    host.productName = L"Example Draft";
    host.languageId = GetParam();
    service.Answer(R"([{"name":"Draft","version":"2","url":"https://shop/"}])");
    ShowUpgrades([](HWND center) {
        EXPECT_NE(automation::WindowText(center), L"Example Draft - Upgrade center") << "no language file";
        // Windows keeps free 4 pixels on either side of a caption, and 6 in a column's head.
        for (const auto& [textId, id, edges] :
             {std::tuple{22, IDC_UPGRADE_HEADING, 0}, {12, IDCANCEL, 8}, {38, IDOK, 8}}) {
            const HWND control = GetDlgItem(center, id);
            RECT client{};
            GetClientRect(control, &client);
            ExpectRoom(textId, control, automation::WindowText(control), client.right - edges);
        }
        const HWND list = GetDlgItem(center, IDC_UPGRADE_OFFERS);
        for (const int column : {0, 1}) {
            ExpectRoom(
                23 + column, list, automation::ColumnText(list, column),
                ListView_GetColumnWidth(list, column) - 12);
        }
        automation::Press(center, IDCANCEL);
    });
}

INSTANTIATE_TEST_SUITE_P(Ids, Language, testing::Values(130, 140, 150, 160, 170, 180, 190, 200, 220, 230));
