// Replaces a function that a module imports.
#pragma once

#include <windows.h>

/// Redirects one import of a module during its lifetime. The module must stay loaded until the destructor has
/// restored the original function.
class ImportHook
{
public:
    constexpr ImportHook() = default;
    ~ImportHook();

    ImportHook(const ImportHook&) = delete;
    ImportHook& operator=(const ImportHook&) = delete;

    /// Redirects the import `name` to `replacement`. Returns false if the module has no such import or its
    /// table cannot be changed.
    bool Install(HMODULE module, const char* name, void* replacement);

private:
    void** m_entry = nullptr;
    void* m_original = nullptr;
    void* m_replacement = nullptr;
};
