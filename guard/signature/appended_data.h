// Data that was appended to a signed program.
#pragma once

#include <windows.h>

namespace product_services_guard {

/// Whether a signed program (PE) holds data that its signature does not cover: after the signature, or as
/// padding within it. Windows accepts such a file by default, and a program that reads its own file acts on
/// it. False for a file that is not a program or has no signature.
bool HasAppendedData(HANDLE file);

} // namespace product_services_guard
