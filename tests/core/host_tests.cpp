#include <afxwin.h>

#include "host/current_call.h"
#include "host/host_call_scope.h"
#include "host/report_result.h"
#include "support/product_records.h"
#include "text/default_texts.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace product_services;

TEST(ReportResult, WritesCodesThatNoCallReportsAndNothingForSuccess)
{
    TextTable texts;
    FillDefaultTexts(texts);
    texts.Set(77, L"seventy-seven");
    CurrentTextTable = &texts;
    wchar_t text[512] = L"untouched";
    HostContext host{L"", L"", L"", 120, nullptr, 77, text, nullptr, nullptr, 0};
    CurrentHostContext = &host;
    const std::tuple<std::uint32_t, std::uint32_t, const wchar_t*> reports[]{
        {200, 77, L"untouched"},
        {0, 0, L"seventy-seven"},
        {400, 400, L"An unknown error occurred."},
        {503, 503, L"No internet found!"},
        {201, 201, L""},
        {504, 504, L"Unable to reach server!"}};
    for (const auto& [code, written, message] : reports) {
        ReportResult(code);
        EXPECT_EQ(host.resultCode, written);
        EXPECT_STREQ(text, message);
    }
}

TEST(HostCallScope, BringsTheFormerModuleStateBackAndTouchesNoReservedMember)
{
    AFX_MODULE_STATE* const own = AfxGetStaticModuleState();
    alignas(AFX_MODULE_STATE) char other[sizeof(AFX_MODULE_STATE)]{};
    auto* const ofTheHost = reinterpret_cast<AFX_MODULE_STATE*>(other);
    AFX_MANAGE_STATE(ofTheHost)
    wchar_t reserved[] = L"reserved";
    HostContext host{nullptr, nullptr, nullptr, 0, reserved, 77, nullptr, reserved, reserved, 12345};
    const HostContext before = host;
    const auto leaveACall = [&] {
        HostCallScope call(&host);
        EXPECT_EQ(AfxGetModuleState(), own);
        throw std::runtime_error("leaves the call");
    };
    EXPECT_THROW(leaveACall(), std::runtime_error);
    EXPECT_EQ(AfxGetModuleState(), ofTheHost);
    EXPECT_EQ(CurrentHostContext, &host) << "stays after the call";
    EXPECT_EQ(std::memcmp(&host, &before, sizeof host), 0);
    EXPECT_STREQ(reserved, L"reserved");
}

TEST(ProductRecord, OfTheUserComesBeforeThatOfTheMachine)
{
    const auto key = [](const std::wstring& product, const std::wstring& version) {
        ProductRecord record(FindProductRecord(product, version));
        return record.Load() ? record.Read(L"key") : L"no record";
    };
    const ProductRecords records;
    records.Write(L"Both\\1", L"key", L"machine's", REG_SZ, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(key(L"Both", L"1"), L"machine's");
    records.Write(L"Both\\1\\1", L"key", L"user's");
    EXPECT_EQ(key(L"", L"1") + key(L"Both", L""), L"no recordno record");
    EXPECT_EQ(key(L"Both\\1", L"1") + key(L"Both", L"1\\"), L"no recordno record");
    const std::wstring tooLongForABuffer(20000, L'k');
    for (const std::wstring& text : {std::wstring(), std::wstring(L"unterminated"), tooLongForABuffer}) {
        records.Write(L"Both\\1", L"key", text);
        EXPECT_EQ(key(L"Both", L"1"), text);
        records.Write(L"Both\\1", L"key", text + L'\0' + L"after the end");
        EXPECT_EQ(key(L"Both", L"1"), text);
    }
}
