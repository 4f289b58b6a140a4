// The entry point of a regular DLL, which MFC provides.
#include <afxwin.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) {
        AfxGetStaticModuleState()->m_hCurrentResourceHandle = instance;
    }
    return TRUE;
}
