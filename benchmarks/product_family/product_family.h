// The benchmarks' product family, whose service is nginx on loopback over HTTP or HTTPS.
#pragma once

namespace product_family {

inline constexpr wchar_t ServiceBaseAddress[] = BENCHMARK_SERVICE;

inline constexpr wchar_t RecordRegistryPath[] = L"Software\\ProductServicesBenchmarks\\Products";

inline constexpr const wchar_t* KnownApiKeys[6]{L"known-1", L"known-2", L"known-3",
                                                L"known-4", L"known-5", L"known-6"};

} // namespace product_family
