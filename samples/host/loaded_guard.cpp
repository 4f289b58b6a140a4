// The guard's functions, called in a guard that this program loads itself. Windows does not start a program
// that imports a missing DLL, and then neither a call nor the doctor could say what is missing.
#include "loaded_guard.h"

#include <product_services/guarded_calls.h>
#include <product_services/publisher.h>
#include <windows.h>

namespace {

constexpr DWORD LongestPath = 32768;

struct Guard
{
    std::wstring failure;
    decltype(&GuardedCheckForUpdates) checkForUpdates = nullptr;
    decltype(&GuardedUpgrade) upgrade = nullptr;
    decltype(&VerifyPublisher) verifyPublisher = nullptr;
};

std::wstring PathOfGuard()
{
    std::wstring path(LongestPath, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), LongestPath));
    return path.substr(0, path.rfind(L'\\') + 1) + L"ProductServicesGuard.dll";
}

std::wstring LoadFailure(DWORD error)
{
    return error == ERROR_MOD_NOT_FOUND
               ? L"ProductServicesGuard.dll, or a library that it needs, is not in the program's folder"
               : L"ProductServicesGuard.dll could not be loaded (Windows error " + std::to_wstring(error) +
                     L")";
}

template <typename Function>
void Find(HMODULE module, const char* name, Function*& function)
{
    function = reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

Guard Load()
{
    Guard guard;
    const HMODULE module = LoadLibraryExW(
        PathOfGuard().c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (!module) {
        guard.failure = LoadFailure(GetLastError());
        return guard;
    }
    Find(module, "GuardedCheckForUpdates", guard.checkForUpdates);
    Find(module, "GuardedUpgrade", guard.upgrade);
    Find(module, "VerifyPublisher", guard.verifyPublisher);
    if (!guard.checkForUpdates || !guard.upgrade || !guard.verifyPublisher) {
        guard.failure = L"ProductServicesGuard.dll is another library: it lacks a function";
    }
    return guard;
}

const Guard& LoadedGuard()
{
    static const Guard guard = Load();
    return guard;
}

void Explain(wchar_t* text, std::uint32_t capacity)
{
    lstrcpynW(text, (GuardFailure() + L".").c_str(), static_cast<int>(capacity));
}

std::uint32_t Call(decltype(&GuardedUpgrade) Guard::*function, GuardedCall* call)
{
    const Guard& guard = LoadedGuard();
    if (guard.failure.empty()) {
        return (guard.*function)(call);
    }
    Explain(call->text, call->textCapacity);
    return PRODUCT_SERVICES_NOT_CALLED;
}

} // namespace

const std::wstring& GuardFailure()
{
    return LoadedGuard().failure;
}

std::uint32_t GuardedCheckForUpdates(GuardedCall* call)
{
    return Call(&Guard::checkForUpdates, call);
}

std::uint32_t GuardedUpgrade(GuardedCall* call)
{
    return Call(&Guard::upgrade, call);
}

std::uint32_t VerifyPublisher(
    const wchar_t* path, const wchar_t* publisher, wchar_t* text, std::uint32_t textCapacity)
{
    const Guard& guard = LoadedGuard();
    if (guard.failure.empty()) {
        return guard.verifyPublisher(path, publisher, text, textCapacity);
    }
    Explain(text, textCapacity);
    return PRODUCT_SERVICES_PUBLISHER_UNREADABLE;
}
