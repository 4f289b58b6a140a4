// The sample product family. A maker brings a folder like this one; PRODUCT_FAMILY_DIR names it to the build.
#pragma once

namespace product_family {

/// Base address of the product service, without a trailing slash: here the development service's.
inline constexpr wchar_t ServiceBaseAddress[] = L"https://localhost:18443";

/// Where installers write product records, below HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE.
inline constexpr wchar_t RecordRegistryPath[] = L"Software\\Example Maker\\Products";

/// Service API keys of the product lines with a background picture: the first has 332, the next three 333,
/// then 1077 and 335. Every other product has 343.
inline constexpr const wchar_t* KnownApiKeys[6]{
    L"draft20-7k2m9q-x4v8p1w", // Example Draft
    L"model20-3h6t5z-b9n2c8r", // Example Model
    L"model2p-8d4w1y-j7s3f6k", // Example Model Plus
    L"model2s-5g9v2x-m1q8z4t", // Example Model Studio
    L"layout2-6r3b7n-p5h9w2d", // Example Layout
    L"render2-1f8k4c-v6y3j9s", // Example Render
};

} // namespace product_family
