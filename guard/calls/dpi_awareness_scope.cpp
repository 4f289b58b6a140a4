#include "calls/dpi_awareness_scope.h"

#include <cstdint>

namespace product_services_guard {
namespace {

// DPI_AWARENESS_CONTEXT_UNAWARE_GDISCALED, which keeps text sharp, and _UNAWARE for older versions of
// Windows.
constexpr std::intptr_t UnawareContexts[]{-5, -1};

HANDLE ToDpiContext(std::intptr_t number)
{
    return reinterpret_cast<HANDLE>(number);
}

} // namespace

ScopedDpiUnaware::ScopedDpiUnaware(bool enable)
{
    const HMODULE user32 = enable ? GetModuleHandleW(L"user32.dll") : nullptr;
    if (!user32) {
        return;
    }
    m_setContext = reinterpret_cast<SetContext>(
        reinterpret_cast<void*>(GetProcAddress(user32, "SetThreadDpiAwarenessContext")));
    if (!m_setContext) {
        return;
    }
    for (const std::intptr_t unaware : UnawareContexts) {
        m_previous = m_setContext(ToDpiContext(unaware));
        if (m_previous) {
            return;
        }
    }
}

ScopedDpiUnaware::~ScopedDpiUnaware()
{
    if (m_previous) {
        m_setContext(m_previous);
    }
}

} // namespace product_services_guard
