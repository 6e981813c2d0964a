// Ink stripes that would leave their bands, refused; and what is accepted, tried out: by the stage's arithmetic on
// random jobs, and on the stage itself.
#include "Host/Job/JobApply.h"
#include "Host/Job/JobGeometry.h"
#include "Host/Job/StripeColor.h"
#include "Host/Model/BoardTwin.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Platform/GlobalConfig/CartInfo.h"
#include "Platform/GlobalConfig/ColorGroup.h"
#include "Tests/Host/Job/StripeTiff.h"
#include "Tests/Host/Job/TestJob.h"
#include "Tests/Support/ConfigGuard.h"
#include "Tests/Support/TestFolder.h"
#include "UnitData2BoardData/UnitData2BoardData_AllUnit_2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

namespace
{

constexpr int pageWidth = 100;

// The error of a text's separations on a page of 100 columns.
std::string Error_OfPage(const std::string& text)
{
    const SJob job = Job_Of(text);
    const auto count = static_cast<std::size_t>(
        std::ranges::count_if(job.m_units, [](const SJobUnit& unit) { return unit.HasSeparation(); }));
    return Error_Of<CInputError>(
        [&] {
            Job_CheckSeparations(job, std::vector<SSeparationInfo>(count, {"a", pageWidth, 12, job.m_bitsPerPixel}));
        });
}

std::string Outside(const std::string& place, const std::string& stripe, const std::string& pass,
                    const std::string& rows, int last = 179)
{
    return "job.toml:" + place + ": the " + stripe + " in the " + pass + " pass takes the scan positions " + rows +
           ", and the band has 0 to " + std::to_string(last) +
           "; lower UnitPitch or StripeLength, or widen the stripe zones";
}

} // namespace

TEST(JobStripe, PitchIsNeededWhereThereAreStripes)
{
    const std::string missing = Replaced(g_stripeJob, "UnitPitch = 10\n", "");
    EXPECT_EQ(JobError_Of(missing), "job.toml:12:1: UnitPitch is missing from [InkStripe]; from the stripe of one unit "
                                    "position to the next it is 1 or more, for example: UnitPitch = 8");
    EXPECT_EQ(JobError_Of(Replaced(g_stripeJob, "UnitPitch = 10", "UnitPitch = 0")),
              "job.toml:15:13: UnitPitch is 0; from the stripe of one unit position to the next it is 1 or more, for "
              "example: UnitPitch = 8");
    EXPECT_EQ(JobError_Of(Replaced(g_stripeJob, "UnitPitch = 10", "UnitPitch = 1")), "no error");
    EXPECT_EQ(JobError_Of(Replaced(missing, "LeftStripeWidth = 40\nRightStripeWidth = 40\n", "")), "no error");
    std::string allPrint = Replaced(missing, "StripeColor = \"Full\"", "Separation = \"c.tif\"");
    allPrint = Replaced(allPrint, "StripeColor = \"None\"", "Separation = \"d.tif\"");
    EXPECT_EQ(JobError_Of(allPrint), "no error");
}

TEST(JobStripe, ColourIsNeededByEveryUnitThatGetsStripes)
{
    const std::string missing = Replaced(g_stripeJob, "StripeColor = \"None\"\n", "");
    EXPECT_EQ(JobError_Of(missing), "job.toml:32:1: StripeColor is missing from [[CartInfo.Unit]]; a unit without a "
                                    "Separation prints ink stripes, for example: StripeColor = \"Full\"");
    EXPECT_EQ(JobError_Of(Replaced(missing, "LeftStripeWidth = 40\nRightStripeWidth = 40\n", "")), "no error");
}

TEST(JobStripe, DropSizesAreForTwoBitJobs)
{
    for (const std::string fill : {"Small", "Middle", "Big"})
    {
        const std::string text = Replaced(g_stripeJob, "\"Full\"", "\"" + fill + "\"");
        EXPECT_EQ(JobError_Of(text), "job.toml:26:15: StripeColor is \"" + fill +
                                         "\", a drop size of 2-bit pixels; BitsPerPixel is 1, so it takes None, Full "
                                         "or the name of a TIFF file");
        EXPECT_EQ(JobError_Of(Replaced(text, "BitsPerPixel = 1", "BitsPerPixel = 2")), "no error");
    }
}

// Stripes of 10 scan positions, a pitch of 10, positions 0 to 3, zones of 40: a band of 180.

TEST(JobStripe, StripesThatEndWithTheBandAreTaken)
{
    EXPECT_EQ(Error_OfPage(std::string(g_stripeJob)), "no error");
}

TEST(JobStripe, LeftStripeEndsInsideTheBandFromLeftToRight)
{
    // Unit 3 alone, in one pass: it begins at 3 pitches.
    std::string text = Replaced(g_stripeJob, "Bidirectional = true", "Bidirectional = false");
    text = Replaced(text, "StripeColor = \"Full\"", "Separation = \"c.tif\"");
    text = Replaced(text, "UnitPitch = 10", "UnitPitch = 56");
    EXPECT_EQ(Error_OfPage(Replaced(text, "StripeLength = 10", "StripeLength = 12")), "no error");
    EXPECT_EQ(Error_OfPage(Replaced(text, "StripeLength = 10", "StripeLength = 13")),
              Outside("34:15", "left stripe of unit 3", "left-to-right", "168 to 180"));
}

TEST(JobStripe, LeftStripeEndsInsideTheBandFromRightToLeft)
{
    std::string text = Replaced(g_stripeJob, "UnitId = 1", "UnitId = 1\nUnitPosition = 0");
    text = Replaced(text, "UnitId = 3", "UnitId = 3\nUnitPosition = 2");
    EXPECT_EQ(Error_OfPage(text), "no error");
    text = Replaced(text, "StripeLength = 10", "StripeLength = 11");
    EXPECT_EQ(Error_OfPage(text), Outside("27:15", "left stripe of unit 1", "right-to-left", "170 to 180"));
    EXPECT_EQ(Error_OfPage(Replaced(text, "Bidirectional = true", "Bidirectional = false")), "no error")
        << "that pass is not printed";
}

TEST(JobStripe, RightStripeEndsInsideTheBandFromLeftToRight)
{
    EXPECT_EQ(Error_OfPage(Replaced(g_stripeJob, "StripeLength = 10", "StripeLength = 11")),
              Outside("34:15", "right stripe of unit 3", "left-to-right", "170 to 180"));
}

TEST(JobStripe, RightStripeEndsInsideTheBandFromRightToLeft)
{
    std::string text =
        Replaced(g_stripeJob, "\nLeftStripeWidth = 40\nRightStripeWidth = 40", "\nRightStripeWidth = 80");
    text = Replaced(text, "UnitId = 1", "UnitId = 1\nUnitPosition = 0");
    text = Replaced(text, "UnitId = 3", "UnitId = 3\nUnitPosition = 0");
    text = Replaced(text, "UnitPitch = 10", "UnitPitch = 45");
    EXPECT_EQ(Error_OfPage(Replaced(text, "StripeLength = 10", "StripeLength = 45")), "no error");
    text = Replaced(text, "StripeLength = 10", "StripeLength = 46");
    EXPECT_EQ(Error_OfPage(text), Outside("26:15", "right stripe of unit 1", "right-to-left", "135 to 180") + '\n' +
                                      Outside("35:15", "right stripe of unit 3", "right-to-left", "135 to 180"));
    EXPECT_EQ(Error_OfPage(Replaced(text, "Bidirectional = true", "Bidirectional = false")), "no error");
}

TEST(JobStripe, StripesBeginInsideTheBand)
{
    std::string text = Replaced(g_stripeJob, "UnitId = 3", "UnitId = 3\nUnitPosition = 1");
    EXPECT_EQ(Error_OfPage(Replaced(text, "UnitPitch = 10", "UnitPitch = 60")), "no error");
    EXPECT_EQ(Error_OfPage(Replaced(text, "UnitPitch = 10", "UnitPitch = 61")),
              Outside("26:15", "right stripe of unit 1", "left-to-right", "-3 to 6") + '\n' +
                  Outside("35:15", "right stripe of unit 3", "left-to-right", "-3 to 6"));
    text = Replaced(g_stripeJob, "UnitId = 3", "UnitId = 3\nUnitPosition = 2");
    text = Replaced(text, "UnitId = 1", "UnitId = 1\nUnitPosition = 2");
    EXPECT_EQ(Error_OfPage(Replaced(text, "UnitPitch = 10", "UnitPitch = 60")), "no error");
    EXPECT_EQ(Error_OfPage(Replaced(text, "UnitPitch = 10", "UnitPitch = 61")),
              Outside("27:15", "left stripe of unit 1", "right-to-left", "-3 to 6") + '\n' +
                  Outside("36:15", "left stripe of unit 3", "right-to-left", "-3 to 6"));
}

TEST(JobStripe, PositionsAreWorkedOutBeyondThirtyTwoBits)
{
    std::string text = Replaced(g_stripeJob, "UnitPitch = 10", "UnitPitch = 16777216");
    text = Replaced(text, "UnitPositionCount = 4", "UnitPositionCount = 512");
    // 256 pitches are 4294967296: nothing, if they were counted in 32 bits.
    EXPECT_EQ(Error_OfPage(Replaced(text, "UnitId = 1", "UnitId = 1\nUnitPosition = 256")),
              Outside("27:15", "left stripe of unit 1", "left-to-right", "4294967296 to 4294967305") + '\n' +
                  Outside("35:15", "left stripe of unit 3", "left-to-right", "50331648 to 50331657"));
}

TEST(JobStripe, OffsetsCountForTheirPassAlone)
{
    // The band grows by the offset of unit 0, but the stripes keep their distance from the ends of the image.
    std::string text = Replaced(g_stripeJob, "UnitId = 0", "UnitId = 0\nHorizon_1 = 5");
    text = Replaced(text, "StripeLength = 10", "StripeLength = 11");
    EXPECT_EQ(Error_OfPage(text), Outside("35:15", "right stripe of unit 3", "left-to-right", "170 to 180"));
    EXPECT_EQ(Error_OfPage(Replaced(text, "Horizon_1 = 5", "Horizon_2 = 5")), "no error");
    // A unit that has the largest offset itself ends with the band again.
    const std::string own = Replaced(text, "UnitId = 3", "UnitId = 3\nHorizon_2 = 7");
    EXPECT_EQ(Error_OfPage(own), Outside("36:15", "right stripe of unit 3", "left-to-right", "177 to 187", 186));
}

TEST(JobStripe, TiffsCountWithTheirOwnRows)
{
    const CTestFolder folder;
    const std::string path = (folder / "stripe.tif").string();
    std::string text = Replaced(g_stripeJob, "StripeLength = 10", "StripeLength = 20");
    text = Replaced(text, "StripeColor = \"Full\"", "Separation = \"c.tif\"");
    text = Replaced(text, "\"None\"", "'" + path + "'");
    StripeTiff_Write(path, 12, 1, std::vector<std::string>(10, "\x80\x10"));
    EXPECT_EQ(Error_OfPage(text), "no error");
    StripeTiff_Write(path, 12, 1, std::vector<std::string>(11, "\x80\x10"));
    EXPECT_EQ(Error_OfPage(text), Outside("34:15", "right stripe of unit 3", "left-to-right", "170 to 180"));
    StripeTiff_Write(path, 12, 1, std::vector<std::string>(21, "\x80\x10"));
    EXPECT_EQ(Error_OfPage(text), "job.toml:34:15: unit 3: StripeColor " + path +
                                      " has 21 rows; a stripe has StripeLength scan positions at most, which is 20");
}

namespace
{

// Random jobs on all boards, near the limits of what is accepted.
class CRandomJob
{
public:
    explicit CRandomJob(unsigned seed) : m_random(seed) {}

    SJob Make()
    {
        SJob job;
        job.m_stageKind = Number(0, 1) == 0 ? EStageKind::InkStripe : EStageKind::OneFIFO;
        Boards_Choose(job);
        job.m_dotSizeMode = static_cast<EDotSizeMode>(Number(1, 3));
        job.m_alignByteCountPerLine = 1 << Number(0, 3);
        job.m_bBidirectional = Number(0, 1) == 1;
        job.m_maskCount_1 = Number(1, 4);
        job.m_maskCount_2 = Number(1, 4);
        job.m_lineGeneratorCount = Number(1, 3);
        SJobInkStripe& stripe = job.m_inkStripe;
        stripe.m_leftStripeWidth = std::max(0, Number(-20, 50));
        stripe.m_rightStripeWidth = std::max(0, Number(-20, 50));
        stripe.m_unitPitch = Number(1, 20);
        stripe.m_stripeLength = Number(1, 2 * stripe.m_unitPitch);
        stripe.m_unitPositionCount = Number(2, 5);
        const int unitCount = Number(1, 4);
        for (int i = 0; i < unitCount; ++i)
        {
            job.m_units.push_back(Unit_Make(job, i));
        }
        return job;
    }

    int Number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(m_random); }

private:
    void Boards_Choose(SJob& job)
    {
        constexpr EDataMapStyle styles[] = {EDataMapStyle::Frame16,       EDataMapStyle::Block,
                                            EDataMapStyle::Block13,       EDataMapStyle::FramePerPixel,
                                            EDataMapStyle::FramePerPixel, EDataMapStyle::ByteInterleaved,
                                            EDataMapStyle::PlanePair};
        constexpr EPrinterSupportBits supportBits[] = {EPrinterSupportBits::OneBit, EPrinterSupportBits::TwoBit,
                                                       EPrinterSupportBits::Multiple};
        SDPOption& option = job.m_dpOption;
        option.m_dataMapStyle = styles[Number(0, 6)];
        option.m_dataPushStyle = Number(0, 2) == 0 ? EDataPushStyle::ByUnit : EDataPushStyle::ByPixel;
        option.m_printerSupportBits = supportBits[Number(0, 2)];
        option.m_printerDataWidth = option.m_dataMapStyle == EDataMapStyle::Block ? 32 : 16;
        job.m_places["DPOption.PrinterSupportBits"] = {};
        job.m_bitsPerPixel = Number(1, 2);
        const bool bBlocks =
            option.m_dataMapStyle == EDataMapStyle::Block || option.m_dataMapStyle == EDataMapStyle::Block13;
        const bool bPlanes = option.m_dataMapStyle == EDataMapStyle::PlanePair;
        job.m_nozzles = bBlocks ? 400 : bPlanes ? 4 * Number(1, 9) : Number(1, 40);
    }

    SJobUnit Unit_Make(const SJob& job, int index)
    {
        SJobUnit unit;
        unit.m_unitId = index;
        unit.m_direction = Number(1, 2);
        unit.m_separation = Number(0, 1) == 0 ? "" : "page.tif";
        unit.m_unitPosition = Number(0, job.m_inkStripe.m_unitPositionCount - 1);
        unit.m_horizon_1 = std::max(0, Number(-10, 15));
        unit.m_horizon_2 = std::max(0, Number(-10, 15));
        unit.m_stripeColor.m_text = "Full";
        unit.m_stripeColor.m_fill = EStripeFill::Full;
        return unit;
    }

    std::mt19937 m_random;
};

// Checks a job on a page; why it is refused, or nothing.
std::string Job_Refusal(SJob& job, int columns)
{
    try
    {
        Job_Check(job);
        const auto count = static_cast<std::size_t>(
            std::ranges::count_if(job.m_units, [](const SJobUnit& unit) { return unit.HasSeparation(); }));
        Job_CheckSeparations(job, std::vector<SSeparationInfo>(count, {"a", columns, 100, job.m_bitsPerPixel}));
    }
    catch (const CInputError& error)
    {
        return error.what();
    }
    return "";
}

// The stage's own arithmetic on the configuration that is set: whether every copy of a stripe stays inside its band.
bool AreStripesInside(int unitId, int bandAttr)
{
    const CPrintParamGlobal& param = *DPD_PrintParam();
    const SInkStripeParam_Pixel pixel = param.InkStripeParam_Get();
    const CUnitInfo_Horizon& horizon = param.UnitInfo_Horizon();
    const bool bLeftToRight = bandAttr == 1;
    const int bits = param.JobInfo_CurPrint_Get().m_bitsPerPixel;
    const bool bByUnit = GC_DPOption()->DataPushStyle_Get() == EDataPushStyle::ByUnit;
    const int lines = bByUnit ? bits : 1;
    const int offset = bLeftToRight ? horizon.XMaxOffset_Left2Right_Get() : horizon.XMaxOffset_Right2Left_Get();
    const int width = param.CurPrint_JobWidth_Get() / param.MaskData_Ref().m_maskCount_1;
    const int zones = pixel.leftStripeWidth + pixel.rightStripeWidth;
    CBandData band;
    EXPECT_TRUE(band.Create(GC_CartInfo()->CartHeadBaseInfo_Get().m_bandWidth, (offset + width + zones) * lines,
                            bByUnit ? 1 : bits, param.AlignByteCountPerLine()));

    const CColorGroupInfo* pGroup = GC_ColorGroup()->ColorGroupInfo_By_Key(CColorGroupInfo::Key_Pattern_Layout());
    const int position = pGroup->UnitInfo_Get(unitId).m_unitPosition;
    const int count = pixel.unitPositionCount;
    const int pitch = pixel.unitPitch;
    const int horizon_1 = horizon.HorizonInfo_Get(unitId).m_horizon_1;
    const int horizon_2 = horizon.HorizonInfo_Get(unitId).m_horizon_2;
    const int height = band.m_height;
    std::vector<int> rows;
    if (pixel.leftStripeWidth >= 1)
    {
        rows.push_back(bLeftToRight ? (position * pitch + horizon_2) * lines
                                    : height - ((position + 1) * pitch - horizon_1 + offset) * lines);
    }
    if (pixel.rightStripeWidth >= 1)
    {
        rows.push_back(bLeftToRight ? height - ((count - position) * pitch - horizon_2 + offset) * lines
                                    : ((count - position - 1) * pitch + horizon_1) * lines);
    }
    const CBandData* pColor = param.InkStripeColorData_Get(unitId);
    return pColor != nullptr &&
           std::ranges::all_of(
               rows,
               [&](int row) { return row >= 0 && row * band.m_bytesPerLine + pColor->m_dataSize <= band.m_dataSize; });
}

bool AreStripesInside(const SJob& job)
{
    return std::ranges::all_of(job.m_units,
                               [&](const SJobUnit& unit)
                               {
                                   return !Job_HasStripes(job, unit) ||
                                          (AreStripesInside(unit.m_unitId, 1) &&
                                           (!job.m_bBidirectional || AreStripesInside(unit.m_unitId, 2)));
                               });
}

} // namespace

TEST(JobStripeProperty, WhatIsAcceptedStaysInsideTheBandsAndWhatIsRefusedForItsStripesDoesNot)
{
    const CConfigGuard guard;
    CRandomJob random(20);
    int accepted = 0;
    int refused = 0;
    for (int i = 0; i < 6000; ++i)
    {
        SJob job = random.Make();
        const int columns = random.Number(1, 60);
        const std::string refusal = Job_Refusal(job, columns);
        const bool bForItsStripes = refusal.find("takes the scan positions") != std::string::npos;
        if (!refusal.empty() && !bForItsStripes)
        {
            continue;
        }
        Job_Apply(job, columns, 100);
        ASSERT_EQ(AreStripesInside(job), refusal.empty()) << "job " << i << ": " << refusal;
        accepted += refusal.empty() && Job_HasStripes(job) ? 1 : 0;
        refused += bForItsStripes ? 1 : 0;
    }
    EXPECT_GT(accepted, 300);
    EXPECT_GT(refused, 300);
}

namespace
{

// A band of random ink, as the host would make it for this unit and pass.
std::unique_ptr<CBandData> Band_Make(const SJob& job, const SJobUnit& unit, int columns, bool bLeftToRight)
{
    auto band = std::make_unique<CBandData>();
    EXPECT_TRUE(band->Create(Job_UnitWidth(job),
                             Job_PassPositions(job, columns, bLeftToRight) * Job_LinesPerScanPosition(job),
                             Job_UnitBitsPerPixel(job), job.m_alignByteCountPerLine));
    band->m_unitIndex = unit.m_unitId;
    band->m_unitDirection = unit.m_direction;
    band->m_bandAttr = bLeftToRight ? 1 : 2;
    return band;
}

void Ink_Fill(CBandData& band, CRandomJob& random)
{
    const int lineBits = band.m_width * band.m_bitsPerPixel;
    for (int line = 0; line < band.m_height; ++line)
    {
        for (int bit = 0; bit < lineBits; ++bit)
        {
            const int value = random.Number(0, 1) << (7 - bit % 8);
            band.m_pData[line * band.m_bytesPerLine + bit / 8] |= static_cast<unsigned char>(value);
        }
    }
}

// The stripe band of a unit, from the geometry alone: every bit of a full stripe, one at a time.
void Stripe_Fill(CBandData& band, const SJob& job, const SJobUnit& unit, int columns, bool bLeftToRight)
{
    for (const bool bLeft : {true, false})
    {
        const auto stripe = Job_Stripe(job, unit, columns, bLeftToRight, bLeft, job.m_inkStripe.m_stripeLength);
        for (auto position = stripe ? stripe->m_begin : 0; stripe && position < stripe->m_end; ++position)
        {
            for (int line = 0; line < Job_LinesPerScanPosition(job); ++line)
            {
                const auto at = (position * Job_LinesPerScanPosition(job) + line) * band.m_bytesPerLine;
                for (int bit = 0; bit < band.m_width * band.m_bitsPerPixel; ++bit)
                {
                    band.m_pData[at + bit / 8] |= static_cast<unsigned char>(0x80 >> bit % 8);
                }
            }
        }
    }
}

STwinStyle Twin_Of(const SJob& job)
{
    constexpr ETwinStyle styles[] = {ETwinStyle::Style_1,     ETwinStyle::Style_2, ETwinStyle::Style_03,
                                     ETwinStyle::Style_03_01, ETwinStyle::Style_5, ETwinStyle::Style_6,
                                     ETwinStyle::Style_7,     ETwinStyle::Style_8};
    STwinStyle style;
    style.style = styles[static_cast<int>(job.m_map.m_class) - static_cast<int>(EMapClass::Map_1)];
    style.srcBitCount = job.m_map.m_srcBitCount;
    style.frameWidth = job.m_dpOption.m_printerDataWidth;
    style.dotSizeMode = static_cast<int>(job.m_dotSizeMode);
    return style;
}

STwinBoardBand Twin_Map(const SJob& job, const std::vector<std::unique_ptr<CBandData>>& bands)
{
    std::vector<STwinBand> twins;
    std::ranges::transform(bands, std::back_inserter(twins),
                           [](const std::unique_ptr<CBandData>& band)
                           {
                               return STwinBand{band->m_unitIndex,
                                                band->m_unitDirection,
                                                band->m_width,
                                                band->m_bitsPerPixel,
                                                band->m_height,
                                                band->m_bytesPerLine,
                                                {band->m_pData, static_cast<std::size_t>(band->m_dataSize)}};
                           });
    return CBoardTwin(Twin_Of(job)).Band_Map(twins);
}

// The job's stage, fed with whole sets of bands.
class CStageRun
{
public:
    CStageRun() { EXPECT_TRUE(m_stage.Create(m_input)); }
    ~CStageRun()
    {
        m_input.In(nullptr);
        EXPECT_TRUE(m_stage.WaitExit(60000));
        EXPECT_TRUE(m_stage.IsThreadSuccess());
    }
    CStageRun(const CStageRun&) = delete;
    CStageRun& operator=(const CStageRun&) = delete;

    // The board band of these bands, which the stage takes over. Null if none came.
    std::unique_ptr<CBandData> Step(std::vector<std::unique_ptr<CBandData>> bands)
    {
        auto bandSet = std::make_unique<SBufferData<CBandData*>>();
        bandSet->AllocateBuffer(static_cast<int>(bands.size()), true);
        std::ranges::transform(bands, bandSet->data, [](auto& band) { return band.release(); });
        m_input.In(bandSet.release());
        CBandData* pBoard = nullptr;
        for (int i = 0; pBoard == nullptr && i < 600 && !m_stage.WaitExit(0); ++i)
        {
            m_stage.OutputProcessor_Get()->Out(pBoard, 100);
        }
        return std::unique_ptr<CBandData>(pBoard);
    }

private:
    CUnitData2BoardData_AllUnit_2::CBandSetFIFO m_input{1};
    CUnitData2BoardData_AllUnit_2 m_stage;
};

void Pass_Check(CStageRun& stage, const SJob& job, int columns, bool bLeftToRight, CRandomJob& random)
{
    std::vector<std::unique_ptr<CBandData>> given;
    std::vector<std::unique_ptr<CBandData>> all;
    for (const SJobUnit& unit : job.m_units)
    {
        if (unit.HasSeparation() || Job_HasStripes(job, unit))
        {
            all.push_back(Band_Make(job, unit, columns, bLeftToRight));
        }
        if (unit.HasSeparation())
        {
            Ink_Fill(*all.back(), random);
            given.push_back(Band_Make(job, unit, columns, bLeftToRight));
            std::copy_n(all.back()->m_pData, all.back()->m_dataSize, given.back()->m_pData);
        }
        else if (Job_HasStripes(job, unit))
        {
            Stripe_Fill(*all.back(), job, unit, columns, bLeftToRight);
        }
    }
    const STwinBoardBand twin = Twin_Map(job, all);
    const std::unique_ptr<CBandData> board = stage.Step(std::move(given));
    ASSERT_NE(board, nullptr);
    const SJobGeometry geometry = Job_Geometry(job, columns, 100);
    EXPECT_EQ(board->m_width, geometry.m_boardWidth);
    EXPECT_EQ(board->m_bytesPerLine, geometry.m_boardBytesPerLine);
    EXPECT_EQ(board->m_height, bLeftToRight ? geometry.m_lineCount_Left2Right : geometry.m_lineCount_Right2Left);
    ASSERT_EQ(static_cast<std::size_t>(board->m_dataSize), twin.data.size());
    EXPECT_TRUE(std::equal(twin.data.begin(), twin.data.end(), board->m_pData));
}

} // namespace

TEST(JobStripeProperty, AcceptedJobsOfEveryMapRunThroughTheStageAsTheGeometrySays)
{
    const CConfigGuard guard;
    CRandomJob random(7);
    std::map<EMapClass, int> runs;
    int runsWithStripes = 0;
    for (int i = 0; i < 600; ++i)
    {
        SJob job = random.Make();
        const int columns = random.Number(1, 60);
        // A dozen of each: the cheap maps would take all the time.
        if (!Job_Refusal(job, columns).empty() || runs[job.m_map.m_class] == 12)
        {
            continue;
        }
        SCOPED_TRACE("job " + std::to_string(i) + ", style " + MapClass_Name(job.m_map.m_class));
        Job_Apply(job, columns, 100);
        CStageRun stage;
        Pass_Check(stage, job, columns, true, random);
        if (job.m_bBidirectional)
        {
            Pass_Check(stage, job, columns, false, random);
        }
        ++runs[job.m_map.m_class];
        runsWithStripes += Job_HasStripes(job) ? 1 : 0;
    }
    EXPECT_EQ(runs.size(), 8U);
    for (const auto& [map, count] : runs)
    {
        EXPECT_GE(count, 5) << MapClass_Name(map);
    }
    EXPECT_GT(runsWithStripes, 20);
}
