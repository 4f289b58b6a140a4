// When a host checks after its start.
#pragma once

#include <cstdint>

namespace product_services_guard {

/// As GetStartCheckDelay.
std::uint32_t StartCheckDelayMs();

} // namespace product_services_guard
