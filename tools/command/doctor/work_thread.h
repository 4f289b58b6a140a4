// Threads that are joined or left to themselves.
#pragma once

#include "unique_handle.h"

#include <cerrno>
#include <memory>
#include <process.h>
#include <system_error>
#include <utility>
#include <windows.h>

namespace product_services_tool {

using ThreadHandle = product_services_guard::UniqueHandle;

template <typename Work>
unsigned __stdcall RunOwnedWork(void* work)
{
    const std::unique_ptr<Work> owned(static_cast<Work*>(work));
    (*owned)();
    return 0;
}

/// Starts a thread that continues if it is not joined. std::thread::detach is no substitute: after it,
/// mingw-w64's threads sometimes share their data.
template <typename Work>
ThreadHandle StartThread(Work work)
{
    auto owned = std::make_unique<Work>(std::move(work));
    const auto thread = _beginthreadex(nullptr, 0, RunOwnedWork<Work>, owned.get(), 0, nullptr);
    if (thread == 0) {
        throw std::system_error(errno, std::generic_category(), "_beginthreadex");
    }
    static_cast<void>(owned.release()); // the thread deletes it
    return ThreadHandle(reinterpret_cast<HANDLE>(thread));
}

/// Under Wine, a process that ends while one of its threads is ending can lose its exit status.
inline void JoinThread(const ThreadHandle& thread)
{
    WaitForSingleObject(thread.get(), INFINITE);
}

} // namespace product_services_tool
