#include "calls/text_copy.h"

#include <algorithm>
#include <windows.h>

namespace product_services_guard {

bool CopyTruncated(wchar_t* buffer, std::size_t capacity, std::wstring_view text)
{
    if (!buffer || capacity == 0) {
        return !text.empty();
    }
    std::size_t length = std::min(text.size(), capacity - 1);
    if (length > 0 && length < text.size() && IS_SURROGATE_PAIR(text[length - 1], text[length])) {
        --length;
    }
    text.copy(buffer, length);
    buffer[length] = L'\0';
    return length < text.size();
}

std::wstring FromUtf8(std::string_view utf8)
{
    // A UTF-8 text never has fewer bytes than its UTF-16 form has code units.
    std::wstring text(utf8.size(), L'\0');
    const int size = static_cast<int>(utf8.size());
    text.resize(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, text.data(), size)));
    return text;
}

} // namespace product_services_guard
