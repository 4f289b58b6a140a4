// Product records of the tests' family, as an installer would write them.
#pragma once

#include "product_family.h"

#include <string>
#include <windows.h>

/// The registry key that has a subkey "name\version" for each product.
inline const std::wstring RecordPath = product_family::RecordRegistryPath;

/// Writes records of products, each given as "name\version". The destructor removes all of the user's
/// records.
struct ProductRecords
{
    ProductRecords() { RemoveAll(); }
    ~ProductRecords() { RemoveAll(); }

    static void Write(
        const std::wstring& product, const wchar_t* name, const std::wstring& text,
        HKEY root = HKEY_CURRENT_USER)
    {
        WriteBytes(product, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t), root);
    }

    /// Writes a value of any type and size, such as a careless installer might write.
    static void WriteBytes(
        const std::wstring& product, const wchar_t* name, DWORD type, const void* bytes, std::size_t size,
        HKEY root = HKEY_CURRENT_USER)
    {
        const std::wstring path = RecordPath + L'\\' + product;
        RegSetKeyValueW(root, path.c_str(), name, type, bytes, static_cast<DWORD>(size));
    }

    static void RemoveAll() { RegDeleteTreeW(HKEY_CURRENT_USER, RecordPath.c_str()); }
};

/// Replaces HKEY_LOCAL_MACHINE by an empty key below HKEY_CURRENT_USER during its lifetime.
class MachineRegistry
{
public:
    MachineRegistry()
    {
        RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str());
        RegCreateKeyW(HKEY_CURRENT_USER, m_path.c_str(), &m_key);
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_key);
    }

    ~MachineRegistry()
    {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegCloseKey(m_key);
        RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str());
    }

private:
    std::wstring m_path = RecordPath + L" machine";
    HKEY m_key = nullptr;
};
