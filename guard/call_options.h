// What a host asks of a guarded call besides the call itself.
#pragma once

#include "product_services/guarded_calls.h"

#include <cstdint>

namespace product_services_guard {

/// Options and trusted hosts of a record, or else a sentence that says why they cannot be used.
struct CallOptions
{
    bool isQuiet = false;
    bool hasHostScaling = false;
    /// Null for any.
    const wchar_t* trustedHosts = nullptr;
    /// Null where there is none; good until the next record is read.
    const wchar_t* problem = nullptr;
};

/// Reads them of a record of any size; one that ends before trustedHosts has none. `known` is the sum of the
/// options that the call can do.
CallOptions ReadOptions(const GuardedCall& call, std::uint32_t known);

} // namespace product_services_guard
