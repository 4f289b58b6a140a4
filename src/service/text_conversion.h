#pragma once

#include <string>

namespace product_services {

/// Convert UTF-8 to wide text and back; each wide character is one code unit. Both throw
/// std::range_error("bad conversion") if the text is malformed or has a character outside the Basic
/// Multilingual Plane.
std::wstring ToWide(const std::string& utf8);
std::string ToUtf8(const std::wstring& wide);

} // namespace product_services
