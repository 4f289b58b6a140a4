#include "scripted_dialog.h"

#include <afxcmn.h>

namespace {

class ListDialog : public ScriptedDialog
{
public:
    ListDialog() : ScriptedDialog(IDD_CONTROLS) {}

    CListCtrl list;
    CWnd absent;

protected:
    void DoDataExchange(CDataExchange* exchange) override
    {
        DDX_Control(exchange, IDC_LIST, list);
        DDX_Control(exchange, 4711, absent);
    }
};

} // namespace

TEST(DataExchange, BindsAControlOnceForTheLifeOfItsWindow)
{
    ListDialog dialog;
    for (int run = 0; run < 2; ++run) {
        RunAndLook(dialog, [&] {
            dialog.UpdateData(FALSE);
            EXPECT_EQ(dialog.list.m_hWnd, GetDlgItem(dialog.m_hWnd, IDC_LIST));
            EXPECT_FALSE(dialog.absent.m_hWnd);
        });
        EXPECT_FALSE(dialog.list.m_hWnd);
    }
}

TEST(ListControl, HasTheColumnsAndRowsThatWereInserted)
{
    ListDialog dialog;
    CListCtrl& list = dialog.list;
    RunAndLook(dialog, [&] {
        EXPECT_EQ(list.InsertColumn(0, L"Product", LVCFMT_LEFT, 120), 0);
        EXPECT_EQ(list.InsertColumn(1, L"Price", LVCFMT_RIGHT, 70, 2), 1);
        EXPECT_EQ(list.InsertColumn(2, L"Unset"), 2);
        wchar_t heading[16];
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_FMT | LVCF_WIDTH | LVCF_SUBITEM;
        column.pszText = heading;
        column.cchTextMax = 16;
        list.SendMessage(LVM_GETCOLUMNW, 1, reinterpret_cast<LPARAM>(&column));
        EXPECT_STREQ(heading, L"Price");
        EXPECT_EQ(column.cx, 70);
        EXPECT_EQ(column.fmt & LVCFMT_JUSTIFYMASK, LVCFMT_RIGHT);
        EXPECT_EQ(column.iSubItem, 2);

        EXPECT_EQ(list.InsertItem(0, L"second"), 0);
        EXPECT_EQ(list.InsertItem(0, L"first"), 0);
        EXPECT_EQ(list.InsertItem(50, L"last"), 2) << "beyond the end";
        EXPECT_TRUE(list.SetItemText(1, 1, L"EUR 9"));
        EXPECT_TRUE(list.SetItemText(0, 0, L"renamed"));
        EXPECT_FALSE(list.SetItemText(3, 0, L"no such row"));
        const std::vector<std::vector<std::wstring>> rows{
            {L"renamed", L""}, {L"second", L"EUR 9"}, {L"last", L""}};
        EXPECT_EQ(automation::ListRows(list.m_hWnd, 2), rows);

        EXPECT_EQ(list.GetNextItem(-1, LVNI_SELECTED), -1);
        automation::SelectRow(list.m_hWnd, 0);
        automation::SelectRow(list.m_hWnd, 2);
        EXPECT_EQ(list.GetNextItem(-1, LVNI_SELECTED), 0);
        EXPECT_EQ(list.GetNextItem(0, LVNI_SELECTED), 2);
        EXPECT_EQ(list.GetNextItem(2, LVNI_SELECTED), -1);
        EXPECT_EQ(list.GetNextItem(0, LVNI_ALL), 1);
    });
}
