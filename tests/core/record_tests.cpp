#include "platform/product_record.h"
#include "support/product_records.h"

#include <gtest/gtest.h>

using namespace product_services;

namespace {

constexpr wchar_t NoRecord[] = L"no record";

std::wstring ReadMember(const std::wstring& product, const std::wstring& version, const wchar_t* member)
{
    ProductRecord record(FindProductRecord(product, version));
    return record.Load() ? record.Read(member) : NoRecord;
}

std::wstring ReadKey(const std::wstring& product, const std::wstring& version)
{
    return ReadMember(product, version, L"key");
}

} // namespace

TEST(ProductRecord, OfTheUserComesBeforeThatOfTheMachine)
{
    const MachineRegistry machine;
    const ProductRecords records;
    EXPECT_EQ(ReadKey(L"Both", L"1"), NoRecord);
    records.Write(L"Both\\1", L"key", L"machine's", HKEY_LOCAL_MACHINE);
    EXPECT_EQ(ReadKey(L"Both", L"1"), L"machine's");
    records.Write(L"Both\\1", L"key", L"user's");
    EXPECT_EQ(ReadKey(L"Both", L"1"), L"user's");
}

TEST(ProductRecord, IsOfOneProductAndOneVersion)
{
    const MachineRegistry machine;
    const ProductRecords records;
    records.Write(L"Draft\\1\\1", L"key", L"too deep");
    records.Write(L"Draft\\1", L"key", L"a key");
    records.Write(L"Draft\\1", L"version", L"1.2");
    EXPECT_EQ(ReadKey(L"Draft", L"1"), L"a key");
    EXPECT_EQ(ReadMember(L"Draft", L"1", L"version"), L"1.2");
    EXPECT_EQ(ReadMember(L"Draft", L"1", L"other"), L"");
    EXPECT_EQ(ReadKey(L"Draft", L"2"), NoRecord);
    EXPECT_EQ(ReadKey(L"1", L"Draft"), NoRecord);
    EXPECT_EQ(ReadKey(L"", L"Draft\\1"), NoRecord);
    EXPECT_EQ(ReadKey(L"Draft", L""), NoRecord);
    EXPECT_EQ(ReadKey(L"Draft\\1", L"1"), NoRecord);
    EXPECT_EQ(ReadKey(L"Draft", L"1\\1"), NoRecord);
    EXPECT_EQ(ReadKey(L"Draft\\", L"1"), NoRecord);
}

TEST(ProductRecord, IsReadAnew)
{
    const ProductRecords records;
    records.Write(L"Draft\\1", L"key", L"old key");
    records.Write(L"Draft\\1", L"version", L"old version");
    ProductRecord record(FindProductRecord(L"Draft", L"1"));
    EXPECT_EQ(record.Read(L"key"), L"") << "before it is loaded";
    EXPECT_TRUE(record.Load());
    records.RemoveAll();
    EXPECT_FALSE(record.Load());
    records.Write(L"Draft\\1", L"key", L"new key");
    EXPECT_TRUE(record.Load());
    EXPECT_EQ(record.Read(L"key"), L"new key");
    EXPECT_EQ(record.Read(L"version"), L"") << "it is gone";
}

TEST(ProductRecord, HasTheTextThatAValueBeginsWith)
{
    const std::wstring longText(20000, L'k');
    const std::wstring room(256, L'k'); // as much as the library reads at once
    // The units of a value are written without a zero behind them.
    const std::tuple<const char*, DWORD, std::wstring, std::size_t, std::wstring> values[]{
        {"nothing", REG_SZ, L"", 0, L""},
        {"a terminated text", REG_SZ, {L"key\0", 4}, 8, L"key"},
        {"an unterminated text", REG_SZ, L"key", 6, L"key"},
        {"an odd size", REG_SZ, L"keys", 7, L"keys"},
        {"a NUL inside", REG_SZ, {L"key\0rest", 8}, 16, L"key"},
        {"a text that fills the room", REG_SZ, room, 512, room},
        {"a long text", REG_SZ, longText, 40000, longText},
        {"a long text with a NUL inside", REG_SZ, longText + L'\0' + L"rest", 40010, longText},
        {"a text to be expanded", REG_EXPAND_SZ, L"key", 6, L""},
        {"several texts", REG_MULTI_SZ, {L"key\0\0", 5}, 10, L""},
        {"a number", REG_DWORD, L"ab", 4, L""},
        {"bytes", REG_BINARY, L"key", 6, L""},
    };
    const ProductRecords records;
    for (const auto& [name, type, units, bytes, text] : values) {
        SCOPED_TRACE(name);
        records.WriteBytes(L"Draft\\1", L"key", type, units.data(), bytes);
        EXPECT_EQ(ReadKey(L"Draft", L"1"), text);
    }
    records.RemoveAll();
    records.Write(L"Draft\\1", L"version", L"1.2");
    EXPECT_EQ(ReadKey(L"Draft", L"1"), L"") << "a record without a key is one";
}
