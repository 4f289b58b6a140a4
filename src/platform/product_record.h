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

/// Finds the record that the installer of a product wrote: <RecordRegistryPath>\<name>\<version>, for this
/// user or else for the machine.
ProductRecordLocation FindProductRecord(const std::wstring& productName, const std::wstring& productVersion);

/// The stored record of the installed product: its key and installed version.
class ProductRecord
{
public:
    explicit ProductRecord(ProductRecordLocation location);

    /// Reads the members anew; false where the record is not there.
    bool Load();

    /// The member as last loaded: "key" or "version". Empty where it is missing or no text.
    std::wstring Read(const std::wstring& member) const;

private:
    ProductRecordLocation m_location;
    std::wstring m_key;
    std::wstring m_version;
};

} // namespace product_services
