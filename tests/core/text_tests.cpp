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

// A working directory of the test's own.
class WorkingFolder : public testing::Test
{
protected:
    WorkingFolder()
    {
        fs::remove_all(m_folder);
        fs::create_directories(m_folder);
        fs::current_path(m_folder);
    }

    ~WorkingFolder() override
    {
        fs::current_path(m_former);
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }

    static std::string Utf16(const std::wstring& text)
    {
        return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
    }

    static void WriteFile(const fs::path& path, const std::string& bytes)
    {
        if (path.has_parent_path()) {
            fs::create_directories(path.parent_path());
        }
        std::ofstream(path, std::ios::binary) << bytes;
    }

    static std::vector<std::wstring> Texts(TextTable& table)
    {
        std::vector<std::wstring> texts;
        for (std::size_t id = 0; id < table.Count(); ++id) {
            texts.push_back(LookupText(table, static_cast<TextId>(id)));
        }
        return texts;
    }

private:
    fs::path m_former = fs::current_path();
    fs::path m_folder = fs::temp_directory_path() / ("texts-" + std::to_string(GetCurrentProcessId()));
};

using LanguageFile = WorkingFolder;

} // namespace

TEST(LanguageCode, OfEveryIdAndOfItsNeighbours)
{
    const std::vector<std::pair<int, std::wstring>> codes{
        {120, L"EN"}, {130, L"CZ"}, {140, L"DE"}, {150, L"ES"}, {160, L"FR"}, {170, L"IT"},
        {180, L"JA"}, {190, L"PL"}, {200, L"RU"}, {220, L"TW"}, {230, L"ZH"},
    };
    for (const auto& [id, code] : codes) {
        EXPECT_EQ(LanguageCodeFromId(id), code);
    }
    for (int id : {0, -1, 119, 121, 141, 210, 231, 240, INT_MIN, INT_MAX}) {
        EXPECT_EQ(LanguageCodeFromId(id), L"US") << id;
    }
}

TEST_F(LanguageFile, GivesATextALineUntilItsEndOrDamage)
{
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
    };
    for (const auto& [name, bytes, texts] : cases) {
        WriteFile("x.lang", bytes);
        TextTable table;
        LoadLanguageFile(table, L"x.lang");
        EXPECT_EQ(Texts(table), texts) << name;
        EXPECT_EQ(fs::file_size("x.lang"), bytes.size()) << name;
    }
}

TEST_F(LanguageFile, WithManyLinesIsReadToItsEnd)
{
    std::wstring text;
    for (int line = 0; line < 5000; ++line) {
        text += L"line " + std::to_wstring(line) + L"\n";
    }
    WriteFile("x.lang", Utf16(text));
    TextTable table;
    LoadLanguageFile(table, L"x.lang");
    EXPECT_EQ(table.Count(), 5001u);
    EXPECT_EQ(LookupText(table, 4999), L"line 4999");
}

TEST_F(LanguageFile, ThatCannotBeOpenedForWritingLeavesTheBuiltInTexts)
{
    fs::create_directory("folder.lang");
    WriteFile("locked.lang", Utf16(L"Eins"));
    HANDLE readersOnly =
        CreateFileW(L"locked.lang", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    for (const wchar_t* path : {L"missing.lang", L"nowhere\\x.lang", L"folder.lang", L"locked.lang"}) {
        TextTable table;
        LoadLanguageFile(table, path);
        EXPECT_EQ(table.Count(), 88u) << fs::path(path);
        EXPECT_EQ(LookupText(table, 12), L"Exit") << fs::path(path);
    }
    CloseHandle(readersOnly);
    EXPECT_FALSE(fs::exists("missing.lang"));
}

TEST(TextLookup, IsBoundByTheNumberOfEntries)
{
    TextTable builtIn;
    FillDefaultTexts(builtIn);
    for (TextId id : {88, 1000, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(LookupText(builtIn, id), L"") << id;
    }
    EXPECT_EQ(builtIn.Count(), 88u);

    TextTable withGaps;
    withGaps.Set(0, L"zero");
    withGaps.Set(7, L"seven");
    EXPECT_EQ(LookupText(withGaps, 7), L"") << "beyond the count";
    EXPECT_EQ(LookupText(withGaps, 1), L"") << "in a gap";
    EXPECT_EQ(withGaps.Count(), 3u) << "the gap got an entry";
    EXPECT_EQ(LookupText(withGaps, 0), L"zero");
}

TEST(BuiltInTexts, AreAllThere)
{
    TextTable table;
    FillDefaultTexts(table);
    for (TextId id = 0; id < 88; ++id) {
        EXPECT_NE(LookupText(table, id), L"") << id;
    }
    EXPECT_EQ(LookupText(table, 22), L"Upgrade center");
    EXPECT_EQ(LookupText(table, 74), L"You are running the latest version");
    EXPECT_EQ(LookupText(table, 75), LookupText(table, 77));
    EXPECT_EQ(LookupText(table, 87), L"(reserved 87)");
}
