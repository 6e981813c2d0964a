// The stripe bands: which units get one, how large it is, and where in it the two stripes stand.
#include "Tests/Support/BandHeader.h"
#include "Tests/UnitData2BoardData/InkSupport.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <random>
#include <utility>

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

using InkStripe = CDrivenInkStage;
using SAccess = SStageTestAccess;

namespace
{

// Hands the stage a stripe band of a test's own making: the memory ends where the band ends, for the address checker.
class CExactBand
{
public:
    CExactBand(int unitIndex, int bytesPerLine, int height) : m_memory(static_cast<std::size_t>(bytesPerLine * height))
    {
        m_band.m_unitIndex = unitIndex;
        m_band.m_pData = m_memory.data();
        m_band.m_bytesPerLine = bytesPerLine;
        m_band.m_height = height;
        m_band.m_dataSize = bytesPerLine * height;
    }

    CBandData m_band; // owns no memory itself
    std::vector<unsigned char> m_memory;
};

// The line of the first byte that is not 0, or -1.
int FirstMarkedLine(const CBandData& band)
{
    for (int i = 0; i < band.m_dataSize; ++i)
    {
        if (band.m_pData[i] != 0)
        {
            return i / band.m_bytesPerLine;
        }
    }
    return -1;
}

int MarkedBytes(const CBandData& band)
{
    return static_cast<int>(
        std::count_if(band.m_pData, band.m_pData + band.m_dataSize, [](unsigned char byte) { return byte != 0; }));
}

// Draws a job whose stripes all fit, whatever the pass, with colour data up to the last free byte.
SModelJob Job_Draw()
{
    SModelJob job;
    job.bByUnit = *rc::gen::arbitrary<bool>();
    job.bitsPerPixel = *rc::gen::inRange(1, 3);
    job.bandWidth = *rc::gen::inRange(1, 40);
    job.alignBytes = *rc::gen::element(1, 2, 4, 8);
    job.maskCount = *rc::gen::inRange(1, 4);
    job.jobWidth = *rc::gen::inRange(0, 60);
    job.xMaxOffset_Left2Right = *rc::gen::inRange(0, 9);
    job.xMaxOffset_Right2Left = *rc::gen::inRange(0, 9);
    job.unitPositionCount = *rc::gen::inRange(1, 6);
    job.unitPitch = *rc::gen::inRange(0, 5);
    // The zones hold one pitch for every position, however the space is shared out between them.
    const int zones = std::max(1, job.unitPitch * job.unitPositionCount) + *rc::gen::inRange(0, 6);
    job.leftStripeWidth = *rc::gen::inRange(0, zones + 1);
    job.rightStripeWidth = zones - job.leftStripeWidth;
    std::mt19937 random(*rc::gen::arbitrary<unsigned>());
    const int unitCount = *rc::gen::inRange(1, 6);
    for (int id = 0; id < unitCount; ++id)
    {
        SModelUnit unit;
        unit.id = id;
        unit.direction = *rc::gen::inRange(0, 4);
        unit.position = *rc::gen::inRange(0, job.unitPositionCount);
        unit.horizon_1 = *rc::gen::inRange(0, job.xMaxOffset_Right2Left + 1);
        unit.horizon_2 = *rc::gen::inRange(0, job.xMaxOffset_Left2Right + 1);
        const int room = CStripeModel(job).FreeRoom(unit);
        const int size = *rc::gen::element(0, room, *rc::gen::inRange(0, room + 1));
        unit.color.resize(static_cast<std::size_t>(size));
        std::generate(unit.color.begin(), unit.color.end(), [&] { return static_cast<unsigned char>(random()); });
        job.units.push_back(unit);
    }
    return job;
}

} // namespace

// Which units.

TEST_F(InkStripe, BandsForUnitsOneAndThreeOfFourLeaveUnitsZeroAndTwoInThatOrder)
{
    Stage_Prepare();
    Input_Hold(3);
    Input_Hold(1);
    ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
    EXPECT_THAT(Units(), ElementsAre(3, 1, 0, 2));
    for (std::size_t i = 2; i < 4; ++i)
    {
        EXPECT_EQ(m_pStage->m_pInputElements->at(i).fifo, nullptr);
    }
}

TEST_F(InkStripe, TheRestUnitsAreAscendingAndOnceEachHoweverTheCartListsThem)
{
    m_job.units = {m_job.Unit_Get(3), m_job.Unit_Get(0), m_job.Unit_Get(3), m_job.Unit_Get(2), m_job.Unit_Get(0)};
    Stage_Prepare();
    Input_Hold(2);
    EXPECT_THAT(SAccess::RestUnits(*m_pStage), ElementsAre(0, 3));
}

TEST_F(InkStripe, DuplicateCartUnitsCollapseBeforeTheCountsAreCompared)
{
    m_job.units = {m_job.Unit_Get(0), m_job.Unit_Get(0), m_job.Unit_Get(1)};
    Stage_Prepare();
    Input_Hold(0);
    Input_Hold(0); // as many as different units on the cart
    EXPECT_THAT(SAccess::RestUnits(*m_pStage), IsEmpty());
    Input_Hold(0); // as many as cart entries
    EXPECT_THAT(SAccess::RestUnits(*m_pStage), ElementsAre(1));
}

TEST_F(InkStripe, EightBandsForEightUnitsMakeNoStripesThoughTwoCarryTheSameUnit)
{
    for (int id = 4; id < 8; ++id)
    {
        m_job.units.push_back({id, 0, 0, 0, 0, true, {0xFF}});
    }
    Stage_Prepare();
    for (const int unit : {0, 1, 2, 3, 4, 5, 6, 6})
    {
        Input_Hold(unit);
    }
    ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
    EXPECT_THAT(Units(), ElementsAre(0, 1, 2, 3, 4, 5, 6, 6));
}

TEST_F(InkStripe, ABandOfAUnitThatIsNotOnTheCartTakesNoPlace)
{
    Stage_Prepare();
    Input_Hold(9);
    Input_Hold(2);
    EXPECT_THAT(SAccess::RestUnits(*m_pStage), ElementsAre(0, 1, 3));
    Input_Hold(10);
    Input_Hold(11); // four bands for four units: who is who is not looked at
    EXPECT_THAT(SAccess::RestUnits(*m_pStage), IsEmpty());
}

TEST_F(InkStripe, RestUnitsAreCartUnitsThoughTheColourGroupKnowsMore)
{
    Stage_Prepare();
    m_config.m_colorGroups[patternLayoutGroup].m_positions[77] = 1;
    m_config.m_colorGroups[patternLayoutGroup].m_positions.erase(3);
    m_config.Apply();
    Input_Hold(0);
    EXPECT_THAT(SAccess::RestUnits(*m_pStage), ElementsAre(1, 2, 3));
}

TEST_F(InkStripe, ZoneWidthsThatSumBelowOneMakeNoListAndNoBands)
{
    for (const auto& [left, right] : {std::pair{0, 0}, std::pair{-3, 3}, std::pair{4, -9}})
    {
        m_job.leftStripeWidth = left;
        m_job.rightStripeWidth = right;
        Stage_Prepare();
        Input_Hold(1, 1);
        ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
        EXPECT_THAT(Units(), ElementsAre(1));
        EXPECT_EQ(m_pStage->m_pInkStripeParam->bandAttr, 0) << "only a step with stripes takes the pass";
        EXPECT_EQ(m_pStage->m_processState, 4);
    }
}

TEST_F(InkStripe, ZoneWidthsThatSumToOneMakeBandsWithTheOnePositiveSide)
{
    m_job.leftStripeWidth = -7;
    m_job.rightStripeWidth = 8;
    m_job.unitPitch = 1;
    Stage_Prepare();
    Input_Hold(1, 1);
    ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
    EXPECT_THAT(Units(), ElementsAre(1, 0, 2, 3));
    EXPECT_EQ(Element(1).m_height, 5 + 40 + 1);
    EXPECT_EQ(MarkedBytes(Element(1)), 4); // one stripe
}

// How large.

TEST_F(InkStripe, TwoBitPixelsAreTwoLinesPerPositionByUnitAndOneLineByPixel)
{
    m_job.bitsPerPixel = 2;
    m_job.bandWidth = 13;
    m_job.alignBytes = 4;
    m_job.xMaxOffset_Left2Right = 10;
    m_job.jobWidth = 100;
    m_job.leftStripeWidth = 3;
    m_job.rightStripeWidth = 5;
    for (const bool bByUnit : {true, false})
    {
        m_job.bByUnit = bByUnit;
        Stage_Prepare();
        ASSERT_TRUE(SAccess::Init_Param(*m_pStage));
        m_pStage->m_pInkStripeParam->bandAttr = 1;
        CBandData* band = nullptr;
        ASSERT_TRUE(SAccess::InkStripeUnitData_Generate(*m_pStage, band, 0));
        EXPECT_EQ(band->m_height, bByUnit ? 236 : 118);
        EXPECT_EQ(band->m_bitsPerPixel, bByUnit ? 1 : 2);
        EXPECT_EQ(band->m_width, 13);
        EXPECT_EQ(band->m_bytesPerLine, 4);
        delete band;
    }
}

TEST_F(InkStripe, OnlyBandAttributeOneIsTheLeftToRightPass)
{
    Stage_Prepare();
    ASSERT_TRUE(SAccess::Init_Param(*m_pStage));
    for (const int bandAttr : {1, 0, 2, -1, 257})
    {
        m_pStage->m_pInkStripeParam->bandAttr = bandAttr;
        CBandData* band = nullptr;
        ASSERT_TRUE(SAccess::InkStripeUnitData_Generate(*m_pStage, band, 1));
        EXPECT_EQ(band->m_height, (bandAttr == 1 ? 5 : 7) + 40 + 20);
        EXPECT_EQ(band->m_bandAttr, bandAttr);
        delete band;
    }
}

TEST_F(InkStripe, EveryMaskTakesItsWholeShareOfTheJob)
{
    m_job.jobWidth = 101;
    m_job.maskCount = 3;
    Stage_Prepare();
    ASSERT_TRUE(SAccess::Init_Param(*m_pStage));
    CBandData* band = nullptr;
    ASSERT_TRUE(SAccess::InkStripeUnitData_Generate(*m_pStage, band, 1));
    EXPECT_EQ(band->m_height, 7 + 33 + 20);
    delete band;
}

TEST_F(InkStripe, AStripeBandNamesItsUnitItsPassAndTheCartsDirectionAndNothingElse)
{
    Stage_Prepare();
    CBandData& input = Input_Hold(0, 6);
    input.m_bandNo = 12;
    input.m_unitDirection = 9;
    STestBandHeader header = BandHeader_Get(input);
    header.words[3] = 3;
    BandHeader_Set(input, header);
    input.m_bSkip = true;
    ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
    const CBandData& stripe = Element(3);
    EXPECT_EQ(stripe.m_unitIndex, 3);
    EXPECT_EQ(stripe.m_bandAttr, 6);
    EXPECT_EQ(stripe.m_unitDirection, 4); // of the cart unit
    EXPECT_EQ(stripe.m_bandNo, 0);
    EXPECT_EQ(BandHeader_Get(stripe).words[3], 0);
    EXPECT_FALSE(stripe.m_bSkip);
}

// Where.

TEST_F(InkStripe, WithoutOffsetTheFirstPositionsLeftStripeBeginsWithTheBand)
{
    m_job.units[0].position = 0;
    m_job.units[0].horizon_2 = 0;
    m_job.rightStripeWidth = 0;
    Stage_Prepare();
    Input_Hold(1, 1);
    ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
    EXPECT_EQ(FirstMarkedLine(Element(1)), 0);
}

// Four positions, pitch 10; the unit at position 1 with h1 = 3 and h2 = 2; offsets 6 (left to right) and 4.
TEST_F(InkStripe, TheRowsOfBothStripesInBothPassesAndStylesAreThoseOfTheTable)
{
    struct SRow
    {
        bool bByUnit;
        bool bLeft;
        int bandAttr;
        int line;
    };
    constexpr int heightL2R = 6 + 100 + 40;
    constexpr int heightR2L = 4 + 100 + 40;
    const std::vector<SRow> rows = {
        {false, true, 1, 12},
        {false, true, 0, heightR2L - (20 - 3 + 4)},
        {false, false, 1, heightL2R - (30 - 2 + 6)},
        {false, false, 0, 23},
        {true, true, 1, 24},
        {true, true, 0, 2 * (heightR2L - (20 - 3 + 4))},
        {true, false, 1, 2 * (heightL2R - (30 - 2 + 6))},
        {true, false, 0, 46},
    };
    m_job.bitsPerPixel = 2;
    m_job.jobWidth = 100;
    m_job.xMaxOffset_Left2Right = 6;
    m_job.xMaxOffset_Right2Left = 4;
    m_job.unitPitch = 10;
    m_job.units[1].position = 1;
    m_job.units[1].horizon_1 = 3;
    m_job.units[1].horizon_2 = 2;
    m_job.units[1].color = {0xAB};
    for (const SRow& row : rows)
    {
        m_job.bByUnit = row.bByUnit;
        m_job.leftStripeWidth = row.bLeft ? 40 : 0;
        m_job.rightStripeWidth = row.bLeft ? 0 : 40;
        Stage_Prepare();
        Input_Hold(0, row.bandAttr)
            .Create(16, (row.bandAttr == 1 ? heightL2R : heightR2L) * (row.bByUnit ? 2 : 1), 1, 1);
        ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
        const CBandData& stripe = Element(1);
        EXPECT_EQ(FirstMarkedLine(stripe), row.line) << row.bByUnit << row.bLeft << row.bandAttr;
        EXPECT_EQ(MarkedBytes(stripe), 1);
        EXPECT_EQ(stripe.m_pData[row.line * stripe.m_bytesPerLine], 0xAB);
    }
}

TEST_F(InkStripe, ALongLivedStageStripesEachJobWhereThatJobsColourGroupPutsTheUnit)
{
    constexpr int unitPitch = 2;
    m_job.units = {m_job.Unit_Get(0), m_job.Unit_Get(1)};
    m_job.units[1].horizon_2 = 0;
    m_job.rightStripeWidth = 0;
    m_job.unitPitch = unitPitch;
    Stage_Prepare();
    Input_Hold(0);
    ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
    EXPECT_EQ(FirstMarkedLine(Element(1)), unitPitch * m_job.units[1].position);

    // Groups of other keys come and go around the stage's own from job to job.
    for (const int position : {3, 0, 1})
    {
        delete std::exchange(m_pStage->m_pOutputBand, nullptr);
        ASSERT_TRUE(m_pStage->ReleaseInputElement());
        const SGroupSetup group = {{{1, position}}};
        const SGroupSetup other = {{{1, 2}}};
        m_config.m_colorGroups = {{"A" + std::to_string(position), other},
                                  {patternLayoutGroup, group},
                                  {"Z" + std::to_string(position), other}};
        m_config.Apply();
        Input_Hold(0);
        ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
        EXPECT_EQ(FirstMarkedLine(Element(1)), unitPitch * position);
    }
}

TEST_F(InkStripe, OnlyARightZoneWritesTheRightStripeIntoABandOfFullLength)
{
    m_job.leftStripeWidth = 0;
    m_job.rightStripeWidth = 8;
    m_job.unitPitch = 2;
    Stage_Prepare();
    Input_Hold(0, 1);
    ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
    const CBandData& stripe = Element(1); // unit 1: position 2, h2 = 2
    EXPECT_EQ(stripe.m_height, 5 + 40 + 8);
    EXPECT_EQ(FirstMarkedLine(stripe), 53 - (2 * 2 - 2 + 5));
    EXPECT_EQ(MarkedBytes(stripe), 4);
}

TEST_F(InkStripe, OnlyALeftZoneWritesTheLeftStripe)
{
    m_job.leftStripeWidth = 8;
    m_job.rightStripeWidth = -1;
    Stage_Prepare();
    Input_Hold(0, 0);
    ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
    const CBandData& stripe = Element(1); // unit 1: position 2, h1 = 1
    EXPECT_EQ(stripe.m_height, 7 + 40 + 7);
    EXPECT_EQ(FirstMarkedLine(stripe), 54 - (3 * 2 - 1 + 7));
    EXPECT_EQ(MarkedBytes(stripe), 4);
}

RC_GTEST_PROP(InkStripeModel, EveryStripeBandIsTheOneThatTheModelWalksTo, ())
{
    const SModelJob job = Job_Draw();
    CConfigGuard config;
    Job_Configure(config, job);
    const CStripeModel model(job);
    CInkStage stage;
    auto map = std::make_unique<CPrintUnitDataMap_5>();
    RC_ASSERT(map->Init(1, 16));
    stage.m_pDataMap = map.release();
    const int bandAttr = *rc::gen::element(0, 1, 2);
    std::vector<int> inputs;
    for (int i = 0; i < *rc::gen::inRange(1, 5); ++i)
    {
        inputs.push_back(*rc::gen::inRange(0, 7));
        auto band = Band_Make(inputs.back(), job.bandWidth, model.LineCount(bandAttr));
        band->m_bandAttr = i == 0 ? bandAttr : 1 - bandAttr; // only the first one's counts
        stage.m_pInputElements->push_back({band.release(), nullptr});
    }
    RC_ASSERT(stage.AllocateOutputBuffer());
    std::vector<int> rest;
    for (std::size_t i = inputs.size(); i < stage.m_pInputElements->size(); ++i)
    {
        const CBandData& band = *stage.m_pInputElements->at(i).band;
        rest.push_back(band.m_unitIndex);
        const SModelBand expected = model.Band_Make(band.m_unitIndex, bandAttr);
        RC_ASSERT(band.m_width == expected.width);
        RC_ASSERT(band.m_height == expected.height);
        RC_ASSERT(band.m_bitsPerPixel == expected.bitsPerPixel);
        RC_ASSERT(band.m_bytesPerLine == expected.bytesPerLine);
        RC_ASSERT(band.m_unitDirection == expected.unitDirection);
        RC_ASSERT(band.m_bandAttr == expected.bandAttr);
        RC_ASSERT(Data_Of(band) == expected.data);
    }
    RC_ASSERT(rest == model.RestUnits(inputs));
}

// The copy.

TEST_F(InkStripe, AColourBandOfExactlyTheFreeRoomFillsTheBandToItsLastByte)
{
    m_job.leftStripeWidth = 4;
    m_job.rightStripeWidth = 4;
    m_job.unitPitch = 4;
    m_job.unitPositionCount = 2;
    m_job.xMaxOffset_Left2Right = 3;
    m_job.units[2].position = 1;
    m_job.units[2].horizon_1 = 1;
    m_job.units[2].horizon_2 = 2;
    m_job.bitsPerPixel = 2;
    Stage_Prepare();
    // A colour band whose memory ends with its data, too.
    const auto color = std::make_shared<CBandData>();
    std::vector<unsigned char> bytes;
    color->m_pData = nullptr;
    m_config.m_param.m_inkStripeColorData[2] = color;
    m_config.Apply();
    ASSERT_TRUE(SAccess::Init_Param(*m_pStage));
    SInkStripeParam_Run& run = *m_pStage->m_pInkStripeParam;
    run.pixelParam.unitPosition = 1;
    run.unitHorizon_1 = 1;
    run.unitHorizon_2 = 2;
    const struct
    {
        bool (*write)(CUnitData2BoardData_S_AllUnit&, CBandData&);
        int bandAttr;
        int firstLine; // of 40
    } writers[] = {
        {&SAccess::Left_ByPixel, 1, 4 + 2},
        {&SAccess::Left_ByPixel, 0, 40 - (8 - 1 + 7)},
        {&SAccess::Right_ByPixel, 1, 40 - (4 - 2 + 3)},
        {&SAccess::Right_ByPixel, 0, 1},
        {&SAccess::Left_ByUnit, 1, 12},
        {&SAccess::Left_ByUnit, 0, 40 - 28},
        {&SAccess::Right_ByUnit, 1, 40 - 10},
        {&SAccess::Right_ByUnit, 0, 2},
    };
    for (const auto& writer : writers)
    {
        CExactBand stripe(2, 3, 40);
        bytes.assign(static_cast<std::size_t>(3 * (40 - writer.firstLine)), 0xC3);
        bytes.shrink_to_fit();
        color->m_pData = bytes.data();
        color->m_dataSize = static_cast<int>(bytes.size());
        run.bandAttr = writer.bandAttr;
        ASSERT_TRUE(writer.write(*m_pStage, stripe.m_band));
        for (std::size_t i = 0; i < stripe.m_memory.size(); ++i)
        {
            ASSERT_EQ(stripe.m_memory[i], i < static_cast<std::size_t>(3 * writer.firstLine) ? 0 : 0xC3) << i;
        }
    }
    color->m_pData = nullptr;
}

TEST_F(InkStripe, TheColourBandIsCopiedAsBytesWhateverItsOwnLines)
{
    m_job.rightStripeWidth = 0;
    m_job.unitPitch = 0;
    m_job.units[0].horizon_2 = 1;
    Stage_Prepare();
    auto color = std::make_shared<CBandData>();
    ASSERT_TRUE(color->Create(3, 5, 8, 3)); // lines of 3 bytes, into lines of 2
    for (int i = 0; i < color->m_dataSize; ++i)
    {
        color->m_pData[i] = static_cast<unsigned char>(i + 1);
    }
    color->m_dataSize = 7; // only these count
    m_config.m_param.m_inkStripeColorData[0] = color;
    m_config.Apply();
    Input_Hold(1, 1);
    ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
    std::vector<unsigned char> expected(static_cast<std::size_t>(Element(1).m_dataSize));
    for (std::size_t i = 0; i < 7; ++i)
    {
        expected[2 + i] = static_cast<unsigned char>(i + 1);
    }
    EXPECT_EQ(Data_Of(Element(1)), expected);
}

TEST_F(InkStripe, AnEmptyColourBandIsColourDataThatWritesNothing)
{
    Stage_Prepare();
    m_config.m_param.m_inkStripeColorData[0] = std::make_shared<CBandData>(); // no memory at all
    m_config.Apply();
    for (const int bandAttr : {1, 0})
    {
        Stage_Prepare();
        m_config.m_param.m_inkStripeColorData[0] = std::make_shared<CBandData>();
        m_config.Apply();
        Input_Hold(1, bandAttr);
        ASSERT_TRUE(m_pStage->AllocateOutputBuffer());
        EXPECT_THAT(Data_Of(Element(1)), Each(0));
    }
}

TEST_F(InkStripe, TheRightStripeIsWrittenOverTheLeftWhereTheyMeet)
{
    m_job.leftStripeWidth = 1;
    m_job.rightStripeWidth = 1;
    m_job.jobWidth = 3;
    m_job.xMaxOffset_Left2Right = 0;
    m_job.unitPositionCount = 1;
    m_job.unitPitch = 4; // of 5 lines: left at 0, right at 1
    m_job.units[0].color = {1, 2, 3, 4};
    Stage_Prepare();
    ASSERT_TRUE(SAccess::Init_Param(*m_pStage));
    m_pStage->m_pInkStripeParam->bandAttr = 1;
    CBandData* band = nullptr;
    ASSERT_TRUE(SAccess::InkStripeUnitData_Generate(*m_pStage, band, 0));
    EXPECT_THAT(Data_Of(*band), ElementsAre(1, 2, 1, 2, 3, 4, 0, 0, 0, 0));
    delete band;
}

// What goes wrong.

TEST_F(InkStripe, AnUnknownPushStyleFailsWithoutABand)
{
    for (const int style : {0, 3, -1})
    {
        Stage_Prepare();
        m_config.m_option.m_dataPushStyle = static_cast<EDataPushStyle>(style);
        m_config.Apply();
        ASSERT_TRUE(SAccess::Init_Param(*m_pStage));
        const CLogCapture log;
        CBandData* band = nullptr;
        EXPECT_FALSE(SAccess::InkStripeUnitData_Generate(*m_pStage, band, 0));
        EXPECT_EQ(band, nullptr);
        EXPECT_THAT(Record_Operations(log),
                    ElementsAre("2 failure @UnitData2BoardData_S_AllUnit InkStripeUnitData_Generate"));
    }
}

TEST_F(InkStripe, AnUnknownPushStyleEndsTheStep)
{
    Stage_Prepare();
    m_config.m_option.m_dataPushStyle = static_cast<EDataPushStyle>(3);
    m_config.Apply();
    Input_Hold(0);
    const CLogCapture log;
    EXPECT_FALSE(m_pStage->OneLoop());
    EXPECT_THAT(Record_Operations(log),
                ElementsAre("2 failure @UnitData2BoardData_S_AllUnit InkStripeUnitData_Generate",
                            "2 failure @UnitData2BoardData_S_AllUnit AllocateOutputBuffer",
                            "2 m_processState = 3 @UnitData2BoardData_Base OneLoop"));
    EXPECT_THAT(Units(), ElementsAre(0));
    EXPECT_EQ(m_pStage->m_stopCount, 1);
}

TEST_F(InkStripe, AStripeBandThatCannotBeMadeStaysInTheCallersHands)
{
    for (const bool bByUnit : {true, false})
    {
        m_job.bByUnit = bByUnit;
        Stage_Prepare();
        m_config.m_cart.m_headBaseInfo.m_bandWidth = -1;
        m_config.Apply();
        ASSERT_TRUE(SAccess::Init_Param(*m_pStage));
        const CLogCapture log;
        CBandData* band = nullptr;
        EXPECT_FALSE(SAccess::InkStripeUnitData_Generate(*m_pStage, band, 0));
        EXPECT_THAT(Record_Operations(log),
                    ElementsAre(std::string("2 failure @UnitData2BoardData_S_AllUnit InkStripeUnitData_Generate_") +
                                    (bByUnit ? "ByUnit" : "ByPixel"),
                                "2 failure @UnitData2BoardData_S_AllUnit InkStripeUnitData_Generate"));
        ASSERT_NE(band, nullptr);
        EXPECT_EQ(band->m_height, 0);
        EXPECT_EQ(band->m_unitDirection, 0) << "the direction is the last thing that a band gets";
        delete band;
    }
}

TEST_F(InkStripe, MissingColourDataFailsWhereItIsTestedAndLeavesTheBandWithTheCaller)
{
    const struct
    {
        bool bLeft;
        int bandAttr;
    } branches[] = {{true, 0}, {false, 0}, {false, 1}};
    for (const auto& branch : branches)
    {
        for (const bool bByUnit : {true, false})
        {
            m_job.bByUnit = bByUnit;
            m_job.leftStripeWidth = branch.bLeft ? 8 : 0;
            m_job.rightStripeWidth = branch.bLeft ? 0 : 8;
            m_job.units[2].bHasColor = false;
            Stage_Prepare();
            ASSERT_TRUE(SAccess::Init_Param(*m_pStage));
            m_pStage->m_pInkStripeParam->bandAttr = branch.bandAttr;
            const CLogCapture log;
            CBandData* band = nullptr;
            EXPECT_FALSE(SAccess::InkStripeUnitData_Generate(*m_pStage, band, 2));
            const std::string side = branch.bLeft ? "Left_" : "Right_";
            const std::string style = bByUnit ? "ByUnit" : "ByPixel";
            const std::string where = "2 failure @UnitData2BoardData_S_AllUnit ";
            EXPECT_THAT(Record_Operations(log), ElementsAre(where + "AddInkStripe_" + side + style,
                                                            where + "InkStripeUnitData_Generate_" + style,
                                                            where + "InkStripeUnitData_Generate"));
            ASSERT_NE(band, nullptr);
            EXPECT_EQ(band->m_unitIndex, 2);
            EXPECT_THAT(Data_Of(*band), Each(0));
            delete band;
        }
    }
}

// The left stripe of the left-to-right pass is the one that uses its colour data unseen. What a caller may rely on is
// that it does not look for it when there is no left zone; no other stripe does either.
TEST_F(InkStripe, WithoutAZoneNoStripeNeedsColourData)
{
    m_job.units[2].bHasColor = false;
    for (const int width : {0, -1})
    {
        m_job.leftStripeWidth = width;
        m_job.rightStripeWidth = width;
        Stage_Prepare();
        ASSERT_TRUE(SAccess::Init_Param(*m_pStage));
        for (const int bandAttr : {1, 0})
        {
            m_pStage->m_pInkStripeParam->bandAttr = bandAttr;
            const CLogCapture log;
            CExactBand stripe(2, 2, 3);
            EXPECT_TRUE(SAccess::Left_ByUnit(*m_pStage, stripe.m_band));
            EXPECT_TRUE(SAccess::Left_ByPixel(*m_pStage, stripe.m_band));
            EXPECT_TRUE(SAccess::Right_ByUnit(*m_pStage, stripe.m_band));
            EXPECT_TRUE(SAccess::Right_ByPixel(*m_pStage, stripe.m_band));
            EXPECT_THAT(stripe.m_memory, Each(0));
            EXPECT_THAT(log.Summary(), IsEmpty());
        }
    }
}

TEST_F(InkStripe, AUnitWithoutColourDataFailsTheLeftToRightPassAtItsRightStripeWhenOnlyThatOneIsPrinted)
{
    m_job.leftStripeWidth = 0;
    m_job.units[0].bHasColor = false;
    Stage_Prepare();
    Input_Hold(1, 1);
    const CLogCapture log;
    EXPECT_FALSE(m_pStage->OneLoop());
    EXPECT_THAT(Record_Operations(log),
                ElementsAre("2 failure @UnitData2BoardData_S_AllUnit AddInkStripe_Right_ByPixel",
                            "2 failure @UnitData2BoardData_S_AllUnit InkStripeUnitData_Generate_ByPixel",
                            "2 failure @UnitData2BoardData_S_AllUnit InkStripeUnitData_Generate",
                            "2 failure @UnitData2BoardData_S_AllUnit AllocateOutputBuffer",
                            "2 m_processState = 3 @UnitData2BoardData_Base OneLoop"));
}
