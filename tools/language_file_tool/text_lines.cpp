#include "text_lines.h"

#include "text/default_texts.h"
#include "text/language_file.h"
#include "text/utf16.h"

#include <algorithm>

namespace language_file_tool {

using namespace product_services;

namespace {

TextLines LinesOf(TextTable table)
{
    TextLines lines(table.Count());
    for (std::size_t id = 0; id < lines.size(); ++id) {
        lines[id] = LookupText(table, static_cast<TextId>(id));
        std::replace(lines[id].begin(), lines[id].end(), L'\n', L'|');
    }
    return lines;
}

std::string Damage(const std::string& bytes)
{
    const std::size_t readable = 2 * DecodeUtf16(bytes).size();
    if (readable == bytes.size()) {
        return "";
    }
    return readable + 1 == bytes.size() ? "half a character" : "half a surrogate pair";
}

} // namespace

const TextLines& EnglishLines()
{
    static const TextLines lines = [] {
        TextTable table;
        FillDefaultTexts(table);
        return LinesOf(table);
    }();
    return lines;
}

LanguageFile ReadLanguageFile(const Path& path)
{
    // Where the library cannot open the file it is silent, so this goes first.
    const std::string bytes = ReadWritableFile(path);
    TextTable table;
    LoadLanguageFile(table, path.native());
    return {LinesOf(std::move(table)), Damage(bytes)};
}

void WriteLanguageFile(const Path& path, const TextLines& lines)
{
    std::wstring characters;
    for (const std::wstring& line : lines) {
        characters += line + L'\n';
    }
    characters.pop_back();
    WriteFile(path, {reinterpret_cast<const char*>(characters.data()), characters.size() * sizeof(wchar_t)});
}

} // namespace language_file_tool
