// Makes guarded calls for programs that cannot load the DLL, such as scripts, services and 32-bit programs,
// and diagnoses problems.
#include <afxwin.h>

#include "doctor/doctor.h"
#include "guarded_call.h"
#include "options.h"
#include "platform/family.h"
#include "product_version.h"
#include "text.h"

#include <exception>

namespace {

using namespace product_services_tool;

int RunVersion()
{
    PrintLine(
        L"ProductServicesTool " + ToString(ProductVersion) + L" (" + product_services::Family.packageId +
        L")");
    return 0;
}

int RunCommand(const Options& options)
{
    switch (options.command) {
    case Command::Check:
    case Command::Upgrade:
        return RunGuardedCall(options);
    case Command::Doctor:
        // End all threads, since one that has exceeded its time may still run.
        EndProcess(RunDoctor(options));
    case Command::Version:
        break;
    }
    return RunVersion();
}

int RunCommandLine(const std::vector<std::wstring>& arguments)
{
    const ParsedCommandLine parsed = ParseCommandLine(arguments);
    if (parsed.options) {
        return RunCommand(*parsed.options);
    }
    if (parsed.status == 0) {
        PrintLine(parsed.text);
    } else {
        PrintErrorLine(parsed.text);
    }
    return parsed.status;
}

// Makes MFC find the resources of the upgrade center in this program.
void PrepareMfc()
{
#ifdef _AFXDLL
    AfxWinInit(GetModuleHandleW(nullptr), nullptr, GetCommandLineW(), 0);
#else
    AfxGetStaticModuleState()->m_hCurrentResourceHandle = GetModuleHandleW(nullptr);
#endif
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    PrepareMfc();
    try {
        return RunCommandLine({argv + 1, argv + argc});
    } catch (const std::exception&) {
        PrintErrorLine(L"ProductServicesTool: out of memory");
        return 1;
    }
}
