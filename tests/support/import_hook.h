// Puts a function in the place of one that a module imports.
#pragma once

#include <windows.h>

namespace product_services_guard {

/// An import of a module that leads elsewhere; the original function comes back when this is destroyed. The
/// module has to be loaded until then.
class ImportHook
{
public:
    constexpr ImportHook() = default;
    ~ImportHook();

    ImportHook(const ImportHook&) = delete;
    ImportHook& operator=(const ImportHook&) = delete;

    /// Leads the import `name` to `replacement`. Returns false if the module has no such import or Windows
    /// refuses.
    bool Install(HMODULE module, const char* name, void* replacement);

    /// The function that the import led to before; null if nothing was installed.
    void* Original() const { return m_original; }

private:
    void** m_entry = nullptr;
    void* m_original = nullptr;
    void* m_replacement = nullptr;
};

} // namespace product_services_guard
