#include "calls/call_lock.h"

#include <windows.h>

namespace product_services_guard {
namespace {

// A mutex belongs to a thread, and Windows says when its thread has ended. It goes with this DLL.
class CallMutex
{
public:
    CallMutex() : m_handle(CreateMutexW(nullptr, FALSE, nullptr)) {}
    ~CallMutex() { CloseHandle(m_handle); }

    CallMutex(const CallMutex&) = delete;
    CallMutex& operator=(const CallMutex&) = delete;

    HANDLE Handle() const { return m_handle; }

private:
    HANDLE m_handle;
};
CallMutex callMutex;

// Whether the thread that owns the mutex is within a call: it may take the mutex more than once.
bool isCallInProgress = false;

} // namespace

CallLock::CallLock()
{
    const DWORD result = WaitForSingleObject(callMutex.Handle(), 0);
    if (result == WAIT_ABANDONED) {
        isCallInProgress = false;
    } else if (result != WAIT_OBJECT_0) {
        return;
    }
    if (isCallInProgress) {
        ReleaseMutex(callMutex.Handle());
        return;
    }
    isCallInProgress = true;
    m_ownsLock = true;
}

CallLock::~CallLock()
{
    if (m_ownsLock) {
        isCallInProgress = false;
        ReleaseMutex(callMutex.Handle());
    }
}

} // namespace product_services_guard
