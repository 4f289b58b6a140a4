// Windows that the system scales as a whole.
#pragma once

#include <windows.h>

namespace product_services_guard {

/// While it lives, windows that this thread creates are laid out for 96 DPI and scaled by Windows, pictures
/// included. The thread's previous DPI awareness comes back at the end. Does nothing if `enable` is false and
/// on a Windows that is too old for it (before version 1607).
class ScopedDpiUnaware
{
public:
    explicit ScopedDpiUnaware(bool enable);
    ~ScopedDpiUnaware();

    ScopedDpiUnaware(const ScopedDpiUnaware&) = delete;
    ScopedDpiUnaware& operator=(const ScopedDpiUnaware&) = delete;

private:
    using SetContext = HANDLE(WINAPI*)(HANDLE context);

    SetContext m_setContext = nullptr;
    HANDLE m_previous = nullptr;
};

} // namespace product_services_guard
