// A host application: its window checks for updates once a day, some time after it opens, and its Help menu
// has a command for each call. SampleHost --check-now checks as soon as it opens.
#include "main_window.h"

#include <objbase.h>

#include <string>
#include <windows.h>

namespace {

// The library looks for language files below the working directory, which a shortcut may set to any folder.
void WorkInProgramFolder()
{
    constexpr DWORD MaxPathLength = 32768;
    std::wstring path(MaxPathLength, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MaxPathLength));
    SetCurrentDirectoryW(path.substr(0, path.rfind(L'\\') + 1).c_str());
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t* commandLine, int)
{
    WorkInProgramFolder();
    // Browsers and other handlers of URLs may need COM.
    const HRESULT initialized = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    RunMainWindow(std::wstring(commandLine) == L"--check-now");
    if (SUCCEEDED(initialized)) {
        CoUninitialize();
    }
    return 0;
}
