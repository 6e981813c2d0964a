// The ink-stripe stage driven by hand: its record, its output allocation, what a failure leaves, the band conversion.
#include "DataMap/PlatformWord.h"
#include "Platform/GlobalConfig/ColorGroup.h"
#include "Tests/UnitData2BoardData/InkSupport.h"

#include "DataMap/PrintUnitDataMap_03.h"

#include <gmock/gmock.h>

#include <stdexcept>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;
using testing::ThrowsMessage;

using InkStage = CDrivenInkStage;
using SAccess = SStageTestAccess;

// The record.

TEST_F(InkStage, AFreshStageHasNoRecordAndNoColourGroup)
{
    const CInkStage stage;
    EXPECT_EQ(stage.m_pInkStripeParam, nullptr);
    EXPECT_EQ(stage.m_pColorGroupInfo, nullptr);
}

TEST_F(InkStage, TheRecordTakesEveryWordFromItsSource)
{
    SPrintSetup& param = m_config.m_param;
    param.m_inkStripeParam = {101, 102, 103, 104, 105, 106, 107, 108};
    param.m_curPrint_JobWidth = 201;
    param.m_jobInfo_CurPrint = {301, 302, 303};
    param.m_jobInfo = {1, 2, 3}; // of the job as ripped: not the one
    param.m_unitInfo_Horizon.m_xMaxOffset_Left2Right = 401;
    param.m_unitInfo_Horizon.m_xMaxOffset_Right2Left = 402;
    param.m_maskData.m_maskCount_1 = 501;
    param.m_maskData.m_maskCount_2 = 502;
    m_config.Apply();
    CInkStage stage;
    ASSERT_TRUE(SAccess::Init_Param(stage));
    const SInkStripeParam_Run& run = *stage.m_pInkStripeParam;
    EXPECT_EQ(Word_Get<1>(run.pixelParam), 101);
    EXPECT_EQ(run.pixelParam.leftStripeWidth, 102);
    EXPECT_EQ(run.pixelParam.rightStripeWidth, 103);
    EXPECT_EQ(run.pixelParam.unitPitch, 104);
    EXPECT_EQ(Word_Get<5>(run.pixelParam), 105);
    EXPECT_EQ(run.pixelParam.unitPosition, 106);
    EXPECT_EQ(run.pixelParam.unitPositionCount, 107);
    EXPECT_EQ(Word_Get<8>(run.pixelParam) & 0xFFFF, 108); // a word of 16 bits
    EXPECT_EQ(run.jobWidth, 201);
    EXPECT_EQ(run.jobInfo_3, 303);
    EXPECT_EQ(run.xMaxOffset_Left2Right, 401);
    EXPECT_EQ(run.xMaxOffset_Right2Left, 402);
    EXPECT_EQ(run.maskCount_1, 501);
    EXPECT_EQ(run.bandAttr, 0);
    EXPECT_EQ(run.unitHorizon_1, 0);
    EXPECT_EQ(run.unitHorizon_2, 0);
}

TEST_F(InkStage, ASecondJobStillUsesTheValuesOfTheFirst)
{
    Stage_Prepare();
    Input_Hold(0, 1);
    ASSERT_TRUE(m_pStage->OneLoop());
    const std::vector<unsigned char> first = Data_Of(Element(1));
    const SInkStripeParam_Run* record = m_pStage->m_pInkStripeParam;
    ASSERT_TRUE(m_pStage->OneLoop()); // Process
    ASSERT_TRUE(m_pStage->OneLoop()); // ReleaseInputElement
    ASSERT_EQ(m_pStage->m_processState, 2);

    SPrintSetup second = m_config.m_param;
    second.m_curPrint_JobWidth = 999;
    second.m_jobInfo_CurPrint.m_bitsPerPixel = 2;
    second.m_inkStripeParam = {};
    second.m_maskData.m_maskCount_1 = 7;
    second.m_unitInfo_Horizon.m_xMaxOffset_Left2Right = 50;
    Platform_Set(second);
    Input_Hold(0, 1);
    m_pStage->m_processState = 3;
    ASSERT_TRUE(m_pStage->OneLoop());
    EXPECT_EQ(m_pStage->m_pInkStripeParam, record);
    EXPECT_EQ(record->jobWidth, 40);
    EXPECT_THAT(Units(), ElementsAre(0, 1, 2, 3));
    EXPECT_EQ(Data_Of(Element(1)), first);
}

TEST_F(InkStage, WhatBelongsToAUnitIsReadAnewInEveryStep)
{
    Stage_Prepare();
    Input_Hold(0, 1);
    ASSERT_TRUE(m_pStage->OneLoop());
    ASSERT_TRUE(m_pStage->OneLoop());
    ASSERT_TRUE(m_pStage->OneLoop());
    // Other offsets, another colour, direction and place in its colour group for unit 1; the record itself stays.
    m_job.units[1].position = 3;
    m_job.units[1].horizon_2 = 4;
    m_job.units[1].horizon_1 = 5;
    m_job.units[1].color = {0x77};
    m_job.units[1].direction = 8;
    const CStripeModel model(m_job);
    SPrintSetup second = m_config.m_param;
    second.m_unitInfo_Horizon.m_units[1] = {1, 5, 4};
    second.m_inkStripeColorData[1] = Color_Make({0x77});
    Platform_Set(second);
    SCartSetup cart = m_config.m_cart;
    cart.m_units[1].m_direction = 8;
    Platform_Set(cart);
    auto groups = m_config.m_colorGroups;
    groups[patternLayoutGroup].m_positions[1] = 3;
    Platform_Set(groups);
    Input_Hold(0, 0);
    m_pStage->m_processState = 3;
    ASSERT_TRUE(m_pStage->OneLoop());
    ExpectModelBand(Element(1), model.Band_Make(1, 0));
}

TEST_F(InkStage, TheRecordKeepsThePassAndTheLastUnitsWords)
{
    m_job.units[3].position = 2;
    m_job.units[3].horizon_1 = 6;
    m_job.units[3].horizon_2 = 4;
    Stage_Prepare();
    Input_Hold(0, 2);
    ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
    const SInkStripeParam_Run& run = *m_pStage->m_pInkStripeParam;
    EXPECT_EQ(run.bandAttr, 2);
    EXPECT_EQ(run.pixelParam.unitPosition, 2);
    EXPECT_EQ(run.unitHorizon_1, 6);
    EXPECT_EQ(run.unitHorizon_2, 4);
}

TEST_F(InkStage, TheColourGroupIsLookedUpWithTheRecordUnderThePatternLayout)
{
    Stage_Prepare();
    m_config.m_colorGroups["another"] = {};
    m_config.Apply();
    EXPECT_EQ(m_pStage->m_pColorGroupInfo, nullptr);
    ASSERT_TRUE(SAccess::Init_Param(*m_pStage));
    EXPECT_EQ(m_pStage->m_pColorGroupInfo,
              GC_ColorGroup()->ColorGroupInfo_By_Key(CColorGroupInfo::Key_Pattern_Layout()));
}

TEST_F(InkStage, AMissingColourGroupIsStoredAsItIsAndNotLookedForAgain)
{
    m_job.leftStripeWidth = 0;
    m_job.rightStripeWidth = 0;
    Stage_Prepare();
    const auto groups = m_config.m_colorGroups;
    m_config.m_colorGroups.clear();
    m_config.Apply();
    Input_Hold(0);
    ASSERT_TRUE(m_pStage->AllocateOutputBuffer()); // without stripes nobody needs it
    EXPECT_EQ(m_pStage->m_pColorGroupInfo, nullptr);
    m_config.m_colorGroups = groups;
    m_config.Apply();
    ASSERT_TRUE(SAccess::Init_Param(*m_pStage));
    EXPECT_EQ(m_pStage->m_pColorGroupInfo, nullptr);
}

TEST_F(InkStage, APassIsTakenAlsoWhenNoUnitRests)
{
    Stage_Prepare();
    for (const int unit : {3, 2, 1, 0})
    {
        Input_Hold(unit, 5);
    }
    m_pStage->m_pInputElements->at(1).band->m_bandAttr = 6; // only the first one's counts
    ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
    EXPECT_EQ(m_pStage->m_pInkStripeParam->bandAttr, 5);
    EXPECT_THAT(Units(), ElementsAre(3, 2, 1, 0));
}

// The step's inputs and the board band.

TEST_F(InkStage, AStepWithoutInputBandsFailsInThePassLookUpWhenStripesAreWanted)
{
    Stage_Prepare();
    EXPECT_THAT([&] { m_pStage->AllocateOutputBuffer(); },
                ThrowsMessage<std::out_of_range>(StrEq("invalid vector<T> subscript")));
}

TEST_F(InkStage, AStepWithoutInputBandsFailsInTheSizeCheckWhenNoStripesAreWanted)
{
    m_job.leftStripeWidth = 0;
    m_job.rightStripeWidth = 0;
    Stage_Prepare();
    const CLogCapture log;
    EXPECT_FALSE(m_pStage->OneLoop());
    EXPECT_THAT(Record_Operations(log), ElementsAre("2 failure @UnitData2BoardData_Base Check_InputData",
                                                    "2 failure @UnitData2BoardData_Base AllocateOutputBuffer",
                                                    "2 failure @UnitData2BoardData_S_AllUnit AllocateOutputBuffer",
                                                    "2 m_processState = 3 @UnitData2BoardData_Base OneLoop"));
}

TEST_F(InkStage, ARealBandThatIsNotAsLargeAsItsStripeBandsFailsTheSizeCheck)
{
    for (const bool bHeight : {true, false})
    {
        Stage_Prepare();
        CBandData& input = Input_Hold(2, 1);
        input.Create(bHeight ? 16 : 15, bHeight ? 66 : 65, 1, 1);
        const CLogCapture log;
        EXPECT_FALSE(m_pStage->AllocateOutputBuffer());
        EXPECT_THAT(Record_Operations(log),
                    ElementsAre("2 failure @UnitData2BoardData_Base Check_InputData",
                                "2 failure @UnitData2BoardData_Base AllocateOutputBuffer",
                                "2 failure @UnitData2BoardData_S_AllUnit AllocateOutputBuffer"));
        EXPECT_EQ(m_pStage->m_pOutputBand, nullptr);
        EXPECT_THAT(Units(), ElementsAre(2, 0, 1, 3));
        EXPECT_EQ(m_pStage->m_processState, 3);
    }
}

TEST_F(InkStage, TheBoardBandFollowsTheMapsOwnWidth)
{
    m_job.bandWidth = 400;
    Stage_Prepare();
    auto map = std::make_unique<CPrintUnitDataMap_03>();
    ASSERT_TRUE(map->Init(1, 32));
    m_pStage->Map_Replace(std::move(map));
    Input_Hold(0, 1);
    const CLogCapture log;
    ASSERT_TRUE(m_pStage->OneLoop());
    EXPECT_EQ(m_pStage->m_pOutputBand->m_width, 100 * 32);
    EXPECT_EQ(m_pStage->m_pOutputBand->m_height, 65);
    EXPECT_EQ(m_pStage->m_processState, 4);
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST_F(InkStage, ABoardBandThatCannotBeMadeFailsTheStepAndIsAbandoned)
{
    class CMapOfNoLength : public CPrintUnitDataMap_5
    {
    public:
        int SrcPixelCount_2_BoardBitCount(int /*srcPixelCount*/) const override { return -1; }
    };
    Stage_Prepare();
    m_pStage->Map_Replace(std::make_unique<CMapOfNoLength>());
    Input_Hold(0, 1);
    const CLogCapture log;
    EXPECT_FALSE(m_pStage->OneLoop());
    EXPECT_THAT(Record_Operations(log), ElementsAre("2 failure @UnitData2BoardData_Base AllocateOutputBuffer",
                                                    "2 failure @UnitData2BoardData_S_AllUnit AllocateOutputBuffer",
                                                    "2 m_processState = 3 @UnitData2BoardData_Base OneLoop"));
    EXPECT_EQ(m_pStage->m_pOutputBand, nullptr);
    EXPECT_THAT(Units(), ElementsAre(0, 1, 2, 3)); // stripes and all, the destructor's
}

TEST_F(InkStage, StripeBandsAppendedBeforeAFailureStayUntilTheInputsAreReleased)
{
    m_job.units[2].bHasColor = false;
    Stage_Prepare();
    CScriptedFIFO fifo(0, m_journal);
    Input_Hold(1, 0, &fifo);
    EXPECT_FALSE(m_pStage->AllocateOutputBuffer());
    EXPECT_THAT(Units(), ElementsAre(1, 0)); // and the half-made band of unit 2 is gone: the leak checker watches
    EXPECT_EQ(m_pStage->m_pOutputBand, nullptr);
    ASSERT_TRUE(m_pStage->ReleaseInputElement());
    EXPECT_EQ(fifo.m_returned.size(), 1U);
    EXPECT_THAT(Units(), IsEmpty());
}

TEST_F(InkStage, AWholeStepGivesTheRealBandsBackAndDeletesTheStripeBands)
{
    Stage_Prepare();
    CScriptedFIFO first(0, m_journal);
    CScriptedFIFO second(1, m_journal);
    Input_Hold(1, 1, &first);
    Input_Hold(2, 1, &second);
    ASSERT_TRUE(m_pStage->OneLoop());
    EXPECT_EQ(m_pStage->m_pInputElements->size(), 4U);
    ASSERT_TRUE(m_pStage->OneLoop());
    ASSERT_TRUE(m_pStage->OneLoop());
    EXPECT_EQ(m_pStage->m_processState, 2);
    EXPECT_THAT(Units(), IsEmpty());
    EXPECT_EQ(first.m_returned.size(), 1U);
    EXPECT_EQ(second.m_returned.size(), 1U);
    EXPECT_THAT(m_journal, ElementsAre("out.In", "0.Empty_In", "1.Empty_In"));
}

TEST_F(InkStage, DestructionFreesStripeBandsWhicheverStateTheStageIsIn)
{
    for (int loops = 0; loops <= 3; ++loops)
    {
        Stage_Prepare();
        Input_Hold(0, 0);
        for (int i = 0; i < loops; ++i)
        {
            ASSERT_TRUE(m_pStage->OneLoop());
        }
        EXPECT_EQ(m_pStage->m_pInputElements->size(), loops == 0 ? 1U : loops == 3 ? 0U : 4U);
        m_pStage.reset(); // the leak checker watches
    }
}

// The two allocations that nobody calls.

TEST_F(InkStage, TheUncalledAllocationsMakeOneFramePerPixelAndLeaveTheState)
{
    for (const auto allocate : {&SAccess::AllocateOutputBuffer_ByUnit, &SAccess::AllocateOutputBuffer_ByPixel})
    {
        m_job.bandWidth = 400;
        Stage_Prepare();
        auto map = std::make_unique<CPrintUnitDataMap_03>();
        ASSERT_TRUE(map->Init(1, 32)); // the map itself would say a quarter of it
        m_pStage->Map_Replace(std::move(map));
        Input_Hold(0, 1);
        Input_Hold(1, 0); // of another height: not looked at
        const CLogCapture log;
        ASSERT_TRUE(allocate(*m_pStage));
        const CBandData& board = *m_pStage->m_pOutputBand;
        EXPECT_EQ(board.m_width, 400 * 32);
        EXPECT_EQ(board.m_height, 65);
        EXPECT_EQ(board.m_bitsPerPixel, 1);
        EXPECT_EQ(board.m_bytesPerLine, 1600);
        EXPECT_EQ(m_pStage->m_processState, 3);
        EXPECT_THAT(log.Summary(), IsEmpty());
    }
}

TEST_F(InkStage, TheUncalledAllocationsFailWithOneRecordAndNoBoardBand)
{
    const struct
    {
        bool (*allocate)(CUnitData2BoardData_S_AllUnit&);
        const char* name;
    } allocations[] = {{&SAccess::AllocateOutputBuffer_ByUnit, "AllocateOutputBuffer_ByUnit"},
                       {&SAccess::AllocateOutputBuffer_ByPixel, "AllocateOutputBuffer_ByPixel"}};
    for (const auto& allocation : allocations)
    {
        Stage_Prepare();
        Input_Hold(0).m_height = 2000000000; // more than a band can hold
        const CLogCapture log;
        EXPECT_FALSE(allocation.allocate(*m_pStage));
        EXPECT_THAT(Record_Operations(log),
                    ElementsAre(std::string("2 failure @UnitData2BoardData_S_AllUnit ") + allocation.name));
        EXPECT_EQ(m_pStage->m_pOutputBand, nullptr);
    }
}

// Setup and the inherited operations.

TEST_F(InkStage, TheOutputHoldsThreeBandsForEveryMask)
{
    CInkStage stage;
    for (const auto& [first, second, expected] :
         {std::tuple{1, 1, 3}, {2, 3, 18}, {4, 1, 12}, {0, 3, 0}, {5, 0, 0}, {0, 0, 0}, {-1, 2, -6}})
    {
        m_config.m_param.m_maskData.m_maskCount_1 = first;
        m_config.m_param.m_maskData.m_maskCount_2 = second;
        m_config.Apply();
        EXPECT_EQ(stage.OutputBufferCount_Get(), expected);
    }
}

TEST_F(InkStage, TheOutputCountIsOfTheMasksThatAreSetNotOfTheRecord)
{
    Stage_Prepare();
    ASSERT_TRUE(SAccess::Init_Param(*m_pStage));
    m_config.m_param.m_maskData.m_maskCount_1 = 4;
    m_config.Apply();
    EXPECT_EQ(m_pStage->OutputBufferCount_Get(), 12);
}

TEST_F(InkStage, CreateSizesItsOutputByTheMasks)
{
    m_config.m_param.m_maskData.m_maskCount_1 = 1;
    m_config.m_param.m_maskData.m_maskCount_2 = 2;
    m_config.Apply();
    CInkStage stage;
    stage.m_bRefuseThread = true;
    EXPECT_FALSE(stage.Create(false, {}));
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_TRUE(stage.m_pOutputFIFO->WaitForIn(0));
        EXPECT_TRUE(stage.m_pOutputFIFO->In(Band_Make(0, 8, 1).release(), 0));
    }
    EXPECT_FALSE(stage.m_pOutputFIFO->WaitForIn(0));
}

TEST_F(InkStage, WithoutMasksCreateThrowsTheFIFOsZeroAndTheStageCanBeDestroyed)
{
    for (const auto& [first, second] : {std::pair{0, 1}, std::pair{1, 0}})
    {
        m_config.m_param.m_maskData.m_maskCount_1 = first;
        m_config.m_param.m_maskData.m_maskCount_2 = second;
        m_config.Apply();
        const CLogCapture log;
        CInkStage stage;
        int thrown = -1;
        try
        {
            stage.Create(false, {});
        }
        catch (const int value)
        {
            thrown = value;
        }
        EXPECT_EQ(thrown, 0);
        EXPECT_EQ(stage.m_pOutputFIFO, nullptr);
        EXPECT_NE(stage.m_pDataMap, nullptr); // the destructor's
        EXPECT_THAT(log.SummaryWithLines(), ElementsAre("2 Argument is invalid. bufferLen = 0 @KelThreadPtrFIFO_T:64"));
    }
}

TEST_F(InkStage, ACreateWhoseThreadCannotStartIsRecordedByBothStages)
{
    m_config.m_param.m_maskData.m_maskCount_1 = 1;
    m_config.m_param.m_maskData.m_maskCount_2 = 1;
    m_config.Apply();
    const CLogCapture log;
    CInkStage stage;
    stage.m_bRefuseThread = true;
    EXPECT_FALSE(stage.Create(true, {}));
    EXPECT_THAT(Record_Operations(log), ElementsAre("2 failure @UnitData2BoardData_Base Create",
                                                    "2 failure @UnitData2BoardData_S_AllUnit Create"));
    EXPECT_TRUE(stage.m_bCheckInput);
    EXPECT_NE(stage.m_pInputFIFOs, nullptr);
}

TEST_F(InkStage, InitializeMovesToGetInputData)
{
    Stage_Prepare();
    m_pStage->m_processState = 1;
    EXPECT_TRUE(m_pStage->OneLoop());
    EXPECT_EQ(m_pStage->m_processState, 2);
    EXPECT_EQ(m_pStage->m_pInkStripeParam, nullptr) << "the record waits for the first output allocation";
}

// The band conversion.

namespace
{

// A stage that counts the lines which it maps itself.
class CCountingStage : public CInkStage
{
public:
    bool MapBandData_Line_OneInput(int line, const CBandData& input) override
    {
        ++m_lineCount;
        return CInkStage::MapBandData_Line_OneInput(line, input);
    }

    std::atomic<int> m_lineCount{0};
};

} // namespace

TEST_F(InkStage, TheStageMapsNoLineItself)
{
    m_job.bandWidth = 16;
    Stage_Prepare();
    auto stage = std::make_unique<CCountingStage>();
    stage->m_pDataMap = m_pStage->m_pDataMap;
    m_pStage->m_pDataMap = nullptr;
    stage->m_pInputElements->push_back({Band_Make(3, 16, 50).release(), nullptr});
    std::fill_n(stage->m_pInputElements->at(0).band->m_pData, 100, static_cast<unsigned char>(0xFF));
    stage->m_pOutputBand = Band_Make(0, 256, 50).release();
    ASSERT_TRUE(stage->GenerateBandData());
    EXPECT_EQ(stage->m_lineCount, 0);
    for (int i = 0; i < stage->m_pOutputBand->m_dataSize; ++i)
    {
        ASSERT_EQ(stage->m_pOutputBand->m_pData[i], i % 2 == 0 ? 0x10 : 0) << i; // unit 3 in every frame of 16 bits
    }
}

TEST_F(InkStage, ABoardBandWithoutLinesIsDoneAtOnceAlsoWithoutGenerators)
{
    Stage_Prepare();
    for (const int generators : {0, 1, 4})
    {
        m_config.m_config.m_lineGeneratorCount_Of_DataMap = generators;
        m_config.Apply();
        delete m_pStage->m_pOutputBand;
        m_pStage->m_pOutputBand = Band_Make(0, 256, 0).release();
        EXPECT_TRUE(m_pStage->GenerateBandData());
    }
}

TEST_F(InkStage, TheConverterSeesTheInputsInElementOrder)
{
    // A map that stores what it is given, so that the last band of a line wins.
    class CStoringMap : public CPrintUnitDataMap_5
    {
    public:
        bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* /*src*/, unsigned char* dst,
                          int /*dstByteCount*/) const override
        {
            dst[0] = static_cast<unsigned char>(dst[0] * 10 + param.m_unitIndex);
            return true;
        }
    };
    Stage_Prepare();
    m_pStage->Map_Replace(std::make_unique<CStoringMap>());
    for (const int unit : {2, 1, 3})
    {
        m_pStage->m_pInputElements->push_back({Band_Make(unit, 8, 30).release(), nullptr});
    }
    m_pStage->m_pOutputBand = Band_Make(0, 8, 30).release();
    ASSERT_TRUE(m_pStage->GenerateBandData());
    EXPECT_THAT(Data_Of(*m_pStage->m_pOutputBand), testing::Each(213));
}
