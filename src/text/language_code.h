#pragma once

#include <cstdint>
#include <string>

namespace product_services {

/// The two-letter code of a host's language id; "US", which is not English "EN", for an id without a
/// language.
std::wstring LanguageCodeFromId(std::int32_t languageId);

} // namespace product_services
