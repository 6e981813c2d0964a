// The one-FIFO stage: its setup, the sets that it takes, and who owns what on every way.
#include "Tests/Support/BandHeader.h"
#include "Tests/UnitData2BoardData/InkSupport.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

// A set of bands of 2 lines of 16 pixels for these units.
SBufferData<CBandData*>* BandSet_Of(const std::vector<int>& units)
{
    std::vector<std::unique_ptr<CBandData>> bands;
    for (const int unit : units)
    {
        bands.push_back(Band_Make(unit, 16, 2));
    }
    return BandSet_Make(std::move(bands));
}

// Deletes a set that no stage has taken.
void BandSet_Delete(SBufferData<CBandData*>* bandSet)
{
    for (int i = 0; i < bandSet->count; ++i)
    {
        delete bandSet->data[i];
    }
    delete bandSet;
}

// An element that the stage will refuse, and abandon: the leak checker knows this function by its name.
SBufferData<CBandData*>* BandSet_WithoutBands_Make(int count)
{
    auto* bandSet = new SBufferData<CBandData*>();
    bandSet->count = count;
    return bandSet;
}

std::chrono::milliseconds Elapsed(std::chrono::steady_clock::time_point begin)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
}

// A stage with a real map, a scripted output and its input FIFO, without a thread.
class OneFIFOStage : public testing::Test
{
protected:
    OneFIFOStage() { Stage_Prepare(); }

    void Stage_Prepare()
    {
        m_pStage = std::make_unique<CDriven>();
        auto* map = new CPrintUnitDataMap_5();
        EXPECT_TRUE(map->Init(1, 16));
        m_pStage->m_pDataMap = map;
        m_pOutput = new CScriptedOutput(m_journal);
        m_pStage->m_pOutputFIFO = m_pOutput;
        m_pStage->m_pInputBufferFIFO = &m_input;
        m_pStage->m_processState = 2;
    }

    std::vector<int> Units() const
    {
        std::vector<int> units;
        for (const SInputElement& element : *m_pStage->m_pInputElements)
        {
            units.push_back(element.band->m_unitIndex);
        }
        return units;
    }

    class CDriven : public COneFIFOStage
    {
    public:
        using COneFIFOStage::m_pInputBufferFIFO;
    };

    CConfigGuard m_config;
    Journal m_journal;
    CBandSetFIFO m_input{4};
    std::unique_ptr<CDriven> m_pStage;
    CScriptedOutput* m_pOutput = nullptr; // the stage's
};

} // namespace

// Setup.

TEST_F(OneFIFOStage, AFreshStageHasNeitherRecordNorGroupNorInput)
{
    const CDriven stage;
    EXPECT_EQ(stage.m_pInkStripeParam, nullptr);
    EXPECT_EQ(stage.m_pColorGroupInfo, nullptr);
    EXPECT_EQ(stage.m_pInputBufferFIFO, nullptr);
}

TEST_F(OneFIFOStage, CreateMakesAnOutputForOneBandWhateverTheMasksSay)
{
    m_config.m_param.m_maskData.m_maskCount_1 = 5;
    m_config.m_param.m_maskData.m_maskCount_2 = 5;
    m_config.Apply();
    CDriven stage;
    stage.m_bRefuseThread = true;
    stage.m_outputBandNo = 9;
    EXPECT_FALSE(stage.Create(m_input));
    EXPECT_EQ(stage.OutputBufferCount_Get(), 75);
    EXPECT_EQ(stage.m_outputBandNo, 0);
    EXPECT_EQ(stage.m_pInputBufferFIFO, &m_input);
    EXPECT_FALSE(stage.m_bCheckInput);
    EXPECT_EQ(stage.m_pInputFIFOs, nullptr);
    EXPECT_NE(stage.m_pDataMap, nullptr);
    EXPECT_EQ(stage.OutputProcessor_Get(), stage.m_pOutputFIFO);
    EXPECT_TRUE(stage.m_pOutputFIFO->WaitForIn(0));
    EXPECT_TRUE(stage.m_pOutputFIFO->In(Band_Make(0, 8, 1).release(), 0));
    EXPECT_FALSE(stage.m_pOutputFIFO->WaitForIn(0));
}

TEST_F(OneFIFOStage, WithoutMasksItCanBeCreatedAllTheSame)
{
    m_config.m_param.m_maskData = {};
    m_config.Apply();
    CDriven stage;
    ASSERT_TRUE(stage.Create(m_input));
    stage.Stop();
    EXPECT_TRUE(stage.WaitExit(withoutLimit));
}

TEST_F(OneFIFOStage, ACreateWhoseThreadCannotStartWritesOneRecordAndLeavesTheRestToTheDestructor)
{
    const CLogCapture log;
    CDriven stage;
    stage.m_bRefuseThread = true;
    EXPECT_FALSE(stage.Create(m_input));
    EXPECT_THAT(Record_Operations(log), ElementsAre("2 failure @UnitData2BoardData_AllUnit_2 Create"));
}

TEST_F(OneFIFOStage, CreateAsksForTheMapOfTheJobAsRipped)
{
    m_config.m_option.m_printerSupportBits = SSupportBits::TwoBit;
    m_config.m_param.m_jobInfo.m_bitsPerPixel = 2;
    m_config.m_param.m_jobInfo_CurPrint.m_bitsPerPixel = 1;
    m_config.Apply();
    CDriven stage;
    stage.m_bRefuseThread = true;
    EXPECT_FALSE(stage.Create(m_input));
    EXPECT_EQ(stage.m_pDataMap->SrcBitCount(), 2);
}

// Input.

TEST_F(OneFIFOStage, ASetBecomesTheStepsInputsInArrayOrderWithoutAFIFO)
{
    ASSERT_TRUE(m_input.In(BandSet_Of({4, 2, 7})));
    const CLogCapture log;
    ASSERT_TRUE(m_pStage->OneLoop());
    EXPECT_THAT(Units(), ElementsAre(4, 2, 7));
    for (const SInputElement& element : *m_pStage->m_pInputElements)
    {
        EXPECT_EQ(element.fifo, nullptr);
    }
    EXPECT_EQ(m_pStage->m_processState, 3);
    EXPECT_THAT(m_journal, ElementsAre("out.WaitForIn"));
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST_F(OneFIFOStage, ASetOfOneBandIsAStepOfOneUnit)
{
    auto band = Band_Make(3, 16, 2);
    band->m_pData[0] = 0x80;
    band->m_bandNo = 55;
    STestBandHeader header = BandHeader_Get(*band);
    header.words[2] = 6;
    BandHeader_Set(*band, header);
    std::vector<std::unique_ptr<CBandData>> bands;
    bands.push_back(std::move(band));
    ASSERT_TRUE(m_input.In(BandSet_Make(std::move(bands))));
    std::vector<int> states;
    for (int i = 0; i < 4; ++i)
    {
        ASSERT_TRUE(m_pStage->OneLoop());
        states.push_back(m_pStage->m_processState);
    }
    EXPECT_THAT(states, ElementsAre(3, 4, 5, 2));
    CBandData* raw = nullptr;
    ASSERT_TRUE(CTestOutputEnd(*m_pOutput).Out(raw, 0));
    const std::unique_ptr<CBandData> board(raw);
    EXPECT_EQ(board->m_bandNo, 0);
    EXPECT_EQ(BandHeader_Get(*board).words[2], 6);
    EXPECT_EQ(board->m_unitIndex, 3);
    EXPECT_EQ(board->m_pData[0], 0x10);
    EXPECT_THAT(Units(), IsEmpty()); // deleted: the leak checker watches
}

TEST_F(OneFIFOStage, SkippedBandsAreMappedLikeAnyOther)
{
    auto band = Band_Make(0, 16, 2);
    band->m_bSkip = true;
    std::vector<std::unique_ptr<CBandData>> bands;
    bands.push_back(std::move(band));
    ASSERT_TRUE(m_input.In(BandSet_Make(std::move(bands))));
    ASSERT_TRUE(m_pStage->OneLoop());
    EXPECT_EQ(m_pStage->m_processState, 3);
}

TEST_F(OneFIFOStage, WithoutRoomInTheOutputNoSetIsTaken)
{
    ASSERT_TRUE(m_input.In(BandSet_Of({0})));
    m_pOutput->m_bFull = true;
    ASSERT_TRUE(m_pStage->OneLoop());
    EXPECT_EQ(m_pStage->m_processState, 2);
    EXPECT_THAT(m_journal, ElementsAre("out.WaitForIn"));
    SBufferData<CBandData*>* untaken = nullptr;
    ASSERT_TRUE(m_input.Out(untaken));
    BandSet_Delete(untaken);
}

TEST_F(OneFIFOStage, AnEmptyInputIsWaitedForOnceAndThenAskedForAgain)
{
    const CLogCapture log;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 3; ++i)
    {
        ASSERT_TRUE(m_pStage->OneLoop());
    }
    EXPECT_GE(Elapsed(begin), std::chrono::milliseconds(290));
    EXPECT_LT(Elapsed(begin), std::chrono::milliseconds(2000));
    EXPECT_EQ(m_pStage->m_processState, 2);
    EXPECT_THAT(m_journal, ElementsAre("out.WaitForIn", "out.WaitForIn", "out.WaitForIn"));
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST_F(OneFIFOStage, ASetThatComesDuringTheWaitIsTakenInTheSameLoop)
{
    std::thread producer(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            m_input.In(BandSet_Of({6}));
        });
    for (int i = 0; i < 200 && m_pStage->m_processState == 2; ++i)
    {
        ASSERT_TRUE(m_pStage->GetInputData());
    }
    producer.join();
    EXPECT_THAT(Units(), ElementsAre(6));
    EXPECT_EQ(m_pStage->m_processState, 3);
}

TEST_F(OneFIFOStage, TheNullMarkerCompletesTheOutputAndStopsWithoutARecord)
{
    ASSERT_TRUE(m_input.In(nullptr));
    const CLogCapture log;
    EXPECT_TRUE(m_pStage->OneLoop());
    EXPECT_EQ(m_pStage->m_stopCount, 1);
    EXPECT_EQ(m_pStage->m_processState, 2);
    EXPECT_THAT(m_journal, ElementsAre("out.WaitForIn", "out.SetCompletedFlag"));
    EXPECT_TRUE(CTestOutputEnd(*m_pOutput).IsCompleted());
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST_F(OneFIFOStage, AnElementWithoutBandsFailsTheStateAndIsNotFreed)
{
    for (const int count : {0, -1})
    {
        Stage_Prepare();
        // This test keeps the element: if the stage freed it, freeing it here would be the second time.
        const std::unique_ptr<SBufferData<CBandData*>> element(BandSet_WithoutBands_Make(count));
        ASSERT_TRUE(m_input.In(element.get()));
        const CLogCapture log;
        EXPECT_FALSE(m_pStage->OneLoop());
        EXPECT_THAT(Record_Operations(log), ElementsAre("2 failure @UnitData2BoardData_AllUnit_2 GetInputData",
                                                        "2 m_processState = 2 @UnitData2BoardData_Base OneLoop"));
        EXPECT_EQ(m_pStage->m_stopCount, 1);
        EXPECT_EQ(m_pStage->m_processState, 2);
        EXPECT_THAT(Units(), IsEmpty());
        EXPECT_EQ(element->count, count);
        EXPECT_FALSE(CTestOutputEnd(*m_pOutput).IsCompleted());
    }
}

// Release and ownership.

TEST_F(OneFIFOStage, ReleaseDeletesEveryBandAndKeepsTheVector)
{
    ASSERT_TRUE(m_input.In(BandSet_Of({0, 1, 2})));
    ASSERT_TRUE(m_pStage->GetInputData());
    const CLogCapture log;
    EXPECT_TRUE(m_pStage->Release_InputElement_Internal());
    ASSERT_NE(m_pStage->m_pInputElements, nullptr);
    EXPECT_THAT(Units(), IsEmpty());
    EXPECT_TRUE(m_pStage->Release_InputElement_Internal());
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST_F(OneFIFOStage, ReleaseWithoutAVectorSucceeds)
{
    delete m_pStage->m_pInputElements;
    m_pStage->m_pInputElements = nullptr;
    EXPECT_TRUE(m_pStage->Release_InputElement_Internal());
}

TEST_F(OneFIFOStage, ReleaseGivesNothingToAPool)
{
    CScriptedFIFO fifo(0, m_journal);
    m_pStage->m_pInputElements->push_back({Band_Make(0, 16, 2).release(), &fifo});
    EXPECT_TRUE(m_pStage->Release_InputElement_Internal());
    EXPECT_THAT(m_journal, IsEmpty());
}

TEST_F(OneFIFOStage, BandsOfDifferentSizeInOneSetFailTheStep)
{
    for (const bool bHeight : {true, false})
    {
        Stage_Prepare();
        std::vector<std::unique_ptr<CBandData>> bands;
        bands.push_back(Band_Make(0, 16, 2));
        bands.push_back(bHeight ? Band_Make(1, 16, 3) : Band_Make(1, 17, 2));
        ASSERT_TRUE(m_input.In(BandSet_Make(std::move(bands))));
        ASSERT_TRUE(m_pStage->OneLoop());
        const CLogCapture log;
        EXPECT_FALSE(m_pStage->OneLoop());
        EXPECT_THAT(Record_Operations(log), ElementsAre("2 failure @UnitData2BoardData_Base Check_InputData",
                                                        "2 failure @UnitData2BoardData_Base AllocateOutputBuffer",
                                                        "2 failure @UnitData2BoardData_S_AllUnit AllocateOutputBuffer",
                                                        "2 m_processState = 3 @UnitData2BoardData_Base OneLoop"));
        EXPECT_THAT(Units(), ElementsAre(0, 1)); // the destructor's
    }
}

TEST_F(OneFIFOStage, DestructionFreesTheStepWhicheverStateTheStageIsIn)
{
    m_config.m_cart.m_units = {{0, 0, 0, 1}, {1, 0, 0, 1}, {2, 0, 0, 1}};
    m_config.m_cart.m_headBaseInfo.m_bandWidth = 16;
    m_config.m_colorGroups[patternLayoutGroup] = {};
    m_config.m_param.m_inkStripeParam.leftStripeWidth = 1; // unit 2 gets a stripe band
    m_config.m_param.m_inkStripeColorData[2] = Color_Make({0xFF});
    m_config.m_param.m_maskData.m_maskCount_1 = 1;
    m_config.m_param.m_curPrint_JobWidth = 1;
    m_config.m_param.m_jobInfo_CurPrint.m_bitsPerPixel = 1;
    m_config.Apply();
    for (int loops = 0; loops <= 4; ++loops)
    {
        Stage_Prepare();
        auto* bandSet = BandSet_Of({0, 1});
        bandSet->data[0]->m_bandAttr = 1;
        ASSERT_TRUE(m_input.In(bandSet));
        for (int i = 0; i < loops; ++i)
        {
            ASSERT_TRUE(m_pStage->OneLoop());
        }
        const std::size_t held[] = {0, 2, 3, 3, 0};
        EXPECT_EQ(m_pStage->m_pInputElements->size(), held[loops]);
        EXPECT_EQ(m_input.HasDataEvent().Wait(0, 0), loops == 0);
        m_pStage.reset(); // the leak checker watches
        SBufferData<CBandData*>* untaken = nullptr;
        if (m_input.Out(untaken))
        {
            BandSet_Delete(untaken);
        }
    }
}

// On its own thread.

TEST(OneFIFOStageThread, RunsToTheNullMarkerAndReportsSuccess)
{
    const CConfigGuard config;
    const CLogCapture log;
    CBandSetFIFO input(2);
    CUnitData2BoardData_AllUnit_2 stage;
    ASSERT_TRUE(stage.Create(input));
    constexpr int stepCount = 25;
    std::thread producer(
        [&]
        {
            for (int i = 0; i < stepCount; ++i)
            {
                EXPECT_TRUE(BandSet_Push(input, BandSet_Of(i % 2 == 0 ? std::vector{0, 5} : std::vector{3})));
            }
            EXPECT_TRUE(BandSet_Push(input, nullptr));
        });
    std::vector<int> numbers;
    auto* output = stage.OutputProcessor_Get();
    for (CBandData* board = nullptr; CTestOutputEnd(*output).Out(board, 1000);)
    {
        numbers.push_back(board->m_bandNo);
        delete board;
        if (numbers.size() == stepCount)
        {
            break;
        }
    }
    producer.join();
    EXPECT_TRUE(stage.WaitExit(10000));
    EXPECT_TRUE(CTestOutputEnd(*output).IsCompleted());
    EXPECT_TRUE(stage.IsThreadSuccess());
    ASSERT_EQ(numbers.size(), static_cast<std::size_t>(stepCount));
    for (int i = 0; i < stepCount; ++i)
    {
        EXPECT_EQ(numbers[static_cast<std::size_t>(i)], i);
    }
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST(OneFIFOStageThread, TakesTheNextSetOnlyWhenItsOneBoardBandIsTaken)
{
    const CConfigGuard config;
    CBandSetFIFO input(4);
    CUnitData2BoardData_AllUnit_2 stage;
    ASSERT_TRUE(stage.Create(input));
    auto* output = stage.OutputProcessor_Get();
    for (int i = 0; i < 3; ++i)
    {
        ASSERT_TRUE(BandSet_Push(input, BandSet_Of({i})));
    }
    ASSERT_TRUE(BandSet_Push(input, nullptr));
    for (int i = 0; i < 3; ++i)
    {
        ASSERT_TRUE(CTestOutputEnd(*output).WaitForOut(10000));
        std::this_thread::sleep_for(std::chrono::milliseconds(150)); // longer than any of the stage's waits
        EXPECT_FALSE(output->WaitForIn(0));
        EXPECT_TRUE(input.HasDataEvent().Wait(0, 0)) << "the next set, or the marker, still waits";
        EXPECT_FALSE(CTestOutputEnd(*output).IsCompleted());
        CBandData* raw = nullptr;
        ASSERT_TRUE(CTestOutputEnd(*output).Out(raw, 0));
        const std::unique_ptr<CBandData> board(raw);
        EXPECT_EQ(board->m_bandNo, i);
        EXPECT_EQ(board->m_unitIndex, i);
    }
    EXPECT_TRUE(stage.WaitExit(10000));
    EXPECT_TRUE(CTestOutputEnd(*output).IsCompleted());
}

TEST(OneFIFOStageThread, AnElementWithoutBandsEndsTheThreadAndIsAbandoned)
{
    const CConfigGuard config;
    const CLogCapture log;
    CBandSetFIFO input(2);
    CUnitData2BoardData_AllUnit_2 stage;
    ASSERT_TRUE(stage.Create(input));
    ASSERT_TRUE(BandSet_Push(input, BandSet_WithoutBands_Make(0)));
    EXPECT_TRUE(stage.WaitExit(10000));
    EXPECT_FALSE(stage.IsThreadSuccess());
    EXPECT_FALSE(Output_Of(stage).IsCompleted());
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @UnitData2BoardData_AllUnit_2",
                                           "2 m_processState = 2 @UnitData2BoardData_Base"));
}
