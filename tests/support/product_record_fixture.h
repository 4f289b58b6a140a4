// Product records of the tests' family, as an installer would write them.
#pragma once

#include "product_family.h"

#include <cstdint>
#include <string>
#include <vector>
#include <windows.h>

/// Writes values of any type into the key of a product and removes all records of the family at the end.
class ProductRecords
{
public:
    ProductRecords() { RemoveAll(); }
    ~ProductRecords() { RemoveAll(); }

    ProductRecords(const ProductRecords&) = delete;
    ProductRecords& operator=(const ProductRecords&) = delete;

    void Write(
        const std::wstring& product, const std::wstring& version, const std::wstring& key,
        const std::wstring& installed, HKEY root = HKEY_CURRENT_USER)
    {
        WriteValue(product, version, L"key", REG_SZ, Bytes(key + L'\0'), root);
        WriteValue(product, version, L"version", REG_SZ, Bytes(installed + L'\0'), root);
    }

    void WriteValue(
        const std::wstring& product, const std::wstring& version, const wchar_t* name, DWORD type,
        const std::vector<std::uint8_t>& data, HKEY root = HKEY_CURRENT_USER)
    {
        HKEY key = nullptr;
        RegCreateKeyExW(
            root, Path(product, version).c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
        RegSetValueExW(key, name, 0, type, data.data(), static_cast<DWORD>(data.size()));
        RegCloseKey(key);
    }

    void Remove(const std::wstring& product, const std::wstring& version)
    {
        RegDeleteTreeW(HKEY_CURRENT_USER, Path(product, version).c_str());
    }

    static std::vector<std::uint8_t> Bytes(const std::wstring& text)
    {
        const auto* begin = reinterpret_cast<const std::uint8_t*>(text.data());
        return {begin, begin + text.size() * sizeof(wchar_t)};
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
