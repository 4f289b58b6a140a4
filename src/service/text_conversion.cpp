#include "service/text_conversion.h"

#include <algorithm>
#include <stdexcept>
#include <windows.h>

namespace product_services {
namespace {

bool IsHalfAPair(wchar_t unit)
{
    return unit >= 0xD800 && unit <= 0xDFFF;
}

// A character outside the basic plane takes two units, which are not one character each.
void RequireSingleUnits(const std::wstring& text)
{
    if (std::any_of(text.begin(), text.end(), IsHalfAPair)) {
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
    RequireSingleUnits(wide);
    return wide;
}

std::string ToUtf8(const std::wstring& wide)
{
    RequireSingleUnits(wide);
    const int size = static_cast<int>(wide.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(), length, nullptr, nullptr);
    return utf8;
}

} // namespace product_services
