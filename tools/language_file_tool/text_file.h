#pragma once

#include "text_lines.h"

namespace language_file_tool {

/// The 88 texts as the UTF-8 file that translators edit: a comment and "12=Exit" for each.
std::string FormatTextFile(const TextLines& lines);

/// The texts of such a file. Throws std::runtime_error with a sentence that starts with `name` and the line.
TextLines ParseTextFile(std::string_view bytes, const std::string& name);

} // namespace language_file_tool
