#include "scripted_dialog.h"

namespace {

constexpr int ByBase = 1000;
constexpr int ByDerived = 2000;

class BaseDialog : public ScriptedDialog
{
public:
    BaseDialog() : ScriptedDialog(IDD_CONTROLS) {}

private:
    void OnButton() { EndDialog(ByBase); }

    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(BaseDialog, ScriptedDialog)
    ON_BN_CLICKED(IDC_INHERITED, &BaseDialog::OnButton)
    ON_BN_CLICKED(IDC_DEFAULT, &BaseDialog::OnButton)
END_MESSAGE_MAP()

class RoutedDialog : public BaseDialog
{
public:
    int notifications = 0;

private:
    void OnExit() { EndDialog(ByDerived + IDCANCEL); }
    void OnDefault() { EndDialog(ByDerived + IDC_DEFAULT); }
    void OnListChanging(NMHDR* header, LRESULT* result)
    {
        ++notifications;
        *result = reinterpret_cast<const NMLISTVIEW*>(header)->iItem == 0;
    }

    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(RoutedDialog, BaseDialog)
    ON_BN_CLICKED(IDCANCEL, &RoutedDialog::OnExit)
    ON_BN_CLICKED(IDC_EXIT, &RoutedDialog::OnExit)
    ON_BN_CLICKED(IDC_DEFAULT, &RoutedDialog::OnDefault)
    ON_NOTIFY(LVN_ITEMCHANGING, IDC_LIST, &RoutedDialog::OnListChanging)
END_MESSAGE_MAP()

struct Input
{
    const char* what;
    int control; ///< 0 for the dialog itself.
    UINT message;
    WPARAM wParam;
    int result;
};

} // namespace

TEST(MessageMap, RoutesKeysCloseCommandsAndClicks)
{
    const Input inputs[]{
        {"Escape", 0, WM_KEYDOWN, VK_ESCAPE, ByDerived + IDCANCEL},
        {"Escape in a control", IDC_LIST, WM_KEYDOWN, VK_ESCAPE, ByDerived + IDCANCEL},
        {"WM_CLOSE", 0, WM_CLOSE, 0, ByDerived + IDCANCEL},
        {"SC_CLOSE", 0, WM_SYSCOMMAND, SC_CLOSE, ByDerived + IDCANCEL},
        {"Enter", IDC_LIST, WM_KEYDOWN, VK_RETURN, ByDerived + IDC_DEFAULT},
        {"click", IDC_EXIT, BM_CLICK, 0, ByDerived + IDCANCEL},
        {"click that the base class handles", IDC_INHERITED, BM_CLICK, 0, ByBase},
        {"accelerator", 0, WM_COMMAND, MAKEWPARAM(IDC_EXIT, 1), ByDerived + IDCANCEL},
        {"command that CDialog handles", 0, WM_COMMAND, IDOK, IDOK},
    };
    for (const auto& input : inputs) {
        RoutedDialog dialog;
        const INT_PTR result = RunWithUser(dialog, [&](HWND window) {
            // Neither another code nor an unknown command ends the dialog first.
            const HWND exit = GetDlgItem(window, IDC_EXIT);
            SendMessageW(
                window, WM_COMMAND, MAKEWPARAM(IDC_EXIT, BN_SETFOCUS), reinterpret_cast<LPARAM>(exit));
            SendMessageW(window, WM_COMMAND, 4711, 0);
            PostMessageW(
                input.control ? GetDlgItem(window, input.control) : window, input.message, input.wParam, 0);
        });
        EXPECT_EQ(result, input.result) << input.what;
    }
}

TEST(MessageMap, GivesTheSenderTheResultOfANotification)
{
    RoutedDialog dialog;
    RunAndLook(dialog, [&] {
        const HWND list = GetDlgItem(dialog.m_hWnd, IDC_LIST);
        LVITEMW item{};
        for (WPARAM row = 0; row < 2; ++row) {
            SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
            automation::SelectRow(list, static_cast<int>(row));
            EXPECT_EQ(SendMessageW(list, LVM_GETITEMSTATE, row, LVIS_SELECTED) != 0, row == 1) << row;
        }
        const int before = dialog.notifications;
        EXPECT_GE(before, 2);
        NMLISTVIEW fromElsewhere{};
        fromElsewhere.hdr = {list, IDC_TEXT, static_cast<UINT>(LVN_ITEMCHANGING)};
        EXPECT_EQ(dialog.SendMessage(WM_NOTIFY, IDC_TEXT, reinterpret_cast<LPARAM>(&fromElsewhere)), 0);
        EXPECT_EQ(dialog.notifications, before);
    });
}
