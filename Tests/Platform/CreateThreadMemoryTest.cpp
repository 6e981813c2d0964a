// A thread cannot be created when memory is short: that is a null, whichever allocation fails.
//
// This file brings the operators new of the whole test executable, of which one call can fail. Not on Windows, where
// threads are the system's own.
#include "Platform/Thread/CreateThread.h"
#include "Tests/Platform/ScriptedWorker.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace
{

thread_local int t_untilFailure = 0; // which allocation of this thread fails, counted from now; 0: none

bool Failure_Take()
{
    return t_untilFailure > 0 && --t_untilFailure == 0;
}

unsigned long Number_Set(void* param)
{
    *static_cast<int*>(param) = 1;
    return 0;
}

// Creates a thread while the nth allocation fails. Whether none had to, so that all have had their turn.
bool Thread_CreateStarved(int nth, HANDLE& thread, int& number)
{
    t_untilFailure = nth;
    EXPECT_NO_THROW(thread = CreateThread(nullptr, 0, &Number_Set, &number, 0, nullptr));
    const bool bAllThere = t_untilFailure > 0;
    t_untilFailure = 0;
    return bAllThere;
}

} // namespace

void* operator new(std::size_t size)
{
    void* block = Failure_Take() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Failure_Take() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    std::free(block);
}

void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept
{
    std::free(block);
}

TEST(CreateThreadMemory, WhicheverAllocationFailsTheThreadIsNullAndTheNextOneIsCreated)
{
    for (const bool bSleeping : {false, true})
    {
        int failureCount = 0;
        for (int nth = 1;; ++nth)
        {
            if (!bSleeping)
            {
                SleepingThreads_End();
            }
            HANDLE thread = nullptr;
            int number = 0;
            const bool bAllThere = Thread_CreateStarved(nth, thread, number);
            EXPECT_EQ(thread != nullptr, bAllThere) << nth;
            failureCount += bAllThere ? 0 : 1;
            const HANDLE next = bAllThere ? thread : CreateThread(nullptr, 0, &Number_Set, &number, 0, nullptr);
            ASSERT_NE(next, nullptr) << nth;
            EXPECT_EQ(WaitForSingleObject(next, INFINITE), WAIT_OBJECT_0);
            EXPECT_EQ(number, 1);
            CloseHandle(next);
            if (bAllThere)
            {
                break;
            }
        }
        EXPECT_EQ(failureCount, bSleeping ? 1 : 2); // the thread's record, and the system thread's
    }
}

TEST(CreateThreadMemory, AWorkerThatGetsNoThreadForWantOfMemoryIsNotStartedAndCanBeStartedLater)
{
    SleepingThreads_End();
    CScriptedWorker worker([] { return false; });
    t_untilFailure = 1;
    const bool bStarted = worker.Start("Worker"); // a name that needs no memory
    t_untilFailure = 0;
    EXPECT_FALSE(bStarted);
    EXPECT_EQ(worker.State(), TamBaseThread::NotStarted);
    EXPECT_EQ(worker.ThreadHandle(), nullptr);
    EXPECT_TRUE(worker.RunToItsEnd());
}
