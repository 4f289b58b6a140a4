#include "upgrade/product_upgrade_dialog.h"

#include "host/call_environment.h"
#include "host/current_call.h"
#include "host/report_result.h"
#include "text/text_ids.h"
#include "ui/dialog_look.h"
#include "ui/resource.h"
#include "upgrade/fetch_offers.h"

namespace product_services {
namespace {

constexpr int NameColumnWidth = 250;
constexpr int VersionColumnWidth = 100;

// Without SS_NOPREFIX, a static control would underline the character after an ampersand in a product name.
void DisableMnemonics(HWND text)
{
    ::SetWindowLongPtrW(text, GWL_STYLE, ::GetWindowLongPtrW(text, GWL_STYLE) | SS_NOPREFIX);
}

} // namespace

IMPLEMENT_DYNAMIC(ProductUpgrade, CDialogEx)

ProductUpgrade::ProductUpgrade(std::wstring title, const ProductRecord& record, CWnd* parent)
    : CDialogEx(IDD_PRODUCT_UPGRADE, parent), m_title(std::move(title)), m_offers(FetchOffers(record))
{
}

ProductUpgrade::~ProductUpgrade() = default;

void ProductUpgrade::DoDataExchange(CDataExchange* pDX)
{
    CDialogEx::DoDataExchange(pDX);
    DDX_Control(pDX, IDC_UPGRADE_OFFERS, m_offerList);
}

BEGIN_MESSAGE_MAP(ProductUpgrade, CDialogEx)
    ON_NOTIFY(LVN_ITEMCHANGED, IDC_UPGRADE_OFFERS, &ProductUpgrade::OnOfferListItemChanged)
    ON_BN_CLICKED(IDOK, &ProductUpgrade::OnBuyNow)
    ON_BN_CLICKED(IDCANCEL, &ProductUpgrade::OnExit)
    // Deliberate: every dialog of the library has this entry, although nothing sends the command.
    ON_BN_CLICKED(ID_DIALOG_EXIT, &ProductUpgrade::OnExit)
END_MESSAGE_MAP()

BOOL ProductUpgrade::OnInitDialog()
{
    CDialogEx::OnInitDialog();
    if (m_offers.empty()) {
        EndDialog(0);
    }
    m_title = ApplyDialogLook(*this, text_ids::UpgradeCenter);
    SetTexts();
    InsertColumns();
    InsertOffers();
    return TRUE;
}

void ProductUpgrade::SetTexts()
{
    DisableMnemonics(::GetDlgItem(m_hWnd, IDC_UPGRADE_HEADING));
    SetDlgItemText(IDC_UPGRADE_HEADING, m_title.c_str());
    // Invisible; screen readers read it as the name of the list.
    m_offerList.SetWindowText(m_title.c_str());
    SetDlgItemText(IDOK, CurrentText(text_ids::BuyNow).c_str());
    SetDlgItemText(IDCANCEL, CurrentText(text_ids::Exit).c_str());
}

void ProductUpgrade::InsertColumns()
{
    m_offerList.InsertColumn(0, CurrentText(text_ids::ProductName).c_str(), LVCFMT_LEFT, NameColumnWidth);
    m_offerList.InsertColumn(
        1, CurrentText(text_ids::ProductVersion).c_str(), LVCFMT_CENTER, VersionColumnWidth, 1);
}

void ProductUpgrade::InsertOffers()
{
    m_offerList.SetRedraw(FALSE);
    // Deliberate: from the last to the first, each at the top, so that they end up in the order of the reply.
    for (auto offer = m_offers.rbegin(); offer != m_offers.rend(); ++offer) {
        const int row = m_offerList.InsertItem(0, offer->name.c_str());
        m_offerList.SetItemText(row, 1, offer->version.c_str());
    }
    m_offerList.SetRedraw(TRUE);
}

int ProductUpgrade::SelectedRow() const
{
    int selected = -1;
    int next = m_offerList.GetNextItem(-1, LVNI_SELECTED);
    while (next != -1) {
        selected = next;
        next = m_offerList.GetNextItem(selected, LVNI_SELECTED);
    }
    return selected;
}

void ProductUpgrade::OnOfferListItemChanged(NMHDR*, LRESULT* result)
{
    *result = 0;
}

void ProductUpgrade::OnBuyNow()
{
    const int row = SelectedRow();
    if (row == -1) {
        return;
    }
    const UpgradeOffer& offer = m_offers[static_cast<std::size_t>(row)];
    CurrentEnvironment->OpenUrl(offer.url);
    ReportResult(PRODUCT_SERVICES_BROWSER_OPENED);
    EndDialog(IDOK);
}

void ProductUpgrade::OnExit()
{
    ReportResult(PRODUCT_SERVICES_USER_QUIT);
    EndDialog(IDCANCEL);
}

} // namespace product_services
