#define _SILENCE_CXX17_CODECVT_HEADER_DEPRECATION_WARNING

#include "service/text_conversion.h"

#include <codecvt>
#include <locale>
#include <stdexcept>

namespace product_services {
namespace {

using Converter = std::wstring_convert<std::codecvt_utf8<wchar_t>>;

// The text of the converter's own error differs between standard libraries.
template <typename Convert>
auto WithOneError(Convert convert)
{
    try {
        return convert();
    } catch (const std::range_error&) {
        throw std::range_error("bad conversion");
    }
}

} // namespace

std::wstring ToWide(const std::string& utf8)
{
    return WithOneError([&] { return Converter().from_bytes(utf8); });
}

std::string ToUtf8(const std::wstring& wide)
{
    return WithOneError([&] { return Converter().to_bytes(wide); });
}

} // namespace product_services
