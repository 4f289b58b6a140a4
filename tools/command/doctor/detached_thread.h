// Runs work on a thread that nothing waits for.
#pragma once

#include <cerrno>
#include <memory>
#include <process.h>
#include <system_error>
#include <utility>
#include <windows.h>

namespace product_services_tool {

template <typename Work>
unsigned __stdcall RunOwnedWork(void* work)
{
    const std::unique_ptr<Work> owned(static_cast<Work*>(work));
    (*owned)();
    return 0;
}

/// Used instead of std::thread::detach, after which mingw-w64's threads sometimes share their data.
template <typename Work>
void StartDetachedThread(Work work)
{
    auto owned = std::make_unique<Work>(std::move(work));
    const auto thread = _beginthreadex(nullptr, 0, RunOwnedWork<Work>, owned.get(), 0, nullptr);
    if (thread == 0) {
        throw std::system_error(errno, std::generic_category(), "_beginthreadex");
    }
    static_cast<void>(owned.release()); // the thread's now
    CloseHandle(reinterpret_cast<HANDLE>(thread));
}

} // namespace product_services_tool
