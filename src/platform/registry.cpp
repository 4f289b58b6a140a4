#include "platform/registry.h"

#include <algorithm>
#include <cwchar>

namespace product_services {
namespace {

// Long enough for the texts of a record in one query: under Wine, each query is a request to another process.
constexpr std::size_t InitialBufferLength = 256;

} // namespace

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
    std::wstring text(InitialBufferLength, L'\0');
    // Grow the buffer until the value fits, since an installer may write a longer one in the meantime.
    LSTATUS status = ERROR_MORE_DATA;
    while (status == ERROR_MORE_DATA) {
        auto bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        // REG_EXPAND_SZ is not accepted.
        status = RegGetValueW(key, nullptr, name, RRF_RT_REG_SZ | RRF_NOEXPAND, nullptr, text.data(), &bytes);
        if (status == ERROR_MORE_DATA) {
            text.resize((std::max)(2 * text.size(), bytes / sizeof(wchar_t) + 1));
        }
    }
    if (status != ERROR_SUCCESS) {
        return std::nullopt;
    }
    // The value may contain a NUL before its end, and a value of odd size may lack a complete terminating
    // NUL.
    text.resize(std::wcslen(text.c_str()));
    return text;
}

} // namespace product_services
