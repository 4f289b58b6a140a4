#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace product_services {

using TextId = std::int32_t;

/// The texts that users see, by id: dense from 0 on, from a language file or built in.
class TextTable
{
public:
    TextTable() = default;

    /// The texts of the language file for `languageCode`, or the built-in ones where it cannot be opened.
    explicit TextTable(const std::wstring& languageCode);

    void Set(TextId id, std::wstring text);
    std::size_t Count() const { return m_texts.size(); }

private:
    friend std::wstring LookupText(TextTable& table, TextId id);

    std::map<TextId, std::wstring> m_texts;
};

/// The table of this process, built by the first call for its `languageCode`; later calls get the same table.
TextTable& GetTextTable(std::wstring languageCode);

/// A copy of the text of `id`, empty where the table has none. May add an empty entry to a table with gaps.
std::wstring LookupText(TextTable& table, TextId id);

} // namespace product_services
