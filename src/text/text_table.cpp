#include "text/text_table.h"

#include "text/language_file.h"

#include <memory>
#include <utility>
#include <windows.h>

namespace product_services {
namespace {

// Destroyed when the library is unloaded.
std::unique_ptr<TextTable> processTable;

// Initialised through Windows, because the guard that mingw uses for a local static would outlive the
// library, and asynchronously, because a thread that is terminated in here would otherwise block all later
// calls.
INIT_ONCE textTableInitOnce = INIT_ONCE_STATIC_INIT;

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
    BOOL isPending = FALSE;
    void* table = nullptr;
    InitOnceBeginInitialize(&textTableInitOnce, INIT_ONCE_ASYNC, &isPending, &table);
    if (isPending) {
        auto newTable = std::make_unique<TextTable>(languageCode);
        if (InitOnceComplete(&textTableInitOnce, INIT_ONCE_ASYNC, newTable.get())) {
            processTable = std::move(newTable);
            return *processTable;
        }
        // Another thread was faster.
        InitOnceBeginInitialize(&textTableInitOnce, INIT_ONCE_CHECK_ONLY, &isPending, &table);
    }
    return *static_cast<TextTable*>(table);
}

std::wstring LookupText(TextTable& table, TextId id)
{
    // Deliberate: the id is compared with the number of entries, not with the largest id. A negative id
    // becomes a large number.
    const std::uint64_t index = static_cast<std::uint32_t>(id);
    if (index >= table.m_texts.size()) {
        return {};
    }
    return table.m_texts[id];
}

} // namespace product_services
