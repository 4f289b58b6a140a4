// Work that may take longer than anybody waits.
#pragma once

#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace product_services_tool {

/// The result of `work`, or nothing if it takes longer than the timeout. It then runs on in its thread, so it
/// owns all that it uses.
template <typename Work>
auto RunWithTimeout(std::chrono::milliseconds timeout, Work work) -> std::optional<decltype(work())>
{
    std::packaged_task<decltype(work())()> task(std::move(work));
    auto result = task.get_future();
    std::thread(std::move(task)).detach();
    if (result.wait_for(timeout) != std::future_status::ready) {
        return std::nullopt;
    }
    return result.get();
}

/// "5 seconds"
inline std::wstring ToText(std::chrono::seconds timeout)
{
    return std::to_wstring(timeout.count()) + (timeout.count() == 1 ? L" second" : L" seconds");
}

} // namespace product_services_tool
