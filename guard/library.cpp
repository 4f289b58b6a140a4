#include "library.h"

#include "windows_calls.h"

#include <cstring>
#include <cwchar>
#include <iterator>
#include <windows.h>

#include <strsafe.h>

namespace product_services_guard {
namespace {

constexpr wchar_t FileName[] = L"ProductServices.dll";
constexpr DWORD LongestPath = 32768;

// Not on the stack, of which a host may have little.
wchar_t path[LongestPath];

// Writes the path of ProductServices.dll in the folder of this DLL; false where it has none.
bool FindLibrary()
{
    HMODULE self = nullptr;
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExW(flags, reinterpret_cast<const wchar_t*>(&FindLibrary), &self)) {
        return false;
    }
    const DWORD length = GetModuleFileNameW(self, path, LongestPath);
    wchar_t* const slash = length < LongestPath ? std::wcsrchr(path, L'\\') : nullptr;
    if (!slash || static_cast<std::size_t>(slash + 1 - path) + std::size(FileName) > LongestPath) {
        return false;
    }
    std::wmemcpy(slash + 1, FileName, std::size(FileName));
    return true;
}

const wchar_t* LoadFailure(DWORD error)
{
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_MOD_NOT_FOUND:
        return L"ProductServices.dll, or a library that it needs, is not in the folder of "
               L"ProductServicesGuard.dll.";
    case ERROR_BAD_EXE_FORMAT:
        return L"ProductServices.dll is damaged, or is for another processor than this program.";
    default:
        break;
    }
    static wchar_t sentence[80];
    StringCchPrintfW(
        sentence, std::size(sentence), L"ProductServices.dll could not be loaded (Windows error %lu).",
        error);
    return sentence;
}

// The version resource begins with a header and its name, which take 40 bytes together.
WORD MajorVersion(HMODULE module)
{
    const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(VS_VERSION_INFO), RT_VERSION);
    VS_FIXEDFILEINFO info{};
    if (!resource || SizeofResource(module, resource) < 40 + sizeof info) {
        return 0;
    }
    std::memcpy(
        &info, static_cast<const char*>(LockResource(LoadResource(module, resource))) + 40, sizeof info);
    return HIWORD(info.dwFileVersionMS);
}

using Export = void (*)(HostContext*);

Export FindExport(HMODULE module, const char* name)
{
    return reinterpret_cast<Export>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

const wchar_t* TakeExports(HMODULE module, Library& library)
{
    library.checkForUpdates = FindExport(module, "CheckForUpdates");
    library.upgrade = FindExport(module, "Upgrade");
    if (!library.checkForUpdates || !library.upgrade) {
        return L"ProductServices.dll is another library: it lacks the two calls.";
    }
    if (MajorVersion(module) != PRODUCT_SERVICES_VERSION_MAJOR) {
        return L"ProductServices.dll has another major version than ProductServicesGuard.dll.";
    }
    if (!ComeBetween(module)) {
        return L"ProductServices.dll cannot be guarded: its calls of Windows are out of reach.";
    }
    return nullptr;
}

} // namespace

const Library& LoadProductServices()
{
    static Library library;
    if (library.checkForUpdates) {
        return library;
    }
    if (!FindLibrary()) {
        library.failure = L"The folder of ProductServicesGuard.dll could not be found out.";
        return library;
    }
    const HMODULE module =
        LoadLibraryExW(path, nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    library.failure = module ? TakeExports(module, library) : LoadFailure(GetLastError());
    if (module && library.failure) {
        library = {nullptr, nullptr, library.failure};
        FreeLibrary(module);
    }
    return library;
}

} // namespace product_services_guard
