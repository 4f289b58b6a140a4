#include "signature/locked_file.h"

#include <string_view>

namespace product_services_guard {
namespace {

// Returns the full path in the form that Windows accepts at any length, or an empty text if it is not a path.
std::wstring ToExtendedLengthPath(const wchar_t* path)
{
    if (std::wstring_view(path).starts_with(LR"(\\?\)")) {
        return path;
    }
    std::wstring fullPath(GetFullPathNameW(path, 0, nullptr, nullptr), L'\0');
    fullPath.resize(GetFullPathNameW(path, static_cast<DWORD>(fullPath.size()), fullPath.data(), nullptr));
    if (fullPath.size() < MAX_PATH || fullPath.starts_with(LR"(\\.\)")) {
        return fullPath;
    }
    return fullPath.starts_with(LR"(\\)") ? LR"(\\?\UNC)" + fullPath.substr(1) : LR"(\\?\)" + fullPath;
}

std::wstring OpenErrorText(const std::wstring& path, DWORD error)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        return L"The path refers to a folder.";
    }
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return L"The file was not found.";
    case ERROR_SHARING_VIOLATION:
        return L"The file is in use: another program may write to it.";
    case ERROR_ACCESS_DENIED:
        return L"Access to the file was denied.";
    default:
        return L"The file could not be opened (Windows error " + std::to_wstring(error) + L").";
    }
}

std::wstring GetFinalPath(HANDLE file)
{
    std::wstring path(GetFinalPathNameByHandleW(file, nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
    const DWORD length =
        GetFinalPathNameByHandleW(file, path.data(), static_cast<DWORD>(path.size()), FILE_NAME_NORMALIZED);
    path.resize(length < path.size() ? length : 0);
    return path;
}

} // namespace

LockedFile LockFile(const wchar_t* path)
{
    const std::wstring fullPath = ToExtendedLengthPath(path);
    const HANDLE handle = CreateFileW(
        fullPath.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
        SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return {nullptr, {}, {}, OpenErrorText(fullPath, GetLastError())};
    }
    UniqueHandle owner(handle);
    if (GetFileType(handle) != FILE_TYPE_DISK) {
        return {nullptr, {}, {}, L"The path refers to a device."};
    }
    return {std::move(owner), fullPath, GetFinalPath(handle), {}};
}

} // namespace product_services_guard
