// Puts a test's function in the place of one that a module imports.
#pragma once

#include <cstring>
#include <windows.h>

/// `replacement` takes the place of the import `name` of `module` until that is unloaded.
template <typename Function>
void ReplaceImport(HMODULE module, const char* name, Function* replacement)
{
    auto* base = reinterpret_cast<char*>(module);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(
        base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const auto& imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
    for (; library->Name; ++library) {
        const auto* names = reinterpret_cast<const ULONGLONG*>(base + library->OriginalFirstThunk);
        auto* functions = reinterpret_cast<ULONGLONG*>(base + library->FirstThunk);
        for (; *names; ++names, ++functions) {
            if (!IMAGE_SNAP_BY_ORDINAL64(*names) && !std::strcmp(base + *names + sizeof(WORD), name)) {
                DWORD protection = 0;
                VirtualProtect(functions, sizeof *functions, PAGE_READWRITE, &protection);
                *functions = reinterpret_cast<ULONGLONG>(replacement);
            }
        }
    }
}
