#include "text/language_file.h"

#include "text/default_texts.h"
#include "text/utf16.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <share.h>

namespace product_services {
namespace {

struct FileDeleter
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileDeleter>;

// Deliberate: the file is opened for reading and writing, although nothing is written, so a file that the
// user may not write to is treated as missing.
File OpenLanguageFile(const std::wstring& path)
{
    return File(_wfsopen(path.c_str(), L"r+b", _SH_DENYNO));
}

std::string ReadAll(std::FILE* file)
{
    std::string bytes;
    char block[4096];
    while (const std::size_t count = std::fread(block, 1, sizeof block, file)) {
        bytes.append(block, count);
    }
    return bytes;
}

void ParseLines(TextTable& table, std::wstring_view characters)
{
    for (TextId id = 0;; ++id) {
        const std::size_t end = characters.find(L'\n');
        std::wstring text(characters.substr(0, end));
        std::replace(text.begin(), text.end(), L'|', L'\n');
        table.Set(id, std::move(text));
        if (end == characters.npos) {
            return;
        }
        characters.remove_prefix(end + 1);
    }
}

} // namespace

std::wstring LanguageFilePath(const std::wstring& languageCode)
{
    return L"lang\\" + languageCode + L"\\Vemo_" + languageCode + L".lang";
}

void LoadLanguageFile(TextTable& table, const std::wstring& path)
{
    const File file = OpenLanguageFile(path);
    if (!file) {
        FillDefaultTexts(table);
        return;
    }
    ParseLines(table, DecodeUtf16(ReadAll(file.get())));
}

} // namespace product_services
