// What this process holds. Wine 8 answers 0 where Windows counts GDI objects or handles: those are counted by
// hand.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>
#include <windows.h>

extern "C" NTSYSAPI void* NTAPI RtlGetCurrentPeb();
extern "C" NTSYSAPI LONG NTAPI NtQuerySystemInformation(ULONG what, void* buffer, ULONG size, ULONG* needed);

inline std::ptrdiff_t CountGdiObjects()
{
    if (const DWORD known = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)) {
        return static_cast<std::ptrdiff_t>(known);
    }
    struct Entry
    {
        char object[14];
        char type;
        char rest[9];
    };
    constexpr std::size_t TableOffset = 0xF8;
    const auto* table = static_cast<const Entry* const*>(RtlGetCurrentPeb())[TableOffset / sizeof(void*)];
    return std::count_if(table, table + 0x10000, [](const Entry& entry) { return entry.type != 0; });
}

inline std::ptrdiff_t CountWindowsOfThread()
{
    std::ptrdiff_t count = 0;
    const auto countOne = [](HWND, LPARAM counted) -> BOOL {
        ++*reinterpret_cast<std::ptrdiff_t*>(counted);
        return TRUE;
    };
    EnumThreadWindows(GetCurrentThreadId(), countOne, reinterpret_cast<LPARAM>(&count));
    return count;
}

inline std::ptrdiff_t CountKernelHandles()
{
    struct Entry
    {
        void* object;
        ULONG_PTR process;
        ULONG_PTR rest[3];
    };
    constexpr ULONG ExtendedHandles = 64;
    std::vector<ULONG_PTR> table(1 << 19);
    NtQuerySystemInformation(ExtendedHandles, table.data(), 1 << 22, nullptr);
    const auto* entries = reinterpret_cast<const Entry*>(&table[2]);
    return std::count_if(entries, entries + table[0], [](const Entry& entry) {
        return entry.process == GetCurrentProcessId();
    });
}

// The lowest free one.
inline std::ptrdiff_t FreeTlsIndex()
{
    const DWORD index = TlsAlloc();
    TlsFree(index);
    return static_cast<std::ptrdiff_t>(index);
}

inline std::ptrdiff_t CountPrivateBytes()
{
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) != 0; at += region.RegionSize) {
        bytes += region.State == MEM_COMMIT && region.Type == MEM_PRIVATE ? region.RegionSize : 0;
    }
    return static_cast<std::ptrdiff_t>(bytes);
}

inline std::map<std::string, std::ptrdiff_t> CountResources()
{
    return {
        {"GDI objects", CountGdiObjects()},
        {"windows", CountWindowsOfThread()},
        {"kernel handles", CountKernelHandles()},
        {"TLS indexes", FreeTlsIndex()},
        {"private bytes", CountPrivateBytes()}};
}
