// Functions of Windows' libraries that are loaded at the first need.
#pragma once

#include <windows.h>

namespace product_services_guard {

/// A function of a library in the system folder; an import would also look beside the program. The library
/// stays loaded, because its threads may outlive a call. Null if there is none.
template <typename Function>
Function* LoadSystemFunction(const wchar_t* library, const char* name)
{
    const HMODULE module = LoadLibraryExW(library, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    void* const address = module ? reinterpret_cast<void*>(GetProcAddress(module, name)) : nullptr;
    return reinterpret_cast<Function*>(address);
}

} // namespace product_services_guard

#define LOAD_SYSTEM_FUNCTION(library, name)                                                                  \
    product_services_guard::LoadSystemFunction<decltype(name)>(library, #name)
