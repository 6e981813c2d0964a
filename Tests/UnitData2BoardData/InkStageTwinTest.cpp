// Whole steps of the ink-stripe stage and the one-FIFO stage, on their threads, against board bands that are placed bit
// by bit: real bands by the checked twin, stripe bands by the stripe model and then the twin.
#include "Tests/UnitData2BoardData/InkJob.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <set>

using testing::IsEmpty;

namespace
{

// The jobs that the map factory knows, by what they make of the configuration.
enum class EKind
{
    Frame16,
    DotSize,
    OneBit,
    TwoBit,
    Multiple,
    OneBitByUnit,
    Columns,
    ColumnsTwoBit,
    ColumnsByUnit,
    DotColumns,
    Planes,
    Blocks,
    Chunks,
    Count,
};

// What a kind needs of units, widths and bits; the twin's layout comes along.
struct SKind
{
    EDataMapStyle style;
    ETwinStyle twin;
    bool bPushFixed; // the map depends on the push style
    bool bByUnit;
    EPrinterSupportBits supportBits;
    int jobBits;     // bits per pixel of the job as ripped, and so of the twin
    int bandBits;    // bits per pixel of bands pushed by pixel
    int frameWidths; // smallest frame width; larger ones are multiples
    int unitDivisor; // units that fit: frame width divided by this
};

SKind Kind_Get(EKind kind)
{
    constexpr auto OneBit = SSupportBits::OneBit;
    constexpr auto TwoBit = SSupportBits::TwoBit;
    constexpr auto Multiple = SSupportBits::Multiple;
    switch (kind)
    {
    case EKind::Frame16:
        return {SMapStyle::Frame16, ETwinStyle::Style_1, false, false, OneBit, 1, 1, 16, 1};
    case EKind::DotSize:
        return {SMapStyle::FramePerPixel, ETwinStyle::Style_2, true, false, TwoBit, 1, 1, 8, 2};
    case EKind::OneBit:
        return {SMapStyle::FramePerPixel, ETwinStyle::Style_5, true, false, OneBit, 1, 1, 8, 1};
    case EKind::TwoBit:
        return {SMapStyle::FramePerPixel, ETwinStyle::Style_5, true, false, TwoBit, 2, 2, 8, 2};
    case EKind::Multiple:
        return {SMapStyle::ByteInterleaved, ETwinStyle::Style_5, true, false, Multiple, 2, 2, 8, 2};
    case EKind::OneBitByUnit:
        return {SMapStyle::FramePerPixel, ETwinStyle::Style_5, true, true, Multiple, 1, 1, 8, 1};
    case EKind::Columns:
        return {SMapStyle::ByteInterleaved, ETwinStyle::Style_6, true, false, OneBit, 1, 1, 8, 1};
    case EKind::ColumnsTwoBit:
        return {SMapStyle::ByteInterleaved, ETwinStyle::Style_6, true, false, TwoBit, 2, 2, 8, 1};
    case EKind::ColumnsByUnit:
        return {SMapStyle::ByteInterleaved, ETwinStyle::Style_6, true, true, OneBit, 1, 1, 8, 1};
    case EKind::DotColumns:
        return {SMapStyle::ByteInterleaved, ETwinStyle::Style_7, true, false, TwoBit, 1, 1, 8, 1};
    case EKind::Planes:
        return {SMapStyle::PlanePair, ETwinStyle::Style_8, false, false, OneBit, 2, 1, 8, 1};
    case EKind::Blocks:
        return {SMapStyle::Block, ETwinStyle::Style_03, false, false, OneBit, 1, 1, 32, 4};
    default:
        return {SMapStyle::Block13, ETwinStyle::Style_03_01, false, false, OneBit, 1, 1, 8, 4};
    }
}

// Any of the numbers, as likely in the first case as in the last.
int Draw(int first, int last)
{
    return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange(first, last + 1));
}

// The map and the width of a job, without stripes and steps.
SInkJob Job_DrawMap(EKind kind)
{
    const SKind is = Kind_Get(kind);
    SInkJob job;
    job.option.m_dataMapStyle = is.style;
    job.option.m_printerSupportBits = is.supportBits;
    job.option.m_printerDataWidth = is.twin == ETwinStyle::Style_1 ? 16 : is.frameWidths * Draw(1, 3);
    job.jobBits = is.jobBits;
    job.dotSizeMode = *rc::gen::element(SDotSize::Small, SDotSize::Middle, SDotSize::Big);
    job.twin = {is.twin, is.bByUnit ? 1 : is.jobBits, job.option.m_printerDataWidth, static_cast<int>(job.dotSizeMode)};
    SModelJob& stripes = job.stripes;
    stripes.bByUnit = is.bPushFixed ? is.bByUnit : *rc::gen::arbitrary<bool>();
    stripes.bitsPerPixel = stripes.bByUnit ? Draw(1, 2) : is.bandBits;
    if (is.bByUnit)
    {
        job.jobBits = stripes.bitsPerPixel; // the map does not mind
    }
    const bool bBlocks = is.twin == ETwinStyle::Style_03 || is.twin == ETwinStyle::Style_03_01;
    stripes.bandWidth = bBlocks ? 400 : Draw(1, 40);
    if (is.twin == ETwinStyle::Style_8)
    {
        stripes.bandWidth *= 2; // counted in bits
    }
    stripes.alignBytes = *rc::gen::element(1, 2, 8);
    return job;
}

// Carriage, zones and colour data. All stripes fit, in both passes.
void Job_DrawStripes(SInkJob& job, int unitLimit, std::mt19937& random)
{
    SModelJob& stripes = job.stripes;
    stripes.maskCount = Draw(1, 3);
    stripes.jobWidth = Draw(0, 8) * stripes.maskCount + Draw(0, stripes.maskCount - 1);
    stripes.xMaxOffset_Left2Right = Draw(0, 3);
    stripes.xMaxOffset_Right2Left = Draw(0, 3);
    stripes.unitPositionCount = Draw(1, 4);
    stripes.unitPitch = Draw(0, 2);
    const int zones = stripes.unitPitch * stripes.unitPositionCount + Draw(0, 3);
    stripes.leftStripeWidth = *rc::gen::element(0, zones, Draw(0, zones));
    stripes.rightStripeWidth = zones - stripes.leftStripeWidth;
    std::set<int> ids;
    for (int i = Draw(0, 8); i > 0; --i)
    {
        ids.insert(Draw(0, unitLimit - 1));
    }
    for (const int id : ids)
    {
        SModelUnit unit;
        unit.id = id;
        unit.direction = Draw(0, 3);
        unit.position = Draw(0, stripes.unitPositionCount - 1);
        unit.horizon_1 = Draw(0, stripes.xMaxOffset_Right2Left);
        unit.horizon_2 = Draw(0, stripes.xMaxOffset_Left2Right);
        const int room = CStripeModel(stripes).FreeRoom(unit);
        unit.color.resize(static_cast<std::size_t>(*rc::gen::element(room, Draw(0, room))));
        std::generate(unit.color.begin(), unit.color.end(), [&] { return static_cast<unsigned char>(random()); });
        stripes.units.push_back(unit);
    }
}

// A step with bands of these units.
SStepImage Step_Make(const SInkJob& job, std::mt19937& random, const std::vector<int>& units, int bandAttr)
{
    SStepImage step;
    for (const int unit : units)
    {
        step.push_back(Band_Noise(job, random, unit, bandAttr));
        if (step.size() > 1)
        {
            step.back().header.BandAttr_Set(static_cast<std::int32_t>(random() % 3)); // only the first one's counts
        }
    }
    return step;
}

// Steps whose bands are of any units: on the cart or not, now and then the same one twice.
void Job_DrawSteps(SInkJob& job, int unitLimit, bool bSameCount, std::mt19937& random)
{
    const int stepCount = Draw(1, 3);
    const int bandCount = Draw(1, std::min(unitLimit, 5));
    for (int i = 0; i < stepCount; ++i)
    {
        const int count = bSameCount ? bandCount : Draw(1, std::min(unitLimit, 5));
        std::vector<int> units;
        for (int k = 0; k < count; ++k)
        {
            units.push_back(job.stripes.units.empty() || Draw(0, 9) == 0 ? Draw(0, unitLimit - 1)
                                                                         : (*rc::gen::elementOf(job.stripes.units)).id);
        }
        job.steps.push_back(Step_Make(job, random, units, *rc::gen::element(0, 1, 1, 2)));
    }
}

template<class TStage>
void ExpectTheTwinsBands(bool bSameCount)
{
    const auto kind = static_cast<EKind>(Draw(0, static_cast<int>(EKind::Count) - 1));
    RC_TAG(static_cast<int>(kind));
    std::mt19937 random(*rc::gen::arbitrary<unsigned>());
    SInkJob job = Job_DrawMap(kind);
    const int unitLimit = job.option.m_printerDataWidth / Kind_Get(kind).unitDivisor;
    Job_DrawStripes(job, unitLimit, random);
    Job_DrawSteps(job, unitLimit, bSameCount, random);
    job.lineGeneratorCount = Draw(1, 16);
    CConfigGuard config;
    Job_Configure(config, job);
    const CLogCapture log;
    TStage stage;
    const auto boards = Job_Run(stage, job);
    RC_ASSERT(boards.size() == job.steps.size());
    for (std::size_t i = 0; i < boards.size(); ++i)
    {
        RC_ASSERT(boards[i] == Board_Expected(job, static_cast<int>(i)));
    }
    for (const auto& record : log.Records())
    {
        RC_FAIL("a record was written: " + record.message);
    }
}

} // namespace

RC_GTEST_PROP(InkStageTwin, EveryBoardBandOfARandomJobIsTheOneThatModelAndTwinPlace, ())
{
    ExpectTheTwinsBands<CUnitData2BoardData_S_AllUnit>(true);
}

RC_GTEST_PROP(OneFIFOStageTwin, EveryBoardBandOfARandomJobIsTheOneThatModelAndTwinPlace, ())
{
    ExpectTheTwinsBands<CUnitData2BoardData_AllUnit_2>(false);
}

// The maps that keep the generic line mapping give the same on the base stage's own thread and through the converter.
RC_GTEST_PROP(InkStageTwin, WithoutStripesAllThreeStagesGiveTheSameBandsOnTheTableMaps, ())
{
    const EKind kind =
        *rc::gen::element(EKind::Frame16, EKind::DotSize, EKind::OneBit, EKind::TwoBit, EKind::OneBitByUnit);
    std::mt19937 random(*rc::gen::arbitrary<unsigned>());
    SInkJob job = Job_DrawMap(kind);
    job.stripes.jobWidth = Draw(0, 10);
    Job_DrawSteps(job, job.option.m_printerDataWidth / Kind_Get(kind).unitDivisor, true, random);
    job.lineGeneratorCount = Draw(1, 16);
    CConfigGuard config;
    Job_Configure(config, job);
    CUnitData2BoardData_Base base;
    const auto expected = Job_Run(base, job);
    CUnitData2BoardData_S_AllUnit inkStripe;
    RC_ASSERT(Job_Run(inkStripe, job) == expected);
    CUnitData2BoardData_AllUnit_2 oneFIFO;
    RC_ASSERT(Job_Run(oneFIFO, job) == expected);
    RC_ASSERT(expected.size() == job.steps.size());
    RC_ASSERT(expected.back() == Board_Expected(job, static_cast<int>(job.steps.size()) - 1));
}

// A job with stripes and bands of many more lines than are ever in flight.
TEST(InkStageTwin, TheBytesAreTheSameForEveryNumberOfLineGenerators)
{
    SInkJob job;
    job.option.m_dataMapStyle = SMapStyle::ByteInterleaved;
    job.twin = {ETwinStyle::Style_6, 1, 16, 1};
    job.stripes.bandWidth = 24;
    job.stripes.jobWidth = 300;
    job.stripes.leftStripeWidth = 8;
    job.stripes.rightStripeWidth = 8;
    job.stripes.unitPitch = 2;
    job.stripes.unitPositionCount = 4;
    for (int id = 0; id < 8; ++id)
    {
        job.stripes.units.push_back(
            {id, 1, id % 4, 0, 0, true, std::vector<unsigned char>(6, static_cast<unsigned char>(0x80 + id))});
    }
    std::mt19937 random(7);
    for (const int bandAttr : {1, 0})
    {
        job.steps.push_back(Step_Make(job, random, {2, 3, 7}, bandAttr));
    }
    const std::vector<SBandImage> expected = {Board_Expected(job, 0), Board_Expected(job, 1)};
    for (int count = 1; count <= 16; ++count)
    {
        job.lineGeneratorCount = count;
        CConfigGuard config;
        Job_Configure(config, job);
        CUnitData2BoardData_S_AllUnit inkStripe;
        EXPECT_TRUE(Job_Run(inkStripe, job) == expected) << count;
        CUnitData2BoardData_AllUnit_2 oneFIFO;
        EXPECT_TRUE(Job_Run(oneFIFO, job) == expected) << count;
    }
}
