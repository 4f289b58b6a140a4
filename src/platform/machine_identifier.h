#pragma once

#include <string>

namespace product_services {

/// Identifies this computer to the service: 64 lower-case hexadecimal digits, the same in every process,
/// different for each product family, and not the identifier that Windows gives the machine. Empty only if
/// Windows cannot compute the hash.
std::wstring MachineIdentifier();

} // namespace product_services
