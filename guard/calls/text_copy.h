// Texts on their way to a host.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace product_services_guard {

/// Copies a text into a buffer of `capacity` wchar_t, the terminating NUL included. Returns true if the text
/// had to be truncated, which is done at a whole character. A null buffer holds nothing.
bool CopyTruncated(wchar_t* buffer, std::size_t capacity, std::wstring_view text);

/// Converts UTF-8 that may be damaged, with replacement characters in place of the damage.
std::wstring FromUtf8(std::string_view utf8);

} // namespace product_services_guard
