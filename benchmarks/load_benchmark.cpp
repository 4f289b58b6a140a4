// load_benchmark DLL: how long the DLL takes to load, and what it adds to the working set of a host that has
// its windows open.
#include "support/measure.h"

#include <commctrl.h>
#include <psapi.h>
#include <shellapi.h>

namespace {

void OpenWindows()
{
    InitCommonControls();
    const HWND window = CreateWindowW(
        L"#32770", L"Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 400, 300, nullptr, nullptr, nullptr,
        nullptr);
    CreateWindowW(
        WC_LISTVIEWW, L"", WS_CHILD | WS_VISIBLE, 0, 0, 300, 200, window, nullptr, nullptr, nullptr);
    DragAcceptFiles(window, TRUE);
    UpdateWindow(window);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        DispatchMessageW(&message);
    }
}

double WorkingSet()
{
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<double>(counters.WorkingSetSize);
}

} // namespace

int main(int argc, char** argv)
{
    OpenWindows();
    const double before = WorkingSet();
    HMODULE library = nullptr;
    const double duration = Duration([&] { library = argc == 2 ? LoadLibraryA(argv[1]) : nullptr; });
    const double after = WorkingSet();
    Print("load", duration);
    Print("working-set", after - before);
    return library && before > 0 ? 0 : 1;
}
