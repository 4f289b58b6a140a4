#include <afxwin.h>

namespace {

// The one application object that MFC asks of a DLL. It does nothing: the first call sets everything up.
CWinApp application;

} // namespace
