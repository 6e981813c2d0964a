// State that several threads share, as the plain edition guards it: a mutex, and a condition variable for whoever waits
// for a change. What stands behind the worker base and the band FIFOs is written in terms of it, so that the simulated
// edition, which has a monitor of this name too, is made of the same sources.
//
// The library cannot include this header: it does not lie below the folder of the contract's headers.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

class CPlainMonitor
{
public:
    static constexpr unsigned long withoutLimit = 4294967295UL; // of a time-out

    // Changes the state. Whoever waits looks again.
    template<class TChange>
    void Change(TChange change)
    {
        const std::lock_guard guard(m_mutex);
        change();
        m_changed.notify_all();
    }

    // Returns what `look` sees.
    template<class TLook>
    auto Look(TLook look)
    {
        const std::lock_guard guard(m_mutex);
        return look();
    }

    // Waits up to `timeoutMs` until `condition` holds; true if it does.
    template<class TCondition>
    bool Wait(TCondition condition, unsigned long timeoutMs)
    {
        std::unique_lock lock(m_mutex);
        return Wait_Locked(lock, condition, timeoutMs);
    }

    // The same, and then changes the state before anybody else can.
    template<class TCondition, class TChange>
    bool WaitAndChange(TCondition condition, unsigned long timeoutMs, TChange change)
    {
        std::unique_lock lock(m_mutex);
        if (!Wait_Locked(lock, condition, timeoutMs))
        {
            return false;
        }
        change();
        m_changed.notify_all();
        return true;
    }

private:
    template<class TCondition>
    bool Wait_Locked(std::unique_lock<std::mutex>& lock, TCondition& condition, unsigned long timeoutMs)
    {
        if (timeoutMs == withoutLimit)
        {
            m_changed.wait(lock, condition);
            return true;
        }
        return m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), condition);
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
};
