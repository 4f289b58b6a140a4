#include "support/painted_list.h"

#include "support/measure.h"

#include <commctrl.h>

namespace painted_list {
namespace {

constexpr UINT_PTR SettledTimer = 0x4242;

WNDPROC listProc = nullptr;
double lastPainted = 0;

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

} // namespace

void Watch()
{
    InitCommonControls();
    const HWND list =
        CreateWindowW(WC_LISTVIEWW, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    listProc = reinterpret_cast<WNDPROC>(
        SetClassLongPtrW(list, GCLP_WNDPROC, reinterpret_cast<LONG_PTR>(WatchingProc)));
    DestroyWindow(list);
}

double LastPainted()
{
    return lastPainted;
}

} // namespace painted_list
