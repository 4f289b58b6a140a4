// Damage to a heap. Wine fills the ends of blocks, which shows an overrun, under WINEDEBUG=warn+heap alone.
#pragma once

#include <algorithm>
#include <windows.h>

/// Whether no heap of this process has a block that was written to past its end or after it was freed.
inline bool HeapsAreSound()
{
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(64, heaps);
    return std::all_of(heaps, heaps + count, [](HANDLE heap) { return HeapValidate(heap, 0, nullptr); });
}
