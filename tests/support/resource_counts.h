// What this process holds. Wine 8 answers 0 where Windows counts handles, so there it is counted by hand.
#pragma once

#include <vector>
#include <windows.h>

extern "C" NTSYSAPI void* NTAPI RtlGetCurrentPeb();
extern "C" NTSYSAPI LONG NTAPI NtQuerySystemInformation(ULONG what, void* buffer, ULONG size, ULONG* needed);

struct ResourceCounts
{
    int gdiObjects;
    int windows;
    int kernelHandles;
    int tlsIndexes;
    std::size_t privateBytes;
};

inline int CountGdiObjects()
{
    if (const DWORD known = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)) {
        return static_cast<int>(known);
    }
    // The entries with a type in the process's handle table.
    constexpr std::size_t TableOffset = 0xF8;
    constexpr std::size_t EntrySize = 24;
    constexpr std::size_t TypeOffset = 14;
    const char* process = static_cast<const char*>(RtlGetCurrentPeb());
    const char* table = *reinterpret_cast<const char* const*>(process + TableOffset);
    int count = 0;
    for (std::size_t index = 0; index < 0x10000; ++index) {
        count += table[index * EntrySize + TypeOffset] != 0;
    }
    return count;
}

inline int CountWindows()
{
    int count = 0;
    const auto countOwn = [](HWND window, LPARAM parameter) -> BOOL {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        *reinterpret_cast<int*>(parameter) += process == GetCurrentProcessId();
        return TRUE;
    };
    EnumWindows(countOwn, reinterpret_cast<LPARAM>(&count));
    EnumChildWindows(GetDesktopWindow(), countOwn, reinterpret_cast<LPARAM>(&count));
    return count;
}

inline int CountKernelHandles()
{
    DWORD known = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &known) && known != 0) {
        return static_cast<int>(known);
    }
    struct Entry
    {
        void* object;
        ULONG_PTR process;
        ULONG_PTR handle;
        ULONG access;
        USHORT rest[4];
    };
    constexpr ULONG ExtendedHandles = 64;
    std::vector<char> buffer(4 << 20);
    ULONG size = 0;
    if (NtQuerySystemInformation(ExtendedHandles, buffer.data(), static_cast<ULONG>(buffer.size()), &size) <
        0) {
        return -1;
    }
    const ULONG_PTR entries = *reinterpret_cast<const ULONG_PTR*>(buffer.data());
    const auto* entry = reinterpret_cast<const Entry*>(buffer.data() + 2 * sizeof(ULONG_PTR));
    int count = 0;
    for (ULONG_PTR i = 0; i < entries; ++i) {
        count += entry[i].process == GetCurrentProcessId();
    }
    return count;
}

// Windows gives a process 1,088: those that are not to be had are in use.
inline int CountTlsIndexes()
{
    std::vector<DWORD> free;
    for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) {
        free.push_back(index);
    }
    for (const DWORD index : free) {
        TlsFree(index);
    }
    return 1088 - static_cast<int>(free.size());
}

inline std::size_t CountPrivateBytes()
{
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* address = nullptr; VirtualQuery(address, &region, sizeof region) != 0;
         address = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        bytes += region.State == MEM_COMMIT && region.Type == MEM_PRIVATE ? region.RegionSize : 0;
    }
    return bytes;
}

inline ResourceCounts CountResources()
{
    return {CountGdiObjects(), CountWindows(), CountKernelHandles(), CountTlsIndexes(), CountPrivateBytes()};
}
