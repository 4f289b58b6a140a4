#include <afxwin.h>

#include "host/current_call.h"
#include "platform/product_record.h"
#include "support/product_record_fixture.h"
#include "support/recording_curl.h"
#include "text/default_texts.h"
#include "ui/background_bitmap.h"
#include "ui/resource.h"
#include "upgrade/product_upgrade.h"

#include <automation.h>

#include <gtest/gtest.h>
#include <thread>

using namespace product_services;

namespace {

CWinApp application;

// This program has the dialog's template, but neither the icon nor a picture.
class ProductUpgradeDialog : public testing::Test
{
protected:
    ProductUpgradeDialog()
    {
        FillDefaultTexts(m_texts);
        CurrentTextTable = &m_texts;
        CurrentHostContext = &m_context;
        m_records.Write(L"P", L"1", L"key", L"1");
        m_record.emplace(FindProductRecord(L"P", L"1"));
        m_record->Load();
    }

    INT_PTR Show(const std::function<void(HWND)>& user)
    {
        ProductUpgrade dialog(L"P", *m_record);
        EXPECT_STREQ(dialog.GetRuntimeClass()->m_lpszClassName, "ProductUpgrade");
        std::thread thread([&user, host = GetCurrentThreadId()] { user(automation::WaitForDialog(host)); });
        const INT_PTR result = dialog.DoModal();
        thread.join();
        return result;
    }

private:
    TextTable m_texts;
    wchar_t m_resultText[256] = {};
    HostContext m_context{L"P", L"1", L"api", 120, nullptr, 77, m_resultText, nullptr, nullptr, 0};
    ProductRecords m_records;
    std::optional<ProductRecord> m_record;
};

} // namespace

TEST_F(ProductUpgradeDialog, WorksWithoutIconAndPictureAndWithManyOffers)
{
    static constexpr std::size_t Many = 500;
    std::string reply;
    for (std::size_t i = 0; i < Many; ++i) {
        reply +=
            (i ? ",{" : "[{") + (R"("name":"Offer )" + std::to_string(i)) + R"(","version":"1","url":""})";
    }
    recording_curl::AnswerWith({.pieces = {reply + "]"}});
    const INT_PTR result = Show([](HWND center) {
        EXPECT_EQ(SendMessageW(center, WM_GETICON, ICON_BIG, 0), 0);
        const auto rows = automation::ListRows(GetDlgItem(center, IDC_UPGRADE_OFFERS), 1);
        EXPECT_EQ(rows.size(), Many);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            EXPECT_EQ(rows[i][0], L"Offer " + std::to_wstring(i));
        }
        automation::Press(center, IDCANCEL);
    });
    EXPECT_EQ(result, IDCANCEL);
    EXPECT_EQ(CurrentHostContext->resultCode, 540u);
    EXPECT_EQ(BackgroundBitmapForProduct(L"api"), nullptr);
    EXPECT_EQ(BackgroundBitmapForProduct(L""), nullptr);
}

TEST_F(ProductUpgradeDialog, WithoutAnOfferEndsWithResultZero)
{
    recording_curl::AnswerWith({.pieces = {"[]"}});
    ProductRecord unknown{ProductRecordLocation{}};
    EXPECT_EQ(ProductUpgrade(L"P", unknown).DoModal(), 0);
    EXPECT_EQ(recording_curl::Recorded().calls.size(), 0u) << "no key, no question";
    EXPECT_EQ(CurrentHostContext->resultCode, 77u);
}
