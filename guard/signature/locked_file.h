// A file that nobody can change while it is verified and started.
#pragma once

#include "unique_handle.h"

#include <string>

namespace product_services_guard {

/// An open file. If it could not be opened, `handle` is null and `error` says why.
struct LockedFile
{
    UniqueHandle handle;
    /// The full path that was opened.
    std::wstring path;
    /// The path without junctions and symbolic links, which could be changed. Empty if it cannot be
    /// determined.
    std::wstring finalPath;
    std::wstring error;
};

/// Opens a file for reading so that nobody else can write to it, replace it or delete it until it is closed.
/// Fails if somebody has already opened it for that.
LockedFile LockFile(const wchar_t* path);

} // namespace product_services_guard
