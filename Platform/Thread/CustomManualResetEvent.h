// A manual-reset event: a flag that threads can wait for.
//
// Once set it stays set, for every waiter, until it is reset. Any thread may call any operation. Two promises matter to
// the data path:
//   - a probe (time-out 0), a wait on an event that is set, and a Set or Reset while nobody waits, make no system call;
//   - a wait on a worker thread (TamBaseThread) ends early, as if it had timed out, as soon as a stop of that worker
//     has been requested, whether before the wait or during it. A stop request never hides a signal: an event that is
//     set is reported as set.
#pragma once

#include "Platform/PlatformExport.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

class PLATFORM_API CCustomManualResetEvent
{
public:
    // A time-out with all 32 bits set waits without limit.
    static constexpr unsigned long waitWithoutLimit = 0xFFFFFFFFUL;

    explicit CCustomManualResetEvent(bool bInitiallySet);

    // Releases the threads that still wait (they see a signalled event) and returns when the last of them has left. No
    // thread may be in Set or Reset, or come to Wait, while it runs.
    ~CCustomManualResetEvent();

    CCustomManualResetEvent(const CCustomManualResetEvent&) = delete;
    CCustomManualResetEvent& operator=(const CCustomManualResetEvent&) = delete;

    // Waits up to `timeoutMs` milliseconds for the event to be set; true if it is. 0 probes without waiting. A Set that
    // is reset before a waiter has looked may pass it by. The second argument has no meaning; callers pass 0.
    bool Wait(unsigned long timeoutMs, int reserved = 0);

    void Set();
    void Reset();

private:
    friend class CWorkerWait;

    bool Wait_Slow(unsigned long timeoutMs);
    void WakeAll();

    std::atomic<bool> m_bSet;
    std::atomic<int> m_waiterCount{0};
    std::mutex m_mutex;
    std::condition_variable m_changed;
};
