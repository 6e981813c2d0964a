// The system's threads under their common names, and the recursive lock.
#include "Platform/Thread/CreateThread.h"
#include "Platform/Thread/CustomCriticalSection.h"
#include "Tests/Platform/SystemProbe.h"
#include "Tests/Platform/TestSignal.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <set>
#include <thread>
#include <vector>

namespace
{

using namespace std::chrono_literals;

struct SJob
{
    CTestSignal started;
    CTestSignal release;
    std::atomic<bool> bEnded{false};
};

unsigned long WaitForRelease(void* param)
{
    auto* job = static_cast<SJob*>(param);
    job->started.Raise();
    job->release.Wait();
    job->bEnded = true;
    return 42;
}

unsigned long ReturnAtOnce(void* param)
{
    return *static_cast<unsigned long*>(param);
}

} // namespace

TEST(CreateThread, RunsTheRoutineWithItsParameterAndKeepsTheExitCode)
{
    unsigned long value = 0xFFFFFFFFUL;
    DWORD threadId = 0;
    const HANDLE thread = CreateThread(nullptr, 0, &ReturnAtOnce, &value, 0, &threadId);
    ASSERT_NE(thread, nullptr);
    EXPECT_NE(threadId, 0U);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    DWORD exitCode = 0;
    EXPECT_TRUE(GetExitCodeThread(thread, &exitCode));
    EXPECT_EQ(exitCode, 0xFFFFFFFFU);
    EXPECT_TRUE(CloseHandle(thread));
}

TEST(CreateThread, AWaitTimesOutWhileTheThreadRunsAndIsOverOnceItHasEnded)
{
    SJob job;
    const HANDLE thread = CreateThread(nullptr, 0, &WaitForRelease, &job, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    ASSERT_TRUE(job.started.Wait());
    EXPECT_EQ(WaitForSingleObject(thread, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    const CStopWatch watch;
    EXPECT_EQ(WaitForSingleObject(thread, 30), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_GE(watch.Elapsed(), 29ms);

    job.release.Raise();
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(job.bEnded);
    EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(thread));
}

TEST(CreateThread, ManyThreadsMayWaitForOne)
{
    SJob job;
    const HANDLE thread = CreateThread(nullptr, 0, &WaitForRelease, &job, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    std::atomic<int> seenCount{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 8; ++i)
    {
        waiters.emplace_back(
            [&, i]
            {
                const DWORD timeoutMs = i % 2 == 0 ? INFINITE : testPatienceMs;
                seenCount += WaitForSingleObject(thread, timeoutMs) == WAIT_OBJECT_0 && job.bEnded ? 1 : 0;
            });
    }
    job.release.Raise();
    for (auto& waiter : waiters)
    {
        waiter.join();
    }
    EXPECT_EQ(seenCount, 8);
    EXPECT_TRUE(CloseHandle(thread));
}

TEST(CreateThread, AThreadWhoseHandleIsClosedGoesOn)
{
    SJob job;
    const HANDLE thread = CreateThread(nullptr, 0, &WaitForRelease, &job, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    ASSERT_TRUE(job.started.Wait());
    EXPECT_TRUE(CloseHandle(thread));
    EXPECT_FALSE(job.bEnded);
    job.release.Raise();
    const CStopWatch watch;
    while (!job.bEnded && watch.Elapsed() < testPatience)
    {
        std::this_thread::yield();
    }
    EXPECT_TRUE(job.bEnded);
}

TEST(CreateThread, EveryThreadHasANumberOfItsOwn)
{
    std::set<DWORD> ids;
    std::vector<HANDLE> threads;
    SJob job;
    for (int i = 0; i < 16; ++i)
    {
        DWORD id = 0;
        threads.push_back(CreateThread(nullptr, 0, &WaitForRelease, &job, 0, &id));
        ids.insert(id);
    }
    job.release.Raise();
    for (const HANDLE thread : threads)
    {
        EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
        CloseHandle(thread);
    }
    EXPECT_EQ(ids.size(), 16U);
}

#if !defined(_WIN32)

TEST(CreateThread, RefusesWhatOnlyTheOtherSystemHas)
{
    int anything = 0;
    DWORD threadId = 7;
    unsigned long value = 0;
    constexpr DWORD createSuspended = 4;
    EXPECT_EQ(CreateThread(nullptr, 0, &ReturnAtOnce, &value, createSuspended, &threadId), nullptr);
    EXPECT_EQ(CreateThread(&anything, 0, &ReturnAtOnce, &value, 0, &threadId), nullptr);
    EXPECT_EQ(CreateThread(nullptr, 0, nullptr, &value, 0, &threadId), nullptr);
    EXPECT_EQ(threadId, 7U);
}

TEST(CreateThread, IsNullForAStackThatTheSystemCannotGive)
{
    unsigned long value = 0;
    EXPECT_EQ(CreateThread(nullptr, std::size_t{1} << 60, &ReturnAtOnce, &value, 0, nullptr), nullptr);
}

TEST(CreateThread, ARunningThreadHasNoExitCodeYet)
{
    SJob job;
    const HANDLE thread = CreateThread(nullptr, 0, &WaitForRelease, &job, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    DWORD exitCode = 0;
    EXPECT_FALSE(GetExitCodeThread(thread, &exitCode));
    job.release.Raise();
    WaitForSingleObject(thread, INFINITE);
    EXPECT_TRUE(GetExitCodeThread(thread, &exitCode));
    EXPECT_EQ(exitCode, 42U);
    CloseHandle(thread);
}

namespace
{

// Runs a thread to its end and says which system thread it was on.
std::thread::id Thread_Run(DWORD* threadId = nullptr, std::size_t stackSize = 0)
{
    std::thread::id id;
    const auto noteId = [](void* param) -> unsigned long
    {
        *static_cast<std::thread::id*>(param) = std::this_thread::get_id();
        return 0;
    };
    const HANDLE thread = CreateThread(nullptr, stackSize, noteId, &id, 0, threadId);
    EXPECT_NE(thread, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    CloseHandle(thread);
    return id;
}

} // namespace

TEST(CreateThread, ASystemThreadThatHasSleptRunsTheNextThreadUnderANewNumber)
{
    SleepingThreads_End();
    DWORD firstId = 0;
    const auto first = Thread_Run(&firstId);
    for (int i = 0; i < 1000; ++i)
    {
        DWORD id = 0;
        ASSERT_EQ(Thread_Run(&id), first) << i;
        ASSERT_NE(id, firstId);
    }
}

TEST(CreateThread, AThreadWithAStackOfItsOwnHasASystemThreadOfItsOwn)
{
    SleepingThreads_End();
    const auto first = Thread_Run();
    EXPECT_NE(Thread_Run(nullptr, 1 << 20), first);
    EXPECT_EQ(Thread_Run(), first);
}

TEST(CreateThread, SleepingThreadsCanBeEndedAndRunningOnesAreNotTouched)
{
    if (!CSystemProbe::IsAvailable())
    {
        GTEST_SKIP() << "the system does not tell how many threads there are";
    }
    SleepingThreads_End();
    SJob job;
    const HANDLE running = CreateThread(nullptr, 0, &WaitForRelease, &job, 0, nullptr);
    ASSERT_TRUE(job.started.Wait());
    const long before = CSystemProbe::ThreadCount();
    Thread_Run();
    EXPECT_GT(CSystemProbe::ThreadCount(), before);
    SleepingThreads_End();
    const CStopWatch watch; // a thread that has ended is listed a moment longer
    while (CSystemProbe::ThreadCount() > before && watch.Elapsed() < testPatience)
    {
        std::this_thread::yield();
    }
    EXPECT_EQ(CSystemProbe::ThreadCount(), before);
    EXPECT_FALSE(job.bEnded);
    job.release.Raise();
    EXPECT_EQ(WaitForSingleObject(running, INFINITE), WAIT_OBJECT_0);
    CloseHandle(running);
}

TEST(CreateThread, SleepingThreadsCanBeEndedWhileOthersStartThreads)
{
    std::atomic<bool> bDone{false};
    std::thread ender(
        [&]
        {
            while (!bDone)
            {
                SleepingThreads_End();
            }
        });
    std::vector<std::thread> starters;
    for (int i = 0; i < 3; ++i)
    {
        starters.emplace_back(
            []
            {
                for (int run = 0; run < 200; ++run)
                {
                    Thread_Run();
                }
            });
    }
    for (auto& starter : starters)
    {
        starter.join();
    }
    bDone = true;
    ender.join();
}

TEST(CreateThread, AHandleThatIsClosedAtTheSameMomentAsTheThreadEndsIsNoHarm)
{
    for (int round = 0; round < 2000; ++round)
    {
        unsigned long value = 1;
        SJob job;
        const HANDLE waited = CreateThread(nullptr, 0, &ReturnAtOnce, &value, 0, nullptr);
        const HANDLE closed = CreateThread(nullptr, 0, &WaitForRelease, &job, 0, nullptr);
        job.release.Raise();
        CloseHandle(closed);
        ASSERT_EQ(WaitForSingleObject(waited, INFINITE), WAIT_OBJECT_0);
        CloseHandle(waited);
        while (!job.bEnded)
        {
            std::this_thread::yield();
        }
    }
}

// ThreadSanitizer does not take threads in a child of a process with threads.
#if !defined(__SANITIZE_THREAD__)
TEST(CreateThreadDeathTest, AChildProcessDoesNotWaitForItsParentsThreads)
{
    Thread_Run(); // one sleeps now, in this process
    const auto runInTheChild = []
    {
        Thread_Run();
        std::_Exit(0);
    };
    EXPECT_EXIT(runInTheChild(), testing::ExitedWithCode(0), "");
}
#endif

#endif

TEST(CustomCriticalSection, TheThreadThatHoldsItMayEnterAgain)
{
    CCustomCriticalSection section;
    std::atomic<bool> bEntered{false};
    section.Enter();
    section.Enter();
    std::thread other(
        [&]
        {
            const CEnterLeaveCriticalSection guard(section);
            bEntered = true;
        });
    std::this_thread::sleep_for(5ms);
    EXPECT_FALSE(bEntered);
    section.Leave();
    std::this_thread::sleep_for(5ms);
    EXPECT_FALSE(bEntered); // one Leave is still missing
    section.Leave();
    other.join();
    EXPECT_TRUE(bEntered);
}

TEST(CustomCriticalSection, TheGuardHoldsItForItsScope)
{
    CCustomCriticalSection section;
    constexpr int perThread = 5000;
    int count = 0; // not atomic: the section orders it
    const auto add = [&]
    {
        for (int i = 0; i < perThread; ++i)
        {
            const CEnterLeaveCriticalSection outer(section);
            const CEnterLeaveCriticalSection inner(section);
            ++count;
        }
    };
    std::thread other(add);
    add();
    other.join();
    EXPECT_EQ(count, 2 * perThread);
}

TEST(CustomCriticalSection, ManyThreadsThatTakeItInTurnsLoseNothing)
{
    CCustomCriticalSection section;
    constexpr int perThread = 2000;
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
    {
        threads.emplace_back(
            [&, i]
            {
                for (int turn = 0; turn < perThread; ++turn)
                {
                    const CEnterLeaveCriticalSection guard(section);
                    if ((turn + i) % 64 == 0)
                    {
                        std::this_thread::yield(); // held for so long that the others sleep
                    }
                    const CEnterLeaveCriticalSection again(section);
                    ++count;
                }
            });
    }
    for (auto& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(count, 8 * perThread);
}
