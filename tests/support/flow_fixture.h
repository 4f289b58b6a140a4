// What the flows of a call work with: the texts, a host's record and the product's record.
#pragma once

#include "host/current_call.h"
#include "platform/product_record.h"
#include "support/product_record_fixture.h"
#include "text/default_texts.h"

#include <gtest/gtest.h>
#include <optional>

inline constexpr std::uint32_t NothingReported = 77;

class FlowTest : public testing::Test
{
protected:
    FlowTest()
    {
        FillDefaultTexts(m_texts);
        product_services::CurrentTextTable = &m_texts;
        product_services::CurrentHostContext = &context;
        m_records.Write(L"P", L"1", L"key", L"1");
        record.emplace(product_services::FindProductRecord(L"P", L"1"));
        record->Load();
    }

    std::vector<wchar_t> resultText = std::vector<wchar_t>(0x10000);
    HostContext context{L"P",    L"1",    L"api", 120, nullptr, NothingReported, resultText.data(),
                        nullptr, nullptr, 0};
    std::optional<product_services::ProductRecord> record;

private:
    product_services::TextTable m_texts;
    ProductRecords m_records;
};
