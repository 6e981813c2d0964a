// The sizes of a job's bands, and where images and stripes stand in them.
#include "Host/Job/JobGeometry.h"

#include "Tests/Host/Job/TestJob.h"

#include <gtest/gtest.h>

namespace
{

// The small job for other boards.
std::string Boards_Text(const std::string& options, int nozzles, int bitsPerPixel)
{
    std::string text =
        Replaced(g_smallJob, "DataMapStyle = \"FramePerPixel\"\nPrinterSupportBits = \"OneBit\"\nPrinterDataWidth = 16",
                 options);
    text = Replaced(text, "BitsPerPixel = 1", "BitsPerPixel = " + std::to_string(bitsPerPixel));
    return Replaced(text, "Nozzles = 400", "Nozzles = " + std::to_string(nozzles));
}

SJobGeometry Geometry_Of(const std::string& options, int nozzles, int bitsPerPixel)
{
    return Job_Geometry(Job_Of(Boards_Text(options, nozzles, bitsPerPixel)), 100, 401);
}

// Offsets that differ in both passes, zones that differ.
std::string Margins_Text()
{
    std::string text = Replaced(g_stripeJob, "LeftStripeWidth = 40", "LeftStripeWidth = 41");
    text = Replaced(text, "RightStripeWidth = 40", "RightStripeWidth = 59");
    text = Replaced(text, "UnitId = 0", "UnitId = 0\nHorizon_1 = 2\nHorizon_2 = 7");
    return Replaced(text, "UnitId = 1", "UnitId = 1\nHorizon_1 = 9\nHorizon_2 = 3");
}

} // namespace

TEST(JobGeometry, FollowsThePageThePushStyleAndTheAlignment)
{
    const SJobGeometry plain = Job_Geometry(Job_Of(std::string(g_fullJob)), 5000, 7001);
    EXPECT_EQ(plain.m_swathCount, 18); // 7001 rows in swaths of 400
    EXPECT_EQ(plain.m_linesPerScanPosition, 1);
    EXPECT_EQ(plain.m_unitWidth, 400);
    EXPECT_EQ(plain.m_unitBitsPerPixel, 1);
    EXPECT_EQ(plain.m_unitBytesPerLine, 52); // 50, aligned to 4
    EXPECT_EQ(plain.m_boardWidth, 400 * 32);
    EXPECT_EQ(plain.m_boardBytesPerLine, 1600);
    EXPECT_EQ(plain.m_lineCount, 5000 + 40 + 24 + 6); // the zones and the larger offset

    const SJobGeometry byPixel = Geometry_Of("DataMapStyle = 6\nPrinterSupportBits = 2\nPrinterDataWidth = 16", 400, 2);
    EXPECT_EQ(byPixel.m_swathCount, 2);
    EXPECT_EQ(byPixel.m_unitWidth, 400);
    EXPECT_EQ(byPixel.m_unitBitsPerPixel, 2);
    EXPECT_EQ(byPixel.m_unitBytesPerLine, 100);
    EXPECT_EQ(byPixel.m_lineCount, 100);

    const SJobGeometry byUnit = Geometry_Of("DataMapStyle = 6\nDataPushStyle = 1\nPrinterDataWidth = 16", 401, 2);
    EXPECT_EQ(byUnit.m_swathCount, 1);
    EXPECT_EQ(byUnit.m_linesPerScanPosition, 2);
    EXPECT_EQ(byUnit.m_unitBitsPerPixel, 1);
    EXPECT_EQ(byUnit.m_unitBytesPerLine, 51);
    EXPECT_EQ(byUnit.m_lineCount, 200);
}

TEST(JobGeometry, BoardLinesAreAsLongAsTheMapMakesThem)
{
    EXPECT_EQ(Geometry_Of("DataMapStyle = 1\nPrinterDataWidth = 16", 30, 1).m_boardWidth, 30 * 16);
    // Four pixels to a frame.
    EXPECT_EQ(Geometry_Of("DataMapStyle = 3\nPrinterDataWidth = 32", 400, 1).m_boardWidth, 100 * 32);
    // Thirteen bytes for every column.
    EXPECT_EQ(Geometry_Of("DataMapStyle = 4\nPrinterDataWidth = 8", 400, 1).m_boardWidth, 832);
    // Whole bytes in every column: 9 nozzles of 1 bit, 5 of 2 bits, 9 that become 2 bits.
    EXPECT_EQ(Geometry_Of("DataMapStyle = 7\nPrinterSupportBits = 1\nPrinterDataWidth = 16", 9, 1).m_boardWidth,
              2 * 16 * 8);
    EXPECT_EQ(Geometry_Of("DataMapStyle = 7\nPrinterSupportBits = 2\nPrinterDataWidth = 16", 5, 2).m_boardWidth,
              2 * 16 * 8);
    const std::string dots =
        Replaced(Boards_Text("DataMapStyle = 7\nPrinterSupportBits = 2\nPrinterDataWidth = 5", 9, 1),
                 "BitsPerPixel = 1", "BitsPerPixel = 1\nDotSizeMode = 1");
    EXPECT_EQ(Job_Geometry(Job_Of(dots), 1, 1).m_boardWidth, 3 * 5 * 8);
    EXPECT_EQ(Job_Geometry(Job_Of(dots), 1, 1).m_boardBytesPerLine, 15);
}

TEST(JobGeometry, PlanePairBandsAreDescribedBitByBit)
{
    const SJobGeometry geometry = Geometry_Of("DataMapStyle = 9\nPrinterDataWidth = 8", 404, 2);
    EXPECT_EQ(geometry.m_unitWidth, 808);
    EXPECT_EQ(geometry.m_unitBitsPerPixel, 1);
    EXPECT_EQ(geometry.m_unitBytesPerLine, 101);
    EXPECT_EQ(geometry.m_linesPerScanPosition, 1);
    EXPECT_EQ(geometry.m_boardWidth, 808 * 8); // two planes of 404 frames of 8 bits
    EXPECT_EQ(geometry.m_lineCount, 100);
    EXPECT_EQ(geometry.m_swathCount, 1); // rows are nozzles all the same
}

TEST(JobGeometry, PassesHaveTheirLargestOffsetAndBothZones)
{
    const SJob job = Job_Of(Margins_Text());
    EXPECT_EQ(Job_MaxOffset(job, true), 7);
    EXPECT_EQ(Job_MaxOffset(job, false), 9);
    EXPECT_EQ(Job_PassPositions(job, 300, true), 7 + 300 + 41 + 59);
    EXPECT_EQ(Job_PassPositions(job, 300, false), 9 + 300 + 41 + 59);

    const SJobGeometry geometry = Job_Geometry(job, 300, 12);
    EXPECT_EQ(geometry.m_lineCount_Left2Right, 407);
    EXPECT_EQ(geometry.m_lineCount_Right2Left, 409);
    EXPECT_EQ(geometry.m_lineCount, 409);

    const SJob oneWay = Job_Of(Replaced(Margins_Text(), "Bidirectional = true", "Bidirectional = false"));
    EXPECT_EQ(Job_Geometry(oneWay, 300, 12).m_lineCount, 407) << "the way back is not used";

    std::string text = Replaced(Margins_Text(), "\"ByPixel\"", "\"ByUnit\"");
    text = Replaced(text, "BitsPerPixel = 1", "BitsPerPixel = 2");
    EXPECT_EQ(Job_PassPositions(Job_Of(text), 300, true), 407);
    EXPECT_EQ(Job_Geometry(Job_Of(text), 300, 12).m_lineCount_Left2Right, 814);
    EXPECT_EQ(Job_Geometry(Job_Of(text), 300, 12).m_lineCount, 818);
}

TEST(JobGeometry, ImageStandsBehindTheFirstZoneAndTheUnitsOffset)
{
    const SJob job = Job_Of(Margins_Text());
    EXPECT_EQ(Job_ImagePosition(job, job.m_units.at(0), true), 41 + 7);
    EXPECT_EQ(Job_ImagePosition(job, job.m_units.at(0), false), 59 + 2);
    EXPECT_EQ(Job_ImagePosition(job, job.m_units.at(1), true), 41 + 3);
    EXPECT_EQ(Job_ImagePosition(job, job.m_units.at(1), false), 59 + 9);
    EXPECT_EQ(Job_ImagePosition(job, job.m_units.at(2), true), 41);
    for (const SJobUnit& unit : job.m_units)
    {
        for (const bool bLeftToRight : {true, false})
        {
            EXPECT_LE(Job_ImagePosition(job, unit, bLeftToRight) + 300, Job_PassPositions(job, 300, bLeftToRight));
        }
    }
}

TEST(JobGeometry, WithoutStripesAndOffsetsThereAreNoMargins)
{
    for (const std::string kind : {"ink-stripe", "one-fifo", "base"})
    {
        const SJob job = Job_Of(std::string(g_smallJob) + "[Stage]\nKind = \"" + kind + "\"\n");
        for (const bool bLeftToRight : {true, false})
        {
            EXPECT_EQ(Job_PassPositions(job, 300, bLeftToRight), 300);
            EXPECT_EQ(Job_ImagePosition(job, job.m_units.at(0), bLeftToRight), 0);
        }
        EXPECT_EQ(Job_Geometry(job, 300, 12).m_lineCount, 300);
    }
}

TEST(JobGeometry, StripesBelongToUnitsWithoutASeparationWhereThereAreZones)
{
    const SJob job = Job_Of(std::string(g_stripeJob));
    EXPECT_TRUE(Job_HasStripes(job));
    EXPECT_FALSE(Job_HasStripes(job, job.m_units.at(0)));
    EXPECT_TRUE(Job_HasStripes(job, job.m_units.at(1)));
    EXPECT_FALSE(Job_HasStripes(job, job.m_units.at(2)));
    EXPECT_TRUE(Job_HasStripes(job, job.m_units.at(3)));

    const std::string leftOnly = Replaced(g_stripeJob, "RightStripeWidth = 40", "RightStripeWidth = 0");
    EXPECT_TRUE(Job_HasStripes(Job_Of(leftOnly)));
    const SJob noZones = Job_Of(Replaced(leftOnly, "\nLeftStripeWidth = 40", "\nLeftStripeWidth = 0"));
    EXPECT_FALSE(Job_HasStripes(noZones));
    EXPECT_FALSE(Job_HasStripes(noZones, noZones.m_units.at(1)));
    SJob base = job;
    base.m_stageKind = EStageKind::Base;
    EXPECT_FALSE(Job_HasStripes(base));
    SJob oneFIFO = job;
    oneFIFO.m_stageKind = EStageKind::OneFIFO;
    EXPECT_TRUE(Job_HasStripes(oneFIFO));
}

TEST(JobGeometry, StripesStandInTheirZonesInBothPasses)
{
    // Positions 0 to 3, a pitch of 10, stripes of 6; unit 1 has the offsets 9 and 3, the largest are 9 and 7.
    const SJob job = Job_Of(Replaced(Margins_Text(), "StripeLength = 10", "StripeLength = 6"));
    const SJobUnit& unit = job.m_units.at(1);
    const auto stripe = [&](bool bLeftToRight, bool bLeftStripe)
    {
        const auto found = Job_Stripe(job, unit, 300, bLeftToRight, bLeftStripe, 6);
        EXPECT_EQ(found->m_end, found->m_begin + 6);
        return found->m_begin;
    };
    EXPECT_EQ(stripe(true, true), 1 * 10 + 3);
    EXPECT_EQ(stripe(true, false), 407 - (3 * 10 - 3 + 7));
    EXPECT_EQ(stripe(false, true), 409 - (2 * 10 - 9 + 9));
    EXPECT_EQ(stripe(false, false), 2 * 10 + 9);

    SJob noLeft = job;
    noLeft.m_inkStripe.m_leftStripeWidth = 0;
    EXPECT_FALSE(Job_Stripe(noLeft, unit, 300, true, true, 6).has_value());
    EXPECT_FALSE(Job_Stripe(noLeft, unit, 300, false, true, 6).has_value());
    EXPECT_TRUE(Job_Stripe(noLeft, unit, 300, true, false, 6).has_value());
    SJob noRight = job;
    noRight.m_inkStripe.m_rightStripeWidth = 0;
    EXPECT_FALSE(Job_Stripe(noRight, unit, 300, true, false, 6).has_value());
    EXPECT_TRUE(Job_Stripe(noRight, unit, 300, false, true, 6).has_value());
}
