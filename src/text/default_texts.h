#pragma once

#include "text/text_table.h"

#include <cstddef>

namespace product_services {

inline constexpr std::size_t DefaultTextCount = 88;

/// Sets ids 0 to 87 of `table` to the built-in English texts.
void FillDefaultTexts(TextTable& table);

} // namespace product_services
