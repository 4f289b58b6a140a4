#include <afxwin.h>

IMPLEMENT_DYNAMIC(CWinApp, CCmdTarget)

CWinApp::CWinApp()
{
    AfxGetStaticModuleState()->m_pCurrentWinApp = this;
}

BOOL CWinApp::InitInstance()
{
    return TRUE;
}

int CWinApp::ExitInstance()
{
    return 0;
}

HICON CWinApp::LoadIcon(UINT nIDResource) const
{
    return ::LoadIconW(AfxGetResourceHandle(), MAKEINTRESOURCEW(nIDResource));
}
