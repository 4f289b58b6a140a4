// Detects data that was appended to a signed program.
#pragma once

#include <windows.h>

namespace product_services_guard {

/// Returns true if a signed program (PE) has data that its signature does not cover: after the signature, or
/// as padding within it. Windows accepts such a file by default, but a program that reads its own file may
/// act on the data. False if the file is not a program or has no signature.
bool HasAppendedData(HANDLE file);

} // namespace product_services_guard
