#include "bare_dialog.h"

#include "resource.h"

#include <windows.h>

#include <commctrl.h>

namespace {

HBITMAP background = nullptr;

void FillList(HWND list, const std::vector<BareRow>& rows)
{
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH;
    column.pszText = const_cast<wchar_t*>(L"Product name");
    column.cx = 250;
    SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    column.pszText = const_cast<wchar_t*>(L"Product version");
    column.cx = 100;
    SendMessageW(list, LVM_INSERTCOLUMNW, 1, reinterpret_cast<LPARAM>(&column));
    SendMessageW(list, WM_SETREDRAW, FALSE, 0);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    for (const BareRow& row : rows) {
        item.iSubItem = 0;
        item.pszText = const_cast<wchar_t*>(row.name.c_str());
        SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
        item.iSubItem = 1;
        item.pszText = const_cast<wchar_t*>(row.version.c_str());
        SendMessageW(list, LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
        ++item.iItem;
    }
    SendMessageW(list, WM_SETREDRAW, TRUE, 0);
}

void PaintBackground(HDC dc)
{
    const HDC source = CreateCompatibleDC(dc);
    const HGDIOBJ former = SelectObject(source, background);
    BitBlt(dc, 0, 0, 726, 463, source, 0, 0, SRCCOPY);
    SelectObject(source, former);
    DeleteDC(source);
}

INT_PTR CALLBACK DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_INITDIALOG:
        SetWindowTextW(dialog, L"Example Draft - Upgrade center");
        FillList(
            GetDlgItem(dialog, IDC_UPGRADE_OFFERS), *reinterpret_cast<const std::vector<BareRow>*>(lParam));
        return TRUE;
    case WM_ERASEBKGND:
        PaintBackground(reinterpret_cast<HDC>(wParam));
        SetWindowLongPtrW(dialog, DWLP_MSGRESULT, TRUE);
        return TRUE;
    case WM_COMMAND:
        return LOWORD(wParam) == IDCANCEL && EndDialog(dialog, IDCANCEL);
    default:
        return FALSE;
    }
}

} // namespace

void ShowBareDialog(const std::vector<BareRow>& rows)
{
    background = LoadBitmapW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDB_BACKGROUND_332));
    DialogBoxParamW(
        GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_PRODUCT_UPGRADE), nullptr, DialogProc,
        reinterpret_cast<LPARAM>(&rows));
    DeleteObject(background);
}
