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
    CurrentTextTable = &texts;
    wchar_t text[512] = L"untouched";
    HostContext host{L"", L"", L"", 120, nullptr, 77, text, nullptr, nullptr, 0};
    CurrentHostContext = &host;
    const std::pair<std::uint32_t, std::wstring> reports[]{{200, L"77 untouched"},
                                                           {0, L"0 Unstable internet connection."},
                                                           {400, L"400 An unknown error occurred."},
                                                           {201, L"201 "},
                                                           {503, L"503 No internet found!"},
                                                           {504, L"504 Unable to reach server!"}};
    for (const auto& [code, expected] : reports) {
        ReportResult(code);
        EXPECT_EQ(std::to_wstring(host.resultCode) + L" " + text, expected);
    }
}

TEST(HostCallScope, BringsTheFormerModuleStateBackAndTouchesNoReservedMember)
{
    alignas(AFX_MODULE_STATE) char other[sizeof(AFX_MODULE_STATE)]{};
    auto* const ofTheHost = reinterpret_cast<AFX_MODULE_STATE*>(other);
    AFX_MANAGE_STATE(ofTheHost)
    wchar_t reserved[] = L"reserved";
    HostContext host{nullptr, nullptr, nullptr, 0, reserved, 77, nullptr, reserved, reserved, 12345};
    const HostContext before = host;
    const auto leaveACall = [&] {
        HostCallScope call(&host);
        EXPECT_EQ(AfxGetModuleState(), AfxGetStaticModuleState());
        throw std::runtime_error("leaves the call");
    };
    EXPECT_THROW(leaveACall(), std::runtime_error);
    EXPECT_EQ(AfxGetModuleState(), ofTheHost);
    EXPECT_EQ(std::memcmp(&host, &before, sizeof host), 0);
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
    for (const std::size_t length : {0u, 12u, 20000u}) {
        const std::wstring text(length, L'k');
        records.Write(L"Both\\1", L"key", text);
        EXPECT_EQ(key(L"Both", L"1"), text) << "without a zero at its end";
        records.Write(L"Both\\1", L"key", text + L'\0' + L"after the end");
        EXPECT_EQ(key(L"Both", L"1"), text);
    }
}
