// libstdc++'s own handler prints the name of an uncaught exception, for which it brings a demangler of 45 KB
// into a library. A host has no console to read it on.
#include <cstdlib>

// NOLINTBEGIN(bugprone-reserved-identifier): the library's own names.
namespace __gnu_cxx {

void __verbose_terminate_handler();

void __verbose_terminate_handler()
{
    std::abort();
}

} // namespace __gnu_cxx
// NOLINTEND(bugprone-reserved-identifier)
