#include "scripted_dialog.h"

#include <afxcmn.h>

namespace {

constexpr int ByExit = 2000;
constexpr int ByDefault = 3000;

class ControlsDialog : public ScriptedDialog
{
public:
    CListCtrl list;
    CWnd absent;

protected:
    void DoDataExchange(CDataExchange* exchange) override
    {
        DDX_Control(exchange, IDC_LIST, list);
        DDX_Control(exchange, 4711, absent);
    }

private:
    void OnExit() { EndDialog(ByExit); }
    void OnDefault() { EndDialog(ByDefault); }
    void OnListChanging(NMHDR* header, LRESULT* result)
    {
        *result = reinterpret_cast<const NMLISTVIEW*>(header)->iItem == 0;
    }

    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(ControlsDialog, ScriptedDialog)
    ON_BN_CLICKED(IDCANCEL, &ControlsDialog::OnExit)
    ON_BN_CLICKED(IDC_EXIT, &ControlsDialog::OnExit)
    ON_BN_CLICKED(IDC_DEFAULT, &ControlsDialog::OnDefault)
    ON_NOTIFY(LVN_ITEMCHANGING, IDC_LIST, &ControlsDialog::OnListChanging)
END_MESSAGE_MAP()

} // namespace

TEST(MessageMap, RoutesKeysCloseCommandsAndClicks)
{
    struct
    {
        const char* what;
        int control; ///< 0 for the dialog itself.
        UINT message;
        WPARAM wParam;
        int result;
    } const inputs[]{
        {"Escape", IDC_LIST, WM_KEYDOWN, VK_ESCAPE, ByExit},
        {"close", 0, WM_SYSCOMMAND, SC_CLOSE, ByExit},
        {"Enter", IDC_LIST, WM_KEYDOWN, VK_RETURN, ByDefault},
        {"click", IDC_EXIT, BM_CLICK, 0, ByExit},
        {"accelerator", 0, WM_COMMAND, MAKEWPARAM(IDC_EXIT, 1), ByExit},
        {"command that the base class handles", 0, WM_COMMAND, IDOK, IDOK},
    };
    for (const auto& input : inputs) {
        ControlsDialog dialog;
        dialog.onceShown = [&] {
            const HWND exit = GetDlgItem(dialog.m_hWnd, IDC_EXIT);
            dialog.SendMessage(WM_COMMAND, MAKEWPARAM(IDC_EXIT, BN_SETFOCUS), reinterpret_cast<LPARAM>(exit));
            dialog.SendMessage(WM_COMMAND, 4711, 0);
            const HWND target = input.control ? GetDlgItem(dialog.m_hWnd, input.control) : dialog.m_hWnd;
            PostMessageW(target, input.message, input.wParam, 0);
        };
        EXPECT_EQ(dialog.DoModal(), input.result) << input.what;
    }
}

TEST(ListControl, IsBoundForTheLifeOfItsWindow)
{
    ControlsDialog dialog;
    for (int run = 0; run < 2; ++run) {
        RunAndLook(dialog, [&] {
            dialog.UpdateData(FALSE);
            EXPECT_EQ(dialog.list.m_hWnd, GetDlgItem(dialog.m_hWnd, IDC_LIST));
            EXPECT_FALSE(dialog.absent.m_hWnd);
        });
        EXPECT_FALSE(dialog.list.m_hWnd);
    }
}

TEST(ListControl, HasColumnsRowsAndTheSelectionThatItsParentAllows)
{
    ControlsDialog dialog;
    CListCtrl& list = dialog.list;
    RunAndLook(dialog, [&] {
        EXPECT_EQ(list.InsertColumn(0, L"Product", LVCFMT_LEFT, 120), 0);
        EXPECT_EQ(list.InsertColumn(1, L"Price", LVCFMT_RIGHT, 70, 2), 1);
        LVCOLUMNW column{};
        column.mask = LVCF_FMT | LVCF_WIDTH | LVCF_SUBITEM;
        list.SendMessage(LVM_GETCOLUMNW, 1, reinterpret_cast<LPARAM>(&column));
        EXPECT_EQ(column.cx, 70);
        EXPECT_EQ(column.fmt & LVCFMT_JUSTIFYMASK, LVCFMT_RIGHT);
        EXPECT_EQ(column.iSubItem, 2);

        EXPECT_EQ(list.InsertItem(0, L"second"), 0);
        EXPECT_EQ(list.InsertItem(0, L"first"), 0);
        EXPECT_EQ(list.InsertItem(50, L"last"), 2) << "beyond the end";
        EXPECT_TRUE(list.SetItemText(1, 1, L"EUR 9"));
        EXPECT_FALSE(list.SetItemText(3, 0, L"no such row"));
        const std::vector<std::vector<std::wstring>> rows{
            {L"first", L""}, {L"second", L"EUR 9"}, {L"last", L""}};
        EXPECT_EQ(automation::ListRows(list.m_hWnd, 2), rows);

        automation::SelectRow(list.m_hWnd, 0);
        EXPECT_EQ(list.GetNextItem(-1, LVNI_SELECTED), -1) << "the handler's result forbids it";
        automation::SelectRow(list.m_hWnd, 2);
        EXPECT_EQ(list.GetNextItem(-1, LVNI_SELECTED), 2);
    });
}
