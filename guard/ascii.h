// Letters of ASCII in either case.
#pragma once

#include <algorithm>
#include <string_view>

namespace product_services_guard {

constexpr wchar_t LowerAscii(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

inline bool IsSameInAnyCase(std::wstring_view a, std::wstring_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](wchar_t x, wchar_t y) {
        return LowerAscii(x) == LowerAscii(y);
    });
}

} // namespace product_services_guard
