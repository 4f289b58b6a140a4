#include "text/text_table.h"

#include "text/language_file.h"

#include <utility>

namespace product_services {

TextTable::TextTable(const std::wstring& languageCode)
{
    LoadLanguageFile(*this, LanguageFilePath(languageCode));
}

void TextTable::Set(TextId id, std::wstring text)
{
    m_texts[id] = std::move(text);
}

TextTable& GetTextTable(std::wstring languageCode)
{
    // Meant: the first call's language stays for the life of the process.
    static TextTable table(languageCode);
    return table;
}

std::wstring LookupText(TextTable& table, TextId id)
{
    // Meant: the bound is the number of entries, not the largest id; a negative id is a large number here.
    const std::uint64_t index = static_cast<std::uint32_t>(id);
    if (index >= table.m_texts.size()) {
        return {};
    }
    return table.m_texts[id];
}

} // namespace product_services
