// What the system or a map can do to a stage with a converter: threads that do not start, lines that fail, an hour that
// runs out. In every case the stage fails with its records, all threads are joined and nothing is left behind.
#include "Tests/Support/ThreadFailure.h"
#include "Tests/UnitData2BoardData/InkSupport.h"

#include <gmock/gmock.h>

#include <thread>

using testing::Contains;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace
{

// A map that fails on one line of every band.
class CFailingMap : public CPrintUnitDataMap_5
{
public:
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override
    {
        return src[0] != failingByte && CPrintUnitDataMap_5::MapData_Line(param, src, dst, dstByteCount);
    }

    static constexpr unsigned char failingByte = 0xEE;
};

// What follows in the log when the conversion of a band has failed in the stage.
const std::vector<std::string> afterConversion = {
    "2 failure @UnitData2BoardData_S_AllUnit GenerateBandData",
    "2 failure @UnitData2BoardData_Base Process",
    "2 m_processState = 4 @UnitData2BoardData_Base OneLoop",
};

std::vector<std::string> operator+(std::vector<std::string> first, const std::vector<std::string>& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

class InkStageFailure : public testing::TestWithParam<int>
{
protected:
    InkStageFailure()
    {
        m_config.m_param.m_maskData.m_maskCount_1 = 1;
        m_config.m_param.m_maskData.m_maskCount_2 = 1;
        Generators_Set(2);
    }
    ~InkStageFailure() override { EXPECT_EQ(CThreadFailure::Running_Count(), 0); }

    void Generators_Set(int count)
    {
        m_config.m_config.m_lineGeneratorCount_Of_DataMap = count;
        m_config.Apply();
    }

    // Feeds steps until the stage has ended, at most `limit`; returns how many board bands came.
    static int Feed(CUnitData2BoardData_Base& stage, CTestPool& pool, int limit)
    {
        int boards = 0;
        for (int i = 0; i < limit && Band_Push(pool, i); ++i)
        {
            CBandData* board = nullptr;
            while (!Output_Of(stage).Out(board, 1))
            {
                if (stage.WaitExit(0))
                {
                    return boards;
                }
            }
            delete board;
            ++boards;
        }
        return boards;
    }

    CConfigGuard m_config;
};

} // namespace

TEST_F(InkStageFailure, AStageThatCannotStartItsOwnThreadIsRecordedUnderItsName)
{
    auto pool = Pool_Make(0, 1);
    const CLogCapture log;
    const CThreadFailure failure(1);
    CUnitData2BoardData_S_AllUnit stage;
    EXPECT_FALSE(stage.Create(false, {pool.get()}));
    EXPECT_EQ(failure.Creation_Count(), 1);
    EXPECT_THAT(Record_Operations(log),
                testing::ElementsAre("2 Start thread error. name = CUnitData2BoardData_Base @KelBaseThread "
                                     "CustomCreateThread",
                                     "2 failure @UnitData2BoardData_Base Create",
                                     "2 failure @UnitData2BoardData_S_AllUnit Create"));
}

TEST_F(InkStageFailure, AOneFIFOStageThatCannotStartItsOwnThreadIsRecordedUnderItsName)
{
    CBandSetFIFO input(1);
    const CLogCapture log;
    const CThreadFailure failure(1);
    CUnitData2BoardData_AllUnit_2 stage;
    EXPECT_FALSE(stage.Create(input));
    EXPECT_THAT(Record_Operations(log),
                testing::ElementsAre("2 Start thread error. name = CUnitData2BoardData_AllUnit_2 @KelBaseThread "
                                     "CustomCreateThread",
                                     "2 failure @UnitData2BoardData_AllUnit_2 Create"));
}

TEST_F(InkStageFailure, AStageWhoseThreadCouldNotStartCanBeCreatedAgainAsAnother)
{
    auto pool = Pool_Make(0, 1);
    {
        const CThreadFailure failure(1);
        CUnitData2BoardData_S_AllUnit stage;
        EXPECT_FALSE(stage.Create(false, {pool.get()}));
    }
    CUnitData2BoardData_S_AllUnit stage;
    ASSERT_TRUE(stage.Create(false, {pool.get()}));
    EXPECT_EQ(Feed(stage, *pool, 3), 3);
    stage.Stop();
    EXPECT_TRUE(stage.WaitExit(withoutLimit));
}

TEST_F(InkStageFailure, EveryBandTakesTheConfiguredGeneratorsAndOneConverterAndJoinsThem)
{
    for (const int generators : {1, 3, 16})
    {
        Generators_Set(generators);
        auto pool = Pool_Make(0, 1);
        const CThreadFailure none(0);
        CUnitData2BoardData_S_AllUnit stage;
        ASSERT_TRUE(stage.Create(false, {pool.get()}));
        EXPECT_EQ(Feed(stage, *pool, 4), 4);
        EXPECT_EQ(none.Creation_Count(), 1 + 4 * (generators + 1));
        EXPECT_EQ(CThreadFailure::Running_Count(), 1) << "the stage's own";
        stage.Stop();
        EXPECT_TRUE(stage.WaitExit(withoutLimit));
    }
}

// The parameter is the generator, or behind the last one the converter, whose thread does not start.
TEST_P(InkStageFailure, AThreadOfTheConversionThatCannotStartFailsTheStep)
{
    constexpr int generators = 3;
    const bool bConverter = GetParam() > generators;
    const std::vector<std::string> expected =
        (bConverter
             ? std::vector<std::string>{"2 Start thread error. name = CUnit2Board @KelBaseThread "
                                        "CustomCreateThread",
                                        "2 failure @Unit2Board Create"}
             : std::vector<
                   std::string>{"2 Start thread error. name = CUnit2Board_Line @KelBaseThread CustomCreateThread",
                                "2 failure @Unit2Board_Line Create", "2 failure @Unit2Board Create_LineGenerator",
                                "2 failure @Unit2Board Create"}) +
        afterConversion;
    Generators_Set(generators);
    for (const int goodSteps : {0, 1, 2})
    {
        {
            auto pool = Pool_Make(0, 2);
            const CLogCapture log;
            const CThreadFailure failure(1 + goodSteps * (generators + 1) + GetParam());
            CUnitData2BoardData_S_AllUnit stage;
            ASSERT_TRUE(stage.Create(false, {pool.get()}));
            EXPECT_EQ(Feed(stage, *pool, 5), goodSteps);
            EXPECT_TRUE(stage.WaitExit(10000));
            EXPECT_FALSE(stage.IsThreadSuccess());
            EXPECT_FALSE(Output_Of(stage).IsCompleted());
            EXPECT_EQ(CThreadFailure::Running_Count(), 0);
            EXPECT_THAT(Record_Operations(log), ElementsAreArray(expected));
        }
        {
            CBandSetFIFO input(4);
            const CLogCapture log;
            const CThreadFailure failure(1 + goodSteps * (generators + 1) + GetParam());
            CUnitData2BoardData_AllUnit_2 stage;
            ASSERT_TRUE(stage.Create(input));
            for (int i = 0; i <= goodSteps; ++i)
            {
                std::vector<std::unique_ptr<CBandData>> bands;
                bands.push_back(Band_Make(0, 32, 4));
                ASSERT_TRUE(BandSet_Push(input, BandSet_Make(std::move(bands))));
                CBandData* board = nullptr;
                ASSERT_EQ(Output_Of(stage).Out(board, i < goodSteps ? 10000 : 20), i < goodSteps);
                delete board;
            }
            EXPECT_TRUE(stage.WaitExit(10000));
            EXPECT_EQ(CThreadFailure::Running_Count(), 0);
            EXPECT_THAT(Record_Operations(log), ElementsAreArray(expected));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EachThread, InkStageFailure, testing::Values(1, 2, 3, 4));

// A line that fails takes its generator with it and never comes back; the converter goes on until its owner's patience
// ends. The stage then stops and joins it before it is destroyed.
TEST_F(InkStageFailure, ALineThatFailsLeavesTheBandUnfinishedUntilTheHourIsOver)
{
    const CShortHour hour;
    for (const int generators : {1, 4})
    {
        Generators_Set(generators);
        auto pool = Pool_Make(0, 1, 32, 30);
        const CLogCapture log;
        CInkStage stage;
        ASSERT_TRUE(stage.Create(false, {pool.get()}));
        auto map = std::make_unique<CFailingMap>();
        ASSERT_TRUE(map->Init(1, 16));
        stage.Map_Replace(std::move(map));
        CBandData* band = nullptr;
        ASSERT_TRUE(pool->Empty_Out(band, 0));
        band->m_pData[17 * band->m_bytesPerLine] = CFailingMap::failingByte;
        ASSERT_TRUE(pool->Full_In(band, 0));
        EXPECT_TRUE(stage.WaitExit(10000));
        EXPECT_FALSE(stage.IsThreadSuccess());
        EXPECT_FALSE(Output_Of(stage).WaitForOut(0));
        EXPECT_NE(stage.m_pOutputBand, nullptr); // the destructor's, like the input
        EXPECT_EQ(stage.m_pInputElements->size(), 1U);
        EXPECT_EQ(CThreadFailure::Running_Count(), 0);
        EXPECT_THAT(Record_Operations(log), ElementsAreArray(std::vector<std::string>{
                                                                 "2 failure @Unit2Board_Line MapBandData_Line_OneInput",
                                                                 "2 failure @Unit2Board_Line MapBandData_Line_AllInput",
                                                                 "2 failure @Unit2Board_Line Process",
                                                                 "2 m_processState = 3 @Unit2Board_Line OneLoop",
                                                                 "2 failure @Unit2Board WaitExit",
                                                             } +
                                                             afterConversion));
    }
}

TEST_F(InkStageFailure, WithoutGeneratorsABandOfLinesWaitsOutTheHour)
{
    const CShortHour hour;
    Generators_Set(0);
    auto pool = Pool_Make(0, 1);
    const CLogCapture log;
    CUnitData2BoardData_S_AllUnit stage;
    ASSERT_TRUE(stage.Create(false, {pool.get()}));
    ASSERT_TRUE(Band_Push(*pool));
    EXPECT_TRUE(stage.WaitExit(10000));
    EXPECT_FALSE(stage.IsThreadSuccess());
    EXPECT_THAT(Record_Operations(log),
                ElementsAreArray(std::vector<std::string>{"2 failure @Unit2Board WaitExit"} + afterConversion));
}

TEST_F(InkStageFailure, ABandThatOutlastsTheHourFailsAndWithinItTheSameBandSucceeds)
{
    class CSlowMap : public CPrintUnitDataMap_5
    {
    public:
        bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                          int dstByteCount) const override
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
            return CPrintUnitDataMap_5::MapData_Line(param, src, dst, dstByteCount);
        }
    };
    Generators_Set(1);
    auto pool = Pool_Make(0, 1, 32, 2);
    const CLogCapture log;
    CInkStage stage;
    ASSERT_TRUE(stage.Create(false, {pool.get()}));
    auto map = std::make_unique<CSlowMap>();
    ASSERT_TRUE(map->Init(1, 16));
    stage.Map_Replace(std::move(map));
    EXPECT_EQ(Feed(stage, *pool, 1), 1);
    {
        const CShortHour hour;
        EXPECT_EQ(Feed(stage, *pool, 1), 0);
    }
    EXPECT_FALSE(stage.IsThreadSuccess());
    EXPECT_THAT(Record_Operations(log), Contains("2 failure @Unit2Board WaitExit"));
}

// An exception on the stage's thread ends in the thread frame; the stage's bands are the destructor's.
TEST_F(InkStageFailure, ANegativeGeneratorCountEndsInTheThreadFrame)
{
    Generators_Set(-1);
    auto pool = Pool_Make(0, 1);
    const CLogCapture log;
    CUnitData2BoardData_S_AllUnit stage;
    ASSERT_TRUE(stage.Create(false, {pool.get()}));
    ASSERT_TRUE(Band_Push(*pool));
    EXPECT_TRUE(stage.WaitExit(10000));
    EXPECT_FALSE(stage.IsThreadSuccess());
    EXPECT_THAT(log.SummaryWithLines(),
                testing::ElementsAre(
                    "2 Thread terminated with an exception. name = CUnitData2BoardData_Base @KelBaseThread:72"));
}
