// What the data path does when nobody waits makes no system call: each case runs in a child process that the kernel
// kills at its first one. Linux only, where a process can bind itself so without any privilege.
#if defined(__linux__)

#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "Platform/Thread/CustomManualResetEvent.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace
{

// Runs `work` once to bind its symbols, then again where a system call is deadly; exits 0 if it survives.
template<class Work>
[[noreturn]] void RunWithoutSystemCalls(Work work)
{
    work();
    if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0)
    {
        _exit(77);
    }
    for (int i = 0; i < 1000; ++i)
    {
        work();
    }
    syscall(SYS_exit, 0); // the only exit that is left
    std::abort();
}

} // namespace

TEST(NoSystemCallDeathTest, TheHarnessCatchesTheSmallestSystemCall)
{
    EXPECT_EXIT(RunWithoutSystemCalls([] { std::this_thread::yield(); }), testing::KilledBySignal(SIGKILL), "");
}

TEST(NoSystemCallDeathTest, ProbesSetsAndResetsOfAnEventThatNobodyWaitsForMakeNone)
{
    CCustomManualResetEvent event(false);
    const auto work = [&]
    {
        event.Wait(0, 0);
        event.Set();
        event.Wait(0, 0);
        event.Wait(100, 0); // on a set event
        event.Set();
        event.Reset();
        event.Reset();
    };
    EXPECT_EXIT(RunWithoutSystemCalls(work), testing::ExitedWithCode(0), "");
}

TEST(NoSystemCallDeathTest, PassingAnElementThroughAFIFOThatNobodyWaitsForMakesNone)
{
    CKelThreadPtrFIFO_T<int> fifo(1);
    int value = 0;
    const auto work = [&]
    {
        int* element = nullptr;
        fifo.HasSpaceEvent().Wait(100, 0);
        fifo.In(&value);
        fifo.HasDataEvent().Wait(100, 0);
        fifo.Out(element);
        fifo.Out(element);
    };
    EXPECT_EXIT(RunWithoutSystemCalls(work), testing::ExitedWithCode(0), "");
}

#endif
