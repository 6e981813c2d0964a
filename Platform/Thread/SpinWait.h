// Looking again for a few microseconds before sleeping: the other side is often just about to be done. Internal to the
// thread library.
//
// Nothing spins where the process has one core only. A spin that was in vain costs the core to somebody else, so the
// waits that spin keep a score of how it went and leave it for a while after they lost.
#pragma once

#include "Compiler/KelCompiler.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

class CSpinWait
{
public:
    // Calls `done` until it is true or `limit` has passed; returns what it said last. Between two calls it rests for
    // `restCount` pauses of the processor: looking takes the cache line away from those who write there. After a spin
    // that was in vain the next ones are left out, twice as many each time; `done` is then called once.
    template<class Done>
    bool Until(Done done, std::chrono::nanoseconds limit, int restCount)
    {
        if (done())
        {
            return true;
        }
        const std::uint16_t leftOut = m_leftOut.load(std::memory_order_relaxed);
        if (leftOut > 0 || !IsWorthwhile())
        {
            m_leftOut.store(static_cast<std::uint16_t>(leftOut - (leftOut > 0)), std::memory_order_relaxed);
            return false;
        }
        const bool bDone = Spin(done, limit, restCount);
        const std::uint16_t penalty = m_penalty.load(std::memory_order_relaxed);
        const auto next = static_cast<std::uint16_t>(bDone ? 0 : std::min(penalty * 2 + 1, penaltyLimit));
        m_penalty.store(next, std::memory_order_relaxed);
        m_leftOut.store(next, std::memory_order_relaxed);
        return bDone;
    }

    template<class Done>
    static bool Spin(Done done, std::chrono::nanoseconds limit, int restCount)
    {
        const auto end = std::chrono::steady_clock::now() + limit;
        do
        {
            for (int i = 0; i < restCount; ++i)
            {
                KEL_CPU_RELAX();
            }
            if (done())
            {
                return true;
            }
        } while (std::chrono::steady_clock::now() < end);
        return false;
    }

    static bool IsWorthwhile()
    {
        static const bool bManyCores = std::thread::hardware_concurrency() > 1;
        return bManyCores;
    }

private:
    static constexpr int penaltyLimit = 3;

    // Several threads may spin at once: a score that one of them overwrites is no loss.
    std::atomic<std::uint16_t> m_leftOut{0}; // spins to leave out
    std::atomic<std::uint16_t> m_penalty{0}; // how many it was the last time
};
