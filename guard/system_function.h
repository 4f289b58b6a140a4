// Functions of Windows' libraries that few hosts need.
#pragma once

#include <windows.h>

namespace product_services_guard {

/// A function of a library in the system's folder; an import would also look beside the program. The library
/// stays loaded, since its threads may outlive a call. Null where there is none.
template <typename Function>
Function* FindSystemFunction(const wchar_t* library, const char* name)
{
    const HMODULE module = LoadLibraryExW(library, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    void* const found = module ? reinterpret_cast<void*>(GetProcAddress(module, name)) : nullptr;
    return reinterpret_cast<Function*>(found);
}

} // namespace product_services_guard

#define SYSTEM_FUNCTION(library, name)                                                                       \
    product_services_guard::FindSystemFunction<decltype(name)>(library, #name)
