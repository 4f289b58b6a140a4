#pragma once

#include <string>
#include <string_view>

namespace product_services {

/// The characters of UTF-16 little-endian `bytes` up to the first damage: half a code unit or half a
/// surrogate pair. A byte-order mark is a character like any other.
std::wstring DecodeUtf16(std::string_view bytes);

} // namespace product_services
