// Starts a file that has been verified.
#pragma once

#include "signature/locked_file.h"
#include "signature/publisher_result.h"

namespace product_services_guard {

/// Starts a program (.exe) or a Windows Installer package (.msi). `arguments` may be null. Returns TRUSTED,
/// or NOT_STARTED with the reason. Throws std::bad_alloc.
PublisherResult StartFile(const LockedFile& file, const wchar_t* arguments);

} // namespace product_services_guard
