#pragma once

namespace product_services {

/// The values of the maker's product_family.json. No pointer is null.
struct ProductFamily
{
    const wchar_t* packageId;
    const wchar_t* serviceBaseAddress;
    const wchar_t* recordRegistryPath;
    const wchar_t* policyRegistryPath;
    const wchar_t* knownApiKeys[6];
};

/// The product family that this library was built for.
extern const ProductFamily Family;

} // namespace product_services
