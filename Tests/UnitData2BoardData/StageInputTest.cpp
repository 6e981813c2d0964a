// The input side: gathering a step's bands, skipping, the end of input, and giving bands back.
#include "Tests/Support/LogCapture.h"
#include "Tests/UnitData2BoardData/StageSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using testing::ElementsAre;
using testing::IsEmpty;

using StageInput = CDrivenStage;

TEST_F(StageInput, WithoutAnyInputFIFOThrowsOutOfRangeWithTheSystemsOwnText)
{
    Stage_Prepare(0);
    try
    {
        m_stage.GetInputData();
        FAIL() << "nothing was thrown";
    }
    catch (const std::out_of_range& error)
    {
        EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
    }
    EXPECT_THAT(m_journal, IsEmpty());
}

TEST_F(StageInput, OneFIFOIsAOneToOneConverter)
{
    Stage_Prepare(1);
    Feed(0);
    for (int i = 0; i < 4; ++i)
    {
        ASSERT_TRUE(m_stage.OneLoop());
    }
    CBandData* board = nullptr;
    ASSERT_TRUE(CTestOutputEnd(*m_pOutput).Out(board, 0));
    const std::unique_ptr<CBandData> own(board);
    EXPECT_EQ(board->m_width, 16 * 16);
    EXPECT_EQ(m_fifos[0]->m_returned.size(), 1U);
}

TEST_F(StageInput, WithoutABandItAsksTheFIFOsForTheirEndUntilOneGoesOn)
{
    const CLogCapture log;
    Stage_Prepare(3);
    m_fifos[0]->m_bCompleted = true;
    EXPECT_TRUE(m_stage.GetInputData());
    EXPECT_EQ(m_stage.m_processState, 2);
    EXPECT_EQ(m_stage.m_stopCount, 0);
    EXPECT_THAT(m_journal, ElementsAre("0.Full_WaitForOut", "0.IsCompleted", "1.IsCompleted"));
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST_F(StageInput, TheEndOfAllInputsIsLoggedPassedOnAndStopsTheStageAsASuccess)
{
    const CLogCapture log;
    Stage_Prepare(2);
    m_fifos[0]->m_bCompleted = true;
    m_fifos[1]->m_bCompleted = true;
    EXPECT_TRUE(m_stage.OneLoop());
    EXPECT_EQ(m_stage.m_processState, 2);
    EXPECT_EQ(m_stage.m_stopCount, 1);
    EXPECT_THAT(log.Summary(), ElementsAre("1 Complete : CUnitData2BoardData_Base @UnitData2BoardData_Base"));
    EXPECT_THAT(log.Records()[0].function, testing::HasSubstr("CUnitData2BoardData_Base::GetInputData()"));
    EXPECT_THAT(m_journal, ElementsAre("0.Full_WaitForOut", "0.IsCompleted", "1.IsCompleted", "out.SetCompletedFlag"));
    EXPECT_TRUE(CTestOutputEnd(*m_pOutput).IsCompleted());
}

TEST_F(StageInput, TheEndIsNotLookedForWhileABandIsHeld)
{
    Stage_Prepare(2);
    Feed(0);
    ASSERT_TRUE(m_stage.GetInputData()); // holds the band of FIFO 0
    m_fifos[0]->m_bCompleted = true;
    m_fifos[1]->m_bCompleted = true;
    m_journal.clear();
    EXPECT_TRUE(m_stage.GetInputData());
    EXPECT_THAT(m_journal, ElementsAre("out.WaitForIn", "1.Full_Out"));
    EXPECT_EQ(m_stage.m_stopCount, 0);
}

TEST_F(StageInput, AFullOutputKeepsTheInputWhereItIs)
{
    Stage_Prepare(1);
    Feed(0);
    m_pOutput->m_bFull = true;
    EXPECT_TRUE(m_stage.GetInputData());
    EXPECT_EQ(m_stage.m_processState, 2);
    EXPECT_THAT(*m_stage.m_pInputElements, IsEmpty());
    EXPECT_THAT(m_journal, ElementsAre("0.Full_WaitForOut", "out.WaitForIn"));
}

TEST_F(StageInput, ABandThatIsLateIsAskedForAgainAloneWhileTheOthersStayHeld)
{
    Stage_Prepare(3);
    Feed(0);
    Feed(2);
    EXPECT_TRUE(m_stage.GetInputData());
    EXPECT_EQ(m_stage.m_processState, 2);
    ASSERT_EQ(m_stage.m_pInputElements->size(), 1U);
    Feed(1);
    EXPECT_TRUE(m_stage.GetInputData());
    EXPECT_EQ(m_stage.m_processState, 3);
    EXPECT_THAT(m_journal, ElementsAre("0.Full_WaitForOut", "out.WaitForIn", "0.Full_Out", "1.Full_Out",
                                       "out.WaitForIn", "1.Full_Out", "2.Full_Out"));
    for (std::size_t i = 0; i < 3; ++i)
    {
        EXPECT_EQ((*m_stage.m_pInputElements)[i].fifo, m_fifos[i].get());
        EXPECT_EQ((*m_stage.m_pInputElements)[i].band->m_unitIndex, static_cast<int>(i));
    }
}

TEST_F(StageInput, ANullBandCountsAsNotThereYet)
{
    Stage_Prepare(1);
    Feed(0);
    m_fifos[0]->m_bGiveNull = true;
    EXPECT_TRUE(m_stage.GetInputData());
    EXPECT_EQ(m_stage.m_processState, 2);
    EXPECT_THAT(*m_stage.m_pInputElements, IsEmpty());
}

TEST_F(StageInput, WithoutTheCheckFlaggedBandsAreMappedLikeAnyOther)
{
    Stage_Prepare(2);
    Feed(0, true);
    Feed(1, true);
    EXPECT_TRUE(m_stage.GetInputData());
    EXPECT_EQ(m_stage.m_processState, 3);
}

TEST_F(StageInput, WithTheCheckAStepOfFlaggedBandsIsGivenBackAtOnceAndUsesNoNumber)
{
    const CLogCapture log;
    Stage_Prepare(2);
    m_stage.m_bCheckInput = true;
    Feed(0, true);
    Feed(1, true);
    EXPECT_TRUE(m_stage.GetInputData());
    EXPECT_EQ(m_stage.m_processState, 2);
    EXPECT_EQ(m_stage.m_outputBandNo, 0);
    EXPECT_THAT(*m_stage.m_pInputElements, IsEmpty());
    EXPECT_EQ(m_fifos[0]->m_returned.size(), 1U);
    EXPECT_EQ(m_fifos[1]->m_returned.size(), 1U);
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST_F(StageInput, WithTheCheckAndOneFIFOTheSingleBandDecides)
{
    Stage_Prepare(1);
    m_stage.m_bCheckInput = true;
    Feed(0, true);
    EXPECT_TRUE(m_stage.GetInputData());
    EXPECT_EQ(m_stage.m_processState, 2);
    Feed(0);
    EXPECT_TRUE(m_stage.GetInputData());
    EXPECT_EQ(m_stage.m_processState, 3);
}

TEST_F(StageInput, WithTheCheckOneBandWithoutTheFlagKeepsTheWholeStep)
{
    for (const bool bFirst : {true, false})
    {
        CStageUnderTest stage;
        Journal journal;
        CScriptedFIFO first(0, journal);
        CScriptedFIFO second(1, journal);
        stage.m_pOutputFIFO = new CScriptedOutput(journal);
        stage.m_pInputFIFOs = new std::vector<CBandDataFIFO*>{&first, &second};
        stage.m_processState = 2;
        stage.m_bCheckInput = true;
        first.m_full.push_back(Band_Make(0, 16, 2).release());
        first.m_full.back()->m_bSkip = bFirst;
        second.m_full.push_back(Band_Make(1, 16, 2).release());
        second.m_full.back()->m_bSkip = !bFirst;
        EXPECT_TRUE(stage.GetInputData());
        EXPECT_EQ(stage.m_processState, 3);
        EXPECT_EQ(stage.m_pInputElements->size(), 2U);
    }
}

TEST_F(StageInput, ASkipReleaseThatFailsFailsTheStateAndKeepsTheList)
{
    Stage_Prepare(2);
    m_stage.m_bCheckInput = true;
    Feed(0, true);
    Feed(1, true);
    m_fifos[0]->m_bRefuseReturn = true;
    const CLogCapture log;
    EXPECT_FALSE(m_stage.OneLoop());
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @UnitData2BoardData_Base", "2 failure @UnitData2BoardData_Base",
                                           "2 m_processState = 2 @UnitData2BoardData_Base"));
    EXPECT_EQ(m_stage.m_pInputElements->size(), 2U);
    EXPECT_EQ(m_stage.m_stopCount, 1);
}

TEST_F(StageInput, NoHeldBandFailsTheSizeCheckAndTheRelease)
{
    Stage_Prepare(1);
    {
        const CLogCapture log;
        EXPECT_FALSE(m_stage.Check_InputData());
        EXPECT_THAT(log.Summary(), ElementsAre("2 failure @UnitData2BoardData_Base"));
    }
    const CLogCapture log;
    EXPECT_FALSE(m_stage.ReleaseInputElement());
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @UnitData2BoardData_Base"));
}

TEST_F(StageInput, BandsOfDifferentHeightOrWidthFailTheStepWithoutABoardBand)
{
    for (const auto& [width, height] : {std::pair{16, 3}, std::pair{17, 2}})
    {
        CStageUnderTest stage;
        stage.m_pInputElements->push_back({Band_Make(0, 16, 2).release(), nullptr});
        stage.m_pInputElements->push_back({Band_Make(1, 16, 2).release(), nullptr});
        EXPECT_TRUE(stage.Check_InputData());
        stage.m_pInputElements->push_back({Band_Make(2, width, height).release(), nullptr});
        const CLogCapture log;
        EXPECT_FALSE(stage.Check_InputData());
        EXPECT_THAT(log.Summary(), ElementsAre("2 failure @UnitData2BoardData_Base"));
        EXPECT_FALSE(stage.AllocateOutputBuffer());
        EXPECT_EQ(stage.m_pOutputBand, nullptr);
    }
}

TEST_F(StageInput, BitsAndHeaderWordsAreNotCompared)
{
    m_stage.m_pInputElements->push_back({Band_Make(0, 16, 2, 1).release(), nullptr});
    m_stage.m_pInputElements->push_back({Band_Make(7, 16, 2, 2).release(), nullptr});
    m_stage.m_pInputElements->back().band->m_bandAttr = 9;
    EXPECT_TRUE(m_stage.Check_InputData());
}

TEST_F(StageInput, ReleaseGivesBackInOrderDeletesBandsWithoutFIFOAndMovesOn)
{
    Stage_Prepare(1);
    Feed(0);
    ASSERT_TRUE(m_stage.GetInputData());
    m_stage.m_pInputElements->push_back({Band_Make(5, 16, 2).release(), nullptr}); // the leak checker watches
    m_stage.m_processState = 5;
    EXPECT_TRUE(m_stage.OneLoop());
    EXPECT_EQ(m_stage.m_processState, 2);
    EXPECT_THAT(*m_stage.m_pInputElements, IsEmpty());
    EXPECT_EQ(m_fifos[0]->m_returned.size(), 1U);
}

TEST_F(StageInput, AFailedReturnStopsTheStageWithItsListUncleared)
{
    Stage_Prepare(2);
    Feed(0);
    Feed(1);
    ASSERT_TRUE(m_stage.GetInputData());
    m_fifos[0]->m_bRefuseReturn = true;
    m_stage.m_processState = 5;
    m_journal.clear();
    const CLogCapture log;
    EXPECT_FALSE(m_stage.OneLoop());
    EXPECT_THAT(m_journal, ElementsAre("0.Empty_In")); // at the first refusal the others are not asked
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @UnitData2BoardData_Base", "2 failure @UnitData2BoardData_Base",
                                           "2 m_processState = 5 @UnitData2BoardData_Base"));
    EXPECT_EQ(m_stage.m_pInputElements->size(), 2U);
    EXPECT_EQ(m_stage.m_processState, 5);
}
