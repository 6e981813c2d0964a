// The manual-reset event on Windows: an atomic flag for those who only look, a kernel event for those who sleep.
//
// The flag is the event's state. The kernel event follows it, but only while somebody waits: whoever changes the flag
// or begins to wait then brings the kernel event up to date, under a lock. Both sides go through two sequentially
// consistent atomics, the flag and the number of waiters: a waiter announces itself before it looks at the flag, Set
// and Reset store the flag before they look for waiters, so one of the two always sees the other, and the last of those
// who hold the lock has seen the flag's last value. A stale kernel event from a time without waiters is thus put right
// before the next waiter sleeps, and a kernel event that releases a waiter was set during its wait.
#include "Platform/Thread/CreateThread.h"
#include "Platform/Thread/CustomManualResetEvent.h"
#include "Platform/Thread/WorkerWait.h"

#include <chrono>

namespace
{

using Clock = std::chrono::steady_clock;

// What is left until `deadline`, in milliseconds rounded up.
DWORD TimeLeft(Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<DWORD>(left) : 0;
}

// Waits for the event, and on a worker also for the event that cuts its waits short. Returns what ended the wait. The
// system counts in ticks of its clock and may give up a tick early; this function does not.
DWORD Handles_Wait(HANDLE event, unsigned long timeoutMs)
{
    const HANDLE handles[] = {event, CWorkerWait::CutHandle_Get()};
    const DWORD handleCount = handles[1] == nullptr ? 1 : 2;
    if (timeoutMs == CCustomManualResetEvent::waitWithoutLimit)
    {
        return WaitForMultipleObjects(handleCount, handles, FALSE, INFINITE);
    }
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    DWORD left = timeoutMs;
    DWORD result = WAIT_TIMEOUT;
    while (result == WAIT_TIMEOUT && left > 0)
    {
        result = WaitForMultipleObjects(handleCount, handles, FALSE, left);
        left = TimeLeft(deadline);
    }
    return result;
}

} // namespace

CCustomManualResetEvent::CCustomManualResetEvent(bool bInitiallySet) : m_bSet(bInitiallySet) {}

CCustomManualResetEvent::~CCustomManualResetEvent()
{
    m_bSet = true;
    Kernel_Follow();
    for (int count = m_waiterCount; count != 0; count = m_waiterCount)
    {
        WaitOnAddress(&m_waiterCount, &count, sizeof(count), INFINITE);
    }
}

bool CCustomManualResetEvent::Wait(unsigned long timeoutMs, int /*reserved*/)
{
    const bool bSet = m_bSet;
    return bSet || timeoutMs == 0 ? bSet : Wait_Slow(timeoutMs);
}

bool CCustomManualResetEvent::Wait_Slow(unsigned long timeoutMs)
{
    static_assert(sizeof(m_waiterCount) == sizeof(int), "the count is waited on as a plain number");
    ++m_waiterCount;
    Kernel_Follow();
    const bool bReleased = Handles_Wait(m_kernelEvent.Handle(), timeoutMs) == WAIT_OBJECT_0;
    const bool bSet = bReleased || m_bSet;
    // The destructor may run from here on; of the count, only its address is still used.
    if (--m_waiterCount == 0)
    {
        WakeByAddressAll(&m_waiterCount);
    }
    return bSet;
}

void CCustomManualResetEvent::Set()
{
    m_bSet = true;
    if (m_waiterCount > 0)
    {
        Kernel_Follow();
    }
}

void CCustomManualResetEvent::Reset()
{
    m_bSet = false;
    if (m_waiterCount > 0)
    {
        Kernel_Follow();
    }
}

// Gives the kernel event the flag's state.
void CCustomManualResetEvent::Kernel_Follow()
{
    const CEnterLeaveCriticalSection guard(m_kernelLock);
    const bool bSet = m_bSet;
    if (bSet == m_bKernelSet)
    {
        return;
    }
    m_bKernelSet = bSet;
    m_kernelEvent.State_Set(bSet);
}
