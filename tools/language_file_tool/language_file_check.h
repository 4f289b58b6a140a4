#pragma once

#include "text_lines.h"

namespace language_file_tool {

/// What a user of the library would see wrong with `file`: sentences in UTF-8.
std::vector<std::string> CheckLanguageFile(const LanguageFile& file);

} // namespace language_file_tool
