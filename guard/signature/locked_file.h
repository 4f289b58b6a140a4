// A file that nobody can change while it is verified and started.
#pragma once

#include <memory>
#include <string>
#include <windows.h>

namespace product_services_guard {

struct HandleDeleter
{
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using FileHandle = std::unique_ptr<void, HandleDeleter>;

/// Null `handle` if the file could not be opened; `error` then says why.
struct LockedFile
{
    FileHandle handle;
    /// The full path that was opened.
    std::wstring path;
    /// Where the file really is: there is no junction or symbolic link in it that could be changed to lead
    /// elsewhere. Empty if Windows cannot tell.
    std::wstring finalPath;
    std::wstring error;
};

/// Opens a file for reading so that nobody else can write to it, replace it or delete it until it is closed.
/// Fails if somebody already may.
LockedFile LockFile(const wchar_t* path);

} // namespace product_services_guard
