#include "unscaled_windows.h"

#include <cstdint>

namespace product_services_guard {
namespace {

// DPI_AWARENESS_CONTEXT_UNAWARE_GDISCALED, which draws texts sharply, and _UNAWARE, which is older.
constexpr std::intptr_t UnawareContexts[]{-5, -1};

HANDLE Context(std::intptr_t number)
{
    return reinterpret_cast<HANDLE>(number);
}

} // namespace

UnscaledWindows::UnscaledWindows(bool isWanted)
{
    const HMODULE user32 = isWanted ? GetModuleHandleW(L"user32.dll") : nullptr;
    if (!user32) {
        return;
    }
    m_setContext = reinterpret_cast<SetContext>(
        reinterpret_cast<void*>(GetProcAddress(user32, "SetThreadDpiAwarenessContext")));
    if (!m_setContext) {
        return;
    }
    for (const std::intptr_t unaware : UnawareContexts) {
        m_former = m_setContext(Context(unaware));
        if (m_former) {
            return;
        }
    }
}

UnscaledWindows::~UnscaledWindows()
{
    if (m_former) {
        m_setContext(m_former);
    }
}

} // namespace product_services_guard
