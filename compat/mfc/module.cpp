#include <afxwin.h>

namespace {

// Plain static data instead of thread-local storage, which would outlive the library. There is one call at a
// time.
AFX_MODULE_STATE moduleState;
AFX_MODULE_STATE* currentState = &moduleState;

} // namespace

// In an executable, no DllMain sets the handle, and null means the executable.
AFX_MODULE_STATE* AFXAPI AfxGetStaticModuleState()
{
    return &moduleState;
}

AFX_MODULE_STATE* AFXAPI AfxGetModuleState()
{
    return currentState;
}

AFX_MAINTAIN_STATE2::AFX_MAINTAIN_STATE2(AFX_MODULE_STATE* pModuleState) : m_previousState(currentState)
{
    currentState = pModuleState;
}

AFX_MAINTAIN_STATE2::~AFX_MAINTAIN_STATE2()
{
    currentState = m_previousState;
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
