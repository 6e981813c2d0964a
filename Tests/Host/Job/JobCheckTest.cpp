// What a job's values mean together: every combination that the library would take without looking, refused.
#include "Host/Job/JobCheck.h"

#include "Host/Job/JobGeometry.h"
#include "Host/Job/JobNames.h"
#include "Tests/Host/Job/TestJob.h"
#include "Tests/Host/Output/TestFolder.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

// The small job with other options; each on the line of its key.
struct SOptions
{
    std::string m_style = "\"FramePerPixel\"";
    std::string m_push = "\"ByPixel\"";
    std::string m_support = "\"OneBit\"";
    int m_width = 16;
    int m_bitsPerPixel = 1;
    std::string m_dotSize = "0";
    int m_unitId = 0;
    std::int64_t m_nozzles = 400;
};

std::string Job_Text(const SOptions& options)
{
    return "Version = 1\n[DPOption]\nDataMapStyle = " + options.m_style + "\nDataPushStyle = " + options.m_push +
           "\nPrinterSupportBits = " + options.m_support + "\nPrinterDataWidth = " + std::to_string(options.m_width) +
           "\n[PrintParam]\nBitsPerPixel = " + std::to_string(options.m_bitsPerPixel) +
           "\nDotSizeMode = " + options.m_dotSize + "\n[CartInfo]\nNozzles = " + std::to_string(options.m_nozzles) +
           "\n[[CartInfo.Unit]]\nUnitId = " + std::to_string(options.m_unitId) + "\nSeparation = \"page.tif\"\n";
}

std::string Error_OfOptions(const SOptions& options)
{
    return JobError_Of(Job_Text(options));
}

std::string Error_OfSeparations(const SJob& job, const std::vector<SSeparationInfo>& separations)
{
    return Error_Of<CInputError>([&] { Job_CheckSeparations(job, separations); });
}

} // namespace

TEST(JobCheck, DepthThatNoMapTakesIsRefusedWithTheCombination)
{
    EXPECT_EQ(Error_OfOptions({.m_bitsPerPixel = 2}),
              "job.toml:8:16: BitsPerPixel is 2; no data map takes that with DataMapStyle FramePerPixel, DataPushStyle "
              "ByPixel, PrinterSupportBits OneBit; a printer of 2-bit data has PrinterSupportBits TwoBit or Multiple, "
              "and DataPushStyle ByUnit pushes 2-bit pixels as 1-bit lines");
    EXPECT_EQ(Error_OfOptions({.m_style = "7", .m_bitsPerPixel = 2}),
              "job.toml:8:16: BitsPerPixel is 2; no data map takes that with DataMapStyle ByteInterleaved, "
              "DataPushStyle ByPixel, PrinterSupportBits OneBit; a printer of 2-bit data has PrinterSupportBits TwoBit "
              "or Multiple, and DataPushStyle ByUnit pushes 2-bit pixels as 1-bit lines");
}

TEST(JobCheck, MapsWithALineMappingOfTheirOwnAreRefusedOnTheBaseStage)
{
    const auto error = [](const std::string& style, const std::string& map)
    {
        return "job.toml:3:16: DataMapStyle " + style + " needs the map of style " + map +
               ", which the base stage cannot run; the base stage runs the maps of styles 1, 2 and 5";
    };
    EXPECT_EQ(Error_OfOptions({.m_style = "\"Block\""}), error("Block", "03"));
    EXPECT_EQ(Error_OfOptions({.m_style = "3", .m_width = 32}), error("Block", "03"));
    EXPECT_EQ(Error_OfOptions({.m_style = "\"Block13\""}), error("Block13", "03_01"));
    EXPECT_EQ(Error_OfOptions({.m_style = "\"ByteInterleaved\""}), error("ByteInterleaved", "6"));
    EXPECT_EQ(Error_OfOptions({.m_style = "7", .m_push = "1", .m_bitsPerPixel = 2}), error("ByteInterleaved", "6"));
    EXPECT_EQ(Error_OfOptions({.m_style = "7", .m_support = "2", .m_bitsPerPixel = 2}), error("ByteInterleaved", "6"));
    EXPECT_EQ(Error_OfOptions({.m_style = "7", .m_support = "2", .m_dotSize = "1"}), error("ByteInterleaved", "7"));
    EXPECT_EQ(Error_OfOptions({.m_style = "\"PlanePair\"", .m_bitsPerPixel = 2}), error("PlanePair", "8"));
}

TEST(JobCheck, TableMapsRunOnTheBaseStage)
{
    const std::vector<std::pair<SOptions, SJobMap>> table = {
        {{.m_style = "1"}, {EMapClass::Map_1, 1, 1}},
        {{.m_style = "1", .m_push = "1", .m_bitsPerPixel = 2}, {EMapClass::Map_1, 1, 1}},
        {{.m_style = "6"}, {EMapClass::Map_5, 1, 1}},
        {{.m_style = "6", .m_push = "1"}, {EMapClass::Map_5, 1, 1}},
        {{.m_style = "6", .m_push = "1", .m_bitsPerPixel = 2}, {EMapClass::Map_5, 1, 1}},
        {{.m_style = "6", .m_support = "2", .m_dotSize = "3"}, {EMapClass::Map_2, 1, 2}},
        {{.m_style = "6", .m_support = "2", .m_bitsPerPixel = 2}, {EMapClass::Map_5, 2, 2}},
        {{.m_style = "6", .m_support = "5"}, {EMapClass::Map_5, 1, 1}},
        {{.m_style = "6", .m_support = "5", .m_bitsPerPixel = 2}, {EMapClass::Map_5, 2, 2}},
        {{.m_style = "7", .m_support = "5"}, {EMapClass::Map_5, 1, 1}},
        {{.m_style = "7", .m_support = "5", .m_bitsPerPixel = 2}, {EMapClass::Map_5, 2, 2}},
    };
    for (const auto& [options, map] : table)
    {
        EXPECT_EQ(Error_OfOptions(options), "no error") << Job_Text(options);
        const SJob job = Job_Of(Job_Text(options));
        EXPECT_EQ(job.m_map, map) << Job_Text(options);
        EXPECT_EQ(Job_UnitBitsPerPixel(job), map.m_srcBitCount) << "the bands have the depth that the map takes";
    }
}

TEST(JobCheck, TwoBitPixelsAreRefusedWhereTheMapTakesOneBit)
{
    EXPECT_EQ(Error_OfOptions({.m_style = "1", .m_bitsPerPixel = 2}),
              "job.toml:8:16: BitsPerPixel is 2; style 1 takes pixels of 1 bit; DataPushStyle ByUnit pushes 2-bit "
              "pixels as 1-bit lines");
}

TEST(JobCheck, FrameWidthFollowsTheMap)
{
    EXPECT_EQ(Error_OfOptions({.m_width = 17}), "job.toml:6:20: PrinterDataWidth is 17; style 5 needs a multiple of 8");
    EXPECT_EQ(Error_OfOptions({.m_width = 4}), "job.toml:6:20: PrinterDataWidth is 4; style 5 needs a multiple of 8");
    EXPECT_EQ(Error_OfOptions({.m_support = "2", .m_width = 12, .m_dotSize = "1"}),
              "job.toml:6:20: PrinterDataWidth is 12; style 2 needs a multiple of 8");
    EXPECT_EQ(Error_OfOptions({.m_style = "1", .m_width = 32}),
              "job.toml:6:20: PrinterDataWidth is 32; style 1 needs 16");
    EXPECT_EQ(Error_OfOptions({.m_style = "1", .m_width = 8}),
              "job.toml:6:20: PrinterDataWidth is 8; style 1 needs 16");
    for (const int width : {8, 24, 512})
    {
        EXPECT_EQ(Error_OfOptions({.m_width = width}), "no error") << width;
    }
}

TEST(JobCheck, DropSizeIsNeededByStyleTwoAlone)
{
    EXPECT_EQ(Error_OfOptions({.m_support = "2", .m_dotSize = "\"None\""}),
              "job.toml:9:15: DotSizeMode is None; style 2 prints 1-bit pixels with one drop size: Small (1), Middle "
              "(2) or Big (3), for example: DotSizeMode = \"Small\"");
    EXPECT_EQ(JobError_Of(Replaced(g_smallJob, "\"OneBit\"", "\"TwoBit\"")),
              "job.toml:6:1: DotSizeMode is missing from [PrintParam]; style 2 prints 1-bit pixels with one drop "
              "size: Small (1), Middle (2) or Big (3), for example: DotSizeMode = \"Small\"");
    for (const char* pMode : {"1", "2", "3"})
    {
        EXPECT_EQ(Error_OfOptions({.m_support = "2", .m_dotSize = pMode}), "no error") << pMode;
    }
}

TEST(JobCheck, PrinterSupportBitsMayBeLeftOutWhereNothingLooksAtThem)
{
    const std::string line = "PrinterSupportBits = \"OneBit\"\n";
    const std::string without = Replaced(g_smallJob, line, "");
    EXPECT_EQ(JobError_Of(Replaced(without, "\"FramePerPixel\"", "\"Frame16\"")), "no error");
    EXPECT_EQ(JobError_Of(Replaced(without, "\"FramePerPixel\"", "6\nDataPushStyle = 1")), "no error");
    EXPECT_EQ(JobError_Of(Replaced(without, "\"FramePerPixel\"", "7")),
              "job.toml:2:1: PrinterSupportBits is missing from [DPOption]; for example: PrinterSupportBits = "
              "\"OneBit\"");
}

TEST(JobCheck, UnitsStandInsideTheFrame)
{
    EXPECT_EQ(Error_OfOptions({.m_unitId = 15}), "no error");
    EXPECT_EQ(Error_OfOptions({.m_unitId = 16}),
              "job.toml:13:10: UnitId is 16; a frame of 16 bits at 1 bit per unit has the units 0 to 15");
    EXPECT_EQ(Error_OfOptions({.m_style = "1", .m_unitId = 16}),
              "job.toml:13:10: UnitId is 16; a frame of 16 bits at 1 bit per unit has the units 0 to 15");
    EXPECT_EQ(Error_OfOptions({.m_support = "2", .m_dotSize = "1", .m_unitId = 7}), "no error");
    EXPECT_EQ(Error_OfOptions({.m_support = "2", .m_dotSize = "1", .m_unitId = 8}),
              "job.toml:13:10: UnitId is 8; a frame of 16 bits at 2 bits per unit has the units 0 to 7");
    EXPECT_EQ(Error_OfOptions({.m_support = "5", .m_bitsPerPixel = 2, .m_unitId = 8}),
              "job.toml:13:10: UnitId is 8; a frame of 16 bits at 2 bits per unit has the units 0 to 7");
    // Pushed by unit, 2-bit pixels take one bit of the frame.
    EXPECT_EQ(Error_OfOptions({.m_push = "1", .m_bitsPerPixel = 2, .m_unitId = 15}), "no error");
    EXPECT_EQ(Error_OfOptions({.m_width = 512, .m_unitId = 511}), "no error");
}

TEST(JobCheck, UnitIdsAreUsedOnce)
{
    EXPECT_EQ(JobError_Of(Replaced(g_fullJob, "UnitId = 15", "UnitId = 5")),
              "job.toml:30:10: UnitId is 5, as in line 24; each print unit has an id of its own");
}

TEST(JobCheck, BoardLineFitsThirtyTwoBits)
{
    EXPECT_EQ(Error_OfOptions({.m_nozzles = 134217727}), "no error");
    EXPECT_EQ(Error_OfOptions({.m_nozzles = 134217728}),
              "job.toml:11:11: Nozzles is 134217728; with frames of 16 bits a board line has 2147483648 bits, and "
              "2147483647 is the most; lower Nozzles");
}

TEST(JobCheckSeparations, SeparationsThatFitPass)
{
    const SJob job = Job_Of(std::string(g_fullJob));
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 5000, 7000, 1}, {"b", 5000, 7000, 1}}), "no error");
}

TEST(JobCheckSeparations, AnotherDepthIsRefused)
{
    const SJob job = Job_Of(std::string(g_fullJob));
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 5000, 7000, 1}, {"b", 5000, 7000, 2}}),
              "job.toml:31:14: Separation page.Cyan.tif has 2 bits per pixel; BitsPerPixel is 1");
    const SJob deep = Job_Of(Job_Text({.m_support = "2", .m_bitsPerPixel = 2}));
    EXPECT_EQ(Error_OfSeparations(deep, {{"a", 5000, 7000, 1}}),
              "job.toml:14:14: Separation page.tif has 1 bit per pixel; BitsPerPixel is 2");
}

TEST(JobCheckSeparations, AnotherPageSizeIsRefused)
{
    const SJob job = Job_Of(std::string(g_fullJob));
    const std::string wider = "job.toml:31:14: Separation page.Cyan.tif has 5001 x 7000 pixels, but page.Cyan.tif has "
                              "5000 x 7000 pixels; all separations of a page have one size";
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 5000, 7000, 1}, {"b", 5001, 7000, 1}}), wider);
    const std::string higher = "job.toml:31:14: Separation page.Cyan.tif has 5000 x 6999 pixels, but page.Cyan.tif "
                               "has 5000 x 7000 pixels; all separations of a page have one size";
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 5000, 7000, 1}, {"b", 5000, 6999, 1}}), higher);
}

TEST(JobCheckSeparations, PageWithoutPixelsIsRefused)
{
    const SJob job = Job_Of(std::string(g_smallJob));
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 0, 7000, 1}}),
              "job.toml:12:14: Separation page.tif has 0 x 7000 pixels; a page has at least one of each");
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 5000, 0, 1}}),
              "job.toml:12:14: Separation page.tif has 5000 x 0 pixels; a page has at least one of each");
}

TEST(JobCheckSeparations, BandsFitThirtyTwoBits)
{
    // 800 bytes to a board line: 2684354 of them are the most.
    const SJob job = Job_Of(std::string(g_smallJob));
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 2684354, 400, 1}}), "no error");
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 2684355, 400, 1}}),
              "job.toml:9:11: a board band of this page has 2684355 lines of 800 bytes, and a band holds 2147483647 "
              "bytes at most; lower Nozzles or print a narrower page");
    // Two lines for each scan position.
    const SJob byUnit = Job_Of(Job_Text({.m_push = "1", .m_bitsPerPixel = 2}));
    EXPECT_EQ(Error_OfSeparations(byUnit, {{"a", 1342177, 400, 2}}), "no error");
    EXPECT_EQ(Error_OfSeparations(byUnit, {{"a", 1342178, 400, 2}}),
              "job.toml:11:11: a board band of this page has 2684356 lines of 800 bytes, and a band holds 2147483647 "
              "bytes at most; lower Nozzles or print a narrower page");
    // One nozzle, one byte of frame, but 64 bytes to a unit line.
    std::string aligned = Replaced(g_smallJob, "Nozzles = 400", "Nozzles = 1");
    aligned = Replaced(aligned, "PrinterDataWidth = 16", "PrinterDataWidth = 8");
    aligned = Replaced(aligned, "BitsPerPixel = 1", "BitsPerPixel = 1\nAlignByteCountPerLine = 64");
    EXPECT_EQ(Error_OfSeparations(Job_Of(aligned), {{"a", 33554431, 1, 1}}), "no error");
    EXPECT_EQ(Error_OfSeparations(Job_Of(aligned), {{"a", 33554432, 1, 1}}),
              "job.toml:10:11: a unit band of this page has 33554432 lines of 64 bytes, and a band holds 2147483647 "
              "bytes at most; lower Nozzles or AlignByteCountPerLine, or print a narrower page");
}

TEST(JobCheckSeparations, BandsAtTheLimitCanBeDescribedInThirtyTwoBits)
{
    // As many lines as a page can have, twice: more than a 32-bit number of lines holds.
    std::string text = Replaced(g_smallJob, "Nozzles = 400", "Nozzles = 1");
    text = Replaced(text, "PrinterDataWidth = 16", "PrinterDataWidth = 8\nDataPushStyle = 1");
    text = Replaced(text, "BitsPerPixel = 1", "BitsPerPixel = 2");
    EXPECT_EQ(Error_OfSeparations(Job_Of(text), {{"a", 1073741823, 1, 2}}), "no error");
    EXPECT_EQ(Error_OfSeparations(Job_Of(text), {{"a", 2147483647, 1, 2}}),
              "job.toml:10:11: a unit band of this page has 4294967294 lines of 1 bytes, and a band holds 2147483647 "
              "bytes at most; lower Nozzles or AlignByteCountPerLine, or print a narrower page");
}

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
    EXPECT_EQ(plain.m_lineCount, 5000);

    const SJobGeometry byPixel = Job_Geometry(Job_Of(Job_Text({.m_support = "2", .m_bitsPerPixel = 2})), 100, 400);
    EXPECT_EQ(byPixel.m_swathCount, 1);
    EXPECT_EQ(byPixel.m_unitBitsPerPixel, 2);
    EXPECT_EQ(byPixel.m_unitBytesPerLine, 100);
    EXPECT_EQ(byPixel.m_lineCount, 100);

    const SJobGeometry byUnit = Job_Geometry(Job_Of(Job_Text({.m_push = "1", .m_bitsPerPixel = 2})), 100, 401);
    EXPECT_EQ(byUnit.m_swathCount, 2);
    EXPECT_EQ(byUnit.m_linesPerScanPosition, 2);
    EXPECT_EQ(byUnit.m_unitBitsPerPixel, 1);
    EXPECT_EQ(byUnit.m_unitBytesPerLine, 50);
    EXPECT_EQ(byUnit.m_lineCount, 200);
}
