#pragma once

#include <string>

namespace product_services {

/// Identifies this computer to the service: 64 lower-case hexadecimal digits, the same in every process and
/// unlike the identifier that Windows gives the machine. Empty only where Windows cannot hash.
std::wstring MachineIdentifier();

} // namespace product_services
