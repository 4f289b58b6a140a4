#include "text_room.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <windows.h>

namespace product_services_guard {
namespace {

constexpr std::size_t LeastBytes = LeastRoom * sizeof(wchar_t);
constexpr std::size_t GuardBytes = 0x10000;

std::size_t FileSize(const wchar_t* path)
{
    WIN32_FILE_ATTRIBUTE_DATA data{};
    GetFileAttributesExW(path, GetFileExInfoStandard, &data);
    return static_cast<std::size_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
}

// The library's codes are its own: whatever folder there is may hold its file, as in lang\DE\Vemo_DE.lang.
std::size_t LargestLanguageFile()
{
    std::size_t largest = 0;
    WIN32_FIND_DATAW folder{};
    const HANDLE search = FindFirstFileW(L"lang\\*", &folder);
    if (search == INVALID_HANDLE_VALUE) {
        return largest;
    }
    do {
        wchar_t path[2 * MAX_PATH + 20];
        const wchar_t* code = folder.cFileName;
        std::swprintf(path, std::size(path), L"lang\\%ls\\Vemo_%ls.lang", code, code);
        largest = std::max(largest, FileSize(path));
    } while (FindNextFileW(search, &folder));
    FindClose(search);
    return largest;
}

// An address has at most the 16,384 bytes that libcurl hands over at a time, and a message is shorter than
// its language file, which the library reads at the first call. Pages that nobody writes to cost no memory.
wchar_t* MakeRoom()
{
    const std::size_t bytes = std::max(LeastBytes, LargestLanguageFile() + sizeof(wchar_t));
    void* const place = VirtualAlloc(nullptr, bytes + GuardBytes, MEM_RESERVE, PAGE_NOACCESS);
    if (place && !VirtualAlloc(place, bytes, MEM_COMMIT, PAGE_READWRITE)) {
        VirtualFree(place, 0, MEM_RELEASE);
        return nullptr;
    }
    return static_cast<wchar_t*>(place);
}

// Goes with this DLL.
struct Room
{
    ~Room() { VirtualFree(place, 0, MEM_RELEASE); }

    wchar_t* place = nullptr;
};
Room room;

} // namespace

wchar_t* RoomForText()
{
    if (!room.place) {
        room.place = MakeRoom();
    }
    if (room.place) {
        *room.place = L'\0';
    }
    return room.place;
}

} // namespace product_services_guard
