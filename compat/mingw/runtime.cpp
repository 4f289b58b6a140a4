// What our DLLs do otherwise than mingw's runtime would.
#include <cstdlib>

// NOLINTBEGIN(bugprone-reserved-identifier): the runtime's own names.
namespace __gnu_cxx {

void __verbose_terminate_handler();
void __freeres();

// libstdc++'s own handler prints the name of an uncaught exception, for which it brings a demangler of 45 KB.
// A host has no console to read it on.
void __verbose_terminate_handler()
{
    std::abort();
}

} // namespace __gnu_cxx

// libstdc++ keeps 72 KB for exceptions without memory, which would stay when the DLL is unloaded.
__attribute__((destructor)) static void FreeEmergencyMemory()
{
    __gnu_cxx::__freeres();
}
// NOLINTEND(bugprone-reserved-identifier)
