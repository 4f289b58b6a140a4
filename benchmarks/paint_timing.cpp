#include "paint_timing.h"

#include "benchmark_common.h"
#include "resource.h"

#include <commctrl.h>
#include <windowsx.h>

namespace {

constexpr UINT_PTR SettledTimer = 0x4242;

WNDPROC listProc = nullptr;
double lastPainted = 0;
HMODULE resources = nullptr;
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
        // Windows generates WM_TIMER only when no WM_PAINT is pending.
        SetTimer(list, SettledTimer, USER_TIMER_MINIMUM, nullptr);
    }
    return result;
}

void InsertColumn(HWND list, int index, const wchar_t* heading, int format, int width)
{
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_FMT | LVCF_WIDTH | LVCF_SUBITEM;
    column.pszText = const_cast<wchar_t*>(heading);
    column.fmt = format;
    column.cx = width;
    column.iSubItem = index;
    ListView_InsertColumn(list, index, &column);
}

void FillList(HWND list, LPARAM offers)
{
    wchar_t product[] = L"Example Product";
    wchar_t version[] = L"2026.2";
    InsertColumn(list, 0, L"Product name", LVCFMT_LEFT, 250);
    InsertColumn(list, 1, L"Product version", LVCFMT_CENTER, 100);
    SetWindowRedraw(list, FALSE);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.pszText = product;
    while (offers-- > 0) {
        ListView_InsertItem(list, &item);
        ListView_SetItemText(list, 0, 1, version);
    }
    SetWindowRedraw(list, TRUE);
}

void SetTexts(HWND dialog)
{
    const HWND heading = GetDlgItem(dialog, IDC_UPGRADE_HEADING);
    SetWindowLongPtrW(heading, GWL_STYLE, GetWindowLongPtrW(heading, GWL_STYLE) | SS_NOPREFIX);
    for (const HWND window : {dialog, heading, GetDlgItem(dialog, IDC_UPGRADE_OFFERS)}) {
        SetWindowTextW(window, L"Example Draft - Upgrade center");
    }
    SetDlgItemTextW(dialog, IDOK, L"Buy now");
    SetDlgItemTextW(dialog, IDCANCEL, L"Exit");
}

void CenterOnMonitor(HWND dialog)
{
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(dialog, MONITOR_DEFAULTTONEAREST), &monitor);
    RECT window{};
    GetWindowRect(dialog, &window);
    const RECT& area = monitor.rcWork;
    SetWindowPos(
        dialog, nullptr, (area.left + area.right - window.right) / 2,
        (area.top + area.bottom - window.bottom) / 2, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void PaintPicture(HDC dc)
{
    BITMAP size{};
    GetObjectW(picture, sizeof size, &size);
    const HDC source = CreateCompatibleDC(dc);
    const HGDIOBJ previous = SelectObject(source, picture);
    BitBlt(dc, 0, 0, size.bmWidth, size.bmHeight, source, 0, 0, SRCCOPY);
    SelectObject(source, previous);
    DeleteDC(source);
}

// Shows the same as the upgrade center in a plain dialog.
INT_PTR CALLBACK DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_INITDIALOG:
        SendMessageW(
            dialog, WM_SETICON, ICON_BIG,
            reinterpret_cast<LPARAM>(LoadIconW(resources, MAKEINTRESOURCEW(IDI_LIBRARY))));
        SetWindowLongPtrW(dialog, GWL_EXSTYLE, GetWindowLongPtrW(dialog, GWL_EXSTYLE) | WS_EX_APPWINDOW);
        SetTexts(dialog);
        FillList(GetDlgItem(dialog, IDC_UPGRADE_OFFERS), lParam);
        CenterOnMonitor(dialog);
        return TRUE;
    case WM_ERASEBKGND:
        PaintPicture(reinterpret_cast<HDC>(wParam));
        SetWindowLongPtrW(dialog, DWLP_MSGRESULT, TRUE);
        return TRUE;
    case WM_CTLCOLORSTATIC:
        SetBkMode(reinterpret_cast<HDC>(wParam), TRANSPARENT);
        return reinterpret_cast<INT_PTR>(GetStockObject(HOLLOW_BRUSH));
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
    resources = library;
    picture = LoadBitmapW(library, MAKEINTRESOURCEW(IDB_BACKGROUND_332));
    DialogBoxParamW(
        library, MAKEINTRESOURCEW(IDD_PRODUCT_UPGRADE), nullptr, DialogProc, static_cast<LPARAM>(offers));
    DeleteObject(picture);
}
