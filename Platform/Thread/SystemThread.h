// The system threads on which CreateThread runs its threads, one after the other. Internal to the thread library; not
// on Windows.
//
// Making a system thread costs more than most bands. So a system thread that has done its job sleeps for a while and
// then takes the next one, if there is one by then. A job always starts with the attributes that a new thread would
// have inherited from the thread that starts the job: signal mask, processor affinity, scheduling (niceness, policy,
// priority), name and floating-point environment; and with the C library's global locale.
#pragma once

#include <cstddef>

// What a system thread does. It outlives the call of Ended.
class CSystemThreadJob
{
public:
    // The work. Runs on the system thread.
    virtual void Run() = 0;

    // Called on the system thread after Run, when that thread can be had for the next job, if it ever can.
    virtual void Ended() = 0;

protected:
    ~CSystemThreadJob() = default;
};

class CSystemThread
{
public:
    // Runs `job` on a system thread. False if the system has no thread or no memory left; nothing is thrown. A job with
    // the default stack (`stackSize` 0) may get a thread that sleeps; a stack of another size is a new thread's own.
    static bool Start(CSystemThreadJob& job, std::size_t stackSize);

    // Ends and joins the threads that sleep.
    static void Sleeping_End();
};
