#include <afxwin.h>

#include "support/flow_fixture.h"
#include "support/recording_curl.h"
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
using ProductUpgradeDialog = FlowTest;

} // namespace

TEST_F(ProductUpgradeDialog, WorksWithoutIconAndPictureAndWithManyOffers)
{
    constexpr std::size_t Many = 500;
    std::string reply;
    for (std::size_t i = 0; i < Many; ++i) {
        reply += (i ? ",{" : "[{") + (R"("name":")" + std::to_string(i)) + R"(","version":"1","url":""})";
    }
    recording_curl::AnswerWith({.pieces = {reply + "]"}});
    std::vector<std::vector<std::wstring>> rows;
    std::thread user([&, host = GetCurrentThreadId()] {
        const HWND center = automation::WaitForDialog(host);
        rows = automation::ListRows(GetDlgItem(center, IDC_UPGRADE_OFFERS), 1);
        automation::Press(center, IDCANCEL);
    });
    EXPECT_EQ(ProductUpgrade(L"P", *record).DoModal(), IDCANCEL);
    user.join();
    EXPECT_EQ(context.resultCode, 540u);
    ASSERT_EQ(rows.size(), Many);
    for (std::size_t i = 0; i < Many; ++i) {
        EXPECT_EQ(rows[i][0], std::to_wstring(i));
    }
    EXPECT_EQ(BackgroundBitmapForProduct(L"api"), nullptr);
}
