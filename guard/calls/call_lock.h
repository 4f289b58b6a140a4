// One guarded call at a time.
#pragma once

namespace product_services_guard {

/// Marks a call as the one in progress while it lives, unless another one is: then it does not wait, and
/// OwnsLock() is false. A thread that ended within a call gives the lock up.
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
