// What a test may watch in the plain edition, and break in it. Nothing of the kind happens unless a test asks for it.
//
// The library cannot include this header: it does not lie below the folder of the contract's headers.
#pragma once

#include <atomic>
#include <string>

// Hears of every wait that the edition is asked for, with its time-out, on the thread that asks.
class CPlainWaitListener
{
public:
    virtual void EventWait(const void* event, unsigned long timeoutMs) = 0;
    virtual void ExitWait(const std::string& threadName, unsigned timeoutMs) = 0;
    virtual void FIFOWait(const char* operation, unsigned long timeoutMs) = 0;

protected:
    ~CPlainWaitListener() = default;
};

struct SPlainHook
{
    static inline std::atomic<CPlainWaitListener*> waitListener{nullptr}; // the test's; set while no thread waits

    // Creations of threads: how many were asked for, brought a thread, and run; the one of that number fails (0: none).
    static inline std::atomic<int> failingCreation{0};
    static inline std::atomic<int> creationCount{0};
    static inline std::atomic<int> startedCount{0};
    static inline std::atomic<int> runningCount{0};

    // Waits for a thread's end that are limited to exactly an hour give up after 50 ms.
    static inline std::atomic<bool> bShortHour{false};
};
