// ProductServices.dll, found beside this DLL.
#pragma once

#include "product_services/product_services.h"

namespace product_services_guard {

/// The two exports, or else a sentence that says why there are none.
struct Library
{
    void (*checkForUpdates)(HostContext*) = nullptr;
    void (*upgrade)(HostContext*) = nullptr;
    const wchar_t* failure = nullptr;
};

/// Loads it at the first call that finds it; it then stays for the life of the process.
const Library& LoadProductServices();

} // namespace product_services_guard
