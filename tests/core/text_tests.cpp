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
    const std::tuple<std::wstring, const char*, std::wstring> files[]{
        {L"", "x", L"/"},
        {L"bars|b||c\n|", "", L"bars\nb\n\nc/\n/"},
        {L"carriage return\r\n", "", L"carriage return\r//"},
        {L"\xFEFF byte-order mark", "", L"\xFEFF byte-order mark/"},
        {L"odd byte\nb", "x", L"odd byte/b/"},
        {L"high half\nb\xD83D\nd", "", L"high half/b/"},
        {L"low half\n\xDE00\nd", "", L"low half//"},
        {longLine + L"\n" + longLine, "", longLine + L"/" + longLine + L"/"},
    };
    for (const auto& [characters, oddByte, expected] : files) {
        std::string bytes(reinterpret_cast<const char*>(characters.data()), characters.size() * 2);
        std::ofstream("x.lang", std::ios::binary) << bytes << oddByte;
        TextTable table;
        LoadLanguageFile(table, L"x.lang");
        std::wstring texts;
        for (std::size_t id = 0; id < table.Count(); ++id) {
            texts += LookupText(table, static_cast<TextId>(id)) + L"/";
        }
        EXPECT_EQ(texts, expected);
    }
}

TEST(LanguageFile, IsSharedWithWritersAndMustBeWritable)
{
    std::ofstream("x.lang").flush();
    // How many texts there are while somebody else has the file open and shares it so.
    const auto countTexts = [](const wchar_t* path, DWORD sharing) {
        HANDLE other =
            CreateFileW(path, GENERIC_READ | GENERIC_WRITE, sharing, nullptr, OPEN_EXISTING, 0, nullptr);
        TextTable table;
        LoadLanguageFile(table, path);
        CloseHandle(other);
        return table.Count();
    };
    EXPECT_EQ(countTexts(L"x.lang", FILE_SHARE_READ | FILE_SHARE_WRITE), 1u);
    EXPECT_EQ(countTexts(L"x.lang", FILE_SHARE_READ), 88u);
    EXPECT_EQ(countTexts(L"missing.lang", 0), 88u);
    EXPECT_EQ(GetFileAttributesW(L"missing.lang"), INVALID_FILE_ATTRIBUTES);
}

TEST(TextLookup, IsBoundByTheNumberOfEntries)
{
    TextTable table;
    FillDefaultTexts(table);
    EXPECT_EQ(LookupText(table, 87), L"(reserved 87)");
    table.Set(200, L"beyond the count");
    for (TextId id : {200, 88, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(LookupText(table, id), L"") << id;
    }
    EXPECT_EQ(table.Count(), 90u) << "the gap at 88 got an entry";
}
