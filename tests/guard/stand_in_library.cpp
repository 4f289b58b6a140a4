// Stands in for ProductServices.dll where the real one cannot be brought to it: its check throws, and its
// upgrade reports how much room for its text it is given.
#include "product_services/product_services.h"

#include <cwchar>
#include <stdexcept>
#include <string>
#include <windows.h>

#include <shellapi.h>

// Imported, as by the real one.
[[maybe_unused]] static void* volatile const Imports[]{
    reinterpret_cast<void*>(&MessageBoxW), reinterpret_cast<void*>(&ShellExecuteW)};

// An error that is longer than all the room for texts; a number where the product has no name.
extern "C" void CheckForUpdates(HostContext* host) noexcept(false)
{
    if (!*host->productName) {
        throw 42;
    }
    throw std::runtime_error(std::string(0x100000, 'x'));
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
