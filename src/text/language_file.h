#pragma once

#include "text/text_table.h"

#include <string>

namespace product_services {

/// Returns a path such as "lang\DE\Vemo_DE.lang", relative to the host's working directory.
std::wstring LanguageFilePath(const std::wstring& languageCode);

/// Fills `table` from a language file. The file is UTF-16 little-endian with one text in each line; the first
/// line has id 0, and "|" stands for a line break. If the file cannot be opened for reading and writing, the
/// built-in texts are used.
void LoadLanguageFile(TextTable& table, const std::wstring& path);

} // namespace product_services
