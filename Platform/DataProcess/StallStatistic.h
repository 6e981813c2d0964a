// How often, and for how long, one side of a FIFO had to wait for the other.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

struct SStallStatistic
{
    std::int64_t m_count = 0; // waits that did not find what they wanted at once; a wait that is repeated counts again
    std::chrono::nanoseconds m_duration{0};
};

// Counts stalls from any thread.
class CStallCounter
{
public:
    // Runs `ready()`, a probe that returns at once; if it says no, runs `wait()` and counts the time. Returns what the
    // last of them returned.
    template<class Ready, class Wait>
    bool Measure(Ready ready, Wait wait)
    {
        if (ready())
        {
            return true;
        }
        const auto begin = std::chrono::steady_clock::now();
        const bool bResult = wait();
        m_nanoseconds += (std::chrono::steady_clock::now() - begin) / std::chrono::nanoseconds(1);
        ++m_count;
        return bResult;
    }

    SStallStatistic Get() const { return {m_count, std::chrono::nanoseconds(m_nanoseconds)}; }

private:
    std::atomic<std::int64_t> m_count{0};
    std::atomic<std::int64_t> m_nanoseconds{0};
};
