// Where the library may write a text of any length.
#pragma once

#include <cstddef>

namespace product_services_guard {

/// Room for the longest text that a call can report. The pages behind it are reserved and never committed:
/// what would be written past the end ends the process instead.
class TextRoom
{
public:
    static constexpr std::size_t LeastUnits = 8 * 1024 * 1024;

    TextRoom();
    ~TextRoom();

    TextRoom(const TextRoom&) = delete;
    TextRoom& operator=(const TextRoom&) = delete;

    /// Zeroes at first; null where there is not enough memory.
    wchar_t* Text() const { return m_text; }

private:
    wchar_t* m_text;
};

} // namespace product_services_guard
