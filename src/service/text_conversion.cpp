#include "service/text_conversion.h"

#include <algorithm>
#include <stdexcept>
#include <windows.h>

namespace product_services {
namespace {

bool IsSurrogate(wchar_t unit)
{
    return unit >= 0xD800 && unit <= 0xDFFF;
}

// A character outside the Basic Multilingual Plane is a surrogate pair, so it has more than one code unit.
void RejectSurrogates(const std::wstring& text)
{
    if (std::any_of(text.begin(), text.end(), IsSurrogate)) {
        throw std::range_error("bad conversion");
    }
}

} // namespace

std::wstring ToWide(const std::string& utf8)
{
    const int size = static_cast<int>(utf8.size());
    const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), size, nullptr, 0);
    if (length == 0 && size != 0) {
        throw std::range_error("bad conversion");
    }
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), size, wide.data(), length);
    RejectSurrogates(wide);
    return wide;
}

std::string ToUtf8(const std::wstring& wide)
{
    RejectSurrogates(wide);
    const int size = static_cast<int>(wide.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(), length, nullptr, nullptr);
    return utf8;
}

} // namespace product_services
