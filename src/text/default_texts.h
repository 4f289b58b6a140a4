#pragma once

#include "text/text_table.h"

namespace product_services {

inline constexpr TextId DefaultTextCount = 88;

/// Sets ids 0 to 87 of `table` to the built-in English texts.
void FillDefaultTexts(TextTable& table);

} // namespace product_services
