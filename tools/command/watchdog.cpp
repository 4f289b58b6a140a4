#include "watchdog.h"

namespace product_services_tool {

Watchdog::Watchdog(std::chrono::milliseconds timeout, std::function<void()> onTimeout)
{
    m_thread = std::thread([this, timeout, onTimeout] {
        std::unique_lock lock(m_mutex);
        if (!m_end.wait_for(lock, timeout, [this] { return m_isEnding; })) {
            lock.unlock();
            onTimeout();
        }
    });
}

Watchdog::~Watchdog()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_isEnding = true;
    }
    m_end.notify_all();
    m_thread.join();
}

} // namespace product_services_tool
