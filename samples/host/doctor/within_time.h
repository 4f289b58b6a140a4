#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <windows.h>

namespace doctor {

/// Work that a thread of its own does, and what came of it.
template <typename Work>
struct Task
{
    Work work;
    std::optional<decltype(std::declval<Work>()())> result;
};

/// The result of `work`, or nothing where it takes longer. It then runs on, so it owns all that it uses.
template <typename Work>
auto WithinTime(std::chrono::seconds limit, Work work) -> std::optional<decltype(work())>
{
    using Shared = std::shared_ptr<Task<Work>>;
    const Shared task(new Task<Work>{std::move(work), std::nullopt});
    const LPTHREAD_START_ROUTINE run = [](void* parameter) -> DWORD {
        const std::unique_ptr<Shared> own(static_cast<Shared*>(parameter));
        (*own)->result = (*own)->work();
        return 0;
    };
    const HANDLE thread = CreateThread(nullptr, 0, run, new Shared(task), 0, nullptr);
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(limit).count();
    const bool isDone =
        thread && WaitForSingleObject(thread, static_cast<DWORD>(milliseconds)) == WAIT_OBJECT_0;
    if (thread) {
        CloseHandle(thread);
    }
    return isDone ? std::move(task->result) : std::nullopt;
}

/// "5 seconds", for a line that says how long was waited.
inline std::wstring InWords(std::chrono::seconds limit)
{
    return std::to_wstring(limit.count()) + L" seconds";
}

} // namespace doctor
