// Counts the resources of this process. Windows' own functions for GDI objects and handles return 0 in
// Wine 8.
#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>
#include <windows.h>

extern "C" NTSYSAPI const void* NTAPI RtlGetCurrentPeb();

inline std::ptrdiff_t CountGdiObjects()
{
    if (const DWORD known = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)) {
        return static_cast<std::ptrdiff_t>(known);
    }
    constexpr std::size_t TableOffset = 0xF8, Entries = 0x10000, EntrySize = 24, TypeOffset = 14;
    const char* table = static_cast<const char* const*>(RtlGetCurrentPeb())[TableOffset / sizeof(void*)];
    std::ptrdiff_t count = 0;
    for (std::size_t i = 0; i < Entries; ++i) {
        count += table[i * EntrySize + TypeOffset] != 0;
    }
    return count;
}

// Under Wine, the number of the lowest free handle, which Wine assigns first.
inline std::ptrdiff_t CountKernelHandles()
{
    DWORD known = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &known) && known != 0) {
        return static_cast<std::ptrdiff_t>(known);
    }
    HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(event);
    return reinterpret_cast<std::ptrdiff_t>(event) / 4;
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

/// The bytes in the allocated blocks of all heaps, among them that of the C runtime.
inline std::ptrdiff_t CountHeapBytes()
{
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr));
    GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    std::size_t bytes = 0;
    for (HANDLE heap : heaps) {
        HeapLock(heap);
        for (PROCESS_HEAP_ENTRY entry{}; HeapWalk(heap, &entry);) {
            bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
        }
        HeapUnlock(heap);
    }
    return static_cast<std::ptrdiff_t>(bytes);
}

inline std::map<std::string, std::ptrdiff_t> CountResources()
{
    return {
        {"GDI objects", CountGdiObjects()},
        {"heap bytes", CountHeapBytes()},
        {"kernel handles", CountKernelHandles()},
        {"private bytes", CountPrivateBytes()}};
}

/// Runs `work` until the resources have settled and then `times` more, and expects that they do not grow. The
/// GDI objects that the system itself keeps are not counted.
inline void ExpectNoGrowth(
    int times, const std::function<void()>& work,
    const std::function<std::ptrdiff_t()>& countSystemObjects = [] { return 0; })
{
    // Wine 10's comctl32 leaves bitmaps and memory behind each time that it is unloaded.
    const HMODULE commonControls = LoadLibraryW(L"comctl32.dll");
    for (int i = 0; i < 10; ++i) {
        work();
    }
    auto before = CountResources();
    before["GDI objects"] -= countSystemObjects();
    for (int i = 0; i < times; ++i) {
        work();
    }
    before["GDI objects"] += countSystemObjects();
    before["heap bytes"] += 32 * 1024; // Wine 10 counts groups of small blocks, free blocks included
    before["kernel handles"] += 3;     // another thread may be about to close some
    before["private bytes"] += 512 * 1024;
    for (const auto& [name, count] : CountResources()) {
        EXPECT_LE(count, before[name]) << name;
    }
    FreeLibrary(commonControls);
}
