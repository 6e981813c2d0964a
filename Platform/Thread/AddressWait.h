// Sleeping on a word of memory: what events, locks and threads of this library rest on. Internal to it.
//
// A thread sleeps for as long as a word holds the value that it has seen, or until another thread that has changed the
// word wakes it. Nothing is made or freed for it, and a word that nobody sleeps on costs nothing: the callers keep
// count of who sleeps, and wake only then.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

class CAddressWait
{
public:
    using Word = std::atomic<std::uint32_t>;
    using TimePoint = std::chrono::steady_clock::time_point;

    // A deadline that never comes.
    static constexpr TimePoint withoutLimit = TimePoint::max();

    // Sleeps until woken or until `deadline`, but not at all if `word` does not hold `seen` any more. May return for no
    // reason: callers look and sleep again.
    static void Sleep(const Word& word, std::uint32_t seen, TimePoint deadline);

    // Wake one, or all, of those who sleep on the word at this address. The word itself is not looked at and may be
    // gone already.
    static void WakeOne(const Word* word);
    static void WakeAll(const Word* word);

    // The deadline of a wait of `timeoutMs` milliseconds that begins now.
    static TimePoint Deadline(unsigned long timeoutMs)
    {
        return std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    }
};
