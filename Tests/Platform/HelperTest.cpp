// The small helpers: byte alignment, the process's own figures, the thread-status monitor.
#include "Platform/Helper/ProcessHelper.h"
#include "Platform/Helper/StaticHelper.h"
#include "Platform/ThreadStatus/ThreadStatus.h"
#include "Tests/Platform/TestSignal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

TEST(StaticHelper, BitsBecomeBytesRoundedUpToTheAlignment)
{
    struct SCase
    {
        int alignBytes, bitCount, bytes;
    };
    constexpr SCase cases[] = {
        {1, 0, 0},     {1, 1, 1},      {1, 8, 1},
        {1, 9, 2},     {1, 400, 50},   {2, 1, 2},
        {2, 16, 2},    {2, 17, 4},     {3, 1, 3},
        {3, 24, 3},    {3, 25, 6},     {4, 0, 0},
        {4, 32, 4},    {4, 33, 8},     {64, 1, 64},
        {64, 512, 64}, {64, 513, 128}, {1, std::numeric_limits<int>::max(), 1 << 28},
    };
    for (const auto& [alignBytes, bitCount, bytes] : cases)
    {
        EXPECT_EQ(CStaticHelper::AlignBytesByBits(alignBytes, bitCount), bytes) << alignBytes << ' ' << bitCount;
    }
}

TEST(ProcessHelper, ThePeakMemoryCoversWhatTheProcessHasTouched)
{
    constexpr std::size_t size = std::size_t{64} << 20;
    const auto block = std::make_unique<unsigned char[]>(size);
    volatile unsigned char* memory = block.get(); // volatile: the memory is really touched
    for (std::size_t i = 0; i < size; i += 1024)
    {
        memory[i] = 1;
    }
    const auto peak = CProcessHelper::PeakMemoryBytes();
    EXPECT_GE(peak, static_cast<std::int64_t>(size));
    EXPECT_LT(peak, std::int64_t{1} << 40);
    EXPECT_GE(CProcessHelper::PeakMemoryBytes(), peak);
}

TEST(ProcessHelper, TheTerminalHasAWidthAndTheProcessANumber)
{
    EXPECT_GT(CProcessHelper::TerminalWidth(), 0);
    EXPECT_GT(CProcessHelper::ProcessId(), 0);
    EXPECT_EQ(CProcessHelper::ProcessId(), CProcessHelper::ProcessId());
}

TEST(ProcessHelper, ACapturedStandardErrorIsNoTerminalAndEightyColumnsWide)
{
    testing::internal::CaptureStderr();
    const bool bTerminal = CProcessHelper::IsErrorTerminal();
    const int width = CProcessHelper::TerminalWidth();
    testing::internal::GetCapturedStderr();
    EXPECT_FALSE(bTerminal);
    EXPECT_EQ(width, 80);
}

TEST(ProcessHelper, ACapturedStandardOutputIsNoTerminal)
{
    testing::internal::CaptureStdout();
    const bool bTerminal = CProcessHelper::IsOutputTerminal();
    testing::internal::GetCapturedStdout();
    EXPECT_FALSE(bTerminal);
}

#if defined(__linux__)

TEST(ProcessHelperDeathTest, ABrokenPipeEndsTheProcessUnlessItIsIgnored)
{
    EXPECT_EXIT(std::raise(SIGPIPE), testing::KilledBySignal(SIGPIPE), "");
    const auto ignore = []
    {
        CProcessHelper::WriteSignals_Ignore();
        std::raise(SIGPIPE);
        std::_Exit(0);
    };
    EXPECT_EXIT(ignore(), testing::ExitedWithCode(0), "");
}

#endif

TEST(ThreadStatus, AScopeIsBusyWhileItIsOpenAndCountsItsTimeWhenItCloses)
{
    constexpr auto id = ECustomThreadId::UnitData2BoardData;
    const auto before = CThreadStatusMonitor::BusyTime_Get(id);
    EXPECT_EQ(CThreadStatusMonitor::BusyCount_Get(id), 0);
    {
        const CAutoReleaseThreadBusy outer(id);
        {
            const CAutoReleaseThreadBusy inner(id);
            EXPECT_EQ(CThreadStatusMonitor::BusyCount_Get(id), 2);
            std::this_thread::sleep_for(10ms);
        }
        EXPECT_EQ(CThreadStatusMonitor::BusyCount_Get(id), 1);
        EXPECT_GE(CThreadStatusMonitor::BusyTime_Get(id) - before, 10ms);
        EXPECT_LT(CThreadStatusMonitor::BusyTime_Get(id) - before, testPatience);
    }
    EXPECT_EQ(CThreadStatusMonitor::BusyCount_Get(id), 0);
    EXPECT_GE(CThreadStatusMonitor::BusyTime_Get(id) - before, 20ms);
}

TEST(ThreadStatus, IdentitiesAreCountedApart)
{
    const CAutoReleaseThreadBusy busy(static_cast<ECustomThreadId>(9));
    EXPECT_EQ(CThreadStatusMonitor::BusyCount_Get(static_cast<ECustomThreadId>(9)), 1);
    EXPECT_EQ(CThreadStatusMonitor::BusyCount_Get(ECustomThreadId::UnitData2BoardData), 0);
}

TEST(ThreadStatus, ScopesOfManyThreadsAreAllCounted)
{
    constexpr auto id = static_cast<ECustomThreadId>(10);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back(
            []
            {
                for (int scope = 0; scope < 2000; ++scope)
                {
                    const CAutoReleaseThreadBusy busy(id);
                }
            });
    }
    for (auto& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(CThreadStatusMonitor::BusyCount_Get(id), 0);
    EXPECT_GT(CThreadStatusMonitor::BusyTime_Get(id), 0ns);
}
