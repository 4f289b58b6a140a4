#include "main_window.h"

#include "product_call.h"
#include "resource.h"

#include <windows.h>

using product_services::Product;

namespace {

// The library's windows have no owner, so this one stays enabled: until a call returns it refuses to begin
// another and to close.
bool isCalling = false;

void CallLibrary(HWND window, ProductCall call)
{
    if (isCalling) {
        return;
    }
    const auto& product = *reinterpret_cast<Product*>(GetWindowLongPtrW(window, DWLP_USER));
    isCalling = true;
    const product_services::CallResult result = call(product);
    isCalling = false;
    SetDlgItemTextW(window, IDC_OUTCOME, (L"Outcome: " + Describe(result)).c_str());
}

void ShowWhatCanBeChosen(HMENU menu)
{
    const UINT state = isCalling ? MF_GRAYED : MF_ENABLED;
    EnableMenuItem(menu, IDM_CHECK, MF_BYCOMMAND | state);
    EnableMenuItem(menu, IDM_UPGRADE, MF_BYCOMMAND | state);
}

void SetIcon(HWND window, WPARAM kind, int size)
{
    HANDLE icon = LoadImageW(
        GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDI_HOST), IMAGE_ICON, size, size, LR_DEFAULTCOLOR);
    SendMessageW(window, WM_SETICON, kind, reinterpret_cast<LPARAM>(icon));
}

void InitialiseWindow(HWND window, const Product& product)
{
    SetWindowLongPtrW(window, DWLP_USER, reinterpret_cast<LONG_PTR>(&product));
    SetWindowTextW(window, (product.name + L" " + product.version + L" \x2013 sample host").c_str());
    SetIcon(window, ICON_BIG, GetSystemMetrics(SM_CXICON));
    SetIcon(window, ICON_SMALL, GetSystemMetrics(SM_CXSMICON));
}

// A dialog as the window: with the DPI awareness of the manifest the system scales it, after a change too.
INT_PTR CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_INITDIALOG:
        InitialiseWindow(window, *reinterpret_cast<const Product*>(lParam));
        return TRUE;
    case WM_COMMAND:
        if (LOWORD(wParam) == IDM_CHECK) {
            CallLibrary(window, product_services::CheckForUpdates);
        } else if (LOWORD(wParam) == IDM_UPGRADE) {
            CallLibrary(window, product_services::Upgrade);
        }
        return TRUE;
    case WM_INITMENUPOPUP:
        ShowWhatCanBeChosen(reinterpret_cast<HMENU>(wParam));
        return TRUE;
    case WM_CLOSE:
        if (!isCalling) {
            EndDialog(window, 0);
        }
        return TRUE;
    default:
        return FALSE;
    }
}

// Started from the desktop, the program has a console of its own, which nobody needs beside the window.
void CloseOwnConsole()
{
    DWORD processes[2];
    if (GetConsoleProcessList(processes, 2) == 1) {
        FreeConsole();
    }
}

} // namespace

void RunMainWindow(Product& product)
{
    CloseOwnConsole();
    DialogBoxParamW(
        GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_MAIN_WINDOW), nullptr, MainWindowProc,
        reinterpret_cast<LPARAM>(&product));
}
