// The policy with which an administrator can disable calls.
#pragma once

#include "product_services/guarded_calls.h"

namespace product_services_guard {

/// Returns true if a call is disabled by the computer's policy, or by the user's if the computer has none.
bool IsDisabledByPolicy(ProductServicesDisabledCalls call);

} // namespace product_services_guard
