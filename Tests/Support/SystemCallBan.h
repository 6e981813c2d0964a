// Child processes of a test in which system calls are deadly. Linux only, where a process can bind itself so without
// any privilege.
#pragma once

#if defined(__linux__)

#include <cstddef>
#include <cstdlib>
#include <initializer_list>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

// Before the process has threads: all of them then allocate from one arena. The C library would otherwise map one for
// each thread when it first makes or frees something, which may be long after it was started.
inline void Allocator_Share()
{
    mallopt(M_ARENA_MAX, 1);
}

// The calls that bands make once everything that is made once is there: those that sleep and wake, and the four by
// which a thread learns its own attributes. Who starts a worker asks for its own, which the worker must begin with, and
// a worker's thread asks when its run is over: whether it can be used again cannot be known without.
inline std::initializer_list<unsigned> SystemCalls_OfAWarmBand()
{
    static constexpr std::initializer_list<unsigned> calls = {SYS_futex, SYS_rt_sigprocmask, SYS_sched_getaffinity,
                                                              SYS_sched_getattr, SYS_prctl};
    return calls;
}

// From now on the process, all of its threads, may make these system calls and end; any other kills it.
inline bool SystemCalls_Forbid(std::initializer_list<unsigned> allowed)
{
    std::vector<sock_filter> program = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    const auto allow = [&](unsigned number)
    {
        program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1));
        program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    };
    allow(SYS_exit_group);
    for (const unsigned number : allowed)
    {
        allow(number);
    }
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS));
    const sock_fprog filter = {static_cast<unsigned short>(program.size()), program.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &filter) == 0;
}

// The same for the calling thread alone.
inline bool SystemCalls_ForbidOwn()
{
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
    };
    const sock_fprog filter = {4, program};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

// Ends the process itself: a leak checker listens to the function of this name. Not marked as one that does not return,
// before which AddressSanitizer makes system calls.
inline void Process_End(int status)
{
    syscall(SYS_exit_group, status);
}

// Runs `work` once to bind its symbols, then again where a system call is deadly; exits 0 if it survives.
template<class Work>
[[noreturn]] void RunWithoutSystemCalls(Work work)
{
    work();
    const bool bForbidden = SystemCalls_ForbidOwn();
    for (int i = 0; i < 1000; ++i)
    {
        work();
    }
    Process_End(bForbidden ? 0 : 77);
    std::abort();
}

#endif
