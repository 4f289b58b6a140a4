#include "import_hook.h"

#include <cstring>

namespace {

// Returns the entry of an import in the table through which the module calls it, or null if there is none.
void** FindIatEntry(HMODULE module, const char* name)
{
    auto* const base = reinterpret_cast<char*>(module);
    const auto& dosHeader = *reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dosHeader.e_lfanew);
    const auto& imports = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (imports.VirtualAddress == 0) {
        return nullptr;
    }
    const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
    for (; library->Name != 0; ++library) {
        const auto* names = reinterpret_cast<const ULONGLONG*>(base + library->OriginalFirstThunk);
        auto* entries = reinterpret_cast<void**>(base + library->FirstThunk);
        for (; *names != 0; ++names, ++entries) {
            // The name follows a hint of two bytes.
            if (!IMAGE_SNAP_BY_ORDINAL64(*names) && std::strcmp(base + *names + sizeof(WORD), name) == 0) {
                return entries;
            }
        }
    }
    return nullptr;
}

bool PatchIatEntry(void** entry, void* function)
{
    DWORD protection = 0;
    if (!VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &protection)) {
        return false;
    }
    *entry = function;
    VirtualProtect(entry, sizeof *entry, protection, &protection);
    return true;
}

} // namespace

bool ImportHook::Install(HMODULE module, const char* name, void* replacement)
{
    void** const entry = FindIatEntry(module, name);
    if (!entry) {
        return false;
    }
    void* const original = *entry;
    if (!PatchIatEntry(entry, replacement)) {
        return false;
    }
    m_entry = entry;
    m_original = original;
    m_replacement = replacement;
    return true;
}

ImportHook::~ImportHook()
{
    // Leave it alone if somebody else has redirected it in the meantime.
    if (m_entry && *m_entry == m_replacement) {
        PatchIatEntry(m_entry, m_original);
    }
}
