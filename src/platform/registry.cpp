#include "platform/registry.h"

#include <cwchar>

namespace product_services {

RegistryKey OpenRegistryKey(HKEY root, const std::wstring& path)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &key) != ERROR_SUCCESS) {
        return nullptr;
    }
    return RegistryKey(key);
}

std::optional<std::wstring> ReadRegistryText(HKEY key, const wchar_t* name)
{
    std::wstring text;
    // An installer may write a longer value between asking for the size and reading.
    for (LSTATUS status = ERROR_MORE_DATA; status == ERROR_MORE_DATA;) {
        DWORD bytes = 0;
        if (RegGetValueW(key, nullptr, name, RRF_RT_REG_SZ, nullptr, nullptr, &bytes) != ERROR_SUCCESS) {
            return std::nullopt;
        }
        text.resize(bytes / sizeof(wchar_t) + 1);
        bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        status = RegGetValueW(key, nullptr, name, RRF_RT_REG_SZ, nullptr, text.data(), &bytes);
        if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) {
            return std::nullopt;
        }
    }
    // The text may end before its size, and of a value with an odd size no unit need be zero.
    text.resize(std::wcslen(text.c_str()));
    return text;
}

} // namespace product_services
