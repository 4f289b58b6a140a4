// The installed product in whose name the benchmarks call.
#pragma once

#include "product_services/product_services.h"
#include "support/product_record_fixture.h"

struct BenchProduct
{
    BenchProduct() { records.Write(context.productName, context.productVersion, Key, Version); }

    static constexpr wchar_t ApiKey[] = L"draft20-7k2m9q-x4v8p1w";
    static constexpr wchar_t Key[] = L"DRAFT-2026-DEMO";
    static constexpr wchar_t Version[] = L"2026.1";

    ProductRecords records;
    wchar_t text[1024] = {};
    HostContext context{L"Example Draft", Version, ApiKey, 140, nullptr, 0, text, nullptr, nullptr, 0};
};
