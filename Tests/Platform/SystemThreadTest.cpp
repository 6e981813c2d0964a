// A thread that runs on a system thread that has run others before it starts with the attributes of a new one: those
// that the thread that starts it has at that moment.
#if defined(__linux__)

#include "Platform/Thread/CreateThread.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cfenv>
#include <clocale>
#include <csignal>
#include <functional>
#include <ostream>
#include <pthread.h>
#include <sched.h>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

// What a thread sees of itself, as text.
std::string Attributes_Get()
{
    std::string text;
    sigset_t mask = {};
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    for (int signal = 1; signal < NSIG; ++signal)
    {
        text += sigismember(&mask, signal) == 1 ? " blocks " + std::to_string(signal) : "";
    }
    cpu_set_t processors = {};
    sched_getaffinity(0, sizeof(processors), &processors);
    for (std::size_t i = 0; i < CPU_SETSIZE; ++i)
    {
        text += CPU_ISSET(i, &processors) ? " processor " + std::to_string(i) : "";
    }
    sched_param scheduling = {};
    sched_getparam(0, &scheduling);
    std::array<char, 16> name = {};
    prctl(PR_GET_NAME, name.data());
    return text + " nice " + std::to_string(getpriority(PRIO_PROCESS, 0)) + " policy " +
           std::to_string(sched_getscheduler(0)) + "/" + std::to_string(scheduling.sched_priority) + " name " +
           name.data() + " rounds " + std::to_string(std::fegetround()) + " locale " +
           (uselocale(nullptr) == LC_GLOBAL_LOCALE ? "global" : "own");
}

struct SReport
{
    std::function<void()> change = [] {};
    std::string begin;
    long systemThread = 0; // its number in the system, which is not soon used again
};

unsigned long Report_Make(void* param)
{
    auto* report = static_cast<SReport*>(param);
    report->begin = Attributes_Get();
    report->systemThread = syscall(SYS_gettid);
    report->change();
    return 0;
}

// Runs a thread to its end, which does `change` last.
SReport Thread_Run(std::function<void()> change = [] {})
{
    SReport report;
    report.change = std::move(change);
    const HANDLE thread = CreateThread(nullptr, 0, &Report_Make, &report, 0, nullptr);
    EXPECT_NE(thread, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    CloseHandle(thread);
    return report;
}

struct SChange
{
    const char* name;
    void (*make)();
    bool bCheap; // needs no system call, so the system thread is kept
};

std::ostream& operator<<(std::ostream& stream, const SChange& change)
{
    return stream << change.name;
}

void Signal_Block()
{
    sigset_t mask = {};
    sigaddset(&mask, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &mask, nullptr);
}

// One processor only: the first of those that the thread has.
void Processors_Limit()
{
    cpu_set_t processors = {};
    sched_getaffinity(0, sizeof(processors), &processors);
    std::size_t first = 0;
    while (!CPU_ISSET(first, &processors))
    {
        ++first;
    }
    CPU_ZERO(&processors);
    CPU_SET(first, &processors);
    sched_setaffinity(0, sizeof(processors), &processors);
}

void Policy_Change()
{
    const sched_param scheduling = {};
    sched_setscheduler(0, SCHED_BATCH, &scheduling);
}

const SChange changes[] = {
    {"SignalMask", &Signal_Block, false},
    {"Affinity", &Processors_Limit, false},
    {"Niceness", [] { setpriority(PRIO_PROCESS, 0, 7); }, false},
    {"Policy", &Policy_Change, false},
    {"Name", [] { prctl(PR_SET_NAME, "changed"); }, false},
    {"Rounding", [] { std::fesetround(FE_UPWARD); }, true},
    {"Locale", [] { uselocale(newlocale(LC_ALL_MASK, "C", nullptr)); }, true},
};

class SystemThread : public testing::TestWithParam<SChange>
{
protected:
    void SetUp() override { SleepingThreads_End(); }
    void TearDown() override { SleepingThreads_End(); }
};

} // namespace

TEST_P(SystemThread, WhatAThreadChangesDoesNotReachTheNextOne)
{
    const std::string before = Attributes_Get();
    std::string changed;
    const SReport first = Thread_Run(
        [&]
        {
            GetParam().make();
            changed = Attributes_Get();
        });
    EXPECT_EQ(first.begin, before);
    if (changed == before)
    {
        GTEST_SKIP() << "this machine does not let a thread change it";
    }
    for (int i = 0; i < 3; ++i)
    {
        const SReport next = Thread_Run();
        EXPECT_EQ(next.begin, before);
        EXPECT_EQ(next.systemThread == first.systemThread, GetParam().bCheap) << i;
    }
}

// The creator is a thread of the test's own, which ends afterwards.
TEST_P(SystemThread, WhatTheCreatorChangesReachesTheNextThreadAsItWouldANewOne)
{
    const bool bInherited = std::string(GetParam().name) != "Locale";
    std::thread creator(
        [&]
        {
            const std::string before = Attributes_Get();
            EXPECT_EQ(Thread_Run().begin, before);
            GetParam().make();
            const std::string changed = Attributes_Get();
            const SReport first = Thread_Run();
            EXPECT_EQ(first.begin, bInherited ? changed : before);
            const SReport second = Thread_Run(); // found again
            EXPECT_EQ(second.begin, first.begin);
            EXPECT_EQ(second.systemThread, first.systemThread);
        });
    creator.join();
    EXPECT_EQ(Thread_Run().begin, Attributes_Get());
}

// Threads are asked for while others have just ended and are still looking at what their jobs have changed.
TEST(SystemThreadStress, ThreadsOfSeveralCreatorsBeginLikeNewOnesWhateverTheOnesBeforeHaveChanged)
{
    const std::string before = Attributes_Get();
    std::atomic<int> unlikeCount{0};
    const auto startMany = [&](int first)
    {
        for (int i = 0; i < 150; ++i)
        {
            const bool bChanges = (i + first) % 3 == 0;
            unlikeCount += Thread_Run(bChanges ? std::function<void()>(&Signal_Block) : [] {}).begin == before ? 0 : 1;
            if (i % 50 == 10 * first)
            {
                SleepingThreads_End();
            }
        }
    };
    std::vector<std::thread> creators;
    for (int creator = 0; creator < 4; ++creator)
    {
        creators.emplace_back(startMany, creator);
    }
    for (auto& creator : creators)
    {
        creator.join();
    }
    SleepingThreads_End();
    EXPECT_EQ(unlikeCount, 0);
}

INSTANTIATE_TEST_SUITE_P(Attributes, SystemThread, testing::ValuesIn(changes),
                         [](const testing::TestParamInfo<SChange>& change) { return change.param.name; });

#endif
