// The structure of a guarded call. Hosts may have been built for a newer or an older version of it.
#pragma once

#include "product_services/guarded_calls.h"

#include <cstdint>
#include <string>

namespace product_services_guard {

/// Copies the members that the host's structure has. The others, and a member that is not completely within
/// its size, are zero.
GuardedCallParams ReadParams(const GuardedCallParams& hostParams);

/// Returns a message about the first member whose value is invalid, or an empty text if all are valid.
/// `allowedOptions` are the flags that the call supports.
std::wstring FindInvalidParameter(const GuardedCallParams& params, std::uint32_t allowedOptions);

/// Writes the outcome into the members that the host's structure has.
void WriteOutcome(GuardedCallParams& hostParams, std::uint32_t resultCode, std::wstring_view text);

} // namespace product_services_guard
