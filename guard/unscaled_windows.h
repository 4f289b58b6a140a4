// Windows that the system scales as a whole.
#pragma once

#include <windows.h>

namespace product_services_guard {

/// While it lives, windows that this thread makes are laid out for 96 dots an inch and enlarged by the
/// system, their pictures with them. The thread's former DPI awareness comes back at the end. Does nothing
/// where `isWanted` is false and where Windows is older than that (before version 1607).
class UnscaledWindows
{
public:
    explicit UnscaledWindows(bool isWanted);
    ~UnscaledWindows();

    UnscaledWindows(const UnscaledWindows&) = delete;
    UnscaledWindows& operator=(const UnscaledWindows&) = delete;

private:
    using SetContext = HANDLE(WINAPI*)(HANDLE context);

    SetContext m_setContext = nullptr;
    HANDLE m_former = nullptr;
};

} // namespace product_services_guard
