#pragma once

#include <cstdint>
#include <string>

namespace product_services {

/// Returns the two-letter code of a language id. Unknown ids map to "US", which is not the code of English
/// ("EN").
std::wstring LanguageCodeFromId(std::int32_t languageId);

} // namespace product_services
