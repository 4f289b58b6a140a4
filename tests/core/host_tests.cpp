#include <afxwin.h>

#include "host/current_call.h"
#include "host/host_call_scope.h"
#include "host/report_result.h"
#include "platform/product_record.h"
#include "support/product_records.h"
#include "text/default_texts.h"

#include <gtest/gtest.h>

using namespace product_services;

namespace {

// A host's record whose outputs and reserved members are marked.
struct MarkedContext
{
    wchar_t text[512] = L"untouched";
    wchar_t reserved[3][16] = {L"r1", L"r2", L"r3"};
    HostContext context{L"Product", L"1.0", L"api",      120,         reserved[0],
                        77,         text,   reserved[1], reserved[2], 12345};

    ~MarkedContext()
    {
        EXPECT_EQ(context.reserved1, reserved[0]);
        EXPECT_EQ(context.reserved2, reserved[1]);
        EXPECT_EQ(context.reserved3, reserved[2]);
        EXPECT_EQ(context.reserved4, 12345);
        EXPECT_EQ(reserved[0] + std::wstring(reserved[1]) + reserved[2], L"r1r2r3");
    }
};

} // namespace

TEST(ReportResult, WritesCodesThatNoCallReportsAndNothingForSuccess)
{
    TextTable texts;
    FillDefaultTexts(texts);
    texts.Set(77, L"seventy-seven");
    CurrentTextTable = &texts;
    MarkedContext host;
    CurrentHostContext = &host.context;
    const std::pair<std::uint32_t, std::wstring> messages[]{
        {0, L"seventy-seven"},
        {400, L"An unknown error occurred."},
        {503, L"No internet found!"},
        {201, L""},
        {0xFFFFFFFF, L""},
        {504, L"Unable to reach server!"},
    };
    for (const auto& [code, message] : messages) {
        ReportResult(code);
        EXPECT_EQ(host.context.resultCode, code);
        EXPECT_EQ(host.text, message);
    }
    ReportResult(200);
    EXPECT_EQ(host.context.resultCode, 504u) << "200 changes nothing";
    EXPECT_EQ(host.text, messages[5].second) << "200 changes nothing";
}

TEST(HostCallScope, BringsTheFormerModuleStateBack)
{
    AFX_MODULE_STATE* const own = AfxGetStaticModuleState();
    alignas(AFX_MODULE_STATE) char other[sizeof(AFX_MODULE_STATE)]{};
    auto* const ofTheHost = reinterpret_cast<AFX_MODULE_STATE*>(other);
    AFX_MANAGE_STATE(ofTheHost)
    MarkedContext host;
    EXPECT_THROW(
        {
            HostCallScope call(&host.context);
            EXPECT_EQ(AfxGetModuleState(), own);
            throw std::runtime_error("leaves the call");
        },
        std::runtime_error);
    EXPECT_EQ(AfxGetModuleState(), ofTheHost);
    EXPECT_EQ(CurrentHostContext, &host.context) << "stays after the call";
    EXPECT_STREQ(host.text, L"untouched");
}

TEST(ProductRecord, OfTheUserComesBeforeThatOfTheMachine)
{
    const auto key = [](const std::wstring& product, const std::wstring& version) {
        ProductRecord record(FindProductRecord(product, version));
        return record.Load() ? record.Read(L"key") : L"no record";
    };
    ProductRecords records;
    records.Write(L"Both", L"1", L"machine's", L"1", HKEY_LOCAL_MACHINE);
    EXPECT_EQ(key(L"Both", L"1"), L"machine's");
    records.Write(L"Both", L"1", L"user's", L"2");
    EXPECT_EQ(key(L"Both", L"1"), L"user's");
    records.Write(L"Both\\1", L"1", L"nested", L"1");
    for (const auto& [product, version] :
         {std::pair{L"", L"1"}, {L"Both", L""}, {L"Both\\1", L"1"}, {L"Both", L"1\\"}}) {
        EXPECT_EQ(key(product, version), L"no record") << std::wstring(product).size();
    }
    for (const auto& [name, data, text] : {
             std::tuple{"no data", std::wstring(), std::wstring()},
             {"unterminated", L"ab", L"ab"},
             {"terminated early", std::wstring(L"ab\0cd", 5), L"ab"},
             {"long", std::wstring(20000, L'k'), std::wstring(20000, L'k')},
         }) {
        records.WriteValue(L"Both", L"1", L"key", data);
        EXPECT_EQ(key(L"Both", L"1"), text) << name;
    }
}
