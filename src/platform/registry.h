#pragma once

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <windows.h>

namespace product_services {

struct CloseRegistryKey
{
    void operator()(HKEY key) const { RegCloseKey(key); }
};
using RegistryKey = std::unique_ptr<std::remove_pointer_t<HKEY>, CloseRegistryKey>;

/// Opens a key for reading in the 64-bit view; null where there is none.
RegistryKey OpenRegistryKey(HKEY root, const std::wstring& path);

/// A text value as RegGetValueW gives it, always terminated; nothing where it is missing or no text.
std::optional<std::wstring> ReadRegistryText(HKEY key, const wchar_t* name);

} // namespace product_services
