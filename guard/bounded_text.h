// The one place that writes into a host's buffer.
#pragma once

#include <cstddef>

namespace product_services_guard {

/// Copies a text into a buffer of `capacity` units, the terminating NUL included. Returns whether it had to
/// be cut, which is done at a whole character. A null buffer has no room.
bool CopyBounded(wchar_t* buffer, std::size_t capacity, const wchar_t* text);

} // namespace product_services_guard
