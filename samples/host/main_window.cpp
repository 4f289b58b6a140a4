#include "main_window.h"

#include "product_call.h"

#include <windows.h>

namespace {

constexpr UINT_PTR CheckCommand = 101;
constexpr UINT_PTR UpgradeCommand = 102;
constexpr int OutcomeId = 201;
constexpr int Margin = 16;

HMENU CreateMenuBar()
{
    HMENU help = CreatePopupMenu();
    AppendMenuW(help, MF_STRING, CheckCommand, L"&Check for updates\x2026");
    AppendMenuW(help, MF_STRING, UpgradeCommand, L"&Upgrade center\x2026");
    HMENU bar = CreateMenu();
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(help), L"&Help");
    return bar;
}

void CallLibrary(HWND window, ProductCall call)
{
    const auto* options = reinterpret_cast<const Options*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    // The library's windows have no owner: the host itself keeps its user from a second call.
    EnableWindow(window, FALSE);
    const std::wstring outcome = CallAndDescribe(call, *options);
    EnableWindow(window, TRUE);
    SetForegroundWindow(window);
    SetDlgItemTextW(window, OutcomeId, (L"Outcome: " + outcome).c_str());
}

void CreateOutcomeText(HWND window)
{
    HWND text = CreateWindowExW(
        0, L"STATIC", L"Choose a command of the Help menu.", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, window,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(OutcomeId)), nullptr, nullptr);
    SendMessageW(text, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)), TRUE);
}

LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_CREATE:
        CreateOutcomeText(window);
        return 0;
    case WM_SIZE:
        MoveWindow(
            GetDlgItem(window, OutcomeId), Margin, Margin, LOWORD(lParam) - 2 * Margin,
            HIWORD(lParam) - 2 * Margin, TRUE);
        return 0;
    case WM_COMMAND:
        if (LOWORD(wParam) == CheckCommand) {
            CallLibrary(window, ProductCall::CheckForUpdates);
        } else if (LOWORD(wParam) == UpgradeCommand) {
            CallLibrary(window, ProductCall::Upgrade);
        }
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

HWND CreateMainWindow(const Options& options)
{
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = MainWindowProc;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    windowClass.lpszClassName = L"SampleHost";
    RegisterClassW(&windowClass);
    const std::wstring title = options.productName + L" " + options.productVersion + L" \x2013 sample host";
    HWND window = CreateWindowExW(
        0, windowClass.lpszClassName, title.c_str(), WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT, 560,
        240, nullptr, CreateMenuBar(), windowClass.hInstance, nullptr);
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&options));
    return window;
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

int RunMainWindow(const Options& options)
{
    CloseOwnConsole();
    ShowWindow(CreateMainWindow(options), SW_SHOWDEFAULT);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
