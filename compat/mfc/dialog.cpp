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

// The beginning of an extended dialog template (DLGTEMPLATEEX), which Windows' headers do not declare.
#pragma pack(push, 2)
struct ExtendedTemplate
{
    WORD version;
    WORD signature; // 0xFFFF
    DWORD helpId;
    DWORD exStyle;
    DWORD style;
    WORD itemCount;
    short x;
    short y;
};
#pragma pack(pop)

// Whether the template places the dialog at 0, 0. Windows may then move it, for example below a taskbar.
bool IsTemplateAtOrigin(UINT id)
{
    const HINSTANCE module = AfxGetResourceHandle();
    const HRSRC resource = ::FindResourceW(module, MAKEINTRESOURCEW(id), RT_DIALOG);
    const void* const data = resource ? ::LockResource(::LoadResource(module, resource)) : nullptr;
    if (!data) {
        return false;
    }
    const auto& extended = *static_cast<const ExtendedTemplate*>(data);
    const auto& old = *static_cast<const DLGTEMPLATE*>(data);
    return extended.signature == 0xFFFF ? extended.x == 0 && extended.y == 0 : old.x == 0 && old.y == 0;
}

// MFC registers the window classes of the common controls, too.
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
    m_inModalLoop = true;
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

// Centers a dialog whose template places it at 0, 0, unless OnInitDialog has moved it. The dialog gets the
// focus and becomes active only when it is shown.
BOOL CDialog::InitDialog(HWND dialog)
{
    SubclassWindow(dialog);
    const RECT before = WindowRect(dialog);
    m_focusesFirstControl = OnInitDialog();
    const RECT after = WindowRect(dialog);
    if (IsTemplateAtOrigin(m_templateId) && ::EqualRect(&before, &after)) {
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

// Attaches the control at the first exchange. If the template has no such control, nothing is attached.
void AFXAPI DDX_Control(CDataExchange* pDX, int nIDC, CWnd& rControl)
{
    if (rControl.m_hWnd) {
        return;
    }
    if (HWND control = ::GetDlgItem(pDX->m_pDlgWnd->m_hWnd, nIDC)) {
        rControl.SubclassWindow(control);
    }
}
