#include "text/utf16.h"

namespace product_services {
namespace {

bool IsHighSurrogate(wchar_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(wchar_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

} // namespace

// The standard library's UTF-16 decoder rejects all surrogate pairs if wchar_t has 16 bits.
std::wstring DecodeUtf16(std::string_view bytes)
{
    std::wstring characters;
    characters.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i]);
        const auto high = static_cast<unsigned char>(bytes[i + 1]);
        characters.push_back(static_cast<wchar_t>(low | high << 8));
    }
    for (std::size_t i = 0; i < characters.size(); ++i) {
        const bool isPair =
            IsHighSurrogate(characters[i]) && i + 1 < characters.size() && IsLowSurrogate(characters[i + 1]);
        if (isPair) {
            ++i;
        } else if (IsHighSurrogate(characters[i]) || IsLowSurrogate(characters[i])) {
            characters.resize(i);
        }
    }
    return characters;
}

} // namespace product_services
