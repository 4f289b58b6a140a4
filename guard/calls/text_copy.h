// Copies and converts texts for hosts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace product_services_guard {

/// Copies a text into a buffer of `capacity` wchar_t, including the terminating NUL. Returns true if the text
/// was truncated, which never splits a surrogate pair. A null buffer has no capacity.
bool CopyTruncated(wchar_t* buffer, std::size_t capacity, std::wstring_view text);

/// Converts UTF-8 and replaces invalid bytes by replacement characters.
std::wstring FromUtf8(std::string_view utf8);

} // namespace product_services_guard
