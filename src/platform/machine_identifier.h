#pragma once

#include <string>

namespace product_services {

/// Returns 64 lower-case hexadecimal digits that identify this computer to the service. They are the same in
/// every process, different for each product family, and do not reveal Windows' own identifier of the
/// computer. Empty only if Windows cannot compute the hash.
std::wstring MachineIdentifier();

} // namespace product_services
