#include "calls/call_lock.h"

#include <windows.h>

namespace product_services_guard {
namespace {

// A mutex is owned by a thread, and Windows reports if that thread has ended. Closed when this DLL is
// unloaded.
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

// Whether the thread that owns the mutex is in a call. The mutex alone is not enough, because its thread can
// acquire it more than once.
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
