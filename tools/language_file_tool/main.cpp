// The translators' tool: makes language files of texts that people edit, and back, and checks them.
#include "language_file_check.h"
#include "text_file.h"

#include <algorithm>
#include <cstdio>
#include <cwctype>
#include <stdexcept>
#include <windows.h>

using namespace language_file_tool;

namespace {

const char Usage[] =
    "LanguageFileTool export FILE.txt                     writes the English texts, to be translated\n"
    "LanguageFileTool export FILE.txt --from FILE.lang    writes the texts of a language file, without the\n"
    "                                                     byte-order mark, carriage returns and last line\n"
    "                                                     feed that an editor may have added\n"
    "LanguageFileTool build FILE.txt FILE.lang            makes the language file of such a text file\n"
    "LanguageFileTool check FILE.lang                     says what a user would see wrong\n"
    "\n"
    "Exit status: 0 when all is well, 1 when something is wrong with a file, 2 for wrong usage.\n";

TextLines ReadTranslation(const Path& path)
{
    const std::size_t wanted = EnglishLines().size();
    auto [lines, damage] = ReadLanguageFile(path);
    if (lines.size() == wanted + 1 && lines.back().empty()) {
        lines.pop_back();
    }
    if (!damage.empty() || lines.size() != wanted) {
        throw std::runtime_error(
            ToUtf8(path.native()) + " does not hold the " + std::to_string(wanted) +
            " texts; LanguageFileTool check says more.");
    }
    if (lines[0].starts_with(L'\xFEFF')) {
        lines[0].erase(0, 1);
    }
    for (std::wstring& line : lines) {
        line.erase(line.find_last_not_of(L'\r') + 1);
    }
    return lines;
}

int Check(const Path& path)
{
    const std::vector<std::string> sentences = CheckLanguageFile(ReadLanguageFile(path));
    for (const std::string& sentence : sentences) {
        std::printf("%s\n", sentence.c_str());
    }
    return sentences.empty() ? 0 : 1;
}

int Run(const std::vector<Path>& arguments)
{
    // The kinds of the arguments; a file of the wrong kind is refused before it is overwritten.
    std::wstring form;
    for (const Path& argument : arguments) {
        form += (argument.has_extension() ? argument.extension() : argument).native() + L" ";
    }
    std::transform(form.begin(), form.end(), form.begin(), std::towlower);
    if (form == L"export .txt ") {
        WriteFile(arguments[1], FormatTextFile(EnglishLines()));
    } else if (form == L"export .txt --from .lang ") {
        WriteFile(arguments[1], FormatTextFile(ReadTranslation(arguments[3])));
    } else if (form == L"build .txt .lang ") {
        WriteLanguageFile(arguments[2], ParseTextFile(ReadFile(arguments[1]), ToUtf8(arguments[1].native())));
    } else if (form == L"check .lang ") {
        return Check(arguments[1]);
    } else {
        std::fputs(Usage, stderr);
        return 2;
    }
    return 0;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const UINT consoleCodePage = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    int status = 1;
    try {
        status = Run({argv + 1, argv + argc});
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    SetConsoleOutputCP(consoleCodePage);
    return status;
}
