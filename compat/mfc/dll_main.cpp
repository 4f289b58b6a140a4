// A regular DLL's entry point, which MFC supplies: the library has an application object instead.
#include <afxwin.h>

namespace {

BOOL EnterProcess(HINSTANCE instance)
{
    AFX_MODULE_STATE* state = AfxGetStaticModuleState();
    AFX_MANAGE_STATE(state)
    state->m_hCurrentInstanceHandle = instance;
    state->m_hCurrentResourceHandle = instance;
    return state->m_pCurrentWinApp->InitInstance();
}

void LeaveProcess()
{
    AFX_MANAGE_STATE(AfxGetStaticModuleState())
    AfxGetApp()->ExitInstance();
}

} // namespace

// Every thread of the host comes by here too. It must not touch the module state, which is the thread's own:
// on its way out it would get a new one that nobody frees.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) {
        return EnterProcess(instance);
    }
    if (reason == DLL_PROCESS_DETACH) {
        LeaveProcess();
    }
    return TRUE;
}
