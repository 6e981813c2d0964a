// The ink-stripe stage and the one-FIFO stage from outside: consumers that stall, producers that die, stops at any
// time.
#include "Tests/UnitData2BoardData/InkSupport.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

// A map that holds every line back until it is let go.
class CHoldingMap : public CPrintUnitDataMap_5
{
public:
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override
    {
        ++m_lineCount;
        while (m_bHold)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return CPrintUnitDataMap_5::MapData_Line(param, src, dst, dstByteCount);
    }

    mutable std::atomic<int> m_lineCount{0}; // lines begun
    std::atomic<bool> m_bHold{true};
};

// A running ink-stripe stage with one unit and an output for three bands.
class InkStageThread : public testing::Test
{
protected:
    static constexpr int height = 40;

    InkStageThread()
    {
        m_config.m_param.m_maskData.m_maskCount_1 = 1;
        m_config.m_param.m_maskData.m_maskCount_2 = 1;
        m_config.m_config.m_lineGeneratorCount_Of_DataMap = 2;
        m_config.Apply();
    }

    void Stage_Start(int poolSize)
    {
        m_pPool = Pool_Make(0, poolSize, 32, height);
        ASSERT_TRUE(m_stage.Create(false, {m_pPool.get()}));
    }

    // Before any band is fed to it.
    CHoldingMap& HoldingMap_Install(CInkStage& stage)
    {
        auto map = std::make_unique<CHoldingMap>();
        EXPECT_TRUE(map->Init(1, 16));
        CHoldingMap& installed = *map;
        stage.Map_Replace(std::move(map));
        return installed;
    }

    CConfigGuard m_config;
    CLogCapture m_log;
    std::unique_ptr<CTestPool> m_pPool; // outlives the stage
    CInkStage m_stage;
};

class OneFIFOStageOutside : public testing::Test
{
protected:
    static std::vector<std::unique_ptr<CBandData>> Set_Make(int unit)
    {
        std::vector<std::unique_ptr<CBandData>> bands;
        bands.push_back(Band_Make(unit, 32, 40));
        return bands;
    }

    CConfigGuard m_config;
    CLogCapture m_log;
    CBandSetFIFO m_input{4};
    COneFIFOStage m_stage;
};

// A stage whose thread, when it comes to one state, waits there until its stop is requested and then does the state.
template<class TStage>
class CHaltingStage : public CInkStageOf<TStage>
{
public:
    explicit CHaltingStage(int haltState) : m_haltState(haltState) {}

    bool OneLoop() override
    {
        if (this->m_processState == m_haltState)
        {
            m_bHalted = true;
            while (!this->IsStopRequested())
            {
                std::this_thread::yield();
            }
        }
        return CInkStageOf<TStage>::OneLoop();
    }

    std::atomic<bool> m_bHalted{false};

private:
    const int m_haltState;
};

// How long a stop takes, from the request to the thread's end.
std::chrono::nanoseconds Stop_Measure(CUnitData2BoardData_Base& stage)
{
    const auto begin = std::chrono::steady_clock::now();
    stage.Stop();
    EXPECT_TRUE(stage.WaitExit(10000));
    return std::chrono::steady_clock::now() - begin;
}

template<class StopOnce>
void ExpectPromptStops(StopOnce stopOnce)
{
    const auto median = MedianRound_Get(stopRounds, [&](int /*round*/) { return stopOnce(); });
    EXPECT_LT(median, stopBound);
}

} // namespace

TEST_F(InkStageThread, RunsAJobToItsEndAndSaysSo)
{
    Stage_Start(2);
    for (int i = 0; i < 5; ++i)
    {
        ASSERT_TRUE(Band_Push(*m_pPool, i, 10000));
        CBandData* raw = nullptr;
        ASSERT_TRUE(Output_Of(m_stage).Out(raw, 10000));
        EXPECT_EQ(raw->m_bandNo, i);
        delete raw;
    }
    m_pPool->SetCompletedFlag();
    EXPECT_TRUE(m_stage.WaitExit(10000));
    EXPECT_TRUE(m_stage.IsThreadSuccess());
    EXPECT_TRUE(Output_Of(m_stage).IsCompleted());
    EXPECT_THAT(m_log.Summary(), ElementsAre("1 Complete : CUnitData2BoardData_Base @UnitData2BoardData_Base"));
}

TEST_F(InkStageThread, AConsumerThatStallsHoldsTheStageBackAndLosesNothing)
{
    Stage_Start(10);
    for (int i = 0; i < 10; ++i)
    {
        ASSERT_TRUE(Band_Push(*m_pPool, 100 + i));
    }
    auto* output = m_stage.OutputProcessor_Get();
    ASSERT_TRUE(Eventually([&] { return !output->WaitForIn(0); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(150)); // longer than any of the stage's waits
    // Three bands made and given back, the other seven not touched.
    int freeBands = 0;
    for (CBandData* band = nullptr; m_pPool->Empty_Out(band, 0); ++freeBands)
    {
        delete band;
    }
    EXPECT_EQ(freeBands, 3);
    for (int i = 0; i < 10; ++i)
    {
        CBandData* raw = nullptr;
        ASSERT_TRUE(CTestOutputEnd(*output).Out(raw, 10000));
        EXPECT_EQ(raw->m_bandNo, i);
        delete raw;
    }
    m_stage.Stop();
    EXPECT_TRUE(m_stage.WaitExit(withoutLimit));
    EXPECT_TRUE(m_stage.IsThreadSuccess());
    EXPECT_THAT(m_log.Summary(), IsEmpty());
}

TEST_F(InkStageThread, AProducerThatDiesIsWaitedForUntilTheStop)
{
    Stage_Start(2);
    ASSERT_TRUE(Band_Push(*m_pPool));
    CBandData* raw = nullptr;
    ASSERT_TRUE(Output_Of(m_stage).Out(raw, 10000));
    delete raw;
    EXPECT_FALSE(m_stage.WaitExit(250)); // nothing more comes, and nobody says that nothing will
    m_stage.Stop();
    EXPECT_TRUE(m_stage.WaitExit(10000));
    EXPECT_TRUE(m_stage.IsThreadSuccess());
    EXPECT_FALSE(Output_Of(m_stage).IsCompleted());
    EXPECT_THAT(m_log.Summary(), IsEmpty());
}

TEST_F(InkStageThread, StopsPromptlyWhereverItWaits)
{
    ExpectPromptStops(
        [] // for the first band of a step
        {
            auto pool = Pool_Make(0, 2);
            CUnitData2BoardData_S_AllUnit stage;
            EXPECT_TRUE(stage.Create(false, {pool.get()}));
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            return Stop_Measure(stage);
        });
    ExpectPromptStops(
        [] // for the second one
        {
            auto first = Pool_Make(0, 2);
            auto second = Pool_Make(1, 2);
            CUnitData2BoardData_S_AllUnit stage;
            EXPECT_TRUE(stage.Create(false, {first.get(), second.get()}));
            EXPECT_TRUE(Band_Push(*first));
            EXPECT_TRUE(Eventually([&] { return !first->Full_WaitForOut(0); }));
            return Stop_Measure(stage);
        });
    ExpectPromptStops(
        [] // for room in the output
        {
            auto pool = Pool_Make(0, 8);
            CUnitData2BoardData_S_AllUnit stage;
            EXPECT_TRUE(stage.Create(false, {pool.get()}));
            for (int i = 0; i < 5; ++i)
            {
                EXPECT_TRUE(Band_Push(*pool));
            }
            EXPECT_TRUE(Eventually([&] { return !stage.OutputProcessor_Get()->WaitForIn(0); }));
            return Stop_Measure(stage);
        });
}

// The state in progress is finished, no other begins, and what the stage then holds is freed with it.
TEST_F(InkStageThread, AStopInAnyStateFinishesThatStateOnly)
{
    for (const int state : {1, 2, 3, 4, 5})
    {
        auto pool = Pool_Make(0, 1);
        CHaltingStage<CUnitData2BoardData_S_AllUnit> stage(state);
        ASSERT_TRUE(stage.Create(false, {pool.get()}));
        ASSERT_TRUE(Band_Push(*pool));
        ASSERT_TRUE(Eventually([&] { return stage.m_bHalted.load(); }));
        stage.Stop();
        EXPECT_TRUE(stage.WaitExit(10000));
        EXPECT_TRUE(stage.IsThreadSuccess());
        EXPECT_EQ(stage.m_processState, state == 5 ? 2 : state + 1);
        EXPECT_EQ(stage.m_pInputElements->size(), state >= 2 && state <= 4 ? 1U : 0U);
        EXPECT_EQ(Output_Of(stage).WaitForOut(0), state >= 4);
        EXPECT_FALSE(Output_Of(stage).IsCompleted());
    }
    EXPECT_THAT(m_log.Summary(), IsEmpty());
}

// Joining is never cut short: the band in progress is finished and passed on, then the stage ends.
TEST_F(InkStageThread, AStopInTheMiddleOfABandLetsTheBandFinish)
{
    Stage_Start(2);
    CHoldingMap& map = HoldingMap_Install(m_stage);
    CBandData* band = nullptr;
    ASSERT_TRUE(m_pPool->Empty_Out(band, 0));
    std::fill_n(band->m_pData, band->m_dataSize, static_cast<unsigned char>(0xFF));
    ASSERT_TRUE(m_pPool->Full_In(band, 0));
    ASSERT_TRUE(Eventually([&] { return map.m_lineCount == 2; })); // both generators hold a line
    m_stage.Stop();
    EXPECT_FALSE(m_stage.WaitExit(150));
    EXPECT_FALSE(Output_Of(m_stage).WaitForOut(0));
    map.m_bHold = false;
    EXPECT_TRUE(m_stage.WaitExit(10000));
    EXPECT_TRUE(m_stage.IsThreadSuccess());
    EXPECT_EQ(map.m_lineCount, height);
    CBandData* raw = nullptr;
    ASSERT_TRUE(Output_Of(m_stage).Out(raw, 0));
    const std::unique_ptr<CBandData> board(raw);
    for (int i = 0; i < board->m_dataSize; ++i)
    {
        ASSERT_EQ(board->m_pData[i], i % 2 == 0 ? 0x80 : 0); // unit 0 in every frame
    }
    EXPECT_FALSE(Output_Of(m_stage).IsCompleted());
    EXPECT_EQ(m_stage.m_pInputElements->size(), 1U); // the step is not released: the destructor frees its band
    EXPECT_THAT(m_log.Summary(), IsEmpty());
}

TEST_F(InkStageThread, ABandWithoutLinesIsPassedOn)
{
    m_pPool = Pool_Make(3, 1, 32, 0);
    ASSERT_TRUE(m_stage.Create(false, {m_pPool.get()}));
    ASSERT_TRUE(Band_Push(*m_pPool));
    CBandData* raw = nullptr;
    ASSERT_TRUE(Output_Of(m_stage).Out(raw, 10000));
    EXPECT_EQ(raw->m_height, 0);
    EXPECT_EQ(raw->m_unitIndex, 3);
    delete raw;
    m_stage.Stop();
    EXPECT_TRUE(m_stage.WaitExit(withoutLimit));
}

TEST_F(InkStageThread, SkippedStepsMakeNoBoardBandAndNoGap)
{
    m_pPool = Pool_Make(0, 4);
    ASSERT_TRUE(m_stage.Create(true, {m_pPool.get()}));
    for (const bool bSkip : {true, false, true, false})
    {
        CBandData* band = nullptr;
        ASSERT_TRUE(m_pPool->Empty_Out(band, 0));
        band->m_bSkip = bSkip;
        ASSERT_TRUE(m_pPool->Full_In(band, 0));
    }
    for (const int number : {0, 1})
    {
        CBandData* raw = nullptr;
        ASSERT_TRUE(Output_Of(m_stage).Out(raw, 10000));
        EXPECT_EQ(raw->m_bandNo, number);
        delete raw;
    }
    m_stage.Stop();
    EXPECT_TRUE(m_stage.WaitExit(withoutLimit));
    EXPECT_FALSE(Output_Of(m_stage).WaitForOut(0));
}

TEST_F(InkStageThread, StartsAndStopsLeaveNothingBehind)
{
    m_pPool = Pool_Make(0, 1);
    for (int i = 0; i < 1000; ++i)
    {
        CUnitData2BoardData_S_AllUnit stage;
        ASSERT_TRUE(stage.Create(false, {m_pPool.get()}));
        stage.Stop();
        ASSERT_TRUE(stage.WaitExit(withoutLimit));
        ASSERT_TRUE(stage.IsThreadSuccess());
    }
}

TEST_F(OneFIFOStageOutside, AProducerThatDiesIsWaitedForUntilTheStop)
{
    ASSERT_TRUE(m_stage.Create(m_input));
    ASSERT_TRUE(BandSet_Push(m_input, BandSet_Make(Set_Make(1))));
    ASSERT_TRUE(Output_Of(m_stage).WaitForOut(10000));
    EXPECT_FALSE(m_stage.WaitExit(250));
    m_stage.Stop();
    EXPECT_TRUE(m_stage.WaitExit(10000));
    EXPECT_TRUE(m_stage.IsThreadSuccess());
    EXPECT_FALSE(Output_Of(m_stage).IsCompleted()); // and what it holds is the destructor's
    EXPECT_THAT(m_log.Summary(), IsEmpty());
}

TEST_F(OneFIFOStageOutside, StopsPromptlyWhereverItWaits)
{
    ExpectPromptStops(
        [] // for a set
        {
            CBandSetFIFO input(4);
            CUnitData2BoardData_AllUnit_2 stage;
            EXPECT_TRUE(stage.Create(input));
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            return Stop_Measure(stage);
        });
    ExpectPromptStops(
        [] // for room in the output
        {
            CBandSetFIFO input(4);
            CUnitData2BoardData_AllUnit_2 stage;
            EXPECT_TRUE(stage.Create(input));
            EXPECT_TRUE(BandSet_Push(input, BandSet_Make(Set_Make(0))));
            EXPECT_TRUE(Eventually([&] { return !stage.OutputProcessor_Get()->WaitForIn(0); }));
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            return Stop_Measure(stage);
        });
}

TEST_F(OneFIFOStageOutside, AStopInAnyStateFinishesThatStateOnly)
{
    for (const int state : {1, 2, 3, 4, 5})
    {
        CBandSetFIFO input(1);
        CHaltingStage<CUnitData2BoardData_AllUnit_2> stage(state);
        ASSERT_TRUE(stage.Create(input));
        if (state > 1)
        {
            ASSERT_TRUE(BandSet_Push(input, BandSet_Make(Set_Make(0))));
        }
        ASSERT_TRUE(Eventually([&] { return stage.m_bHalted.load(); }));
        stage.Stop();
        EXPECT_TRUE(stage.WaitExit(10000));
        EXPECT_TRUE(stage.IsThreadSuccess());
        EXPECT_EQ(stage.m_processState, state == 5 ? 2 : state + 1);
        EXPECT_EQ(stage.m_pInputElements->size(), state >= 2 && state <= 4 ? 1U : 0U);
        EXPECT_EQ(Output_Of(stage).WaitForOut(0), state >= 4);
        EXPECT_FALSE(Output_Of(stage).IsCompleted());
        EXPECT_FALSE(input.HasDataEvent().Wait(0, 0));
    }
    EXPECT_THAT(m_log.Summary(), IsEmpty());
}

TEST_F(OneFIFOStageOutside, AStopInTheMiddleOfABandLetsTheBandFinish)
{
    ASSERT_TRUE(m_stage.Create(m_input));
    auto own = std::make_unique<CHoldingMap>();
    ASSERT_TRUE(own->Init(1, 16));
    CHoldingMap& map = *own;
    m_stage.Map_Replace(std::move(own));
    ASSERT_TRUE(BandSet_Push(m_input, BandSet_Make(Set_Make(0))));
    ASSERT_TRUE(Eventually([&] { return map.m_lineCount > 0; }));
    m_stage.Stop();
    EXPECT_FALSE(m_stage.WaitExit(150));
    map.m_bHold = false;
    EXPECT_TRUE(m_stage.WaitExit(10000));
    EXPECT_TRUE(Output_Of(m_stage).WaitForOut(0));
    EXPECT_EQ(map.m_lineCount, 40);
    EXPECT_TRUE(m_stage.IsThreadSuccess());
    EXPECT_THAT(m_log.Summary(), IsEmpty());
}
