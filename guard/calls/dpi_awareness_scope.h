// Makes Windows scale the windows of a call.
#pragma once

#include <windows.h>

namespace product_services_guard {

/// Makes this thread DPI-unaware during its lifetime: its new windows are laid out for 96 DPI, and Windows
/// scales them together with their pictures. The destructor restores the previous awareness. Does nothing if
/// `enable` is false or Windows does not support it (before version 1607).
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
