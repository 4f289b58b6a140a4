#include "platform/product_record.h"
#include "random/random_cases.h"
#include "support/product_record_fixture.h"
#include "text/language_file.h"

#include <filesystem>
#include <fstream>

using namespace product_services;

namespace {

// Decodes one character after the other, as the format is described, and stops at the first damage.
std::vector<std::wstring> ExpectedTexts(const std::string& bytes)
{
    std::vector<std::wstring> texts(1);
    const auto unitAt = [&](std::size_t i) {
        return static_cast<wchar_t>(
            static_cast<unsigned char>(bytes[i]) + 256 * static_cast<unsigned char>(bytes[i + 1]));
    };
    for (std::size_t i = 0; i + 2 <= bytes.size(); i += 2) {
        const wchar_t unit = unitAt(i);
        if (unit == L'\n') {
            texts.emplace_back();
        } else if (unit == L'|') {
            texts.back() += L'\n';
        } else if (unit < 0xD800 || unit > 0xDFFF) {
            texts.back() += unit;
        } else if (unit < 0xDC00 && i + 4 <= bytes.size() && (unitAt(i + 2) & 0xFC00) == 0xDC00) {
            texts.back() += {unit, unitAt(i + 2)};
            i += 2;
        } else {
            break;
        }
    }
    return texts;
}

std::string RandomLanguageFile(Random& random)
{
    const wchar_t units[]{L'a', L' ', L'|', L'\n', L'\r', L'%', 0xFEFF, 0xE4, 0x7248, 0xD83D, 0xDE00, 0};
    std::string bytes;
    for (unsigned count = random.Below(300); count > 0; --count) {
        // A damaged pair ends the text, so that there are few of them.
        const bool isPair = random.Once(20);
        const wchar_t unit = isPair ? units[9] : units[random.Once(60) ? random.Below(12) : random.Below(9)];
        for (const wchar_t next : {unit, units[10]}) {
            bytes += {static_cast<char>(next & 0xFF), static_cast<char>(next >> 8)};
            if (!isPair) {
                break;
            }
        }
    }
    return random.Once(4) ? bytes + "x" : bytes;
}

} // namespace

TEST(RandomLanguageFiles, HoldWhatTheirFormatSays)
{
    const auto path = std::filesystem::temp_directory_path() / "random.lang";
    ForEachSeed([&](Random& random) {
        const std::string bytes =
            random.Once(4) ? random.Bytes(random.Below(200)) : RandomLanguageFile(random);
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
        TextTable table;
        LoadLanguageFile(table, path.wstring());
        const std::vector<std::wstring> texts = ExpectedTexts(bytes);
        ASSERT_EQ(table.Count(), texts.size());
        for (std::size_t id = 0; id < texts.size(); ++id) {
            EXPECT_EQ(LookupText(table, static_cast<TextId>(id)), texts[id]) << id;
        }
    });
    std::filesystem::remove(path);
}

TEST(RandomRegistryValues, AreReadAsTextsOrNotAtAll)
{
    ProductRecords records;
    const DWORD types[]{REG_NONE, REG_SZ, REG_EXPAND_SZ, REG_BINARY, REG_DWORD, REG_MULTI_SZ, REG_QWORD, 99};
    ForEachSeed([&](Random& random) {
        const DWORD type = random.Once(2) ? static_cast<DWORD>(REG_SZ) : random.Pick(types);
        const std::string bytes = random.Bytes(2 * random.Below(40));
        records.WriteValue(L"P", L"1", L"key", type, {bytes.begin(), bytes.end()});
        ProductRecord record(FindProductRecord(L"P", L"1"));
        ASSERT_TRUE(record.Load());
        const std::wstring whole(reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / 2);
        const std::wstring text = record.Read(L"key");
        if (type == REG_SZ) {
            EXPECT_EQ(text, whole.substr(0, whole.find(L'\0')));
        } else if (type != REG_EXPAND_SZ) {
            EXPECT_EQ(text, L"") << type;
        }
    });
}
