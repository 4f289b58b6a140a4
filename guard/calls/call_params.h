// The structure of a guarded call, which may be a newer or an older host's.
#pragma once

#include "product_services/guarded_calls.h"

#include <string>

namespace product_services_guard {

/// A copy of the members that the host's structure has, with zeroes in place of the others and of a member
/// that its size cuts through. A size of 0 gives nothing at all.
GuardedCallParams ReadParams(const GuardedCallParams& hostParams);

/// Says which member cannot be used; empty if all can. `allowedOptions` are the flags that the call can
/// honour.
std::wstring FindInvalidParameter(const GuardedCallParams& params, std::uint32_t allowedOptions);

/// Writes the outcome into the members that the host's structure has.
void WriteOutcome(GuardedCallParams& hostParams, std::uint32_t resultCode, std::wstring_view text);

} // namespace product_services_guard
