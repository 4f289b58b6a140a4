// The delay of an update check after the start of a host.
#pragma once

#include <cstdint>

namespace product_services_guard {

/// Computes what GetStartCheckDelay returns.
std::uint32_t ComputeStartCheckDelayMs();

} // namespace product_services_guard
