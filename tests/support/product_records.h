// Product records of the tests' family, as an installer would write them.
#pragma once

#include "product_family.h"

#include <string>
#include <windows.h>

/// Writes values of products, each "name\version", and removes all records of the family at the end.
struct ProductRecords
{
    ProductRecords() { RemoveAll(); }
    ~ProductRecords() { RemoveAll(); }

    static std::wstring Path(const std::wstring& product)
    {
        return std::wstring(product_family::RecordRegistryPath) + L'\\' + product;
    }

    /// Writes the units of `data` without a zero after them.
    static void Write(
        const std::wstring& product, const wchar_t* name, const std::wstring& data, DWORD type = REG_SZ,
        HKEY root = HKEY_CURRENT_USER)
    {
        const auto size = static_cast<DWORD>(data.size() * sizeof(wchar_t));
        RegSetKeyValueW(root, Path(product).c_str(), name, type, data.data(), size);
    }

    static void RemoveAll()
    {
        RegDeleteTreeW(HKEY_CURRENT_USER, product_family::RecordRegistryPath);
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, product_family::RecordRegistryPath);
    }
};
