// The slots of the three stages, as a program finds them that was built apart from the shared library.
#include "Platform/BandData/BandData.h"
#include "Tests/Support/ConfigGuard.h"
#include "Tests/Support/ThreadSlots.h"
#include "UnitData2BoardData/UnitData2BoardData_AllUnit_2.h"
#include "UnitData2BoardData/UnitData2BoardData_Base.h"
#include "UnitData2BoardData/UnitData2BoardData_S_AllUnit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace
{

// Overrides the stage's own operations too.
template<class TStage>
class CStageSlots : public CThreadSlots<TStage>
{
public:
    bool Create(bool checkInput, const std::vector<CBandDataFIFO*>& inputFIFOs) override
    {
        return this->Note("Create " + std::to_string(static_cast<int>(checkInput)) + ' ' +
                          std::to_string(inputFIFOs.size()));
    }

protected:
    bool Initialize() override { return this->Note("Initialize"); }
    bool GetInputData() override { return this->Note("GetInputData"); }
    bool AllocateOutputBuffer() override { return this->Note("AllocateOutputBuffer"); }
    bool MapBandData_Line_OneInput(int line, const CBandData& input) override
    {
        return this->Note("MapBandData_Line_OneInput " + std::to_string(line) + ' ' + std::to_string(input.m_width));
    }
    bool GenerateBandData() override { return this->Note("GenerateBandData"); }
    int OutputBufferCount_Get() override
    {
        this->Note("OutputBufferCount_Get");
        return 42;
    }
    bool Release_InputElement_Internal() override { return this->Note("Release_InputElement_Internal"); }
};

template<class TStage>
class StageSlots : public testing::Test
{
protected:
    CConfigGuard m_config;
};
using Stages = testing::Types<CUnitData2BoardData_Base, CUnitData2BoardData_S_AllUnit, CUnitData2BoardData_AllUnit_2>;
TYPED_TEST_SUITE(StageSlots, Stages);

} // namespace

TYPED_TEST(StageSlots, TheEightOperationsOfAStageFollowTheThreadFrames)
{
    auto stage = std::make_unique<CStageSlots<TypeParam>>();
    const void* const object = static_cast<TamBaseThread*>(stage.get());
    ThreadSlots_Call(*stage);
    EXPECT_THAT(stage->m_calls, ElementsAreArray(threadSlotNames));

    stage->m_calls.clear();
    const std::vector<CBandDataFIFO*> inputs(3);
    CBandData band;
    ASSERT_TRUE(band.Create(24, 1, 1, 1));
    Slot_Call<bool>(object, 13, true, &inputs);
    Slot_Call<bool>(object, 14);
    Slot_Call<bool>(object, 15);
    Slot_Call<bool>(object, 16);
    Slot_Call<bool>(object, 17, 5, static_cast<const CBandData*>(&band));
    Slot_Call<bool>(object, 18);
    EXPECT_EQ(Slot_Call<int>(object, 19), 42);
    Slot_Call<bool>(object, 20);
    EXPECT_THAT(stage->m_calls, ElementsAre("Create 1 3", "Initialize", "GetInputData", "AllocateOutputBuffer",
                                            "MapBandData_Line_OneInput 5 24", "GenerateBandData",
                                            "OutputBufferCount_Get", "Release_InputElement_Internal"));

    bool bDestroyed = false;
    stage->m_pDestroyed = &bDestroyed;
    static_cast<void>(stage.release());
    Slot_Delete(object);
    EXPECT_TRUE(bDestroyed);
}

TYPED_TEST(StageSlots, AStageThatWasNeverStartedAnswersThroughItsOwnTable)
{
    auto stage = std::make_unique<TypeParam>();
    const void* const object = static_cast<TamBaseThread*>(stage.release());
    EXPECT_TRUE(Slot_Call<bool>(object, 4, 0U)); // has ended
    EXPECT_TRUE(Slot_Call<bool>(object, 10));    // prepared
    EXPECT_TRUE(Slot_Call<bool>(object, 14));    // initialised
    EXPECT_TRUE(Slot_Call<bool>(object, 20));    // nothing to give back
    Slot_Delete(object);
}

TEST(StageSlotValues, TheBaseStageAndTheInkStripeStageHaveTheirOwnOutputCapacity)
{
    CConfigGuard config;
    config.m_param.m_maskData.m_maskCount_1 = 4;
    config.m_param.m_maskData.m_maskCount_2 = 2;
    config.Apply();
    CUnitData2BoardData_Base base;
    CUnitData2BoardData_S_AllUnit inkStripe;
    CUnitData2BoardData_AllUnit_2 oneFIFO;
    EXPECT_EQ(Slot_Call<int>(static_cast<TamBaseThread*>(&base), 19), 3);
    EXPECT_EQ(Slot_Call<int>(static_cast<TamBaseThread*>(&inkStripe), 19), 24);
    EXPECT_EQ(Slot_Call<int>(static_cast<TamBaseThread*>(&oneFIFO), 19), 24);
}
