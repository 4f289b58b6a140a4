#include "platform/registry.h"

#include <algorithm>
#include <cwchar>

namespace product_services {
namespace {

// Room for the texts of a record: each question to the registry is a trip to another process under Wine.
constexpr std::size_t UsualUnits = 256;

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
    std::wstring text(UsualUnits, L'\0');
    // A longer value asks for more room, and an installer may write a still longer one meanwhile.
    LSTATUS status = ERROR_MORE_DATA;
    while (status == ERROR_MORE_DATA) {
        auto bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        // A text with variables to be expanded is no text.
        status = RegGetValueW(key, nullptr, name, RRF_RT_REG_SZ | RRF_NOEXPAND, nullptr, text.data(), &bytes);
        if (status == ERROR_MORE_DATA) {
            text.resize((std::max)(2 * text.size(), bytes / sizeof(wchar_t) + 1));
        }
    }
    if (status != ERROR_SUCCESS) {
        return std::nullopt;
    }
    // The text may end before its size, and of a value with an odd size no unit need be zero.
    text.resize(std::wcslen(text.c_str()));
    return text;
}

} // namespace product_services
