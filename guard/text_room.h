// Where the library may write a text of any length.
#pragma once

#include <cstddef>

namespace product_services_guard {

constexpr std::size_t LeastRoom = 0x100000;

/// Room for the longest text that a call can report, of LeastRoom units or more, which begins empty; null
/// where there is not enough memory. It is made at the first call and kept. The pages behind it are reserved
/// and never committed: what would be written past the end ends the process instead.
wchar_t* RoomForText();

} // namespace product_services_guard
