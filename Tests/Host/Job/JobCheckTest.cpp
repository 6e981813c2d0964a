// What a job's values mean together: every combination that the library would take without looking, refused.
#include "Host/Job/JobCheck.h"

#include "Host/Job/JobGeometry.h"
#include "Host/Job/JobNames.h"
#include "Tests/Host/Job/TestJob.h"
#include "Tests/Support/TestFolder.h"

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
    std::string m_stage = {}; // of [Stage], the last table, if it is there
};

std::string Job_Text(const SOptions& options)
{
    return "Version = 1\n[DPOption]\nDataMapStyle = " + options.m_style + "\nDataPushStyle = " + options.m_push +
           "\nPrinterSupportBits = " + options.m_support + "\nPrinterDataWidth = " + std::to_string(options.m_width) +
           "\n[PrintParam]\nBitsPerPixel = " + std::to_string(options.m_bitsPerPixel) +
           "\nDotSizeMode = " + options.m_dotSize + "\n[CartInfo]\nNozzles = " + std::to_string(options.m_nozzles) +
           "\n[[CartInfo.Unit]]\nUnitId = " + std::to_string(options.m_unitId) + "\nSeparation = \"page.tif\"\n" +
           (options.m_stage.empty() ? "" : "[Stage]\nKind = \"" + options.m_stage + "\"\n");
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
    const auto error_of = [](SOptions options)
    {
        options.m_stage = "base";
        return Error_OfOptions(options);
    };
    EXPECT_EQ(error_of({.m_style = "\"Block\"", .m_width = 32}), error("Block", "03"));
    EXPECT_EQ(error_of({.m_style = "3", .m_width = 32}), error("Block", "03"));
    EXPECT_EQ(error_of({.m_style = "\"Block13\""}), error("Block13", "03_01"));
    EXPECT_EQ(error_of({.m_style = "\"ByteInterleaved\""}), error("ByteInterleaved", "6"));
    EXPECT_EQ(error_of({.m_style = "7", .m_push = "1", .m_bitsPerPixel = 2}), error("ByteInterleaved", "6"));
    EXPECT_EQ(error_of({.m_style = "7", .m_support = "2", .m_bitsPerPixel = 2}), error("ByteInterleaved", "6"));
    EXPECT_EQ(error_of({.m_style = "7", .m_support = "2", .m_dotSize = "1"}), error("ByteInterleaved", "7"));
    EXPECT_EQ(error_of({.m_style = "\"PlanePair\"", .m_bitsPerPixel = 2}), error("PlanePair", "8"));
}

TEST(JobCheck, TableMapsRunOnEveryStageAndTheOthersOnAllButTheBaseStage)
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
        {{.m_style = "3", .m_width = 32}, {EMapClass::Map_03, 1, 1}},
        {{.m_style = "3", .m_push = "1", .m_width = 64, .m_bitsPerPixel = 2}, {EMapClass::Map_03, 1, 1}},
        {{.m_style = "4"}, {EMapClass::Map_03_01, 1, 1}},
        {{.m_style = "4", .m_push = "1", .m_bitsPerPixel = 2}, {EMapClass::Map_03_01, 1, 1}},
        {{.m_style = "7"}, {EMapClass::Map_6, 1, 1}},
        {{.m_style = "7", .m_push = "1", .m_bitsPerPixel = 2}, {EMapClass::Map_6, 1, 1}},
        {{.m_style = "7", .m_support = "2", .m_bitsPerPixel = 2}, {EMapClass::Map_6, 2, 2}},
        {{.m_style = "7", .m_support = "2", .m_dotSize = "2"}, {EMapClass::Map_7, 1, 2}},
        {{.m_style = "9", .m_bitsPerPixel = 2}, {EMapClass::Map_8, 1, 1}},
    };
    for (const auto& [options, map] : table)
    {
        for (const std::string stage : {"", "ink-stripe", "one-fifo", "base"})
        {
            SOptions onStage = options;
            onStage.m_stage = stage;
            if (stage == "base" && !MapClass_Get(map.m_class).m_bTableMap)
            {
                EXPECT_NE(Error_OfOptions(onStage), "no error") << Job_Text(onStage);
                continue;
            }
            ASSERT_EQ(Error_OfOptions(onStage), "no error") << Job_Text(onStage);
            const SJob job = Job_Of(Job_Text(onStage));
            EXPECT_EQ(job.m_map, map) << Job_Text(onStage);
            EXPECT_EQ(Job_UnitBitsPerPixel(job), map.m_srcBitCount) << "the bands have the depth that the map takes";
        }
    }
}

TEST(JobCheck, TwoBitPixelsAreRefusedWhereTheMapTakesOneBit)
{
    EXPECT_EQ(Error_OfOptions({.m_style = "1", .m_bitsPerPixel = 2}),
              "job.toml:8:16: BitsPerPixel is 2; style 1 takes pixels of 1 bit; DataPushStyle ByUnit pushes 2-bit "
              "pixels as 1-bit lines");
    EXPECT_EQ(Error_OfOptions({.m_style = "3", .m_width = 32, .m_bitsPerPixel = 2}),
              "job.toml:8:16: BitsPerPixel is 2; style 03 takes pixels of 1 bit; DataPushStyle ByUnit pushes 2-bit "
              "pixels as 1-bit lines");
    EXPECT_EQ(Error_OfOptions({.m_style = "4", .m_bitsPerPixel = 2}),
              "job.toml:8:16: BitsPerPixel is 2; style 03_01 takes pixels of 1 bit; DataPushStyle ByUnit pushes 2-bit "
              "pixels as 1-bit lines");
}

TEST(JobCheck, PlanePairsAreMadeOfWholeTwoBitPixels)
{
    EXPECT_EQ(Error_OfOptions({.m_style = "9", .m_bitsPerPixel = 1}),
              "job.toml:8:16: BitsPerPixel is 1; style 8 takes pixels of 2 bits");
    EXPECT_EQ(Error_OfOptions({.m_style = "9", .m_push = "1", .m_bitsPerPixel = 1}),
              "job.toml:4:17: DataPushStyle is ByUnit; style 8 takes whole pixels of 2 bits, DataPushStyle = "
              "\"ByPixel\"\njob.toml:8:16: BitsPerPixel is 1; style 8 takes pixels of 2 bits");
    EXPECT_EQ(Error_OfOptions({.m_style = "9", .m_push = "1", .m_bitsPerPixel = 2}),
              "job.toml:4:17: DataPushStyle is ByUnit; style 8 takes whole pixels of 2 bits, DataPushStyle = "
              "\"ByPixel\"");
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

TEST(JobCheck, FrameWidthFollowsTheMapsWithALineMappingOfTheirOwn)
{
    EXPECT_EQ(Error_OfOptions({.m_style = "3", .m_width = 16}),
              "job.toml:6:20: PrinterDataWidth is 16; style 03 needs a multiple of 32");
    EXPECT_EQ(Error_OfOptions({.m_style = "3", .m_width = 48}),
              "job.toml:6:20: PrinterDataWidth is 48; style 03 needs a multiple of 32");
    EXPECT_EQ(Error_OfOptions({.m_style = "4", .m_width = 3}),
              "job.toml:6:20: PrinterDataWidth is 3; style 03_01 needs 4 or more");
    EXPECT_EQ(Error_OfOptions({.m_style = "4", .m_width = 5}), "no error");
    EXPECT_EQ(Error_OfOptions({.m_style = "9", .m_width = 12, .m_bitsPerPixel = 2}),
              "job.toml:6:20: PrinterDataWidth is 12; style 8 needs a multiple of 8");
    for (const int width : {1, 3, 511})
    {
        EXPECT_EQ(Error_OfOptions({.m_style = "7", .m_width = width}), "no error") << width;
        EXPECT_EQ(Error_OfOptions({.m_style = "7", .m_support = "2", .m_width = width, .m_dotSize = "1"}), "no error");
    }
}

TEST(JobCheck, NozzlesFollowTheMap)
{
    const std::string blocks = " maps heads of 400 nozzles, in four blocks of 100";
    EXPECT_EQ(Error_OfOptions({.m_style = "3", .m_width = 32, .m_nozzles = 399}),
              "job.toml:11:11: Nozzles is 399; style 03" + blocks);
    EXPECT_EQ(Error_OfOptions({.m_style = "3", .m_width = 32, .m_nozzles = 404}),
              "job.toml:11:11: Nozzles is 404; style 03" + blocks);
    EXPECT_EQ(Error_OfOptions({.m_style = "4", .m_nozzles = 399}),
              "job.toml:11:11: Nozzles is 399; style 03_01" + blocks);
    EXPECT_EQ(Error_OfOptions({.m_style = "4", .m_nozzles = 800}),
              "job.toml:11:11: Nozzles is 800; style 03_01" + blocks);
    for (const int nozzles : {1, 2, 3, 401, 402, 403})
    {
        EXPECT_EQ(Error_OfOptions({.m_style = "9", .m_bitsPerPixel = 2, .m_nozzles = nozzles}),
                  "job.toml:11:11: Nozzles is " + std::to_string(nozzles) +
                      "; style 8 needs a multiple of 4: lines of whole bytes");
        EXPECT_EQ(Error_OfOptions({.m_nozzles = nozzles}), "no error");
        EXPECT_EQ(Error_OfOptions({.m_style = "7", .m_nozzles = nozzles}), "no error");
    }
    EXPECT_EQ(Error_OfOptions({.m_style = "9", .m_bitsPerPixel = 2, .m_nozzles = 4}), "no error");
}

TEST(JobCheck, DropSizeIsNeededByStylesTwoAndSevenAlone)
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
        EXPECT_EQ(Error_OfOptions({.m_style = "7", .m_support = "2", .m_dotSize = pMode}), "no error") << pMode;
    }
    EXPECT_EQ(Error_OfOptions({.m_style = "7", .m_support = "2"}),
              "job.toml:9:15: DotSizeMode is None; style 7 prints 1-bit pixels with one drop size: Small (1), Middle "
              "(2) or Big (3), for example: DotSizeMode = \"Small\"");
    EXPECT_EQ(Error_OfOptions({.m_style = "7", .m_support = "2", .m_bitsPerPixel = 2}), "no error");
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

TEST(JobCheck, UnitsStandInsideTheFrameOfEveryMap)
{
    struct SLimit
    {
        SOptions m_options;
        std::string m_style;
        int m_unitCount;
    };
    const std::vector<SLimit> table = {
        {{.m_style = "3", .m_width = 32}, "03", 8},
        {{.m_style = "3", .m_width = 64}, "03", 16},
        {{.m_style = "3", .m_width = 512}, "03", 128},
        {{.m_style = "4", .m_width = 4}, "03_01", 1},
        {{.m_style = "4", .m_width = 7}, "03_01", 1},
        {{.m_style = "4", .m_width = 8}, "03_01", 2},
        {{.m_style = "7", .m_width = 1}, "6", 1},
        {{.m_style = "7", .m_width = 9}, "6", 9},
        {{.m_style = "7", .m_support = "2", .m_width = 9, .m_bitsPerPixel = 2}, "6", 9},
        {{.m_style = "7", .m_support = "2", .m_width = 9, .m_dotSize = "1"}, "7", 9},
        {{.m_style = "9", .m_width = 8, .m_bitsPerPixel = 2}, "8", 8},
    };
    for (const auto& [limit, style, unitCount] : table)
    {
        SOptions options = limit;
        options.m_unitId = unitCount - 1;
        EXPECT_EQ(Error_OfOptions(options), "no error") << Job_Text(options);
        options.m_unitId = unitCount;
        EXPECT_EQ(Error_OfOptions(options), "job.toml:13:10: UnitId is " + std::to_string(unitCount) + "; style " +
                                                style + " with a PrinterDataWidth of " +
                                                std::to_string(options.m_width) + " has the units 0 to " +
                                                std::to_string(unitCount - 1));
    }
}

TEST(JobCheck, UnitIdsAreUsedOnce)
{
    EXPECT_EQ(JobError_Of(Replaced(g_fullJob, "UnitId = 15", "UnitId = 5")),
              "job.toml:36:10: UnitId is 5, as in line 26; each print unit has an id of its own");
}

TEST(JobCheck, UnitsStandAtAKnownPosition)
{
    const std::string text = Replaced(g_stripeJob, "UnitPositionCount = 4", "UnitPositionCount = 3");
    EXPECT_EQ(JobError_Of(text), "job.toml:32:1: UnitPosition is 3, the unit's place in the list; UnitPositionCount is "
                                 "3, so the positions are 0 to 2");
    EXPECT_EQ(JobError_Of(Replaced(text, "UnitId = 3", "UnitId = 3\nUnitPosition = 2")), "no error");
    EXPECT_EQ(
        JobError_Of(Replaced(text, "UnitId = 0", "UnitId = 0\nUnitPosition = 7")),
        "job.toml:22:16: UnitPosition is 7; UnitPositionCount is 3, so the positions are 0 to 2\n"
        "job.toml:33:1: UnitPosition is 3, the unit's place in the list; UnitPositionCount is 3, so the positions "
        "are 0 to 2");
}

TEST(JobCheck, AtLeastOneUnitPrintsThePage)
{
    EXPECT_EQ(JobError_Of(Replaced(g_smallJob, "Separation = \"page.tif\"\n", "")),
              "job.toml:10:1: no [[CartInfo.Unit]] has a Separation; at least one must print the page");
    std::string text = Replaced(g_stripeJob, "Separation = \"page.A.tif\"", "StripeColor = \"Full\"");
    EXPECT_EQ(JobError_Of(text), "no error");
    text = Replaced(text, "Separation = \"page.B.tif\"", "StripeColor = \"Full\"");
    EXPECT_EQ(JobError_Of(text),
              "job.toml:20:1: no [[CartInfo.Unit]] has a Separation; at least one must print the page");
}

TEST(JobCheck, EveryUnitOfTheBaseStagePrintsAPage)
{
    const std::string text = Replaced(g_stripeJob, "\"ink-stripe\"", "\"base\"");
    const std::string missing = ": Separation is missing from [[CartInfo.Unit]]; the base stage makes no ink stripes, "
                                "so every unit prints one, for example: Separation = \"page.Cyan.tif\"";
    EXPECT_EQ(JobError_Of(text), "job.toml:24:1" + missing + "\njob.toml:32:1" + missing);
}

TEST(JobCheck, OutputQueueOfTheMasksStaysSmall)
{
    const auto error_of = [](int first, int second)
    {
        return JobError_Of(Replaced(g_smallJob, "BitsPerPixel = 1",
                                    "BitsPerPixel = 1\nMaskCount_1 = " + std::to_string(first) +
                                        "\nMaskCount_2 = " + std::to_string(second)));
    };
    EXPECT_EQ(error_of(16, 1), "no error");
    EXPECT_EQ(error_of(1, 16), "no error");
    EXPECT_EQ(error_of(4, 4), "no error");
    EXPECT_EQ(error_of(3, 6), "job.toml:9:15: MaskCount_2 is 6 and MaskCount_1 is 3; the stage keeps up to 3 board "
                              "bands for each of the 18 masks in memory, and 16 masks are the most");
    EXPECT_EQ(error_of(16, 2), "job.toml:9:15: MaskCount_2 is 2 and MaskCount_1 is 16; the stage keeps up to 3 board "
                               "bands for each of the 32 masks in memory, and 16 masks are the most");
}

TEST(JobCheck, BoardLineFitsThirtyTwoBits)
{
    EXPECT_EQ(Error_OfOptions({.m_nozzles = 134217727}), "no error");
    EXPECT_EQ(Error_OfOptions({.m_nozzles = 134217728}),
              "job.toml:11:11: Nozzles is 134217728; with frames of 16 bits a board line has 2147483648 bits, and "
              "2147483647 is the most; lower Nozzles");
    // Columns are whole bytes: 8 bits of each for every 8 nozzles begun.
    EXPECT_EQ(Error_OfOptions({.m_style = "7", .m_width = 16, .m_nozzles = 134217720}), "no error");
    EXPECT_EQ(Error_OfOptions({.m_style = "7", .m_width = 16, .m_nozzles = 134217721}),
              "job.toml:11:11: Nozzles is 134217721; with frames of 16 bits a board line has 2147483648 bits, and "
              "2147483647 is the most; lower Nozzles");
    // Two bits for each nozzle.
    EXPECT_EQ(
        Error_OfOptions({.m_style = "7", .m_support = "2", .m_width = 8, .m_dotSize = "1", .m_nozzles = 134217724}),
        "no error");
    EXPECT_EQ(
        Error_OfOptions({.m_style = "7", .m_support = "2", .m_width = 8, .m_dotSize = "1", .m_nozzles = 134217725}),
        "job.toml:11:11: Nozzles is 134217725; with frames of 8 bits a board line has 2147483648 bits, and "
        "2147483647 is the most; lower Nozzles");
    EXPECT_EQ(Error_OfOptions({.m_style = "9", .m_width = 8, .m_bitsPerPixel = 2, .m_nozzles = 134217724}), "no error");
    EXPECT_EQ(Error_OfOptions({.m_style = "9", .m_width = 8, .m_bitsPerPixel = 2, .m_nozzles = 2147483644}),
              "job.toml:11:11: Nozzles is 2147483644; with frames of 8 bits a board line has 34359738304 bits, and "
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
              "job.toml:37:14: unit 15: Separation page.Cyan.tif has 2 bits per pixel; BitsPerPixel is 1");
    const SJob deep = Job_Of(Job_Text({.m_support = "2", .m_bitsPerPixel = 2}));
    EXPECT_EQ(Error_OfSeparations(deep, {{"a", 5000, 7000, 1}}),
              "job.toml:14:14: unit 0: Separation page.tif has 1 bit per pixel; BitsPerPixel is 2");
}

TEST(JobCheckSeparations, AnotherPageSizeIsRefused)
{
    const SJob job = Job_Of(std::string(g_fullJob));
    const std::string wider =
        "job.toml:37:14: unit 15: Separation page.Cyan.tif has 5001 x 7000 pixels, but page.Cyan.tif has "
        "5000 x 7000 pixels; all separations of a page have one size";
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 5000, 7000, 1}, {"b", 5001, 7000, 1}}), wider);
    const std::string higher =
        "job.toml:37:14: unit 15: Separation page.Cyan.tif has 5000 x 6999 pixels, but page.Cyan.tif "
        "has 5000 x 7000 pixels; all separations of a page have one size";
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 5000, 7000, 1}, {"b", 5000, 6999, 1}}), higher);
}

TEST(JobCheckSeparations, PageWithoutPixelsIsRefused)
{
    const SJob job = Job_Of(std::string(g_smallJob));
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 0, 7000, 1}}),
              "job.toml:12:14: unit 0: Separation page.tif has 0 x 7000 pixels; a page has at least one of each");
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 5000, 0, 1}}),
              "job.toml:12:14: unit 0: Separation page.tif has 5000 x 0 pixels; a page has at least one of each");
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

TEST(JobCheckSeparations, UnitsWithoutASeparationAreLeftOut)
{
    const SJob job = Job_Of(std::string(g_stripeJob));
    EXPECT_EQ(Error_OfSeparations(job, {{"a", 500, 700, 1}, {"b", 500, 700, 1}}), "no error");
    EXPECT_EQ(
        Error_OfSeparations(job, {{"a", 500, 700, 1}, {"b", 500, 701, 1}}),
        "job.toml:30:14: unit 2: Separation page.B.tif has 500 x 701 pixels, but page.A.tif has 500 x 700 pixels; all "
        "separations of a page have one size");
    std::string text = Replaced(g_stripeJob, "Separation = \"page.A.tif\"", "StripeColor = \"Full\"");
    EXPECT_EQ(Error_OfSeparations(Job_Of(text), {{"b", 500, 700, 2}}),
              "job.toml:30:14: unit 2: Separation page.B.tif has 2 bits per pixel; BitsPerPixel is 1");
}

TEST(JobCheckSeparations, BandsOfBothPassesFitThirtyTwoBits)
{
    // 800 bytes to a board line: 2684354 of them are the most, margins included.
    std::string text = Replaced(g_smallJob, "UnitId = 0", "UnitId = 0\nHorizon_1 = 300\nHorizon_2 = 20");
    text += "[InkStripe]\nLeftStripeWidth = 30\nRightStripeWidth = 50\n";
    EXPECT_EQ(Error_OfSeparations(Job_Of(text), {{"a", 2684254, 400, 1}}), "no error");
    EXPECT_EQ(Error_OfSeparations(Job_Of(text), {{"a", 2684255, 400, 1}}),
              "job.toml:9:11: a board band of this page has 2684355 lines of 800 bytes, and a band holds 2147483647 "
              "bytes at most; lower Nozzles or print a narrower page");
    // On the way back the offset is the longer one.
    text = Replaced(text, "BitsPerPixel = 1", "BitsPerPixel = 1\nBidirectional = true");
    EXPECT_EQ(Error_OfSeparations(Job_Of(text), {{"a", 2683974, 400, 1}}), "no error");
    EXPECT_EQ(Error_OfSeparations(Job_Of(text), {{"a", 2683975, 400, 1}}),
              "job.toml:10:11: a board band of this page has 2684355 lines of 800 bytes, and a band holds 2147483647 "
              "bytes at most; lower Nozzles or print a narrower page");
}

TEST(JobCheckSeparations, JobWidthFitsThirtyTwoBits)
{
    std::string text = Replaced(g_smallJob, "Nozzles = 400", "Nozzles = 1");
    text = Replaced(text, "PrinterDataWidth = 16", "PrinterDataWidth = 8");
    text = Replaced(text, "BitsPerPixel = 1", "BitsPerPixel = 1\nMaskCount_1 = 16");
    EXPECT_EQ(Error_OfSeparations(Job_Of(text), {{"a", 134217727, 1, 1}}), "no error");
    EXPECT_EQ(Error_OfSeparations(Job_Of(text), {{"a", 134217728, 1, 1}}),
              "job.toml:8:15: MaskCount_1 is 16; with this page of 134217728 columns the job is 2147483648 scan "
              "positions wide, and 2147483647 is the most; lower MaskCount_1");
}
