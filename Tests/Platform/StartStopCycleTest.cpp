// Ten thousand lives of a worker leave nothing behind. Memory is the leak checker's part, under the sanitizers.
#include "Tests/Platform/ScriptedWorker.h"
#include "Tests/Platform/SystemProbe.h"

#include <gtest/gtest.h>

namespace
{

constexpr int cycles = 10'000;

// Runs `cycle` often; nothing that the system counts may grow with the number of runs.
template<class Cycle>
void ExpectNothingLeftBehind(Cycle cycle)
{
    cycle(); // whatever is made once
    const bool bProbe = CSystemProbe::IsAvailable();
    const long threads = bProbe ? CSystemProbe::ThreadCount() : 0;
    const long handles = bProbe ? CSystemProbe::HandleCount() : 0;
    const long addressSpaceKb = bProbe ? CSystemProbe::AddressSpaceKb() : 0;
    for (int i = 0; i < cycles && !testing::Test::HasFatalFailure(); ++i)
    {
        cycle();
    }
    if (bProbe)
    {
        const CStopWatch watch; // a thread that has ended is listed a moment longer
        while (CSystemProbe::ThreadCount() > threads && watch.Elapsed() < testPatience)
        {
            std::this_thread::yield();
        }
        EXPECT_LE(CSystemProbe::ThreadCount(), threads);
        EXPECT_EQ(CSystemProbe::HandleCount(), handles);
        // A stack is megabytes: one in a hundred left behind would already show.
        EXPECT_LT(CSystemProbe::AddressSpaceKb() - addressSpaceKb, 400 * 1024);
    }
}

} // namespace

TEST(StartStopCycle, TenThousandWorkersLeaveNothingBehind)
{
    ExpectNothingLeftBehind(
        []
        {
            CScriptedWorker worker;
            ASSERT_TRUE(worker.Start("Worker"));
            worker.Stop();
            ASSERT_TRUE(worker.WaitExit(withoutLimit));
            ASSERT_EQ(worker.m_finallyCount, 1);
        });
}

TEST(StartStopCycle, TenThousandRunsOfOneWorkerLeaveNothingBehind)
{
    CScriptedWorker worker;
    ExpectNothingLeftBehind(
        [&]
        {
            ASSERT_TRUE(worker.Start("Worker"));
            worker.Stop();
            ASSERT_TRUE(worker.WaitExit(withoutLimit));
        });
    EXPECT_EQ(worker.m_finallyCount, cycles + 1);
}
