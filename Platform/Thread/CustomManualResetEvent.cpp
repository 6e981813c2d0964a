// The manual-reset event: an atomic flag for those who only look, a condition variable for those who sleep.
//
// Set and Wait meet through two sequentially consistent atomics, the flag and the number of waiters: a waiter announces
// itself before it looks at the flag for the last time, Set stores the flag before it looks for waiters, so one of the
// two always sees the other.
#include "Platform/Thread/CustomManualResetEvent.h"

#include "Platform/Thread/WorkerWait.h"

#include <chrono>

CCustomManualResetEvent::CCustomManualResetEvent(bool bInitiallySet) : m_bSet(bInitiallySet) {}

CCustomManualResetEvent::~CCustomManualResetEvent()
{
    std::unique_lock lock(m_mutex);
    m_bSet = true;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_waiterCount == 0; });
}

bool CCustomManualResetEvent::Wait(unsigned long timeoutMs, int /*reserved*/)
{
    const bool bSet = m_bSet;
    return bSet || timeoutMs == 0 ? bSet : Wait_Slow(timeoutMs);
}

bool CCustomManualResetEvent::Wait_Slow(unsigned long timeoutMs)
{
    bool bSet = false;
    ++m_waiterCount;
    {
        const CWorkerWait worker(*this);
        std::unique_lock lock(m_mutex);
        const auto bDone = [&]
        {
            bSet = m_bSet;
            return bSet || worker.IsStopRequested();
        };
        if (timeoutMs >= waitWithoutLimit)
        {
            m_changed.wait(lock, bDone);
        }
        else
        {
            m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), bDone);
        }
    }
    // Last, when no stop request can reach this event through the worker any more: the destructor waits for this.
    const std::lock_guard lock(m_mutex);
    if (--m_waiterCount == 0)
    {
        m_changed.notify_all();
    }
    return bSet;
}

void CCustomManualResetEvent::Set()
{
    m_bSet = true;
    if (m_waiterCount > 0)
    {
        WakeAll();
    }
}

void CCustomManualResetEvent::Reset()
{
    m_bSet = false;
}

void CCustomManualResetEvent::WakeAll()
{
    // Through the mutex: a waiter that has announced itself but does not sleep yet holds it.
    const std::lock_guard lock(m_mutex);
    m_changed.notify_all();
}
