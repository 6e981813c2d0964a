// Job files, right and wrong, each wrong one against its exact message.
#include "Host/Job/Job.h"

#include "Host/Job/JobNames.h"
#include "Tests/Host/Job/TestJob.h"
#include "Tests/Support/TestFolder.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

// A job whose `part` is replaced, and the error that this makes.
struct SBroken
{
    std::string m_part;
    std::string m_other;
    std::string m_error;
};

void Errors_Check(std::string_view job, const std::vector<SBroken>& table)
{
    for (const SBroken& broken : table)
    {
        EXPECT_EQ(JobError_Of(Replaced(job, broken.m_part, broken.m_other)), broken.m_error)
            << broken.m_part << " => " << broken.m_other;
    }
}

} // namespace

TEST(JobReader, EveryKeyArrives)
{
    const SJob job = Job_Of(std::string(g_fullJob));
    EXPECT_EQ(job.m_file, "job.toml");
    EXPECT_EQ(job.m_version, 1);
    EXPECT_EQ(job.m_stageKind, EStageKind::Base);
    EXPECT_TRUE(job.m_bSkipBlank);
    EXPECT_EQ(job.m_inputBands, 8);
    EXPECT_EQ(job.m_dpOption.m_dataMapStyle, EDataMapStyle::FramePerPixel);
    EXPECT_EQ(job.m_dpOption.m_dataPushStyle, EDataPushStyle::ByPixel);
    EXPECT_EQ(job.m_dpOption.m_printerSupportBits, EPrinterSupportBits::TwoBit);
    EXPECT_EQ(job.m_dpOption.m_printerDataWidth, 32);
    EXPECT_EQ(job.m_dotSizeMode, EDotSizeMode::Big);
    EXPECT_EQ(job.m_bitsPerPixel, 1);
    EXPECT_EQ(job.m_alignByteCountPerLine, 4);
    EXPECT_TRUE(job.m_bBidirectional);
    EXPECT_EQ(job.m_maskCount_1, 2);
    EXPECT_EQ(job.m_maskCount_2, 3);
    EXPECT_EQ(job.m_lineGeneratorCount, 7);
    EXPECT_EQ(job.m_inkStripe.m_leftStripeWidth, 40);
    EXPECT_EQ(job.m_inkStripe.m_rightStripeWidth, 24);
    EXPECT_EQ(job.m_inkStripe.m_unitPitch, 11);
    EXPECT_EQ(job.m_inkStripe.m_unitPositionCount, 9);
    EXPECT_EQ(job.m_inkStripe.m_stripeLength, 10);
    EXPECT_EQ(job.m_nozzles, 400);
    ASSERT_EQ(job.m_units.size(), 2U);
    EXPECT_EQ(job.m_units[0].m_unitId, 5);
    EXPECT_EQ(job.m_units[0].m_direction, 2);
    EXPECT_EQ(job.m_units[0].m_separation, "page.Cyan.tif");
    EXPECT_EQ(job.m_units[0].m_name, "Cyan");
    EXPECT_EQ(job.m_units[0].m_unitPosition, 3);
    EXPECT_EQ(job.m_units[0].m_horizon_1, 4);
    EXPECT_EQ(job.m_units[0].m_horizon_2, 6);
    EXPECT_EQ(job.m_units[0].m_stripeColor.m_text, "Full");
    EXPECT_EQ(job.m_units[0].m_stripeColor.m_fill, EStripeFill::Full);
    EXPECT_EQ(job.m_units[1].m_unitId, 15);
    EXPECT_EQ(job.m_map, (SJobMap{EMapClass::Map_2, 1, 2}));
}

TEST(JobReader, KeysThatAreLeftOutHaveTheirDefaults)
{
    const SJob job = Job_Of(std::string(g_smallJob));
    EXPECT_EQ(job.m_stageKind, EStageKind::InkStripe);
    EXPECT_EQ(job.m_lineGeneratorCount, 2);
    EXPECT_EQ(job.m_maskCount_1, 1);
    EXPECT_EQ(job.m_maskCount_2, 1);
    EXPECT_EQ(job.m_inkStripe.m_leftStripeWidth, 0);
    EXPECT_EQ(job.m_inkStripe.m_rightStripeWidth, 0);
    EXPECT_EQ(job.m_inkStripe.m_unitPitch, 0);
    EXPECT_EQ(job.m_inkStripe.m_stripeLength, 0);
    EXPECT_FALSE(job.m_bSkipBlank);
    EXPECT_EQ(job.m_inputBands, 3);
    EXPECT_EQ(job.m_dpOption.m_dataPushStyle, EDataPushStyle::ByPixel);
    EXPECT_EQ(job.m_dotSizeMode, EDotSizeMode::None);
    EXPECT_EQ(job.m_alignByteCountPerLine, 1);
    EXPECT_FALSE(job.m_bBidirectional);
    EXPECT_EQ(job.m_units.at(0).m_direction, 1);
    EXPECT_EQ(job.m_units.at(0).m_name, "");
    EXPECT_EQ(job.m_units.at(0).m_horizon_1, 0);
    EXPECT_EQ(job.m_units.at(0).m_horizon_2, 0);
    EXPECT_FALSE(job.m_units.at(0).m_stripeColor.IsGiven());
}

TEST(JobReader, StripeDefaultsFollowFromTheUnitsAndThePitch)
{
    const SJob small = Job_Of(std::string(g_smallJob));
    EXPECT_EQ(small.m_units.at(0).m_unitPosition, 0);
    EXPECT_EQ(small.m_inkStripe.m_unitPositionCount, 1);

    std::string text = Replaced(g_stripeJob, "UnitPositionCount = 4\nStripeLength = 10\n", "");
    const SJob byPlace = Job_Of(text);
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_EQ(byPlace.m_units.at(static_cast<std::size_t>(i)).m_unitPosition, i);
    }
    EXPECT_EQ(byPlace.m_inkStripe.m_unitPositionCount, 4);
    EXPECT_EQ(byPlace.m_inkStripe.m_stripeLength, 10);

    // The highest position counts, wherever it stands, and a pitch of its own makes another length.
    text = Replaced(text, "UnitId = 0", "UnitId = 0\nUnitPosition = 6");
    text = Replaced(text, "UnitPitch = 10", "UnitPitch = 3");
    const SJob moved = Job_Of(text);
    EXPECT_EQ(moved.m_units.at(0).m_unitPosition, 6);
    EXPECT_EQ(moved.m_units.at(1).m_unitPosition, 1);
    EXPECT_EQ(moved.m_inkStripe.m_unitPositionCount, 7);
    EXPECT_EQ(moved.m_inkStripe.m_stripeLength, 3);
}

TEST(JobReader, UnitsWithoutASeparationAreKnown)
{
    const SJob job = Job_Of(std::string(g_stripeJob));
    EXPECT_TRUE(job.m_units.at(0).HasSeparation());
    EXPECT_FALSE(job.m_units.at(1).HasSeparation());
    EXPECT_FALSE(job.m_units.at(3).HasSeparation());
}

TEST(JobReader, StageKindsAreReadByName)
{
    const std::string line = "Kind = \"ink-stripe\"";
    EXPECT_EQ(JobText_Parse("j", std::string(g_stripeJob)).m_stageKind, EStageKind::InkStripe);
    EXPECT_EQ(JobText_Parse("j", Replaced(g_stripeJob, line, "Kind = \"base\"")).m_stageKind, EStageKind::Base);
    EXPECT_EQ(JobText_Parse("j", Replaced(g_stripeJob, line, "Kind = \"one-fifo\"")).m_stageKind, EStageKind::OneFIFO);
}

TEST(JobReader, StripeColoursAreSolidOrFiles)
{
    const auto color_of = [](const std::string& text)
    { return JobText_Parse("jobs/job.toml", Replaced(g_stripeJob, "\"Full\"", text)).m_units.at(1).m_stripeColor; };
    EXPECT_EQ(color_of("\"None\"").m_fill, EStripeFill::None);
    EXPECT_EQ(color_of("\"Small\"").m_fill, EStripeFill::Small);
    EXPECT_EQ(color_of("\"Middle\"").m_fill, EStripeFill::Middle);
    EXPECT_EQ(color_of("\"Big\"").m_fill, EStripeFill::Big);
    EXPECT_EQ(color_of("\"Full\"").m_fill, EStripeFill::Full);
    EXPECT_EQ(color_of("\"stripe.tif\"").m_fill, std::nullopt);
    EXPECT_EQ(color_of("\"stripe.tif\"").m_path, std::filesystem::path("jobs/stripe.tif"));
    EXPECT_EQ(color_of("\"colours/Full\"").m_path, std::filesystem::path("jobs/colours/Full"));
    const std::string takes =
        " takes None, Small, Middle, Big, Full or the name of a TIFF file, for example stripe.tif";
    Errors_Check(
        g_stripeJob,
        {
            {"\"Full\"", "\"full\"", "job.toml:26:15: StripeColor is \"full\"; did you mean \"Full\"? It" + takes},
            {"\"Full\"", "\"Extreme\"", "job.toml:26:15: StripeColor is \"Extreme\"; it" + takes},
            {"\"Full\"", "\"\"", "job.toml:26:15: StripeColor is \"\"; it" + takes},
            {"\"Full\"", "\"a.tif\\u0000\"", "job.toml:26:15: StripeColor is \"a.tif\\u0000\"; it" + takes},
            {"\"Full\"", "1", "job.toml:26:15: StripeColor is 1; it takes a text in quotes"},
        });
}

TEST(JobReader, EveryEnumeratorIsReadByNameAndByNumber)
{
    const auto check = [](const std::string& line, std::span<const SEnumName> names, const auto& value)
    {
        for (const SEnumName& name : names)
        {
            const std::string key = line.substr(0, line.find(' '));
            const std::string quoted = key + " = \"" + std::string(name.m_name) + '"';
            const std::string number = key + " = " + std::to_string(name.m_value);
            EXPECT_EQ(value(JobText_Parse("j", Replaced(g_fullJob, line, quoted))), name.m_value) << quoted;
            EXPECT_EQ(value(JobText_Parse("j", Replaced(g_fullJob, line, number))), name.m_value) << number;
        }
    };
    check("DataMapStyle = \"FramePerPixel\"", EnumNames_DataMapStyle(),
          [](const SJob& job) { return static_cast<int>(job.m_dpOption.m_dataMapStyle); });
    check("DataPushStyle = \"ByPixel\"", EnumNames_DataPushStyle(),
          [](const SJob& job) { return static_cast<int>(job.m_dpOption.m_dataPushStyle); });
    check("PrinterSupportBits = \"TwoBit\"", EnumNames_PrinterSupportBits(),
          [](const SJob& job) { return static_cast<int>(job.m_dpOption.m_printerSupportBits); });
    check("DotSizeMode = \"Big\"", EnumNames_DotSizeMode(),
          [](const SJob& job) { return static_cast<int>(job.m_dotSizeMode); });
    check("Direction = 2", EnumNames_Direction(), [](const SJob& job) { return job.m_units.at(0).m_direction; });
}

TEST(JobReader, SeparationsAreFoundFromTheFolderOfTheJobFile)
{
    const SJob near = JobText_Parse("jobs/today/job.toml", std::string(g_smallJob));
    EXPECT_EQ(Job_SeparationPath(near, near.m_units.at(0), 0), std::filesystem::path("jobs/today/page.tif"));
    const SJob here = JobText_Parse("job.toml", std::string(g_smallJob));
    EXPECT_EQ(Job_SeparationPath(here, here.m_units.at(0), 0), std::filesystem::path("page.tif"));
    const std::filesystem::path absolute = std::filesystem::temp_directory_path() / "page.tif";
    const SJob far =
        JobText_Parse("jobs/job.toml", Replaced(g_smallJob, "\"page.tif\"", "'" + absolute.string() + "'"));
    EXPECT_EQ(Job_SeparationPath(far, far.m_units.at(0), 0), absolute);
}

TEST(JobReader, WindowsLineEndsAndAByteOrderMarkAreRead)
{
    std::string text = "\xEF\xBB\xBF";
    for (const char letter : g_smallJob)
    {
        text += letter == '\n' ? "\r\n" : std::string(1, letter);
    }
    EXPECT_EQ(JobError_Of(text), "no error");
}

TEST(JobReader, WrongTypesSayWhatWasFound)
{
    Errors_Check(
        g_fullJob,
        {
            {"SkipBlank = true", "SkipBlank = 1", "job.toml:5:13: SkipBlank is 1; it takes true or false"},
            {"InputBands = 8", "InputBands = \"8\"",
             "job.toml:6:14: InputBands is the text \"8\"; it takes a whole number"},
            {"InputBands = 8", "InputBands = 8.5", "job.toml:6:14: InputBands is 8.5; it takes a whole number"},
            {"InputBands = 8", "InputBands = true", "job.toml:6:14: InputBands is true; it takes a whole number"},
            {"InputBands = 8", "InputBands = [8]", "job.toml:6:14: InputBands is an array; it takes a whole number"},
            {"InputBands = 8", "InputBands = {a = 1}", "job.toml:6:14: InputBands is a table; it takes a whole number"},
            {"InputBands = 8", "InputBands = 2024-02-29",
             "job.toml:6:14: InputBands is a date or time; it takes a whole number"},
            {"PrinterDataWidth = 32", "PrinterDataWidth = 32.0",
             "job.toml:12:20: PrinterDataWidth is 32.0; it takes a whole number"},
            {"Kind = \"base\"", "Kind = 1", "job.toml:4:8: Kind is 1; it takes a text in quotes"},
            {"Name = \"Cyan\"", "Name = 1", "job.toml:29:8: Name is 1; it takes a text in quotes"},
            {"[Stage]\nKind = \"base\"\nSkipBlank = true\nInputBands = 8", "Stage = 3",
             "job.toml:3:9: Stage is 3; it is a table, written [Stage]"},
            {"[PrintParam]", "[[PrintParam]]",
             "job.toml:14:1: PrintParam is an array; it is a table, written [PrintParam]"},
        });
    Errors_Check(
        g_smallJob,
        {
            {"[[CartInfo.Unit]]", "[CartInfo.Unit]",
             "job.toml:10:1: Unit is a table; it is written [[CartInfo.Unit]], once for each print unit"},
            {"Nozzles = 400\n[[CartInfo.Unit]]\nUnitId = 0\nSeparation = \"page.tif\"", "Nozzles = 400\nUnit = [1]",
             "job.toml:10:9: Unit holds 1; it is written [[CartInfo.Unit]], once for each print unit"},
            {"Nozzles = 400\n[[CartInfo.Unit]]\nUnitId = 0\nSeparation = \"page.tif\"", "Nozzles = 400\nUnit = []",
             "job.toml:10:8: Unit is empty; a job needs a [[CartInfo.Unit]] for each print unit"},
        });
}

TEST(JobReader, ValuesOutsideTheirRangeAreRefused)
{
    Errors_Check(
        g_fullJob,
        {
            {"InputBands = 8", "InputBands = 1", "job.toml:6:14: InputBands is 1; it takes 2 to 64"},
            {"InputBands = 8", "InputBands = inf", "job.toml:6:14: InputBands is inf; it takes a whole number"},
            {"InputBands = 8", "InputBands = 1e30", "job.toml:6:14: InputBands is 1e+30; it takes a whole number"},
            {"AlignByteCountPerLine = 4", "AlignByteCountPerLine = 4.0",
             "job.toml:17:25: AlignByteCountPerLine is 4.0; it takes 1, 2, 4, 8, 16, 32 or 64"},
            {"InputBands = 8", "InputBands = 65", "job.toml:6:14: InputBands is 65; it takes 2 to 64"},
            {"PrinterDataWidth = 32", "PrinterDataWidth = 0",
             "job.toml:12:20: PrinterDataWidth is 0; it takes 1 to 512"},
            {"PrinterDataWidth = 32", "PrinterDataWidth = 520",
             "job.toml:12:20: PrinterDataWidth is 520; it takes 1 to 512"},
            {"PrinterDataWidth = 32", "PrinterDataWidth = -9223372036854775808",
             "job.toml:12:20: PrinterDataWidth is -9223372036854775808; it takes 1 to 512"},
            {"BitsPerPixel = 1", "BitsPerPixel = 0", "job.toml:16:16: BitsPerPixel is 0; it takes 1 or 2"},
            {"BitsPerPixel = 1", "BitsPerPixel = 3", "job.toml:16:16: BitsPerPixel is 3; it takes 1 or 2"},
            {"BitsPerPixel = 1", "BitsPerPixel = 4294967297",
             "job.toml:16:16: BitsPerPixel is 4294967297; it takes 1 or 2"},
            {"AlignByteCountPerLine = 4", "AlignByteCountPerLine = 0",
             "job.toml:17:25: AlignByteCountPerLine is 0; it takes 1, 2, 4, 8, 16, 32 or 64"},
            {"AlignByteCountPerLine = 4", "AlignByteCountPerLine = 3",
             "job.toml:17:25: AlignByteCountPerLine is 3; it takes 1, 2, 4, 8, 16, 32 or 64"},
            {"AlignByteCountPerLine = 4", "AlignByteCountPerLine = 128",
             "job.toml:17:25: AlignByteCountPerLine is 128; it takes 1, 2, 4, 8, 16, 32 or 64"},
            {"Nozzles = 400", "Nozzles = 0", "job.toml:23:11: Nozzles is 0; it takes 1 to 2147483647"},
            {"Nozzles = 400", "Nozzles = 2147483648",
             "job.toml:23:11: Nozzles is 2147483648; it takes 1 to 2147483647"},
            {"UnitId = 5", "UnitId = -1", "job.toml:26:10: UnitId is -1; it takes 0 to 511"},
            {"UnitId = 5", "UnitId = 512", "job.toml:26:10: UnitId is 512; it takes 0 to 511"},
            {"MaskCount_1 = 2", "MaskCount_1 = 0", "job.toml:19:15: MaskCount_1 is 0; it takes 1 to 16"},
            {"MaskCount_1 = 2", "MaskCount_1 = 17", "job.toml:19:15: MaskCount_1 is 17; it takes 1 to 16"},
            {"MaskCount_2 = 3", "MaskCount_2 = 0", "job.toml:20:15: MaskCount_2 is 0; it takes 1 to 16"},
            {"MaskCount_2 = 3", "MaskCount_2 = 17", "job.toml:20:15: MaskCount_2 is 17; it takes 1 to 16"},
            {"UnitPosition = 3", "UnitPosition = -1", "job.toml:30:16: UnitPosition is -1; it takes 0 to 511"},
            {"UnitPosition = 3", "UnitPosition = 512", "job.toml:30:16: UnitPosition is 512; it takes 0 to 511"},
            {"Horizon_1 = 4", "Horizon_1 = -1", "job.toml:31:13: Horizon_1 is -1; it takes 0 to 16777216"},
            {"Horizon_1 = 4", "Horizon_1 = 16777217", "job.toml:31:13: Horizon_1 is 16777217; it takes 0 to 16777216"},
            {"Horizon_2 = 6", "Horizon_2 = -1", "job.toml:32:13: Horizon_2 is -1; it takes 0 to 16777216"},
            {"Horizon_2 = 6", "Horizon_2 = 16777217", "job.toml:32:13: Horizon_2 is 16777217; it takes 0 to 16777216"},
            {"DataMap = 7", "DataMap = 0", "job.toml:40:33: LineGeneratorCount_Of_DataMap is 0; it takes 1 to 64"},
            {"DataMap = 7", "DataMap = 65", "job.toml:40:33: LineGeneratorCount_Of_DataMap is 65; it takes 1 to 64"},
            {"LeftStripeWidth = 40", "LeftStripeWidth = -1",
             "job.toml:43:19: LeftStripeWidth is -1; it takes 0 to 16777216"},
            {"LeftStripeWidth = 40", "LeftStripeWidth = 16777217",
             "job.toml:43:19: LeftStripeWidth is 16777217; it takes 0 to 16777216"},
            {"RightStripeWidth = 24", "RightStripeWidth = -1",
             "job.toml:44:20: RightStripeWidth is -1; it takes 0 to 16777216"},
            {"RightStripeWidth = 24", "RightStripeWidth = 16777217",
             "job.toml:44:20: RightStripeWidth is 16777217; it takes 0 to 16777216"},
            {"UnitPitch = 11", "UnitPitch = -1", "job.toml:45:13: UnitPitch is -1; it takes 0 to 16777216"},
            {"UnitPitch = 11", "UnitPitch = 16777217", "job.toml:45:13: UnitPitch is 16777217; it takes 0 to 16777216"},
            {"UnitPositionCount = 9", "UnitPositionCount = 0",
             "job.toml:46:21: UnitPositionCount is 0; it takes 1 to 512"},
            {"UnitPositionCount = 9", "UnitPositionCount = 513",
             "job.toml:46:21: UnitPositionCount is 513; it takes 1 to 512"},
            {"StripeLength = 10", "StripeLength = 0", "job.toml:47:16: StripeLength is 0; it takes 1 to 16777216"},
            {"StripeLength = 10", "StripeLength = 16777217",
             "job.toml:47:16: StripeLength is 16777217; it takes 1 to 16777216"},
        });
    Errors_Check(g_smallJob,
                 {
                     {"\"page.tif\"", "\"\"", "job.toml:12:14: Separation is \"\"; it takes the name of a TIFF file"},
                     {"\"page.tif\"", "\"a\\u0000b\"",
                      "job.toml:12:14: Separation is \"a\\u0000b\"; it takes the name of a TIFF file"},
                 });
    for (const int alignment : {1, 2, 4, 8, 16, 32, 64})
    {
        EXPECT_EQ(JobError_Of(Replaced(g_fullJob, "AlignByteCountPerLine = 4",
                                       "AlignByteCountPerLine = " + std::to_string(alignment))),
                  "no error");
    }
}

TEST(JobReader, UnknownKeysAreRefusedWithTheNearestKnownOne)
{
    Errors_Check(
        g_fullJob,
        {
            {"PrinterDataWidth", "PrinterDataWith",
             "job.toml:12:1: unknown key PrinterDataWith in [DPOption]; did you mean PrinterDataWidth?"},
            {"PrinterDataWidth", "printerdatawidth",
             "job.toml:12:1: unknown key printerdatawidth in [DPOption]; did you mean PrinterDataWidth?"},
            {"SkipBlank", "SkipBlanks", "job.toml:5:1: unknown key SkipBlanks in [Stage]; did you mean SkipBlank?"},
            {"InputBands", "Colour",
             "job.toml:6:1: unknown key Colour in [Stage]; known are Kind, SkipBlank and InputBands"},
            {"Name = ", "Nmae = ", "job.toml:29:1: unknown key Nmae in [[CartInfo.Unit]]; did you mean Name?"},
            {"[Stage]", "[Stag]", "job.toml:3:2: unknown table [Stag]; did you mean [Stage]?"},
            {"[PrintParam]", "[Printer.Options]", "job.toml:14:2: unknown table [Printer]; did you mean [PrintParam]?"},
            {"[Stage]", "[X]",
             "job.toml:3:2: unknown table [X]; known here are Version, Stage, DPOption, DPConfig, PrintParam, "
             "InkStripe, Pages and CartInfo"},
            {"Version = 1", "Version = 1\nVersoin = 1", "job.toml:2:1: unknown key Versoin; did you mean Version?"},
            {"Version = 1", "Version = 1\n\"a\\nb\" = 1",
             "job.toml:2:1: unknown key a\\u000ab; known here are Version, Stage, DPOption, DPConfig, PrintParam, "
             "InkStripe, Pages and CartInfo"},
            {"SkipBlank = true", "SkipBlank = true\nNozzles = 400",
             "job.toml:6:1: unknown key Nozzles in [Stage]; it belongs in [CartInfo]"},
            {"Nozzles = 400", "Nozzles = 400\nDirection = 1",
             "job.toml:24:1: unknown key Direction in [CartInfo]; it belongs in [[CartInfo.Unit]]"},
            {"SkipBlank = true", "SkipBlank = true\nVersion = 1",
             "job.toml:6:1: unknown key Version in [Stage]; it belongs before the first table"},
            {"Version = 1", "Version = 1\nBitsPerPixel = 1",
             "job.toml:2:1: unknown key BitsPerPixel; it belongs in [PrintParam]"},
            {"SkipBlank = true", "SkipBlank = true\nMaskCount_1 = 2",
             "job.toml:6:1: unknown key MaskCount_1 in [Stage]; it belongs in [PrintParam]"},
            {"Nozzles = 400", "Nozzles = 400\nUnitPitch = 2",
             "job.toml:24:1: unknown key UnitPitch in [CartInfo]; it belongs in [InkStripe]"},
            {"UnitPitch = 11", "Horizon_1 = 11",
             "job.toml:45:1: unknown key Horizon_1 in [InkStripe]; it belongs in [[CartInfo.Unit]]"},
            {"LineGeneratorCount_Of", "LineGeneratorCount",
             "job.toml:40:1: unknown key LineGeneratorCount_DataMap in [DPConfig]; did you mean "
             "LineGeneratorCount_Of_DataMap?"},
            {"[InkStripe]", "[Inkstripes]", "job.toml:42:2: unknown table [Inkstripes]; did you mean [InkStripe]?"},
        });
}

TEST(JobReader, UnknownEnumeratorsAreRefusedWithAllKnownOnes)
{
    Errors_Check(
        g_fullJob,
        {
            {"\"FramePerPixel\"", "\"FramePerPixl\"",
             "job.toml:9:16: DataMapStyle is \"FramePerPixl\"; did you mean \"FramePerPixel\"? It takes Frame16 (1), "
             "Block (3), Block13 (4), FramePerPixel (6), ByteInterleaved (7) or PlanePair (9)"},
            {"\"FramePerPixel\"", "5",
             "job.toml:9:16: DataMapStyle is 5; it takes Frame16 (1), Block (3), Block13 (4), FramePerPixel (6), "
             "ByteInterleaved (7) or PlanePair (9)"},
            {"\"ByPixel\"", "\"bypixel\"",
             "job.toml:10:17: DataPushStyle is \"bypixel\"; did you mean \"ByPixel\"? It takes ByUnit (1) or ByPixel "
             "(2)"},
            {"\"TwoBit\"", "3",
             "job.toml:11:22: PrinterSupportBits is 3; it takes OneBit (1), TwoBit (2) or Multiple (5)"},
            {"\"TwoBit\"", "true",
             "job.toml:11:22: PrinterSupportBits is true; it takes OneBit (1), TwoBit (2) or Multiple (5)"},
            {"\"Big\"", "\"Enormous\"",
             "job.toml:15:15: DotSizeMode is \"Enormous\"; it takes None (0), Small (1), Middle (2) or Big (3)"},
            {"Direction = 2", "Direction = 0",
             "job.toml:27:13: Direction is 0; it takes Descending (1) or Ascending (2)"},
            {"Kind = \"base\"", "Kind = \"Base\"",
             "job.toml:4:8: Kind is \"Base\"; did you mean \"base\"? It takes ink-stripe, base or one-fifo"},
            {"Kind = \"base\"", "Kind = \"everything\"",
             "job.toml:4:8: Kind is \"everything\"; it takes ink-stripe, base or one-fifo"},
        });
}

TEST(JobReader, MissingKeysAreNamedWithTheirTableAndAnExample)
{
    Errors_Check(
        g_smallJob,
        {
            {"Version = 1\n", "\n",
             "job.toml:1:1: Version is missing from the beginning of the job file; for example: Version = 1"},
            {"DataMapStyle = \"FramePerPixel\"\n", "",
             "job.toml:2:1: DataMapStyle is missing from [DPOption]; for example: DataMapStyle = \"FramePerPixel\""},
            {"PrinterSupportBits = \"OneBit\"\n", "",
             "job.toml:2:1: PrinterSupportBits is missing from [DPOption]; for example: PrinterSupportBits = "
             "\"OneBit\""},
            {"PrinterDataWidth = 16\n", "",
             "job.toml:2:1: PrinterDataWidth is missing from [DPOption]; for example: PrinterDataWidth = 16"},
            {"BitsPerPixel = 1\n", "",
             "job.toml:6:1: BitsPerPixel is missing from [PrintParam]; for example: BitsPerPixel = 1"},
            {"[PrintParam]\nBitsPerPixel = 1\n", "",
             "job.toml:1:1: BitsPerPixel is missing from [PrintParam]; for example: BitsPerPixel = 1"},
            {"Nozzles = 400\n", "", "job.toml:8:1: Nozzles is missing from [CartInfo]; for example: Nozzles = 400"},
            {"UnitId = 0\n", "", "job.toml:10:1: UnitId is missing from [[CartInfo.Unit]]; for example: UnitId = 0"},
            {"[[CartInfo.Unit]]\nUnitId = 0\nSeparation = \"page.tif\"\n", "",
             "job.toml:8:1: [[CartInfo.Unit]] is missing; a job needs one for each print unit"},
        });
    EXPECT_EQ(JobError_Of("# nothing but a comment\n"),
              "job.toml:1:1: Version is missing from the beginning of the job file; for example: Version = 1");
    EXPECT_EQ(JobError_Of("Version = 1\n"),
              "job.toml:1:1: DataMapStyle is missing from [DPOption]; for example: DataMapStyle = \"FramePerPixel\"\n"
              "job.toml:1:1: PrinterDataWidth is missing from [DPOption]; for example: PrinterDataWidth = 16\n"
              "job.toml:1:1: BitsPerPixel is missing from [PrintParam]; for example: BitsPerPixel = 1\n"
              "job.toml:1:1: Nozzles is missing from [CartInfo]; for example: Nozzles = 400\n"
              "job.toml:1:1: [[CartInfo.Unit]] is missing; a job needs one for each print unit");
}

TEST(JobReader, AllMistakesOfTheFileAreReportedInTheirOrder)
{
    const std::string late = Replaced(g_fullJob, "UnitId = 5", "UnitId = \"five\"");
    const std::string both = Replaced(late, "InputBands = 8", "InputBands = 1");
    EXPECT_EQ(JobError_Of(late), "job.toml:26:10: UnitId is the text \"five\"; it takes a whole number");
    EXPECT_EQ(JobError_Of(both), "job.toml:6:14: InputBands is 1; it takes 2 to 64\n"
                                 "job.toml:26:10: UnitId is the text \"five\"; it takes a whole number");
    // A missing key counts from its table.
    EXPECT_EQ(JobError_Of(Replaced(late, "Nozzles = 400", "")),
              "job.toml:22:1: Nozzles is missing from [CartInfo]; for example: Nozzles = 400\n"
              "job.toml:26:10: UnitId is the text \"five\"; it takes a whole number");
}

TEST(JobReader, AMistypedKeyIsNotMissingToo)
{
    EXPECT_EQ(JobError_Of(Replaced(g_smallJob, "PrinterDataWidth", "PrinterDataWith")),
              "job.toml:5:1: unknown key PrinterDataWith in [DPOption]; did you mean PrinterDataWidth?");
}

TEST(JobReader, WhatFollowsFromAMistakeIsNotReported)
{
    // Neither the frame width nor the units' ids can be judged without the map.
    std::string text = Replaced(g_smallJob, "\"FramePerPixel\"", "\"Frame17\"");
    text = Replaced(text, "PrinterDataWidth = 16", "PrinterDataWidth = 17");
    EXPECT_EQ(JobError_Of(text).substr(0, 44), "job.toml:3:16: DataMapStyle is \"Frame17\"; di");
    EXPECT_EQ(JobError_Of(text).find('\n'), std::string::npos);
}

TEST(JobReader, MistakesCarryTheirPlaceAndRuleForPrograms)
{
    CMistakeList mistakes;
    SJob job =
        JobText_Parse("job.toml", Replaced(g_smallJob, "PrinterDataWidth = 16", "PrinterDataWidth = 17"), mistakes);
    Job_Check(job, mistakes);
    ASSERT_EQ(mistakes.All().size(), 1U);
    EXPECT_EQ(
        mistakes.All()[0],
        (SMistake{
            false, "job.toml", {5, 20}, "frame-width", "PrinterDataWidth is 17", "style 5 needs a multiple of 8"}));
}

TEST(JobReader, AnotherVersionIsRefusedBeforeItsKeysAreLookedAt)
{
    const std::string newer = Replaced(g_smallJob, "[PrintParam]", "[Newer]");
    EXPECT_EQ(JobError_Of(Replaced(newer, "Version = 1", "Version = 2")),
              "job.toml:1:11: Version is 2; this program reads version 1");
    EXPECT_EQ(JobError_Of(Replaced(newer, "Version = 1", "Version = \"1\"")),
              "job.toml:1:11: Version is the text \"1\"; this program reads version 1");
}

TEST(JobReader, TextThatIsNoTomlIsRefusedAtItsPlace)
{
    EXPECT_EQ(JobError_Of("Version = 1\n[DPOption\n"),
              "job.toml:2:10: Error while parsing table header: expected ']', saw '\\n'");
    EXPECT_EQ(JobError_Of("Version = \n"),
              "job.toml:1:11: Error while parsing key-value pair: expected value, saw '\\n'");
    EXPECT_EQ(JobError_Of("Version = 1\nVersion = 1\n").substr(0, 11), "job.toml:2:");
    EXPECT_EQ(JobError_Of("Version = 1\nName = \"\xFF\"\n"),
              "job.toml:2:8: a job file is UTF-8 text; here are bytes that are not");
    EXPECT_EQ(JobError_Of(std::string("II*\0\x08\0\0\0\xFF\xFE", 10)).substr(0, 11), "job.toml:1:");
    EXPECT_EQ(JobError_Of("Version = 1\nNozzles = 99999999999999999999\n").substr(0, 11), "job.toml:2:");
}

TEST(JobReader, EveryPrefixOfAJobIsReadOrRefusedWithAPlace)
{
    for (std::size_t size = 0; size < g_fullJob.size(); ++size)
    {
        const std::string error = JobError_Of(std::string(g_fullJob.substr(0, size)));
        EXPECT_TRUE(error == "no error" || error.starts_with("job.toml:")) << error;
        EXPECT_EQ(error.find("\n\n"), std::string::npos) << error;
    }
}

TEST(JobLoad, FilesThatCannotBeJobsAreOneClearErrorEach)
{
    const CTestFolder folder;
    const auto error_of = [](const std::filesystem::path& file)
    { return Error_Of<CInputError>([&] { Job_Load(file); }); };
    const std::filesystem::path file = folder / "job.toml";
    EXPECT_EQ(error_of(file), file.string() + ": there is no such file");
    EXPECT_EQ(error_of(folder.Path()), folder.Path().string() + ": is a folder, not a job file");
    File_Write(file, "");
    EXPECT_EQ(error_of(file), file.string() + ": the job file is empty");
    File_Write(file, "\xFF\xFEV");
    EXPECT_EQ(error_of(file), file.string() + ":1:1: a job file is UTF-8 text; here are bytes that are not");
    File_Write(file, std::string((4 << 20) + 1, '#'));
    EXPECT_EQ(error_of(file), file.string() + ": is longer than 4 MiB; a job file is a short text");
    File_Write(file, Replaced(g_smallJob, "= 16", "= 17"));
    EXPECT_EQ(error_of(file), file.string() + ":5:20: PrinterDataWidth is 17; style 5 needs a multiple of 8");
}

TEST(JobLoad, JobFileIsReadAndChecked)
{
    const CTestFolder folder;
    File_Write(folder / "job.toml", std::string(g_fullJob));
    const SJob job = Job_Load(folder / "job.toml");
    EXPECT_EQ(job.m_file, (folder / "job.toml").string());
    EXPECT_EQ(job.m_map.m_class, EMapClass::Map_2);
    EXPECT_EQ(Job_SeparationPath(job, job.m_units.at(0), 0), folder / "page.Cyan.tif");
}
