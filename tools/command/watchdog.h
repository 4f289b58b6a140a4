// Watches work that may never return.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace product_services_tool {

/// Calls `onTimeout` on a separate thread unless it is destroyed before the timeout. The destructor waits
/// until a call that has begun returns.
class Watchdog
{
public:
    Watchdog(std::chrono::milliseconds timeout, std::function<void()> onTimeout);
    ~Watchdog();

    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    std::mutex m_mutex;
    std::condition_variable m_end;
    bool m_isEnding = false;
    std::thread m_thread;
};

} // namespace product_services_tool
