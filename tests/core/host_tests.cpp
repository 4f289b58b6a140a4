#include <afxwin.h>

#include "host/current_call.h"
#include "host/host_call_scope.h"
#include "host/report_result.h"
#include "support/test_folder.h"
#include "text/default_texts.h"

#include <cstring>
#include <gtest/gtest.h>
#include <utility>

using namespace product_services;

namespace {

constexpr std::uint32_t UntouchedCode = 77;

// A call in progress with the built-in texts.
struct CallInProgress
{
    CallInProgress()
    {
        FillDefaultTexts(texts);
        CurrentTextTable = &texts;
        CurrentHostContext = &host;
    }

    TextTable texts;
    wchar_t text[512] = L"untouched";
    HostContext host{L"", L"", L"", 120, nullptr, UntouchedCode, text, nullptr, nullptr, 0};
};

} // namespace

TEST(ReportResult, WritesTheCodeAndItsText)
{
    const std::pair<std::uint32_t, TextId> texts[]{
        {0, 77}, {400, 56}, {503, 57}, {504, 59}, {540, 67}, {920, 70}, {930, 71}, {940, 72}, {950, 73},
    };
    for (const auto& [code, id] : texts) {
        SCOPED_TRACE(code);
        CallInProgress call;
        call.texts.Set(id, L"the text");
        ReportResult(code);
        EXPECT_EQ(call.host.resultCode, code);
        EXPECT_STREQ(call.text, L"the text");
    }
}

TEST(ReportResult, IgnoresSuccess)
{
    CallInProgress call;
    ReportResult(200);
    EXPECT_EQ(call.host.resultCode, UntouchedCode);
    EXPECT_STREQ(call.text, L"untouched");
}

TEST(ReportResult, WritesUnknownCodesWithoutAText)
{
    for (const std::uint32_t code : {123u, 201u, 1u, 0xFFFFFFFFu}) {
        CallInProgress call;
        ReportResult(code);
        EXPECT_EQ(call.host.resultCode, code);
        EXPECT_STREQ(call.text, L"");
    }
}

TEST(HostCallScope, RestoresTheHostsStateAfterAnException)
{
    const TestFolder folder;
    alignas(AFX_MODULE_STATE) char memory[sizeof(AFX_MODULE_STATE)]{};
    auto* const hostState = reinterpret_cast<AFX_MODULE_STATE*>(memory);
    AFX_MANAGE_STATE(hostState)
    wchar_t reserved[] = L"reserved";
    HostContext host{nullptr,       nullptr, nullptr,  0,        reserved,
                     UntouchedCode, nullptr, reserved, reserved, 12345};
    const HostContext before = host;
    const auto failingCall = [&] {
        HostCallScope call(&host);
        EXPECT_EQ(AfxGetModuleState(), AfxGetStaticModuleState());
        throw std::runtime_error("the call fails");
    };
    EXPECT_THROW(failingCall(), std::runtime_error);
    EXPECT_EQ(AfxGetModuleState(), hostState);
    EXPECT_EQ(CurrentHostContext, &host) << "is not cleared";
    EXPECT_EQ(CurrentTextTable, &GetTextTable(L"DE")) << "is the first call's, whatever language follows";
    EXPECT_EQ(std::memcmp(&host, &before, sizeof host), 0);
}
