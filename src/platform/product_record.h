#pragma once

#include <string>
#include <windows.h>

namespace product_services {

/// Where the record of an installed product is stored: a registry key, or nowhere for an unknown product.
struct ProductRecordLocation
{
    HKEY root = nullptr;
    std::wstring path;

    bool IsEmpty() const { return path.empty(); }
};

/// Finds the record that the installer of a product wrote to <RecordRegistryPath>\<name>\<version>, in
/// HKEY_CURRENT_USER or else in HKEY_LOCAL_MACHINE.
ProductRecordLocation FindProductRecord(const std::wstring& productName, const std::wstring& productVersion);

/// The stored record of the installed product: its key and installed version.
class ProductRecord
{
public:
    explicit ProductRecord(ProductRecordLocation location);

    /// Reads the members again. Returns false if the record does not exist.
    bool Load();

    /// Returns the member "key" or "version" as it was last loaded. Empty if it is missing or not REG_SZ.
    std::wstring Read(const std::wstring& member) const;

private:
    ProductRecordLocation m_location;
    std::wstring m_key;
    std::wstring m_version;
};

} // namespace product_services
