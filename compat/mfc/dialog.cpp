#include <afxwin.h>

IMPLEMENT_DYNAMIC(CDialog, CWnd)

BEGIN_MESSAGE_MAP(CDialog, CWnd)
    ON_COMMAND(IDOK, &CDialog::OnOK)
    ON_COMMAND(IDCANCEL, &CDialog::OnCancel)
END_MESSAGE_MAP()

namespace {

RECT WindowRect(HWND window)
{
    RECT rect{};
    ::GetWindowRect(window, &rect);
    return rect;
}

} // namespace

CDialog::CDialog(UINT nIDTemplate, CWnd* pParentWnd) : m_templateId(nIDTemplate), m_parent(pParentWnd) {}

INT_PTR CDialog::DoModal()
{
    const HWND parent = m_parent ? m_parent->m_hWnd : nullptr;
    const bool disablesParent = parent && ::IsWindowEnabled(parent);
    if (disablesParent) {
        ::EnableWindow(parent, FALSE);
    }
    m_continuesModal = true;
    m_modalResult = -1;
    if (::CreateDialogParamW(
            AfxGetResourceHandle(), MAKEINTRESOURCEW(m_templateId), parent, DialogProc,
            reinterpret_cast<LPARAM>(this))) {
        RunModalLoop(MLF_SHOWONIDLE);
    }
    // Before the dialog goes, so that activation returns to the parent and not to another application.
    if (disablesParent) {
        ::EnableWindow(parent, TRUE);
    }
    DestroyWindow();
    return m_modalResult;
}

void CDialog::EndDialog(int nResult)
{
    EndModalLoop(nResult);
}

INT_PTR CALLBACK CDialog::DialogProc(HWND dialog, UINT message, WPARAM, LPARAM lParam)
{
    if (message != WM_INITDIALOG) {
        return FALSE;
    }
    AFX_MANAGE_STATE(AfxGetStaticModuleState())
    return reinterpret_cast<CDialog*>(lParam)->InitDialog(dialog);
}

// A dialog that its template and its own initialisation leave in the corner comes up centred.
INT_PTR CDialog::InitDialog(HWND dialog)
{
    SubclassWindow(dialog);
    const RECT before = WindowRect(dialog);
    const BOOL setsFocus = OnInitDialog();
    const RECT after = WindowRect(dialog);
    if (before.left == 0 && before.top == 0 && ::EqualRect(&before, &after)) {
        CenterWindow();
    }
    return setsFocus;
}

BOOL CDialog::OnInitDialog()
{
    UpdateData(FALSE);
    return TRUE;
}

BOOL CDialog::PreTranslateMessage(MSG* pMsg)
{
    return ::IsDialogMessageW(m_hWnd, pMsg);
}

void CDialog::OnOK()
{
    if (UpdateData(TRUE)) {
        EndDialog(IDOK);
    }
}

void CDialog::OnCancel()
{
    EndDialog(IDCANCEL);
}
