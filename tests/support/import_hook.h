// Puts a test's function in the place of one that a module imports.
#pragma once

#include <cstring>
#include <windows.h>

class ImportHook
{
public:
    /// `replacement` takes the place of the import `name` of `module` while the hook lives.
    template <typename Function>
    ImportHook(HMODULE module, const char* name, Function* replacement) : m_slot(Find(module, name))
    {
        m_former = Set(reinterpret_cast<ULONGLONG>(replacement));
    }
    ~ImportHook() { Set(m_former); }

    ImportHook(const ImportHook&) = delete;
    ImportHook& operator=(const ImportHook&) = delete;

private:
    static ULONGLONG* Find(HMODULE module, const char* name)
    {
        auto* base = reinterpret_cast<char*>(module);
        const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(
            base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
        const auto& imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
        for (; library->Name; ++library) {
            const auto* names = reinterpret_cast<const ULONGLONG*>(base + library->OriginalFirstThunk);
            for (std::size_t i = 0; names[i]; ++i) {
                const char* imported = base + names[i] + sizeof(WORD);
                if (!IMAGE_SNAP_BY_ORDINAL64(names[i]) && !std::strcmp(imported, name)) {
                    return reinterpret_cast<ULONGLONG*>(base + library->FirstThunk) + i;
                }
            }
        }
        return nullptr;
    }

    ULONGLONG Set(ULONGLONG function)
    {
        DWORD protection = 0;
        VirtualProtect(m_slot, sizeof *m_slot, PAGE_READWRITE, &protection);
        const ULONGLONG former = *m_slot;
        *m_slot = function;
        VirtualProtect(m_slot, sizeof *m_slot, protection, &protection);
        return former;
    }

    ULONGLONG* m_slot;
    ULONGLONG m_former;
};
