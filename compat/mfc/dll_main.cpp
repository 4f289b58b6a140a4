// A regular DLL's entry point, which MFC supplies: the library has an application object instead.
#include <afxwin.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    AFX_MODULE_STATE* state = AfxGetStaticModuleState();
    AFX_MANAGE_STATE(state)
    if (reason == DLL_PROCESS_ATTACH) {
        state->m_hCurrentInstanceHandle = instance;
        state->m_hCurrentResourceHandle = instance;
        return state->m_pCurrentWinApp->InitInstance();
    }
    if (reason == DLL_PROCESS_DETACH) {
        state->m_pCurrentWinApp->ExitInstance();
    }
    return TRUE;
}
