// Product records of the tests' family, as an installer would write them.
#pragma once

#include "product_family.h"

#include <string>
#include <windows.h>

/// Writes values of any type into the key of a product and removes all records of the family at the end.
class ProductRecords
{
public:
    ProductRecords() { RemoveAll(); }
    ~ProductRecords() { RemoveAll(); }

    void Write(
        const std::wstring& product, const std::wstring& version, const std::wstring& key,
        const std::wstring& installed, HKEY root = HKEY_CURRENT_USER)
    {
        WriteValue(product, version, L"key", key, REG_SZ, root);
        WriteValue(product, version, L"version", installed, REG_SZ, root);
    }

    /// Writes the units of `data` without a zero after them.
    void WriteValue(
        const std::wstring& product, const std::wstring& version, const wchar_t* name,
        const std::wstring& data, DWORD type = REG_SZ, HKEY root = HKEY_CURRENT_USER)
    {
        RegSetKeyValueW(
            root, Path(product, version).c_str(), name, type, data.data(),
            static_cast<DWORD>(data.size() * sizeof(wchar_t)));
    }

    void Remove(const std::wstring& product, const std::wstring& version, const wchar_t* name)
    {
        RegDeleteKeyValueW(HKEY_CURRENT_USER, Path(product, version).c_str(), name);
    }

private:
    static std::wstring Path(const std::wstring& product, const std::wstring& version)
    {
        return std::wstring(product_family::RecordRegistryPath) + L'\\' + product + L'\\' + version;
    }

    static void RemoveAll()
    {
        for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
            RegDeleteTreeW(root, product_family::RecordRegistryPath);
        }
    }
};
