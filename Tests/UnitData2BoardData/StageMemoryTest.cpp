// A stage whose system runs out of memory for a board band: the step fails with its records, and nothing of it stays.
#include "Tests/Support/AllocationFailure.h"
#include "Tests/UnitData2BoardData/InkJob.h"

namespace
{

class StageMemory : public CDrivenStage
{
};

} // namespace

TEST_F(StageMemory, NoMemoryForABoardBandsRecordFailsTheStep)
{
    Stage_Prepare(1);
    Feed(0);
    ASSERT_TRUE(m_stage.GetInputData());
    const CLogCapture log;
    {
        const CAllocationFailure noMemory(1);
        EXPECT_FALSE(m_stage.AllocateOutputBuffer());
        EXPECT_TRUE(noMemory.HasFailed());
    }
    EXPECT_EQ(m_stage.m_pOutputBand, nullptr);
    EXPECT_EQ(log.Summary(), std::vector<std::string>{"2 failure @UnitData2BoardData_Base"});
    EXPECT_TRUE(m_stage.AllocateOutputBuffer()) << "the step's bands are still there";
    EXPECT_NE(m_stage.m_pOutputBand, nullptr);
}

TEST_F(StageMemory, TheInkStripeStagesOwnAllocationsRefuseToo)
{
    const auto map = std::make_unique<CPrintUnitDataMap_5>();
    ASSERT_TRUE(map->Init(1, 16));
    CInkStage stage;
    stage.m_pDataMap = map.get();
    const auto band = Band_Make(0, 16, 2);
    stage.m_pInputElements->push_back({band.get(), nullptr});
    for (const auto allocate :
         {&SStageTestAccess::AllocateOutputBuffer_ByUnit, &SStageTestAccess::AllocateOutputBuffer_ByPixel})
    {
        const CLogCapture log;
        {
            const CAllocationFailure noMemory(1);
            EXPECT_FALSE(allocate(stage));
            EXPECT_TRUE(noMemory.HasFailed());
        }
        EXPECT_EQ(stage.m_pOutputBand, nullptr);
        EXPECT_EQ(log.Summary(), std::vector<std::string>{"2 failure @UnitData2BoardData_S_AllUnit"});
    }
    stage.m_pInputElements->clear();
    stage.m_pDataMap = nullptr;
}
