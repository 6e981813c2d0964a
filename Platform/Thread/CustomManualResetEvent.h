// A manual-reset event: a flag that threads can wait for.
//
// Once set it stays set, for every waiter, until it is reset. Any thread may call any operation. Two promises matter to
// the data path:
//   - a probe (time-out 0), a wait on an event that is set, and a Set or Reset while nobody waits, make no system call;
//   - a wait in a worker's Prepare or OneLoop (TamBaseThread) ends early, as if it had timed out, as soon as another
//     thread has requested the worker's stop, whether before the wait or during it. A stop request never hides a
//     signal: an event that is set is reported as set.
#pragma once

#include "Platform/PlatformExport.h"
#include "Platform/Thread/SpinWait.h"

#include <atomic>
#include <cstdint>

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

    // m_word: the flag, and above it a count that makes every wake-up without a signal a change.
    static constexpr std::uint32_t setBit = 1;
    static constexpr std::uint32_t wakeOne = 2;
    // m_waiters: how many waits are in progress, how many of them may sleep, and whether the destructor waits for them.
    static constexpr std::uint32_t waiterOne = 1;
    static constexpr std::uint32_t sleeperOne = 1U << 16;
    static constexpr std::uint32_t destroyedBit = 1U << 31;

    bool IsSet() const { return (m_word.load() & setBit) != 0; }
    bool Wait_Slow(unsigned long timeoutMs);
    bool Wait_IsOver(std::uint32_t& word) const;
    void WakeAll();
    void Wake();

    std::atomic<std::uint32_t> m_word;
    std::atomic<std::uint32_t> m_waiters{0};
    CSpinWait m_spin;
};

inline bool CCustomManualResetEvent::Wait(unsigned long timeoutMs, int /*reserved*/)
{
    return IsSet() || (timeoutMs != 0 && Wait_Slow(timeoutMs));
}

inline void CCustomManualResetEvent::Set()
{
    m_word.fetch_or(setBit);
    if (m_waiters.load() >= sleeperOne)
    {
        Wake();
    }
}

inline void CCustomManualResetEvent::Reset()
{
    m_word.fetch_and(~setBit);
}
