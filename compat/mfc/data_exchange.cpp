#include <afxwin.h>

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
