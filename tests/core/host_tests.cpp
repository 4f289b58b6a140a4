#include <afxwin.h>

#include "host/current_call.h"
#include "host/host_call_scope.h"
#include "host/installed_product.h"
#include "host/report_result.h"
#include "platform/product_record.h"
#include "support/product_record_fixture.h"
#include "text/default_texts.h"

#include <gtest/gtest.h>
#include <thread>

using namespace product_services;

namespace {

// A host's record with a buffer, all of its outputs and reserved members marked.
struct MarkedContext
{
    wchar_t text[512] = L"untouched";
    wchar_t reserved[3][16] = {L"r1", L"r2", L"r3"};
    HostContext context{L"Product", L"1.0", L"api",      120,         reserved[0],
                        77,         text,   reserved[1], reserved[2], 12345};

    bool ReservedIsUntouched() const
    {
        return context.reserved1 == reserved[0] && context.reserved2 == reserved[1] &&
               context.reserved3 == reserved[2] && context.reserved4 == 12345 &&
               !wcscmp(reserved[0], L"r1") && !wcscmp(reserved[1], L"r2") && !wcscmp(reserved[2], L"r3");
    }
};

std::pair<std::wstring, std::wstring> LoadMembers(const std::wstring& product, const std::wstring& version)
{
    ProductRecord record(FindProductRecord(product, version));
    EXPECT_TRUE(record.Load());
    return {record.Read(L"key"), record.Read(L"version")};
}

} // namespace

TEST(ReportResult, WritesCodeAndMessageOfEveryCodeButSuccess)
{
    TextTable texts;
    FillDefaultTexts(texts);
    texts.Set(77, L"seventy-seven");
    CurrentTextTable = &texts;
    const std::pair<std::uint32_t, std::wstring> messages[]{
        {0, L"seventy-seven"},
        {400, L"An unknown error occurred."},
        {503, L"No internet found!"},
        {504, L"Unable to reach server!"},
        {540, L"User chose to quit!"},
        {920, L"No upgrades found!"},
        {930, L"Browser opened, continue running!"},
        {940, L"For upgrade center to appear, you need a stable internet connection!"},
        {201, L""},
        {0xFFFFFFFF, L""},
        {950, L"No data of the installed product was found."},
    };
    MarkedContext host;
    CurrentHostContext = &host.context;
    for (const auto& [code, message] : messages) {
        ReportResult(code);
        EXPECT_EQ(host.context.resultCode, code);
        EXPECT_EQ(host.text, message);
    }
    ReportResult(200);
    EXPECT_EQ(host.context.resultCode, 950u) << "200 changes nothing";
    EXPECT_EQ(host.text, messages[10].second) << "200 changes nothing";
    EXPECT_TRUE(host.ReservedIsUntouched());

    host.context.resultText = nullptr;
    ReportResult(540);
    EXPECT_EQ(host.context.resultCode, 540u) << "a host that wants no text";
}

TEST(HostCallScope, BringsTheFormerModuleStateBack)
{
    AFX_MODULE_STATE ofTheHost;
    AFX_MANAGE_STATE(&ofTheHost)
    MarkedContext host;
    EXPECT_THROW(
        {
            HostCallScope call(&host.context);
            EXPECT_EQ(AfxGetModuleState(), AfxGetStaticModuleState());
            throw std::runtime_error("leaves the call");
        },
        std::runtime_error);
    EXPECT_EQ(AfxGetModuleState(), &ofTheHost);
    EXPECT_EQ(CurrentHostContext, &host.context) << "stays after the call";
    EXPECT_STREQ(host.text, L"untouched");
}

TEST(HostCallScope, KeepsAnUnknownFirstProduct)
{
    ProductRecords records;
    MarkedContext host;
    host.context.productName = nullptr;
    host.context.productVersion = nullptr;
    const ULONGLONG start = GetTickCount64();
    EXPECT_FALSE(HostCallScope(&host.context).RequireRecord());
    const ULONGLONG taken = GetTickCount64() - start;
    EXPECT_GE(taken, 740u) << "five pauses of 150 ms";
    EXPECT_LT(taken, 1500u);
    EXPECT_EQ(host.context.resultCode, 950u);
    EXPECT_TRUE(host.ReservedIsUntouched());

    records.Write(L"Product", L"1.0", L"key", L"1");
    host.context.productName = L"Product";
    host.context.productVersion = L"1.0";
    EXPECT_FALSE(HostCallScope(&host.context).RequireRecord());
}

TEST(LoadProductRecord, SucceedsAsSoonAsTheRecordIsThere)
{
    ProductRecords records;
    records.Write(L"Product", L"1.0", L"key", L"1");
    ProductRecord record(FindProductRecord(L"Product", L"1.0"));
    records.Remove(L"Product", L"1.0");
    std::thread installer([&] {
        Sleep(200);
        records.Write(L"Product", L"1.0", L"repaired", L"1");
    });
    EXPECT_TRUE(LoadProductRecord(record));
    installer.join();
    EXPECT_EQ(record.Read(L"key"), L"repaired");
}

TEST(ProductRecord, OfTheUserComesBeforeThatOfTheMachine)
{
    ProductRecords records;
    records.Write(L"Both", L"1", L"machine's", L"1", HKEY_LOCAL_MACHINE);
    EXPECT_EQ(LoadMembers(L"Both", L"1").first, L"machine's");
    records.Write(L"Both", L"1", L"user's", L"2");
    EXPECT_EQ(LoadMembers(L"Both", L"1"), std::make_pair(std::wstring(L"user's"), std::wstring(L"2")));
    for (const auto& [product, version] : std::vector<std::pair<std::wstring, std::wstring>>{
             {L"", L"1"},
             {L"Both", L""},
             {L"Both\\1", L"1"},
             {L"Both", L"1\\"},
             {std::wstring(300, L'x'), L"1"}}) {
        EXPECT_TRUE(FindProductRecord(product, version).IsEmpty());
    }
}

TEST(ProductRecord, ReadsOnlyTextsAndEveryTextSafely)
{
    ProductRecords records;
    const std::tuple<const char*, DWORD, std::vector<std::uint8_t>, std::wstring> cases[]{
        {"no data", REG_SZ, {}, L""},
        {"odd length", REG_SZ, {'a', 0, 'b'}, L"ab"},
        {"long", REG_SZ, ProductRecords::Bytes(std::wstring(20000, L'k')), std::wstring(20000, L'k')},
        {"bytes", REG_BINARY, ProductRecords::Bytes(L"abc"), L""},
    };
    for (const auto& [name, type, data, text] : cases) {
        records.WriteValue(L"Odd", L"1", L"key", type, data);
        EXPECT_EQ(LoadMembers(L"Odd", L"1").first, text) << name;
    }
    EXPECT_EQ(LoadMembers(L"Odd", L"1").second, L"") << "missing";
}
