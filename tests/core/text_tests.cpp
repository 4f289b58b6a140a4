#include "text/default_texts.h"
#include "text/language_code.h"
#include "text/language_file.h"
#include "text/text_table.h"

#include <climits>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <windows.h>

using namespace product_services;
namespace fs = std::filesystem;

namespace {

// Writes these bytes, and reads them back as a language file does.
TextTable Load(const fs::path& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
    TextTable table;
    LoadLanguageFile(table, path);
    return table;
}

std::string Utf16(const std::wstring& text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

} // namespace

TEST(LanguageCode, OfEveryIdAndOfItsNeighbours)
{
    std::wstring codes;
    for (int id = 0; id <= 250; ++id) {
        const std::wstring code = LanguageCodeFromId(id);
        codes += code == L"US" ? L"" : std::to_wstring(id) + code;
    }
    EXPECT_EQ(codes, L"120EN130CZ140DE150ES160FR170IT180JA190PL200RU220TW230ZH");
    EXPECT_EQ(LanguageCodeFromId(INT_MIN), L"US");
}

TEST(LanguageFile, GivesATextALineUntilItsEndOrDamage)
{
    std::wstring manyLines;
    for (int line = 0; line < 5000; ++line) {
        manyLines += L"line\n";
    }
    std::vector<std::wstring> manyTexts(5000, L"line");
    manyTexts.emplace_back();
    const std::tuple<const char*, std::string, std::vector<std::wstring>> cases[]{
        {"last line feed", Utf16(L"Eins\n"), {L"Eins", L""}},
        {"no byte", "", {L""}},
        {"one byte", "x", {L""}},
        {"bars", Utf16(L"a|b||c\n|"), {L"a\nb\n\nc", L"\n"}},
        {"carriage returns", Utf16(L"a\r\nb\r\n"), {L"a\r", L"b\r", L""}},
        {"byte-order mark", Utf16(L"\xFEFF\nb"), {L"\xFEFF", L"b"}},
        {"surrogate pair", Utf16(L"a\xD83D\xDE00"), {L"a\xD83D\xDE00"}},
        {"odd byte", Utf16(L"a\nb") + "x", {L"a", L"b"}},
        {"lone high surrogate", Utf16(L"a\nb\xD83D\nd"), {L"a", L"b"}},
        {"lone low surrogate", Utf16(L"a\n\xDE00\nd"), {L"a", L""}},
        {"many lines", Utf16(manyLines), manyTexts},
    };
    for (const auto& [name, bytes, expected] : cases) {
        TextTable table = Load("x.lang", bytes);
        std::vector<std::wstring> texts;
        for (std::size_t id = 0; id < table.Count(); ++id) {
            texts.push_back(LookupText(table, static_cast<TextId>(id)));
        }
        EXPECT_EQ(texts, expected) << name;
        EXPECT_EQ(fs::file_size("x.lang"), bytes.size()) << name;
    }
}

TEST(LanguageFile, IsSharedWithWritersAndMustBeWritable)
{
    Load("x.lang", Utf16(L"Eins"));
    const auto whileOpenTo = [](DWORD sharing) {
        HANDLE other = CreateFileW(
            L"x.lang", GENERIC_READ | GENERIC_WRITE, sharing, nullptr, OPEN_EXISTING, 0, nullptr);
        TextTable table;
        LoadLanguageFile(table, L"x.lang");
        CloseHandle(other);
        return table.Count();
    };
    EXPECT_EQ(whileOpenTo(FILE_SHARE_READ | FILE_SHARE_WRITE), 1u) << "somebody else writes to it";
    EXPECT_EQ(whileOpenTo(FILE_SHARE_READ), 88u) << "nobody else may write to it: the built-in texts";

    fs::create_directory("folder.lang");
    for (const wchar_t* path : {L"missing.lang", L"nowhere\\x.lang", L"folder.lang"}) {
        TextTable table;
        LoadLanguageFile(table, path);
        EXPECT_EQ(table.Count(), 88u) << fs::path(path);
        EXPECT_EQ(LookupText(table, 12), L"Exit") << fs::path(path);
    }
    EXPECT_FALSE(fs::exists("missing.lang"));
}

TEST(TextLookup, IsBoundByTheNumberOfEntries)
{
    TextTable builtIn;
    FillDefaultTexts(builtIn);
    for (TextId id : {88, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(LookupText(builtIn, id), L"") << id;
    }
    EXPECT_EQ(builtIn.Count(), 88u);
    EXPECT_EQ(LookupText(builtIn, 87), L"(reserved 87)");
    EXPECT_EQ(LookupText(builtIn, 75), LookupText(builtIn, 77));

    TextTable withGaps;
    withGaps.Set(0, L"zero");
    withGaps.Set(7, L"seven");
    EXPECT_EQ(LookupText(withGaps, 7), L"") << "beyond the count";
    EXPECT_EQ(LookupText(withGaps, 1), L"") << "in a gap";
    EXPECT_EQ(withGaps.Count(), 3u) << "the gap got an entry";
    EXPECT_EQ(LookupText(withGaps, 0), L"zero");
}
