// Case conversion of ASCII letters.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace product_services_guard {

constexpr wchar_t ToLowerAscii(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

inline std::wstring ToLowerAscii(std::wstring text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](wchar_t c) { return ToLowerAscii(c); });
    return text;
}

inline bool EqualsIgnoreAsciiCase(std::wstring_view a, std::wstring_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](wchar_t x, wchar_t y) {
        return ToLowerAscii(x) == ToLowerAscii(y);
    });
}

} // namespace product_services_guard
