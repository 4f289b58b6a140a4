// The tests' product family: its service is a plain HTTP server in the test's own process.
#pragma once

namespace product_family {

inline constexpr wchar_t ServiceBaseAddress[] = L"http://127.0.0.1:18444";

inline constexpr wchar_t RecordRegistryPath[] = L"Software\\ProductServicesTests\\Products";

inline constexpr const wchar_t* KnownApiKeys[6]{
    L"known1a-111111-aaaaaaa", L"known2b-222222-bbbbbbb", L"known3c-333333-ccccccc",
    L"known4d-444444-ddddddd", L"known5e-555555-eeeeeee", L"known6f-666666-fffffff",
};

} // namespace product_family
