#pragma once

#include "text/text_table.h"

#include <string>

namespace product_services {

/// "lang\DE\Vemo_DE.lang" for "DE": relative to the working directory of the host.
std::wstring LanguageFilePath(const std::wstring& languageCode);

/// Fills `table` from a language file: UTF-16 little-endian, a text a line, "|" for a line break, the first
/// line for id 0. Where the file cannot be opened for reading and writing, fills in the built-in texts.
void LoadLanguageFile(TextTable& table, const std::wstring& path);

} // namespace product_services
