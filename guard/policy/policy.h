// What an administrator has disabled.
#pragma once

#include "product_services/guarded_calls.h"

namespace product_services_guard {

/// Whether the computer's policy, or the user's if the computer has none, disables a call.
bool IsDisabledByPolicy(ProductServicesDisabledCalls call);

} // namespace product_services_guard
