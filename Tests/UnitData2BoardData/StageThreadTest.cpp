// The stage from outside: real FIFOs, its own thread, producers and a consumer beside it.
#include "Tests/Support/ConfigGuard.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/UnitData2BoardData/StageSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

// A stage whose state the test may look at while its thread runs: it publishes each state as the thread enters it.
class CWatchedStage : public CStageUnderTest
{
public:
    bool OneLoop() override
    {
        m_seenState = m_processState;
        ++m_loopCount;
        return CStageUnderTest::OneLoop();
    }
    bool GenerateBandData() override
    {
        m_bGenerating = true;
        while (m_bHoldGeneration && !IsStopRequested())
        {
            std::this_thread::yield();
        }
        return CStageUnderTest::GenerateBandData();
    }

    std::atomic<int> m_seenState{0};
    std::atomic<int> m_loopCount{0};
    std::atomic<bool> m_bGenerating{false};
    std::atomic<bool> m_bHoldGeneration{false};
};

// Where a running stage can be found when somebody stops it.
enum class ESituation
{
    WaitsForTheFirstInput,
    WaitsForALaterInput,
    WaitsForRoomInTheOutput,
    Generates,
};

// Brings a stage into `situation`, stops it, and returns how long the stop took.
std::chrono::nanoseconds StopIn(ESituation situation)
{
    auto first = Pool_Make(0, 8);
    auto second = Pool_Make(1, 8);
    CWatchedStage stage;
    stage.m_bHoldGeneration = situation == ESituation::Generates;
    EXPECT_TRUE(stage.Create(false, {first.get(), second.get()}));
    switch (situation)
    {
    case ESituation::WaitsForTheFirstInput:
        EXPECT_TRUE(Eventually([&] { return stage.m_loopCount >= 2; }));
        break;
    case ESituation::WaitsForALaterInput:
        Band_Push(*first);
        EXPECT_TRUE(Eventually([&] { return !first->Full_WaitForOut(0); }));
        break;
    case ESituation::WaitsForRoomInTheOutput:
        for (int i = 0; i < 5; ++i)
        {
            Band_Push(*first);
            Band_Push(*second);
        }
        EXPECT_TRUE(Eventually([&] { return !stage.OutputProcessor_Get()->WaitForIn(0); }));
        break;
    case ESituation::Generates:
        Band_Push(*first);
        Band_Push(*second);
        EXPECT_TRUE(Eventually([&] { return stage.m_bGenerating.load(); }));
        break;
    }
    const auto begin = std::chrono::steady_clock::now();
    stage.Stop();
    EXPECT_TRUE(stage.WaitExit(10000));
    return std::chrono::steady_clock::now() - begin;
}

} // namespace

TEST(StageThread, RunsAJobToItsEndAndReportsSuccess)
{
    const CConfigGuard config;
    const CLogCapture log;
    auto first = Pool_Make(0, 2);
    auto second = Pool_Make(1, 2);
    CUnitData2BoardData_Base stage;
    ASSERT_TRUE(stage.Create(false, {first.get(), second.get()}));
    EXPECT_TRUE(stage.WaitReady());

    constexpr int stepCount = 25;
    std::thread producer(
        [&]
        {
            for (int i = 0; i < stepCount; ++i)
            {
                EXPECT_TRUE(Band_Push(*first, 100 + i, 10000));
                EXPECT_TRUE(Band_Push(*second, 200 + i, 10000));
            }
            first->SetCompletedFlag();
            second->SetCompletedFlag();
        });
    std::vector<int> numbers;
    auto* output = stage.OutputProcessor_Get();
    while (!CTestOutputEnd(*output).IsCompleted())
    {
        CBandData* board = nullptr;
        if (CTestOutputEnd(*output).Out(board, 100))
        {
            numbers.push_back(board->m_bandNo);
            EXPECT_EQ(board->m_unitIndex, 0); // the first input's header
            delete board;
        }
    }
    producer.join();
    EXPECT_TRUE(stage.WaitExit(withoutLimit));
    EXPECT_TRUE(stage.IsThreadSuccess());
    ASSERT_EQ(numbers.size(), static_cast<std::size_t>(stepCount));
    for (int i = 0; i < stepCount; ++i)
    {
        EXPECT_EQ(numbers[static_cast<std::size_t>(i)], i);
    }
    EXPECT_THAT(log.Summary(), ElementsAre("1 Complete : CUnitData2BoardData_Base @UnitData2BoardData_Base"));
}

TEST(StageThread, WithoutInputFIFOsEndsInTheThreadFrameUnderItsName)
{
    const CConfigGuard config;
    const CLogCapture log;
    CUnitData2BoardData_Base stage;
    ASSERT_TRUE(stage.Create(false, {}));
    EXPECT_TRUE(stage.WaitExit(withoutLimit));
    EXPECT_FALSE(stage.IsThreadSuccess());
    EXPECT_FALSE(Output_Of(stage).IsCompleted());
    EXPECT_THAT(
        log.SummaryWithLines(),
        ElementsAre("2 Thread terminated with an exception. name = CUnitData2BoardData_Base @KelBaseThread:72"));
}

TEST(StageThread, AStepThatFailsEndsTheThreadAndLeavesTheOutputUncompleted)
{
    const CConfigGuard config;
    const CLogCapture log;
    auto first = Pool_Make(0, 1, 32, 4);
    auto second = Pool_Make(1, 1, 32, 5);
    CUnitData2BoardData_Base stage;
    ASSERT_TRUE(stage.Create(false, {first.get(), second.get()}));
    Band_Push(*first);
    Band_Push(*second);
    EXPECT_TRUE(stage.WaitExit(withoutLimit));
    EXPECT_FALSE(stage.IsThreadSuccess());
    EXPECT_FALSE(Output_Of(stage).IsCompleted());
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @UnitData2BoardData_Base", "2 failure @UnitData2BoardData_Base",
                                           "2 m_processState = 3 @UnitData2BoardData_Base"));
}

TEST(StageThread, AStepOfSkippedBandsMakesNoBoardBandAndNoGapInTheNumbers)
{
    const CConfigGuard config;
    auto fifo = Pool_Make(3, 4);
    CUnitData2BoardData_Base stage;
    ASSERT_TRUE(stage.Create(true, {fifo.get()}));
    for (const bool bSkip : {false, true, true, false})
    {
        CBandData* band = nullptr;
        ASSERT_TRUE(fifo->Empty_Out(band, 1000));
        band->m_bSkip = bSkip;
        ASSERT_TRUE(fifo->Full_In(band, 1000));
    }
    fifo->SetCompletedFlag();
    EXPECT_TRUE(stage.WaitExit(withoutLimit));
    std::vector<int> numbers;
    CBandData* board = nullptr;
    while (Output_Of(stage).Out(board, 0))
    {
        numbers.push_back(board->m_bandNo);
        delete board;
    }
    EXPECT_THAT(numbers, ElementsAre(0, 1));
}

TEST(StageThread, StopsPromptlyFromEverySituation)
{
    const CConfigGuard config;
    for (const auto situation : {ESituation::WaitsForTheFirstInput, ESituation::WaitsForALaterInput,
                                 ESituation::WaitsForRoomInTheOutput, ESituation::Generates})
    {
        const auto median = MedianRound_Get(stopRounds, [&](int /*round*/) { return StopIn(situation); });
        EXPECT_LT(median, stopBound) << "situation " << static_cast<int>(situation);
    }
}

TEST(StageThread, AStoppedStageIsNoFailure)
{
    const CConfigGuard config;
    const CLogCapture log;
    auto fifo = Pool_Make(0, 1);
    CUnitData2BoardData_Base stage;
    ASSERT_TRUE(stage.Create(false, {fifo.get()}));
    stage.Stop();
    EXPECT_TRUE(stage.WaitExit(withoutLimit));
    EXPECT_TRUE(stage.IsThreadSuccess());
    EXPECT_FALSE(Output_Of(stage).IsCompleted());
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST(StageThread, DestroyingAStoppedStageFreesTheBandsOfItsUnfinishedStep)
{
    const CConfigGuard config;
    auto first = Pool_Make(0, 1);
    auto second = Pool_Make(1, 1);
    {
        CUnitData2BoardData_Base stage;
        ASSERT_TRUE(stage.Create(false, {first.get(), second.get()}));
        Band_Push(*first);
        EXPECT_TRUE(Eventually([&] { return !first->Full_WaitForOut(0); }));
        stage.Stop();
        EXPECT_TRUE(stage.WaitExit(withoutLimit));
    }
    CBandData* band = nullptr;
    EXPECT_FALSE(first->Empty_Out(band, 0)); // freed with the stage, not returned
}

TEST(StageThread, ManyStartsAndStopsLeaveNothingBehind)
{
    const CConfigGuard config;
    auto fifo = Pool_Make(0, 1);
    for (int i = 0; i < startStopRounds; ++i)
    {
        CUnitData2BoardData_Base stage;
        ASSERT_TRUE(stage.Create(false, {fifo.get()}));
        if (i % 3 == 0)
        {
            stage.WaitReady();
        }
        stage.Stop();
        ASSERT_TRUE(stage.WaitExit(withoutLimit));
    }
}
