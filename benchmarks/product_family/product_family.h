// The benchmarks' product family, whose service is nginx on loopback over HTTP or HTTPS.
#pragma once

namespace product_family {

inline constexpr wchar_t ServiceBaseAddress[] =
#ifdef PRODUCT_FAMILY_WITHOUT_TLS
    L"http://127.0.0.1:18451";
#else
    L"https://127.0.0.1:18452";
#endif

inline constexpr wchar_t RecordRegistryPath[] = L"Software\\ProductServicesBenchmarks\\Products";

inline constexpr const wchar_t* KnownApiKeys[6]{L"known-1", L"known-2", L"known-3",
                                                L"known-4", L"known-5", L"known-6"};

} // namespace product_family
