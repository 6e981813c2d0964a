// The state machine, driven one OneLoop at a time on the test's thread.
#include "Tests/Support/ConfigGuard.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/UnitData2BoardData/StageSupport.h"

#include "DataMap/PrintUnitDataMap_5.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using StageState = CDrivenStage;

TEST_F(StageState, BeforePrepareItIsZeroAndTheFirstLoopReportsItStopsAndFails)
{
    const CLogCapture log;
    EXPECT_FALSE(m_stage.OneLoop());
    EXPECT_THAT(log.Summary(), ElementsAre("2 m_processState = 0 @UnitData2BoardData_Base"));
    EXPECT_EQ(m_stage.m_stopCount, 1);
    const auto records = log.Records();
    EXPECT_THAT(records[0].function, HasSubstr("CUnitData2BoardData_Base::OneLoop()"));
    EXPECT_GT(records[0].line, 0);
}

TEST_F(StageState, EveryValueOutsideOneToFiveIsReportedWithItsNumber)
{
    for (const int state : {-1, 6, 7, 100})
    {
        const CLogCapture log;
        m_stage.m_processState = state;
        EXPECT_FALSE(m_stage.OneLoop());
        EXPECT_THAT(log.Summary(),
                    ElementsAre("2 m_processState = " + std::to_string(state) + " @UnitData2BoardData_Base"));
    }
}

TEST_F(StageState, PrepareSetsTheFirstState)
{
    EXPECT_TRUE(m_stage.Prepare());
    EXPECT_EQ(m_stage.m_processState, 1);
}

TEST_F(StageState, InitializeAlwaysMovesToGetInputData)
{
    m_stage.m_processState = 1;
    EXPECT_TRUE(m_stage.OneLoop());
    EXPECT_EQ(m_stage.m_processState, 2);
}

TEST_F(StageState, SettersNameTheirStates)
{
    m_stage.SetState_AllocateOutputBuffer();
    EXPECT_EQ(m_stage.m_processState, 3);
    m_stage.SetState_Process();
    EXPECT_EQ(m_stage.m_processState, 4);
}

TEST_F(StageState, ConstantsOfTheBaseStage)
{
    EXPECT_EQ(m_stage.OutputBufferCount_Get(), 3);
    EXPECT_EQ(m_stage.AlignBytesPerLine(), 1);
}

TEST_F(StageState, OneStepWalksThroughTheStatesAndBackToInput)
{
    const CLogCapture log;
    Stage_Prepare(2);
    Feed(0);
    Feed(1);
    std::vector<int> states;
    for (int i = 0; i < 4; ++i)
    {
        ASSERT_TRUE(m_stage.OneLoop());
        states.push_back(m_stage.m_processState);
    }
    EXPECT_THAT(states, ElementsAre(3, 4, 5, 2));
    EXPECT_THAT(log.Summary(), IsEmpty());
    EXPECT_EQ(m_stage.m_stopCount, 0);
}

TEST_F(StageState, OneStepCallsTheFIFOsInTheFixedOrder)
{
    Stage_Prepare(2);
    Feed(0);
    Feed(1);
    for (int i = 0; i < 4; ++i)
    {
        ASSERT_TRUE(m_stage.OneLoop());
    }
    EXPECT_THAT(m_journal, ElementsAre("0.Full_WaitForOut", "out.WaitForIn", "0.Full_Out", "1.Full_Out", "out.In",
                                       "0.Empty_In", "1.Empty_In"));
}

TEST_F(StageState, AFailedOperationKeepsItsBandsReportsTheStateAndStops)
{
    Stage_Prepare(2);
    m_fifos[0]->m_full.push_back(Band_Make(0, 16, 2).release());
    m_fifos[1]->m_full.push_back(Band_Make(1, 16, 3).release()); // another height
    ASSERT_TRUE(m_stage.OneLoop());
    const CLogCapture log;
    EXPECT_FALSE(m_stage.OneLoop());
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @UnitData2BoardData_Base", "2 failure @UnitData2BoardData_Base",
                                           "2 m_processState = 3 @UnitData2BoardData_Base"));
    EXPECT_EQ(m_stage.m_stopCount, 1);
    EXPECT_EQ(m_stage.m_processState, 3);
    EXPECT_EQ(m_stage.m_pInputElements->size(), 2U);
    EXPECT_EQ(m_stage.m_pOutputBand, nullptr);
}

TEST_F(StageState, ACreateWhoseThreadCannotStartKeepsWhatItMadeForTheDestructor)
{
    const CConfigGuard config;
    const CLogCapture log;
    CScriptedFIFO fifo(0, m_journal);
    m_stage.m_bRefuseThread = true;
    EXPECT_FALSE(m_stage.Create(true, {&fifo}));
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @UnitData2BoardData_Base"));
    EXPECT_NE(m_stage.m_pDataMap, nullptr);
    EXPECT_NE(m_stage.m_pOutputFIFO, nullptr);
    EXPECT_EQ(m_stage.OutputProcessor_Get(), m_stage.m_pOutputFIFO);
    ASSERT_NE(m_stage.m_pInputFIFOs, nullptr);
    EXPECT_THAT(*m_stage.m_pInputFIFOs, ElementsAre(&fifo));
    EXPECT_TRUE(m_stage.m_bCheckInput);
    EXPECT_EQ(m_stage.m_processState, 0);
}

TEST_F(StageState, CreateKeepsAMapThatTheFactoryRefusedAsNull)
{
    CConfigGuard config;
    config.m_option.m_dataMapStyle = static_cast<EDataMapStyle>(2);
    config.Apply();
    const CLogCapture log;
    m_stage.m_bRefuseThread = true;
    EXPECT_FALSE(m_stage.Create(false, {}));
    EXPECT_EQ(m_stage.m_pDataMap, nullptr);
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @PrintUnitMap_Factory", "2 failure @UnitData2BoardData_Base"));
}

TEST_F(StageState, CreateSizesTheOutputForThreeBands)
{
    const CConfigGuard config;
    m_stage.m_bRefuseThread = true;
    m_stage.Create(false, {});
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_TRUE(m_stage.m_pOutputFIFO->WaitForIn(0));
        EXPECT_TRUE(m_stage.m_pOutputFIFO->In(Band_Make(0, 8, 1).release(), 0));
    }
    EXPECT_FALSE(m_stage.m_pOutputFIFO->WaitForIn(0));
}

// Under the leak and address checkers this is the proof of ownership on every way out.
TEST_F(StageState, DestructionFreesWhatIsHeldWhicheverStateTheStageIsIn)
{
    for (int loops = 0; loops <= 4; ++loops)
    {
        Journal journal;
        CScriptedFIFO first(0, journal);
        CScriptedFIFO second(1, journal);
        auto stage = std::make_unique<CStageUnderTest>();
        auto* map = new CPrintUnitDataMap_5();
        ASSERT_TRUE(map->Init(1, 16));
        stage->m_pDataMap = map;
        stage->m_pOutputFIFO = new CScriptedOutput(journal);
        stage->m_pInputFIFOs = new std::vector<CBandDataFIFO*>{&first, &second};
        stage->m_processState = 2;
        first.m_full.push_back(Band_Make(0, 16, 2).release());
        second.m_full.push_back(Band_Make(1, 16, 2).release());
        for (int i = 0; i < loops; ++i)
        {
            ASSERT_TRUE(stage->OneLoop());
        }
        const std::size_t held = stage->m_pInputElements->size();
        stage.reset();
        // Bands of an unfinished step are freed, not returned.
        EXPECT_EQ(first.m_returned.size() + second.m_returned.size(), loops == 4 ? 2U : 0U);
        EXPECT_EQ(held, loops >= 1 && loops <= 3 ? 2U : 0U);
    }
}

TEST_F(StageState, DestructionWithOneOfTwoBandsHeldFreesIt)
{
    Stage_Prepare(2);
    Feed(0);
    ASSERT_TRUE(m_stage.OneLoop());
    EXPECT_EQ(m_stage.m_pInputElements->size(), 1U);
}
