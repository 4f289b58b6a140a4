// One guarded call at a time.
#pragma once

namespace product_services_guard {

/// Locks guarded calls during its lifetime. If another call is in progress, the constructor does not wait,
/// and OwnsLock() is false. The lock is released if its thread ends during a call.
class CallLock
{
public:
    CallLock();
    ~CallLock();

    CallLock(const CallLock&) = delete;
    CallLock& operator=(const CallLock&) = delete;

    bool OwnsLock() const { return m_ownsLock; }

private:
    bool m_ownsLock = false;
};

} // namespace product_services_guard
