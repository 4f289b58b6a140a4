#pragma once

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <windows.h>

namespace product_services {

struct RegistryKeyDeleter
{
    void operator()(HKEY key) const { RegCloseKey(key); }
};
using RegistryKey = std::unique_ptr<std::remove_pointer_t<HKEY>, RegistryKeyDeleter>;

/// Opens a key for reading in the 64-bit view. Null if it does not exist.
RegistryKey OpenRegistryKey(HKEY root, const std::wstring& path);

/// Reads a REG_SZ value up to its first NUL. Returns nullopt if the value is missing or has another type.
std::optional<std::wstring> ReadRegistryText(HKEY key, const wchar_t* name);

} // namespace product_services
