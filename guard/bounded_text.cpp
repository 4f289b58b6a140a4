#include "bounded_text.h"

#include <algorithm>
#include <cwchar>
#include <windows.h>

namespace product_services_guard {

bool CopyBounded(wchar_t* buffer, std::size_t capacity, const wchar_t* text)
{
    if (!buffer || capacity == 0) {
        return *text != L'\0';
    }
    const std::size_t length = std::wcslen(text);
    std::size_t kept = std::min(length, capacity - 1);
    if (kept > 0 && kept < length && IS_SURROGATE_PAIR(text[kept - 1], text[kept])) {
        --kept;
    }
    std::wmemcpy(buffer, text, kept);
    buffer[kept] = L'\0';
    return kept < length;
}

} // namespace product_services_guard
