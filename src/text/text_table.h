#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace product_services {

using TextId = std::int32_t;

/// The texts that users see, by id. The ids are consecutive and start at 0.
class TextTable
{
public:
    TextTable() = default;

    /// Loads the language file for `languageCode`, or the built-in texts if it cannot be opened.
    explicit TextTable(const std::wstring& languageCode);

    void Set(TextId id, std::wstring text);
    std::size_t Count() const { return m_texts.size(); }

private:
    friend std::wstring LookupText(TextTable& table, TextId id);

    std::map<TextId, std::wstring> m_texts;
};

/// Returns the table of this process. The first call creates it for `languageCode`; later calls get the same
/// table, whatever language they name.
TextTable& GetTextTable(std::wstring languageCode);

/// Returns a copy of the text of `id`, which is empty if the table has no such text. May add an empty entry
/// to a table with gaps.
std::wstring LookupText(TextTable& table, TextId id);

} // namespace product_services
