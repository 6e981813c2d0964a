// What the data path does when nobody waits makes no system call: each case runs in a child process that the kernel
// kills at its first one. Linux only, where a process can bind itself so without any privilege.
#if defined(__linux__)

#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "Platform/Thread/CustomManualResetEvent.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace
{

// From now on the calling thread may only end the process; any other system call kills it.
bool SystemCalls_Forbid()
{
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
    };
    const sock_fprog filter = {static_cast<unsigned short>(std::size(program)), program};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

// Runs `work` once to bind its symbols, then again where a system call is deadly; exits 0 if it survives.
template<class Work>
[[noreturn]] void RunWithoutSystemCalls(Work work)
{
    work();
    const bool bForbidden = SystemCalls_Forbid();
    for (int i = 0; i < 1000; ++i)
    {
        work();
    }
    syscall(SYS_exit_group, bForbidden ? 0 : 77); // itself: a leak checker listens to the function of this name
    std::abort();
}

} // namespace

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
