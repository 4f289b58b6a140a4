#pragma once

#include <string>

namespace product_services {

/// UTF-8 to wide text and back, each wide unit one character. Both throw std::range_error("bad conversion")
/// on a text that is malformed or has a character outside the basic plane.
std::wstring ToWide(const std::string& utf8);
std::string ToUtf8(const std::wstring& wide);

} // namespace product_services
