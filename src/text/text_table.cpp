#include "text/text_table.h"

#include "text/language_file.h"

#include <optional>
#include <utility>
#include <windows.h>

namespace product_services {
namespace {

// Destroyed when the library is unloaded. The system guards its making: what the compiler brings for a local
// static outlives the library.
std::optional<TextTable> processTable;
INIT_ONCE tableOnce = INIT_ONCE_STATIC_INIT;

// Ends the making of the table, on an exception's way out with leave to try again.
struct EndOfOnce
{
    ~EndOfOnce() { InitOnceComplete(&tableOnce, processTable ? 0 : INIT_ONCE_INIT_FAILED, nullptr); }
};

} // namespace

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
    // Deliberate: the first call's language stays for the life of the process.
    BOOL isFirst = FALSE;
    InitOnceBeginInitialize(&tableOnce, 0, &isFirst, nullptr);
    if (isFirst) {
        const EndOfOnce end;
        processTable.emplace(languageCode);
    }
    return *processTable;
}

std::wstring LookupText(TextTable& table, TextId id)
{
    // Deliberate: the bound is the number of entries, not the largest id; a negative id is a large number
    // here.
    const std::uint64_t index = static_cast<std::uint32_t>(id);
    if (index >= table.m_texts.size()) {
        return {};
    }
    return table.m_texts[id];
}

} // namespace product_services
