#include "text/default_texts.h"
#include "text/language_code.h"
#include "text/language_file.h"

#include <climits>
#include <fstream>
#include <gtest/gtest.h>
#include <windows.h>

using namespace product_services;

TEST(LanguageCode, OfEveryIdAndOfItsNeighbours)
{
    std::wstring codes;
    for (int id = -1; id <= 250; ++id) {
        const std::wstring code = LanguageCodeFromId(id);
        codes += code == L"US" ? L"" : std::to_wstring(id) + code;
    }
    EXPECT_EQ(codes, L"120EN130CZ140DE150ES160FR170IT180JA190PL200RU220TW230ZH");
}

TEST(LanguageFile, GivesATextALineUntilItsEndOrDamage)
{
    const std::wstring longLine(20000, L'x');
    // Characters and, where it is not empty, an odd byte after them.
    const std::tuple<std::wstring, const char*, std::vector<std::wstring>> files[]{
        {L"last line feed\n", "", {L"last line feed", L""}},
        {L"", "x", {L""}},
        {L"bars|b||c\n|", "", {L"bars\nb\n\nc", L"\n"}},
        {L"carriage return\r\n", "", {L"carriage return\r", L""}},
        {L"\xFEFF byte-order mark", "", {L"\xFEFF byte-order mark"}},
        {L"pair \xD83D\xDE00", "", {L"pair \xD83D\xDE00"}},
        {L"odd byte\nb", "x", {L"odd byte", L"b"}},
        {L"high half\nb\xD83D\nd", "", {L"high half", L"b"}},
        {L"low half\n\xDE00\nd", "", {L"low half", L""}},
        {longLine + L"\n" + longLine, "", {longLine, longLine}},
    };
    for (const auto& [characters, oddByte, expected] : files) {
        std::string bytes(reinterpret_cast<const char*>(characters.data()), characters.size() * 2);
        std::ofstream("x.lang", std::ios::binary) << bytes << oddByte;
        TextTable table;
        LoadLanguageFile(table, L"x.lang");
        std::vector<std::wstring> texts;
        for (std::size_t id = 0; id < table.Count(); ++id) {
            texts.push_back(LookupText(table, static_cast<TextId>(id)));
        }
        EXPECT_EQ(texts, expected);
    }
}

TEST(LanguageFile, IsSharedWithWritersAndMustBeWritable)
{
    std::ofstream("x.lang").flush();
    CreateDirectoryW(L"folder.lang", nullptr);
    const std::tuple<const wchar_t*, DWORD, std::size_t> cases[]{
        {L"x.lang", FILE_SHARE_READ | FILE_SHARE_WRITE, 1}, // while somebody else writes to it
        {L"x.lang", FILE_SHARE_READ, 88},                   // while nobody else may write to it
        {L"missing.lang", 0, 88},
        {L"folder.lang", 0, 88},
    };
    for (const auto& [path, sharing, count] : cases) {
        HANDLE other =
            CreateFileW(path, GENERIC_READ | GENERIC_WRITE, sharing, nullptr, OPEN_EXISTING, 0, nullptr);
        TextTable table;
        LoadLanguageFile(table, path);
        CloseHandle(other);
        EXPECT_EQ(table.Count(), count) << testing::PrintToString(path);
    }
    EXPECT_EQ(GetFileAttributesW(L"missing.lang"), INVALID_FILE_ATTRIBUTES);
}

TEST(TextLookup, IsBoundByTheNumberOfEntries)
{
    TextTable builtIn;
    FillDefaultTexts(builtIn);
    for (TextId id : {88, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(LookupText(builtIn, id), L"") << id;
    }
    EXPECT_EQ(LookupText(builtIn, 87), L"(reserved 87)");
    EXPECT_EQ(LookupText(builtIn, 75), LookupText(builtIn, 77));

    TextTable withGaps;
    withGaps.Set(0, L"zero");
    withGaps.Set(7, L"seven");
    EXPECT_EQ(LookupText(withGaps, 7), L"") << "beyond the count";
    EXPECT_EQ(LookupText(withGaps, 1), L"") << "in a gap";
    EXPECT_EQ(withGaps.Count(), 3u) << "the gap got an entry";
}
