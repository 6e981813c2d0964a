// A one-way signal between the threads of a test: raised once, seen by all. Waiting is bounded, so that a test whose
// other side never comes fails instead of hanging.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

// Long enough for the slowest machine under a sanitizer; nobody sits through it unless something is wrong.
constexpr std::chrono::seconds testPatience{60};
constexpr unsigned testPatienceMs = 60'000;
constexpr unsigned withoutLimit = 4294967295U;

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
