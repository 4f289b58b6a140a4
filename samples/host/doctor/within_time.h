#pragma once

#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace doctor {

/// The result of `work`, or nothing where it takes longer. It then runs on, so it owns all that it uses.
template <typename Work>
auto WithinTime(std::chrono::seconds limit, Work work) -> std::optional<decltype(work())>
{
    std::packaged_task<decltype(work())()> task(std::move(work));
    auto result = task.get_future();
    std::thread(std::move(task)).detach();
    if (result.wait_for(limit) != std::future_status::ready) {
        return std::nullopt;
    }
    return result.get();
}

/// "5 seconds", for a line that says how long was waited.
inline std::wstring InWords(std::chrono::seconds limit)
{
    return std::to_wstring(limit.count()) + L" seconds";
}

} // namespace doctor
