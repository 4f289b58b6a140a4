#include <afxwin.h>

namespace {

// MFC requires one application object in a DLL. It does nothing, because the first call sets everything up.
CWinApp application;

} // namespace
