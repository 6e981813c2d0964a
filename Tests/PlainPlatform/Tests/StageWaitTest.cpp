// How long the stages ask the platform to wait: the time-outs as they reach it.
#include "Tests/UnitData2BoardData/InkSupport.h"

#include "WaitJournal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

// The time-outs of the FIFOs' operations, all of them.
void ExpectFIFOWaits(const CWaitJournal& journal, const std::vector<std::string>& operations)
{
    for (const char* operation : {"Full_WaitForOut", "Full_Out", "Empty_In", "WaitForIn", "In"})
    {
        const bool bUsed = std::find(operations.begin(), operations.end(), operation) != operations.end();
        EXPECT_EQ(journal.FIFOs(operation), bUsed ? std::vector<unsigned long>{100} : std::vector<unsigned long>())
            << operation;
    }
}

// Takes one board band from a stage that is fed, waits until the stage asks for the next input, and stops it.
void Board_Take(CUnitData2BoardData_Base& stage, const CWaitJournal& journal)
{
    CBandData* board = nullptr;
    ASSERT_TRUE(Output_Of(stage).Out(board, testPatienceMs));
    delete board;
    const std::size_t before = journal.Count();
    ASSERT_TRUE(Eventually([&] { return journal.Count() >= before + 3; }));
    stage.Stop();
    ASSERT_TRUE(stage.WaitExit(withoutLimit));
}

class StageWait : public testing::Test
{
protected:
    StageWait()
    {
        m_config.m_param.m_jobInfo_CurPrint.m_bitsPerPixel = 1;
        m_config.m_param.m_maskData.m_maskCount_1 = 1;
        m_config.m_param.m_maskData.m_maskCount_2 = 1;
        m_config.m_config.m_lineGeneratorCount_Of_DataMap = 2;
        m_config.Apply();
    }

    CConfigGuard m_config;
};

} // namespace

TEST_F(StageWait, TheBaseStageWaits100InEveryFIFOAndOnNoEvent)
{
    const auto pool = Pool_Make(0, 2);
    CUnitData2BoardData_Base stage;
    const CWaitJournal journal;
    ASSERT_TRUE(stage.Create(false, {pool.get()}));
    ASSERT_TRUE(Band_Push(*pool));
    CBandData* band = nullptr;
    Board_Take(stage, journal);
    ASSERT_TRUE(pool->Empty_Out(band, 0));
    delete band;
    ExpectFIFOWaits(journal, {"Full_WaitForOut", "Full_Out", "Empty_In", "WaitForIn", "In"});
    EXPECT_THAT(journal.Events(), IsEmpty());
    EXPECT_THAT(journal.Exits("CUnitData2BoardData_Base"), ElementsAre(withoutLimit));
}

TEST_F(StageWait, TheInkStripeStageWaitsAnHourForItsConverterWhichJoinsWithoutLimit)
{
    const auto pool = Pool_Make(0, 2);
    CUnitData2BoardData_S_AllUnit stage;
    const CWaitJournal journal;
    ASSERT_TRUE(stage.Create(false, {pool.get()}));
    ASSERT_TRUE(Band_Push(*pool));
    Board_Take(stage, journal);
    ExpectFIFOWaits(journal, {"Full_WaitForOut", "Full_Out", "Empty_In", "WaitForIn", "In"});
    EXPECT_THAT(journal.Exits("CUnit2Board"), ElementsAre(3600000));
    EXPECT_THAT(journal.Exits("CUnit2Board_Line"), ElementsAre(4294967295));
    EXPECT_THAT(journal.Events(), testing::IsSubsetOf({0, 100}));
}

TEST_F(StageWait, TheOneFIFOStageWaits100ForRoomAnd100ForInput)
{
    CBandSetFIFO input(2);
    CUnitData2BoardData_AllUnit_2 stage;
    const CWaitJournal journal;
    ASSERT_TRUE(stage.Create(input));
    ASSERT_TRUE(Eventually([&] { return journal.Event(&input.HasDataEvent()).size() >= 2; }));
    std::vector<std::unique_ptr<CBandData>> bands;
    bands.push_back(Band_Make(0, 32, 4));
    ASSERT_TRUE(input.In(BandSet_Make(std::move(bands))));
    Board_Take(stage, journal);
    EXPECT_THAT(journal.Event(&input.HasDataEvent()), testing::Each(100));
    ExpectFIFOWaits(journal, {"WaitForIn", "In"});
    EXPECT_THAT(journal.Exits("CUnit2Board"), ElementsAre(3600000));
}
