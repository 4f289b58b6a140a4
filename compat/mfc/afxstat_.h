// The module state: which module's resources and application object are in force.
#pragma once

#include <afx.h>

class CWinApp;

class AFX_MODULE_STATE
{
public:
    CWinApp* m_pCurrentWinApp = nullptr;
    HINSTANCE m_hCurrentResourceHandle = nullptr;
};

/// The state of the module that this is linked into.
AFX_MODULE_STATE* AFXAPI AfxGetStaticModuleState();

/// The state in force.
AFX_MODULE_STATE* AFXAPI AfxGetModuleState();

/// Puts a state in force for the rest of the enclosing scope; the former one comes back on every way out.
class AFX_MAINTAIN_STATE2
{
public:
    explicit AFX_MAINTAIN_STATE2(AFX_MODULE_STATE* pModuleState);
    ~AFX_MAINTAIN_STATE2();

    AFX_MAINTAIN_STATE2(const AFX_MAINTAIN_STATE2&) = delete;
    AFX_MAINTAIN_STATE2& operator=(const AFX_MAINTAIN_STATE2&) = delete;

private:
    AFX_MODULE_STATE* m_formerState;
};

#define AFX_MANAGE_STATE(pModuleState) AFX_MAINTAIN_STATE2 afxModuleStateOfThisScope(pModuleState);
