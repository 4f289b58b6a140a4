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

namespace __cxxabiv1 {

// The runtime's record of the exceptions that are being handled, whose layout the C++ ABI fixes.
struct __cxa_eh_globals
{
    void* caughtExceptions;
    unsigned int uncaughtExceptions;
};

extern "C" {
__cxa_eh_globals* __cxa_get_globals() noexcept;
__cxa_eh_globals* __cxa_get_globals_fast() noexcept;
}

// libstdc++ keeps it for each thread, in a place whose handles and TLS index stay when the DLL is unloaded.
// One is enough: there is one call at a time.
static __cxa_eh_globals exceptions;

__cxa_eh_globals* __cxa_get_globals() noexcept
{
    return &exceptions;
}

__cxa_eh_globals* __cxa_get_globals_fast() noexcept
{
    return &exceptions;
}

} // namespace __cxxabiv1

// libstdc++ keeps 72 KB for exceptions without memory, which would stay when the DLL is unloaded.
__attribute__((destructor)) static void FreeEmergencyMemory()
{
    __gnu_cxx::__freeres();
}
// NOLINTEND(bugprone-reserved-identifier)
