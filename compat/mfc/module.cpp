#include <afxwin.h>

namespace {

// Plain: the library runs on one thread, and what a thread has of its own outlives the library.
AFX_MODULE_STATE stateOfThisModule;
AFX_MODULE_STATE* stateInForce = &stateOfThisModule;

} // namespace

// In an executable no DllMain fills the handle in: null stands for the executable.
AFX_MODULE_STATE* AFXAPI AfxGetStaticModuleState()
{
    return &stateOfThisModule;
}

AFX_MODULE_STATE* AFXAPI AfxGetModuleState()
{
    return stateInForce;
}

AFX_MAINTAIN_STATE2::AFX_MAINTAIN_STATE2(AFX_MODULE_STATE* pModuleState) : m_formerState(stateInForce)
{
    stateInForce = pModuleState;
}

AFX_MAINTAIN_STATE2::~AFX_MAINTAIN_STATE2()
{
    stateInForce = m_formerState;
}

CWinApp* AFXAPI AfxGetApp()
{
    return AfxGetModuleState()->m_pCurrentWinApp;
}

HINSTANCE AFXAPI AfxGetResourceHandle()
{
    return AfxGetModuleState()->m_hCurrentResourceHandle;
}

IMPLEMENT_DYNAMIC(CWinApp, CCmdTarget)

CWinApp::CWinApp()
{
    AfxGetStaticModuleState()->m_pCurrentWinApp = this;
}

HICON CWinApp::LoadIcon(UINT nIDResource) const
{
    return ::LoadIconW(AfxGetResourceHandle(), MAKEINTRESOURCEW(nIDResource));
}
