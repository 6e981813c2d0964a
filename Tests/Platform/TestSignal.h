// A one-way signal between the threads of a test: raised once, seen by all. Waiting is bounded, so that a test whose
// other side never comes fails instead of hanging.
#pragma once

#include "KelCommon/KelWait.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

// Long enough for the slowest machine under a sanitizer; nobody sits through it unless something is wrong.
constexpr std::chrono::seconds testPatience{60};
constexpr unsigned testPatienceMs = 60'000;
constexpr unsigned withoutLimit = kelWait_WithoutLimit;

class CTestSignal
{
public:
    void Raise()
    {
        const std::lock_guard guard(m_lock);
        m_bRaised = true;
        m_raised.notify_all();
    }

    // True once the signal is raised; false if that takes too long.
    bool Wait()
    {
        std::unique_lock lock(m_lock);
        return m_raised.wait_for(lock, testPatience, [this] { return m_bRaised; });
    }

    bool IsRaised()
    {
        const std::lock_guard guard(m_lock);
        return m_bRaised;
    }

private:
    std::mutex m_lock;
    std::condition_variable m_raised;
    bool m_bRaised = false;
};

// The median of what `round` says that it took, called `roundCount` times. A wait that rounds sit through shows in it;
// a machine that was busy with something else during some of them does not.
template<class Round>
std::chrono::milliseconds MedianRound_Get(int roundCount, Round round)
{
    std::vector<std::chrono::milliseconds> times;
    for (int i = 0; i < roundCount; ++i)
    {
        times.push_back(std::chrono::duration_cast<std::chrono::milliseconds>(round(i)));
    }
    std::nth_element(times.begin(), times.begin() + roundCount / 2, times.end());
    return times[static_cast<std::size_t>(roundCount / 2)];
}

// Milliseconds since construction.
class CStopWatch
{
public:
    std::chrono::milliseconds Elapsed() const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - m_begin);
    }

private:
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};
