// Ownership of a kernel object's handle.
#pragma once

#include <memory>
#include <windows.h>

namespace product_services_guard {

struct HandleCloser
{
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};

/// Null, and not INVALID_HANDLE_VALUE, if it owns nothing.
using UniqueHandle = std::unique_ptr<void, HandleCloser>;

} // namespace product_services_guard
