// The module state: the module whose resources and application object are used.
#pragma once

#include <afx.h>

class CWinApp;

class AFX_MODULE_STATE
{
public:
    CWinApp* m_pCurrentWinApp = nullptr;
    HINSTANCE m_hCurrentResourceHandle = nullptr;
};

/// Returns the state of the module that this function is linked into.
AFX_MODULE_STATE* AFXAPI AfxGetStaticModuleState();

/// Returns the current state.
AFX_MODULE_STATE* AFXAPI AfxGetModuleState();

/// Makes a state the current one for the rest of the enclosing scope. The previous one is restored even if
/// the scope is left by an exception.
class AFX_MAINTAIN_STATE2
{
public:
    explicit AFX_MAINTAIN_STATE2(AFX_MODULE_STATE* pModuleState);
    ~AFX_MAINTAIN_STATE2();

    AFX_MAINTAIN_STATE2(const AFX_MAINTAIN_STATE2&) = delete;
    AFX_MAINTAIN_STATE2& operator=(const AFX_MAINTAIN_STATE2&) = delete;

private:
    AFX_MODULE_STATE* m_previousState;
};

#define AFX_MANAGE_STATE(pModuleState) AFX_MAINTAIN_STATE2 afxModuleStateOfThisScope(pModuleState);
