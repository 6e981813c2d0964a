// boardmap check from outside: all mistakes at once, the plan in words and as JSON, and exit statuses; and that raw
// board data does not end up on a terminal.
#include "Tests/Host/Command/CommandSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace
{

using Check = CCommandTest;
using CJson = nlohmann::ordered_json;

bool Pattern(int x, int y)
{
    return (x * 7 + y * 13) % 5 == 0;
}

// The rules of a JSON answer's mistakes, in their order.
std::vector<std::string> Rules_Of(const CJson& answer)
{
    std::vector<std::string> rules;
    for (const CJson& mistake : answer.at("Mistakes"))
    {
        rules.push_back(mistake.at("Rule"));
    }
    return rules;
}

const char* const g_zones = "[InkStripe]\nLeftStripeWidth = 10\nRightStripeWidth = 6\nUnitPitch = 2\n";

} // namespace

TEST_F(Check, AJobWithoutMistakesIsToldAsAPlan)
{
    Separation_Write("a.tif", 37, 50, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 20, g_zones);
    File_Write(In("job.toml"), File_Read(In("job.toml")) + "Name = \"Cyan\"\nHorizon_1 = 3\nHorizon_2 = 2\n" +
                                   "[[CartInfo.Unit]]\nUnitId = 1\nStripeColor = \"Full\"\n");
    const auto result = Boardmap_Run("check job.toml");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.error, IsEmpty());
    // Lines of 20 frames of 8 bits are 20 bytes; from left to right a pass has 2 + 37 + 16 positions, else one more.
    EXPECT_EQ(result.out,
              "job.toml: no mistakes\n"
              "  map             style 5 (FramePerPixel, ByPixel, OneBit): 1 bit a pixel\n"
              "  stage           ink-stripe, lines mapped by 2 threads, 3 bands in each unit's pool\n"
              "  page            37 x 50 pixels; 1 unit of 2 print it\n"
              "  frame           8 bits, room for the units 0 to 7\n"
              "  line            20 frames = 160 bits = 20 bytes\n"
              "  bands           3 bands of 20 nozzles; the last has 10 rows of the page\n"
              "  left to right   2 bands of 55 lines: 55 positions = 10 (left zone) + 37 (page) + 6 (right zone) + 2 "
              "(largest offset)\n"
              "  right to left   1 band of 56 lines: 56 positions = 6 (right zone) + 37 (page) + 10 (left zone) + 3 "
              "(largest offset)\n"
              "  board data      166 lines, 3320 bytes\n"
              "  memory          about 4.13 kB at most: 4 unit bands of 168 B, 3 board bands of 1.12 kB, rows of the "
              "page 100 B\n"
              "  unit 0 (Cyan): a.tif at positions 12 to 48 left to right, 9 to 45 right to left\n"
              "  unit 1: ink stripes (Full) at positions 2 to 3 and 51 to 52 left to right, 0 to 1 and 49 to 50 right "
              "to left\n");
    EXPECT_THAT(Files(), ElementsAre("a.tif", "job.toml"));
}

TEST_F(Check, ThePlanIsWhatAConversionThenDoes)
{
    Separation_Write("a.tif", 61, 90, &Pattern);
    Separation_Write("b.tif", 61, 90, &Pattern);
    for (const bool bBase : {false, true})
    {
        Job_Write("job.toml", {"a.tif", "b.tif"}, 23, bBase ? "[Stage]\nKind = \"base\"\n" : "");
        File_Write(In("job.toml"), File_Read(In("job.toml")) + "Horizon_1 = 5\n");
        const CJson answer = CJson::parse(Boardmap_Run("check job.toml --json").out);
        EXPECT_EQ(answer.at("Valid"), true);
        EXPECT_THAT(answer.at("Mistakes"), IsEmpty());
        const CJson run = CJson::parse(Boardmap_Run("convert job.toml --json").out);
        const CJson& plan = answer.at("Plan");
        for (const char* pKey : {"Bands", "Lines", "Bytes"})
        {
            EXPECT_EQ(plan.at(pKey), run.at(pKey)) << pKey;
        }
        EXPECT_EQ(plan.at("Bands"), 4);
        EXPECT_EQ(plan.at("LineBytes"), 23);
        EXPECT_EQ(plan.at("LastBandRows"), 21);
        EXPECT_EQ(plan.at("Passes").at(0).at("Positions"), 61);
        EXPECT_EQ(plan.at("Passes").at(1).at("Positions"), 66);
        EXPECT_EQ(plan.at("Board").at("Units").at(1).at("Horizon_1"), 5);
    }
}

TEST_F(Check, AllMistakesOfAJobAndItsSeparationsAreSaidAtOnce)
{
    Separation_Write("a.tif", 8, 8, &Pattern);
    Separation_Write("small.tif", 8, 7, &Pattern);
    Job_Write("job.toml", {"a.tif", "gone.tif", "small.tif"}, 8);
    File_Write(In("job.toml"), File_Read(In("job.toml")) + "Nam = \"Cyan\"\n");
    const auto result = Boardmap_Run("check job.toml");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.error, IsEmpty());
    EXPECT_EQ(result.out, "job.toml:17:14: unit 1: Separation gone.tif: there is no such file\n"
                          "job.toml:20:14: unit 2: Separation small.tif has 8 x 7 pixels, but a.tif has 8 x 8 pixels; "
                          "all separations of a page have one size\n"
                          "job.toml:21:1: unknown key Nam in [[CartInfo.Unit]]; did you mean Name?\n"
                          "job.toml: 3 errors; the job cannot run\n");
    const auto json = Boardmap_Run("check --json job.toml");
    EXPECT_EQ(json.status, 2);
    const CJson answer = CJson::parse(json.out);
    EXPECT_EQ(answer.at("Valid"), false);
    EXPECT_EQ(answer.at("Errors"), 3);
    EXPECT_TRUE(answer.at("Plan").is_null());
    EXPECT_THAT(Rules_Of(answer), ElementsAre("separation", "separation-size", "unknown-key"));
    EXPECT_EQ(answer.at("Mistakes").at(0).at("Line"), 17);
    EXPECT_EQ(answer.at("Mistakes").at(0).at("Column"), 14);
}

TEST_F(Check, AFileThatIsNoJobIsAMistakeToo)
{
    File_Write(In("job.toml"), "Version = \n");
    EXPECT_EQ(Boardmap_Run("check job.toml").status, 2);
    EXPECT_THAT(Boardmap_Run("check job.toml").out,
                AllOf(StartsWith("job.toml:1:"), HasSubstr("\njob.toml: 1 error; the job cannot run\n")));
    EXPECT_EQ(Boardmap_Run("check gone.toml").out,
              "gone.toml: there is no such file\ngone.toml: 1 error; the job cannot run\n");
    EXPECT_EQ(Boardmap_Run("check gone.toml").status, 2);
    EXPECT_THAT(Rules_Of(CJson::parse(Boardmap_Run("check gone.toml --json").out)), ElementsAre("file"));
    EXPECT_EQ(Boardmap_Run("check").status, 2);
}

TEST_F(Check, AZoneThatDwarfsThePageIsAWarningWithItsSize)
{
    Separation_Write("a.tif", 30, 8, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 8, "[InkStripe]\nRightStripeWidth = 16000000\n");
    const auto result = Boardmap_Run("check job.toml");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(
        result.out,
        StartsWith("job.toml:3:20: warning: RightStripeWidth is 16000000 on a page of 30 columns; the job makes "
                   "bands of 16000030 lines, 128000240 bytes of board data\njob.toml: 1 warning\n"));
    EXPECT_THAT(Rules_Of(CJson::parse(Boardmap_Run("check job.toml --json").out)), ElementsAre("beside-page"));
    // An offset does it as well; a zone that is merely wide does not.
    Job_Write("job.toml", {"a.tif"}, 8, "[InkStripe]\nRightStripeWidth = 60000\n");
    EXPECT_THAT(Boardmap_Run("check job.toml").out, StartsWith("job.toml: no mistakes\n"));
    File_Write(In("job.toml"), File_Read(In("job.toml")) + "Horizon_1 = 70000\n");
    EXPECT_THAT(Boardmap_Run("check job.toml").out, HasSubstr("warning: Horizon_1 is 70000 on a page of 30 columns"));
}

TEST_F(Check, AnOddNumberOfNozzlesThatStyle1CannotPrintIsAWarning)
{
    Separation_Write("a.tif", 30, 14, [](int, int y) { return y == 6; });
    const auto Write = [&](int nozzles)
    {
        File_Write(In("job.toml"), "Version = 1\n[DPOption]\nDataMapStyle = \"Frame16\"\nPrinterDataWidth = 16\n"
                                   "[PrintParam]\nBitsPerPixel = 1\n[CartInfo]\nNozzles = " +
                                       std::to_string(nozzles) +
                                       "\n[[CartInfo.Unit]]\nUnitId = 0\nSeparation = \"a.tif\"\n");
    };
    Write(7);
    const std::string warning = "job.toml:8:11: warning: Nozzles is 7; style 1 takes nozzles by groups of 2 and has no "
                                "place for the rest: the last one never prints\n";
    const auto result = Boardmap_Run("check job.toml");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, StartsWith(warning + "job.toml: 1 warning\n"));
    // It is true: the only row with ink is that of the last nozzle.
    const auto run = Boardmap_Run("convert job.toml -o odd.tif");
    EXPECT_EQ(run.error, warning);
    EXPECT_THAT(File_Read(In("odd.tif")), HasSubstr("\"Blank\":true"));
    Write(8);
    EXPECT_THAT(Boardmap_Run("check job.toml").out,
                StartsWith("job.toml: no mistakes\n  map             style 1 (Frame16, ByPixel): 1 bit a pixel\n"));
    ASSERT_EQ(Boardmap_Run("convert job.toml -o even.tif").status, 0);
    EXPECT_THAT(File_Read(In("even.tif")), HasSubstr("\"Blank\":false"));
}

#if !defined(_WIN32)

TEST_F(Check, APipeThatNobodyReadsFailsTheCommand)
{
    Separation_Write("a.tif", 8, 8, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 8);
    for (const std::string line : {"check job.toml", "check job.toml --json", "init a.tif -o -"})
    {
        const auto closed = Shell_Run("{ sleep 0.2; \"$boardmap\" " + line + "; echo $? >status; } | true; cat status");
        EXPECT_EQ(closed.out, "1\n") << line;
        EXPECT_THAT(closed.error, StartsWith("standard output: cannot be written")) << line;
    }
}

TEST_F(Check, RawBoardDataIsNotPouredIntoATerminal)
{
    Separation_Write("a.tif", 8, 8, &Pattern);
    Job_Write("job.toml", {"a.tif"}, 8);
    // `script` gives the program a terminal and passes its exit status on.
    const std::string convert = "script -qec \"'$boardmap' convert job.toml --format raw -o - ";
    const auto refused = Shell_Run(convert + "\" typescript");
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(
        File_Read(In("typescript")),
        AllOf(HasSubstr("--output -: standard output is a terminal, and board data is no text; redirect it, name "
                        "a file, or give --force"),
              Not(HasSubstr("ENDB"))));
    EXPECT_EQ(Shell_Run(convert + "--force\" typescript").status, 0);
    EXPECT_THAT(File_Read(In("typescript")), HasSubstr("ENDB"));
    EXPECT_EQ(Shell_Run(convert + ">redirected.raw\" typescript").status, 0);
    EXPECT_THAT(File_Read(In("redirected.raw")), HasSubstr("ENDB"));
}

#endif
