// Loads functions of Windows' libraries on demand.
#pragma once

#include <windows.h>

namespace product_services_guard {

/// Loads a function from a library in the system folder, while an import would also search the program's
/// folder. The library stays loaded, because its threads may outlive a call. Returns null if there is no such
/// function.
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
