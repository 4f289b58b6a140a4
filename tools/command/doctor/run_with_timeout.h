// Runs work with a timeout.
#pragma once

#include "doctor/work_thread.h"

#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <utility>

namespace product_services_tool {

/// Returns the result of `work`, or nullopt if it takes longer than the timeout. In that case it continues on
/// its thread, so it must own everything that it uses.
template <typename Work>
auto RunWithTimeout(std::chrono::milliseconds timeout, Work work) -> std::optional<decltype(work())>
{
    std::packaged_task<decltype(work())()> task(std::move(work));
    auto result = task.get_future();
    const ThreadHandle thread = StartThread(std::move(task));
    if (result.wait_for(timeout) != std::future_status::ready) {
        return std::nullopt;
    }
    JoinThread(thread);
    return result.get();
}

/// Returns a text such as "5 seconds".
inline std::wstring ToText(std::chrono::seconds timeout)
{
    return std::to_wstring(timeout.count()) + (timeout.count() == 1 ? L" second" : L" seconds");
}

} // namespace product_services_tool
