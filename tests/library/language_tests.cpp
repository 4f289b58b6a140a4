#include "support/library_fixture.h"
#include "ui/resource.h"

#include <commctrl.h>

namespace {

// Room is without the edges that Windows keeps free: 4 pixels beside a caption, 6 beside a column's head.
void ExpectRoom(int textId, HWND window, const std::wstring& text, int room)
{
    const HDC dc = GetDC(window);
    SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageW(window, WM_GETFONT, 0, 0)));
    SIZE size{};
    GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
    ReleaseDC(window, dc);
    EXPECT_LE(size.cx, room) << "text " << textId << " is " << size.cx - room << " pixels too wide";
}

void ExpectRoomInColumn(int textId, HWND list, int index)
{
    wchar_t text[256] = {};
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH;
    column.pszText = text;
    column.cchTextMax = 256;
    SendMessageW(list, LVM_GETCOLUMNW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&column));
    ExpectRoom(textId, list, text, column.cx - 12);
}

class Language : public LibraryTest, public testing::WithParamInterface<int>
{
};

} // namespace

TEST_P(Language, EveryTextOfTheUpgradeCenterHasRoom)
{
    SetCurrentDirectoryW(L"..\\bin"); // where the build has put the language files
    records.Write(L"Example Draft", L"1.0", L"product-key", L"20.1");
    host.productName = L"Example Draft";
    host.languageId = GetParam();
    service.AnswerUpdates(Reply::Http(R"([{"name":"Draft","version":"2","url":"https://shop/"}])"));
    ShowUpgrades([](HWND center) {
        EXPECT_NE(automation::WindowText(center), L"Example Draft - Upgrade center") << "no language file";
        for (const auto& [textId, id, edges] :
             {std::tuple{22, IDC_UPGRADE_HEADING, 0}, {12, IDCANCEL, 8}, {38, IDOK, 8}}) {
            RECT client{};
            GetClientRect(GetDlgItem(center, id), &client);
            ExpectRoom(
                textId, GetDlgItem(center, id), automation::ControlText(center, id), client.right - edges);
        }
        ExpectRoomInColumn(23, GetDlgItem(center, IDC_UPGRADE_OFFERS), 0);
        ExpectRoomInColumn(24, GetDlgItem(center, IDC_UPGRADE_OFFERS), 1);
        automation::Press(center, IDCANCEL);
    });
}

INSTANTIATE_TEST_SUITE_P(Ids, Language, testing::Values(130, 140, 150, 160, 170, 180, 190, 200, 220, 230));
