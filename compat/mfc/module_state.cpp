#include <afxwin.h>

namespace {

thread_local AFX_MODULE_STATE* stateInForce = nullptr;

} // namespace

AFX_MODULE_STATE* AFXAPI AfxGetStaticModuleState()
{
    // In an executable no DllMain fills the handles in: null stands for the executable.
    static AFX_MODULE_STATE state;
    return &state;
}

AFX_MODULE_STATE* AFXAPI AfxGetModuleState()
{
    return stateInForce ? stateInForce : AfxGetStaticModuleState();
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

HINSTANCE AFXAPI AfxGetInstanceHandle()
{
    return AfxGetModuleState()->m_hCurrentInstanceHandle;
}

HINSTANCE AFXAPI AfxGetResourceHandle()
{
    return AfxGetModuleState()->m_hCurrentResourceHandle;
}
