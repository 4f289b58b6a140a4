#pragma once

#include <afxwin.h>

#include <afxcmn.h>
#include <afxdialogex.h>

#include "service/upgrade_offer.h"

#include <string>
#include <vector>

namespace product_services {

class ProductRecord;

/// The dialog of the upgrade center. It lists the offers and opens the purchase address of the chosen one in
/// the browser. Reports 930 or 540 when it closes. If there are no offers, it never becomes visible.
class ProductUpgrade : public CDialogEx
{
    DECLARE_DYNAMIC(ProductUpgrade)

public:
    /// Fetches the offers before any window exists.
    ProductUpgrade(std::wstring title, const ProductRecord& record, CWnd* parent = nullptr);
    ~ProductUpgrade() override;

protected:
    DECLARE_MESSAGE_MAP()

    void DoDataExchange(CDataExchange* pDX) override;
    BOOL OnInitDialog() override;

private:
    afx_msg void OnOfferListItemChanged(NMHDR* pNotifyStruct, LRESULT* result);
    afx_msg void OnBuyNow();
    afx_msg void OnExit();

    void SetTexts();
    void InsertColumns();
    void InsertOffers();
    int SelectedRow() const;

    std::wstring m_title;
    std::vector<UpgradeOffer> m_offers;
    CListCtrl m_offerList;
};

} // namespace product_services
