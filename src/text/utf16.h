#pragma once

#include <string>
#include <string_view>

namespace product_services {

/// Decodes UTF-16 little-endian up to the first incomplete code unit or unpaired surrogate. A byte-order mark
/// is treated like any other character.
std::wstring DecodeUtf16(std::string_view bytes);

} // namespace product_services
