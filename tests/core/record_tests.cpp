#include "platform/product_record.h"
#include "support/product_records.h"

#include <gtest/gtest.h>

using namespace product_services;

static std::wstring ReadKey(const std::wstring& product, const std::wstring& version)
{
    ProductRecord record(FindProductRecord(product, version));
    return record.Load() ? record.Read(L"key") : L"no record";
}

TEST(ProductRecord, PrefersUserOverMachine)
{
    const MachineRegistry machine;
    const ProductRecords records;
    EXPECT_EQ(ReadKey(L"Both", L"1"), L"no record");
    records.Write(L"Both\\1", L"key", L"machine's", HKEY_LOCAL_MACHINE);
    EXPECT_EQ(ReadKey(L"Both", L"1"), L"machine's");
    records.Write(L"Both\\1", L"key", L"user's");
    EXPECT_EQ(ReadKey(L"Both", L"1"), L"user's");
}

TEST(ProductRecord, IsSelectedByNameAndVersion)
{
    const ProductRecords records;
    records.Write(L"Draft\\1\\1", L"key", L"too deep");
    records.Write(L"Draft\\1", L"version", L"1.2");
    EXPECT_EQ(ReadKey(L"Draft", L"1"), L"") << "a record without a key is a record";
    const std::pair<const wchar_t*, const wchar_t*> others[]{
        {L"Draft", L"2"}, {L"1", L"Draft"},    {L"", L"Draft"},
        {L"Draft", L""},  {L"Draft\\1", L"1"}, {L"Draft", L"1\\1"},
    };
    for (const auto& [product, version] : others) {
        EXPECT_EQ(ReadKey(product, version), L"no record") << product << " " << version;
    }
}

TEST(ProductRecord, ReadsValuesUpToTheFirstNul)
{
    const std::wstring longText(20000, L'k');
    const std::wstring initialBuffer(256, L'k');
    const std::tuple<const char*, DWORD, std::wstring, std::size_t, std::wstring> values[]{
        {"nothing", REG_SZ, L"", 0, L""},
        {"a terminated text", REG_SZ, {L"key\0", 4}, 8, L"key"},
        {"an unterminated text", REG_SZ, L"key", 6, L"key"},
        {"an odd size", REG_SZ, {L"key\0", 4}, 7, L"key"},
        {"a NUL inside", REG_SZ, {L"key\0rest", 8}, 16, L"key"},
        {"a text that fills the initial buffer", REG_SZ, initialBuffer, 512, initialBuffer},
        {"a long text with a NUL inside", REG_SZ, longText + L'\0' + L"rest", 40010, longText},
        {"a text to be expanded", REG_EXPAND_SZ, L"key", 6, L""},
        {"a number", REG_DWORD, L"ab", 4, L""},
    };
    const ProductRecords records;
    for (const auto& [name, type, units, bytes, text] : values) {
        SCOPED_TRACE(name);
        records.WriteBytes(L"Draft\\1", L"key", type, units.data(), bytes);
        EXPECT_EQ(ReadKey(L"Draft", L"1"), text);
    }
}
