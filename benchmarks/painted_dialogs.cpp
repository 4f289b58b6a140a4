#include "painted_dialogs.h"

#include "measure.h"
#include "resource.h"

#include <commctrl.h>

namespace {

constexpr UINT_PTR SettledTimer = 0x4242;

WNDPROC listProc = nullptr;
double lastPainted = 0;
HBITMAP picture = nullptr;

LRESULT CALLBACK WatchingProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_TIMER && wParam == SettledTimer) {
        KillTimer(list, SettledTimer);
        PostMessageW(GetParent(list), WM_COMMAND, IDCANCEL, 0);
        return 0;
    }
    const LRESULT result = CallWindowProcW(listProc, list, message, wParam, lParam);
    if (message == WM_PAINT) {
        GdiFlush();
        lastPainted = Now();
        // A timer's message comes after every message to paint.
        SetTimer(list, SettledTimer, USER_TIMER_MINIMUM, nullptr);
    }
    return result;
}

void FillList(HWND list, LPARAM offers)
{
    wchar_t product[] = L"Example Product";
    wchar_t version[] = L"2026.2";
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH;
    column.pszText = product;
    column.cx = 250;
    ListView_InsertColumn(list, 0, &column);
    column.cx = 100;
    ListView_InsertColumn(list, 1, &column);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.pszText = product;
    while (offers-- > 0) {
        ListView_InsertItem(list, &item);
        ListView_SetItemText(list, 0, 1, version);
    }
}

INT_PTR CALLBACK DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_INITDIALOG:
        SetWindowTextW(dialog, L"Example Draft - Upgrade center");
        FillList(GetDlgItem(dialog, IDC_UPGRADE_OFFERS), lParam);
        return TRUE;
    case WM_ERASEBKGND:
        DrawStateW(
            reinterpret_cast<HDC>(wParam), nullptr, nullptr, reinterpret_cast<LPARAM>(picture), 0, 0, 0, 0, 0,
            DST_BITMAP);
        SetWindowLongPtrW(dialog, DWLP_MSGRESULT, TRUE);
        return TRUE;
    case WM_COMMAND:
        return LOWORD(wParam) == IDCANCEL && EndDialog(dialog, IDCANCEL);
    default:
        return FALSE;
    }
}

} // namespace

void WatchLists(HWND list)
{
    listProc = reinterpret_cast<WNDPROC>(
        SetClassLongPtrW(list, GCLP_WNDPROC, reinterpret_cast<LONG_PTR>(WatchingProc)));
}

double LastPainted()
{
    return lastPainted;
}

void ShowBareDialog(HMODULE library, std::size_t offers)
{
    picture = LoadBitmapW(library, MAKEINTRESOURCEW(IDB_BACKGROUND_332));
    DialogBoxParamW(
        library, MAKEINTRESOURCEW(IDD_PRODUCT_UPGRADE), nullptr, DialogProc, static_cast<LPARAM>(offers));
    DeleteObject(picture);
}
