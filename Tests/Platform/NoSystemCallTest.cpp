// What the data path does when nobody waits makes no system call: each case runs in a child process that the kernel
// kills at its first one. Linux only, where a process can bind itself so without any privilege.
#if defined(__linux__)

#include "Platform/BandData/BandData.h"
#include "Platform/Thread/CreateThread.h"
#include "Tests/Platform/QuietWork.h"
#include "Tests/Support/SystemCallBan.h"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

TEST(NoSystemCallDeathTest, TheHarnessCatchesTheSmallestSystemCall)
{
    EXPECT_EXIT(RunWithoutSystemCalls([] { std::this_thread::yield(); }), testing::KilledBySignal(SIGSYS), "");
}

TEST(NoSystemCallDeathTest, TheHarnessCatchesAWaitThatSleeps)
{
    CCustomManualResetEvent event(false);
    EXPECT_EXIT(RunWithoutSystemCalls([&] { event.Wait(1, 0); }), testing::KilledBySignal(SIGSYS), "");
}

TEST(NoSystemCallDeathTest, ProbesSetsAndResetsOfAnEventThatNobodyWaitsForMakeNone)
{
    CCustomManualResetEvent event(false);
    const auto work = [&] { Event_Use(event); };
    EXPECT_EXIT(RunWithoutSystemCalls(work), testing::ExitedWithCode(0), "");
}

TEST(NoSystemCallDeathTest, PassingAnElementThroughAFIFOThatNobodyWaitsForMakesNone)
{
    CKelThreadPtrFIFO_T<int> fifo(1);
    int value = 0;
    const auto work = [&] { FIFO_Use(fifo, value); };
    EXPECT_EXIT(RunWithoutSystemCalls(work), testing::ExitedWithCode(0), "");
}

TEST(NoSystemCallDeathTest, TheWholeRoadOfALineIndexMakesNone)
{
    CKelThreadBuffer_T<int> buffer("Buffer");
    int* elements[] = {new int(0), new int(0), new int(0)};
    ASSERT_TRUE(buffer.Create(elements, 3));
    const auto work = [&] { LineRoad_Use(buffer); };
    EXPECT_EXIT(RunWithoutSystemCalls(work), testing::ExitedWithCode(0), "");
}

TEST(NoSystemCallDeathTest, ALockThatNobodyElseWantsMakesNoneAlsoWhenItIsEnteredAgain)
{
    CCustomCriticalSection section;
    const auto work = [&]
    {
        const CEnterLeaveCriticalSection outer(section);
        const CEnterLeaveCriticalSection inner(section);
    };
    EXPECT_EXIT(RunWithoutSystemCalls(work), testing::ExitedWithCode(0), "");
}

// A sanitizer's own memory functions make system calls.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(NoSystemCallDeathTest, ABandThatIsMadeAgainInKeptMemoryMakesNone)
{
    CBandData other; // keeps the memory from being given back
    ASSERT_TRUE(other.Create(800, 10'000, 1, 1));
    CBandData second;
    ASSERT_TRUE(second.Create(800, 10'000, 1, 1));
    const auto work = [&] { second.Create(800, 10'000, 1, 1); };
    EXPECT_EXIT(RunWithoutSystemCalls(work), testing::ExitedWithCode(0), "");
}
#endif

#endif
