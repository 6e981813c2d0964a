// The operating system's threads, under one set of names on every system.
//
// On Windows this is the system's own header. Elsewhere it declares the few operations that the thread library needs,
// with the same names, arguments and results, so that the code above reads the same on both.
#pragma once

#if defined(_WIN32)

#if !defined(WIN32_LEAN_AND_MEAN)
#define WIN32_LEAN_AND_MEAN
#endif
#if !defined(NOMINMAX)
#define NOMINMAX // or std::min and std::max are macros wherever a worker is declared
#endif
#include <windows.h>

#else

#include "Platform/PlatformExport.h"

#include <cstddef>
#include <cstdint>

using HANDLE = void*;
using DWORD = std::uint32_t;
using ThreadStartRoutine = unsigned long (*)(void*);

constexpr DWORD INFINITE = 0xFFFFFFFF;
constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;

// Starts a thread that runs `startRoutine(parameter)`; its return value becomes the exit code (32 bits). Returns the
// thread's handle, to be closed with CloseHandle, or null when the system has no thread or no memory left; it throws
// nothing. `*threadId` (if not null) receives a number that no other thread of this process has had.
// `securityAttributes` must be null, `stackSize` 0 asks for the process default, and `creationFlags` must be 0: any
// other flag is refused with null.
//
// A thread with the default stack may run on a system thread that has run another one before, and that has slept since.
// It starts as a new one would: with the signal mask, the processor affinity, the niceness and scheduling policy, the
// name and the floating-point environment of the thread that calls CreateThread. But what is thread_local there may be
// older than the thread, and its destructors run later.
PLATFORM_API HANDLE CreateThread(void* securityAttributes, std::size_t stackSize, ThreadStartRoutine startRoutine,
                                 void* parameter, DWORD creationFlags, DWORD* threadId);

// Waits up to `timeoutMs` (INFINITE: without limit) for the thread to end: WAIT_OBJECT_0, or WAIT_TIMEOUT. Any number
// of threads may wait, any number of times.
PLATFORM_API DWORD WaitForSingleObject(HANDLE thread, DWORD timeoutMs);

// The exit code of a thread that has ended; false while it runs.
PLATFORM_API bool GetExitCodeThread(HANDLE thread, DWORD* exitCode);

// Gives the handle up. The thread, if it still runs, goes on.
PLATFORM_API bool CloseHandle(HANDLE thread);

// Ends the system threads that have nothing to run at the moment, and returns when they are gone. They end by
// themselves after a minute of sleep, and when the process exits; this is for a host that wants their stacks back
// at once. Threads that run are not touched.
PLATFORM_API void SleepingThreads_End();

#endif
