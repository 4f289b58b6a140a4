#pragma once

#include "files.h"

#include <vector>

namespace language_file_tool {

/// Texts in the order of their ids, as a language file has them: a line each, "|" for a line break.
using TextLines = std::vector<std::wstring>;

/// The built-in texts.
const TextLines& EnglishLines();

/// What the library takes from a language file.
struct LanguageFile
{
    TextLines lines;
    /// What ends the reading before the end of the file; empty where nothing does.
    std::string damage;
};

LanguageFile ReadLanguageFile(const Path& path);
void WriteLanguageFile(const Path& path, const TextLines& lines);

} // namespace language_file_tool
