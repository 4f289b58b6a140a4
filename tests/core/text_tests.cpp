#include "support/data_file.h"
#include "support/test_folder.h"
#include "text/default_texts.h"
#include "text/language_code.h"
#include "text/language_file.h"

#include <climits>
#include <gtest/gtest.h>
#include <map>
#include <vector>

using namespace product_services;

namespace {

using Texts = std::vector<std::wstring>;

// Reads a table of texts.json, which has a text for each number.
std::map<int, std::wstring> ReadTable(const char* name)
{
    std::map<int, std::wstring> table;
    const auto tables = ReadDataFile("core/texts.json");
    for (const auto& [number, text] : tables.at(name).get<std::map<std::string, std::string>>()) {
        table[std::stoi(number)] = {text.begin(), text.end()};
    }
    return table;
}

Texts AllTexts(TextTable table)
{
    Texts texts;
    for (std::size_t id = 0; id < table.Count(); ++id) {
        texts.push_back(LookupText(table, static_cast<TextId>(id)));
    }
    return texts;
}

Texts LoadTexts(const std::wstring& path)
{
    TextTable table;
    LoadLanguageFile(table, path);
    return AllTexts(table);
}

// Returns how many texts are loaded while the file is open elsewhere with this sharing mode.
std::size_t CountTextsWhileOpen(const wchar_t* path, DWORD sharing)
{
    HANDLE other =
        CreateFileW(path, GENERIC_READ | GENERIC_WRITE, sharing, nullptr, OPEN_EXISTING, 0, nullptr);
    const std::size_t count = LoadTexts(path).size();
    EXPECT_TRUE(CloseHandle(other)) << "the file could not be opened";
    return count;
}

} // namespace

TEST(LanguageCode, MapsIdsAndFallsBackToUS)
{
    const std::map<int, std::wstring> codes = ReadTable("codes of languages");
    for (int id = -1; id <= 300; ++id) {
        const auto code = codes.find(id);
        EXPECT_EQ(LanguageCodeFromId(id), code != codes.end() ? code->second : L"US") << id;
    }
    EXPECT_EQ(LanguageCodeFromId(INT_MIN), L"US");
}

TEST(LanguageFile, IsReadFromTheWorkingDirectory)
{
    const TestFolder folder;
    std::filesystem::create_directories("lang/DE");
    WriteFile("lang/DE/Vemo_DE.lang", L"deutsch");
    EXPECT_EQ(AllTexts(TextTable(L"DE")), Texts{L"deutsch"});
    EXPECT_EQ(AllTexts(TextTable(L"FR")).size(), 88u) << "the built-in texts if there is no file";
}

TEST(LanguageFile, IsReadUpToTheFirstInvalidCharacter)
{
    const std::wstring longLine(20000, L'x');
    const std::tuple<const char*, std::wstring, std::string, Texts> files[]{
        {"an empty file", L"", "", {L""}},
        {"a line break at the end", L"a\n\nb\n", "", {L"a", L"", L"b", L""}},
        {"bars", L"bars|b||c\n|", "", {L"bars\nb\n\nc", L"\n"}},
        {"carriage returns", L"a\r\nb\r\n", "", {L"a\r", L"b\r", L""}},
        {"a byte-order mark", L"\xFEFF.\nb", "", {L"\xFEFF.", L"b"}},
        {"a line feed's byte in a character", L"\x0A0A\x010A", "", {L"\x0A0A\x010A"}},
        {"a character outside the basic plane", L"\xD83D\xDE00.\nb", "", {L"\xD83D\xDE00.", L"b"}},
        {"an odd byte", L"a\nb", "x", {L"a", L"b"}},
        {"an unpaired high surrogate", L"a\nb\xD83D\nd", "", {L"a", L"b"}},
        {"a high surrogate at the end", L"a\nb\xDBFF", "", {L"a", L"b"}},
        {"two high surrogates", L"a\nb\xD800\xD83D\xDE00\nd", "", {L"a", L"b"}},
        {"an unpaired low surrogate", L"a\n\xDFFF\nd", "", {L"a", L""}},
        {"more than a block", longLine + L"\n" + longLine, "", {longLine, longLine}},
    };
    const TestFolder folder;
    for (const auto& [name, characters, rest, texts] : files) {
        SCOPED_TRACE(name);
        WriteFile("x.lang", characters, rest);
        EXPECT_EQ(LoadTexts(L"x.lang"), texts);
    }
}

TEST(LanguageFile, IsNotCreated)
{
    const TestFolder folder;
    EXPECT_EQ(LoadTexts(L"missing.lang").size(), 88u);
    EXPECT_FALSE(std::filesystem::exists("missing.lang"));
}

TEST(LanguageFile, MustBeWritableButNotExclusive)
{
    const TestFolder folder;
    WriteFile("x.lang", L"one text");
    EXPECT_EQ(CountTextsWhileOpen(L"x.lang", FILE_SHARE_READ | FILE_SHARE_WRITE), 1u);
    EXPECT_EQ(CountTextsWhileOpen(L"x.lang", FILE_SHARE_READ), 88u) << "it may not be written to";
}

TEST(BuiltInTexts, MatchTheTable)
{
    const std::map<int, std::wstring> shown = ReadTable("built-in texts");
    TextTable table;
    FillDefaultTexts(table);
    EXPECT_EQ(table.Count(), 88u);
    for (TextId id = 0; id < 88; ++id) {
        const auto text = shown.find(id);
        const std::wstring reserved = L"(reserved " + std::to_wstring(id) + L")";
        EXPECT_EQ(LookupText(table, id), text != shown.end() ? text->second : reserved);
    }
}

TEST(TextLookup, ReturnsEmptyOutOfRange)
{
    TextTable table;
    FillDefaultTexts(table);
    table.Set(200, L"beyond the count");
    for (const TextId id : {200, 89, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(LookupText(table, id), L"") << id;
    }
    EXPECT_EQ(table.Count(), 89u);
    EXPECT_EQ(LookupText(table, 88), L"") << "a gap within the count";
    EXPECT_EQ(table.Count(), 90u) << "which now has an entry";
}
