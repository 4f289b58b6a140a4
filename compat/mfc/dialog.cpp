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

// MFC registers the classes of the common controls by itself.
void RegisterCommonControls()
{
    const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_WIN95_CLASSES};
    ::InitCommonControlsEx(&controls);
}

} // namespace

CDialog::CDialog(UINT nIDTemplate, CWnd* pParentWnd) : m_templateId(nIDTemplate), m_parent(pParentWnd) {}

INT_PTR CDialog::DoModal()
{
    RegisterCommonControls();
    m_continuesModal = true;
    m_modalResult = -1;
    if (::CreateDialogParamW(
            AfxGetResourceHandle(), MAKEINTRESOURCEW(m_templateId), m_parent ? m_parent->m_hWnd : nullptr,
            DialogProc, reinterpret_cast<LPARAM>(this))) {
        RunModalLoop(MLF_SHOWONIDLE);
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

// A dialog that its template and its own initialisation leave in the corner comes up centred. The focus, and
// the activation with it, wait until it is shown.
BOOL CDialog::InitDialog(HWND dialog)
{
    SubclassWindow(dialog);
    const RECT before = WindowRect(dialog);
    m_focusesFirstControl = OnInitDialog();
    const RECT after = WindowRect(dialog);
    if (before.left == 0 && before.top == 0 && ::EqualRect(&before, &after)) {
        CenterWindow();
    }
    return FALSE;
}

void CDialog::ShowOnIdle()
{
    const HWND first = ::GetNextDlgTabItem(m_hWnd, nullptr, FALSE);
    if (m_focusesFirstControl && first) {
        SendMessage(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(first), TRUE);
    }
    CWnd::ShowOnIdle();
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

void CWnd::DoDataExchange(CDataExchange*) {}

BOOL CWnd::UpdateData(BOOL bSaveAndValidate)
{
    CDataExchange exchange(this, bSaveAndValidate);
    DoDataExchange(&exchange);
    return TRUE;
}

// Binds at the first exchange. A control that the template lacks stays unbound.
void AFXAPI DDX_Control(CDataExchange* pDX, int nIDC, CWnd& rControl)
{
    if (rControl.m_hWnd) {
        return;
    }
    if (HWND control = ::GetDlgItem(pDX->m_pDlgWnd->m_hWnd, nIDC)) {
        rControl.SubclassWindow(control);
    }
}
