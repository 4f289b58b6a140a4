// Replaces parts of libstdc++ that are too large for our DLLs or leave something behind when they are
// unloaded.
#include <cstdlib>

// NOLINTBEGIN(bugprone-reserved-identifier): these are the runtime's names.
namespace __gnu_cxx {

void __verbose_terminate_handler();
void __freeres();

// libstdc++'s handler prints the name of an uncaught exception, for which it links a demangler of 45 KB.
// Hosts have no console that would show it.
void __verbose_terminate_handler()
{
    std::abort();
}

} // namespace __gnu_cxx

namespace __cxxabiv1 {

// The runtime's data about exceptions that are being handled. The C++ ABI specifies the layout.
struct __cxa_eh_globals
{
    void* caughtExceptions;
    unsigned int uncaughtExceptions;
};

extern "C" {
__cxa_eh_globals* __cxa_get_globals() noexcept;
__cxa_eh_globals* __cxa_get_globals_fast() noexcept;
}

// libstdc++ has one for each thread, in storage whose handles and TLS index stay when the DLL is unloaded.
// One for the process is enough, because there is one call at a time.
static __cxa_eh_globals ehGlobals;

__cxa_eh_globals* __cxa_get_globals() noexcept
{
    return &ehGlobals;
}

__cxa_eh_globals* __cxa_get_globals_fast() noexcept
{
    return &ehGlobals;
}

} // namespace __cxxabiv1

// libstdc++ reserves 72 KB for exceptions when memory runs out, which would stay when the DLL is unloaded.
__attribute__((destructor)) static void FreeEmergencyMemory()
{
    __gnu_cxx::__freeres();
}
// NOLINTEND(bugprone-reserved-identifier)
