// Stands in for ProductServices.dll where the real one cannot be brought to it: it throws what the host's
// product name and version say, and reports how much room for its text it is given.
#include "product_services/product_services.h"

#include <cwchar>
#include <stdexcept>
#include <string>
#include <windows.h>

#include <shellapi.h>

// Imported, as by the real one.
[[maybe_unused]] static void* volatile const Imports[]{
    reinterpret_cast<void*>(&MessageBoxW), reinterpret_cast<void*>(&ShellExecuteW)};

// The bytes that the units of the product's name are, as often as its version says; a number where it has no
// name.
extern "C" void CheckForUpdates(HostContext* host) noexcept(false)
{
    if (!*host->productName) {
        throw 42;
    }
    std::string bytes;
    for (const wchar_t* unit = host->productName; *unit; ++unit) {
        bytes += static_cast<char>(*unit);
    }
    std::string error;
    for (int i = std::stoi(host->productVersion); i > 0; --i) {
        error += bytes;
    }
    throw std::runtime_error(error);
}

// The bytes that may be written to, with "guarded" where those behind them may not.
extern "C" void Upgrade(HostContext* host) noexcept(false)
{
    MEMORY_BASIC_INFORMATION room{};
    VirtualQuery(host->resultText, &room, sizeof room);
    MEMORY_BASIC_INFORMATION behind{};
    VirtualQuery(reinterpret_cast<char*>(host->resultText) + room.RegionSize, &behind, sizeof behind);
    host->resultCode = PRODUCT_SERVICES_NO_UPGRADES;
    std::swprintf(
        host->resultText, 40, L"%zu%ls", room.RegionSize, behind.State == MEM_RESERVE ? L" guarded" : L"");
}

BOOL WINAPI DllMain(HINSTANCE, DWORD, void*)
{
    // The guard is told that the library cannot be started.
    return GetEnvironmentVariableW(L"STAND_IN_FAILS", nullptr, 0) == 0;
}
