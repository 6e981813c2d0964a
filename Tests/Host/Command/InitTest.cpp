// boardmap init from outside: the job that it writes is right for every style that takes the files, and says so.
#include "Host/HostError.h"
#include "Host/Job/JobDraft.h"
#include "Tests/Host/Command/CommandSupport.h"
#include "Tests/Host/Input/TiffMaker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace
{

bool Pattern(int x, int y)
{
    return (x * 7 + y * 13) % 5 == 0;
}

class Init : public CCommandTest
{
protected:
    void Page_Write(const std::vector<std::string>& names) const
    {
        for (const std::string& name : names)
        {
            Separation_Write(name, 40, 30, &Pattern);
        }
    }
};

} // namespace

TEST_F(Init, WritesACommentedJobWithTheProcessInksFirst)
{
    Page_Write({"page1(Black).tif", "page1(Cyan).tif", "page1(PANTONE 300 C).tif"});
    const auto result = Boardmap_Run("init \"page1(Black).tif\" \"page1(Cyan).tif\" \"page1(PANTONE 300 C).tif\"");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(result.error, IsEmpty());
    EXPECT_EQ(
        File_Read(In("job.toml")),
        "# A page of 40 x 30 pixels of 1 bit, in 3 separations.\n"
        "# boardmap check says whether the job can run, and what a run will be.\n"
        "Version = 1\n"
        "\n"
        "# What the head-driver boards take: style 5 of their layouts.\n"
        "[DPOption]\n"
        "DataMapStyle       = \"FramePerPixel\"\n"
        "DataPushStyle      = \"ByPixel\"         # a line of whole pixels\n"
        "PrinterSupportBits = \"OneBit\"          # bits of a pixel that the boards take\n"
        "PrinterDataWidth   = 8                 # bits in a frame: 8 units at most; the boards' own, if larger\n"
        "\n"
        "[PrintParam]\n"
        "BitsPerPixel       = 1                 # of every separation\n"
        "Bidirectional      = true              # every other swath is printed from right to left\n"
        "\n"
        "[CartInfo]\n"
        "Nozzles            = 400               # of a head: rows of a swath\n"
        "\n"
        "# The print units, by their places in a frame. Horizon_1 and Horizon_2 are a unit's offsets from right to "
        "left and\n"
        "# from left to right, in scan positions; they are 0 where they are left out.\n"
        "[[CartInfo.Unit]]\n"
        "UnitId             = 0\n"
        "Name               = \"Cyan\"\n"
        "Separation         = \"page1(Cyan).tif\"\n"
        "\n"
        "[[CartInfo.Unit]]\n"
        "UnitId             = 1\n"
        "Name               = \"Black\"\n"
        "Separation         = \"page1(Black).tif\"\n"
        "\n"
        "[[CartInfo.Unit]]\n"
        "UnitId             = 2\n"
        "Name               = \"PANTONE 300 C\"\n"
        "Separation         = \"page1(PANTONE 300 C).tif\"\n");
    EXPECT_THAT(Boardmap_Run("check job.toml").out, StartsWith("job.toml: no mistakes\n"));
}

TEST_F(Init, TheJobPassesTheCheckForEveryStyleThatTakesTheFiles)
{
    Page_Write({"p.C.tif", "p.M.tif", "p.Y.tif", "p.K.tif", "p.W.tif"});
    Tiff_Write(In("grey.tif"), Ink_Random(40, 30, 2, 1), {.name = "strips", .rowsPerStrip = 8});
    struct SDepth
    {
        std::string m_files;
        std::vector<std::string> m_styles;
    };
    const std::vector<SDepth> depths = {
        {"p.C.tif p.M.tif p.Y.tif p.K.tif p.W.tif", {"1", "2", "03", "03_01", "5", "6", "7"}},
        {"grey.tif", {"1", "03", "03_01", "5", "6", "8"}}};
    for (const SDepth& depth : depths)
    {
        for (const std::string style : {"1", "2", "03", "03_01", "5", "6", "7", "8"})
        {
            SCOPED_TRACE(depth.m_files + ' ' + style);
            const auto result = Boardmap_Run("init " + depth.m_files + " --force --style " + style);
            if (std::ranges::find(depth.m_styles, style) == depth.m_styles.end())
            {
                EXPECT_EQ(result.status, 2);
                EXPECT_THAT(result.error, StartsWith("--style: style " + style + " does not take separations of "));
                continue;
            }
            EXPECT_EQ(result.status, 0) << result.error;
            const auto check = Boardmap_Run("check job.toml");
            EXPECT_EQ(check.status, 0);
            EXPECT_THAT(check.out, StartsWith("job.toml: no mistakes\n"));
            EXPECT_THAT(check.out, HasSubstr("style " + style + " ("));
            EXPECT_EQ(Boardmap_Run("convert job.toml").status, 0);
        }
    }
}

TEST_F(Init, RefusesFilesThatAreNoPageTogetherAllAtOnce)
{
    Page_Write({"a.tif"});
    Separation_Write("narrow.tif", 39, 30, &Pattern);
    Tiff_Write(In("grey.tif"), Ink_Random(40, 30, 2, 1), {.name = "strips", .rowsPerStrip = 8});
    File_Write(In("text.tif"), "no TIFF at all, only text");
    const auto before = Files();
    const auto result = Boardmap_Run("init a.tif narrow.tif grey.tif gone.tif text.tif");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.error,
                HasSubstr("narrow.tif: 39 x 30 pixels, but a.tif has 40 x 30 pixels; all separations of a "
                          "page have one size\n"));
    EXPECT_THAT(result.error,
                HasSubstr("grey.tif: 2 bits per pixel, but a.tif has 1; all separations of a job have one depth\n"));
    EXPECT_THAT(result.error, HasSubstr("gone.tif: there is no such file\n"));
    EXPECT_THAT(result.error, HasSubstr("text.tif: "));
    EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 4) << result.error;
    EXPECT_EQ(Files(), before);
}

TEST_F(Init, RefusesWhatAStyleCannotTake)
{
    Page_Write({"a.tif"});
    const auto before = Files();
    std::string many;
    for (int i = 0; i < 17; ++i)
    {
        many += " a.tif";
    }
    const auto room = Boardmap_Run("init --style 1" + many);
    EXPECT_EQ(room.status, 2);
    EXPECT_EQ(room.error, "--style: style 1 has room for 16 units, and here are 17 separations\n");
    const auto nozzles = Boardmap_Run("init a.tif --style 03 --nozzles 200");
    EXPECT_EQ(nozzles.status, 2);
    EXPECT_EQ(nozzles.error, "job.toml: Nozzles is 200; style 03 maps heads of 400 nozzles, in four blocks of 100\n");
    EXPECT_THAT(Boardmap_Run("init a.tif --style 9").error, HasSubstr("\"9\" is none of 1, 2, 03, 03_01, 5, 6, 7, 8"));
    EXPECT_EQ(Boardmap_Run("init").status, 2);
    EXPECT_EQ(Files(), before);
}

TEST_F(Init, KeepsAFileThatIsThereUnlessForced)
{
    Page_Write({"a.tif"});
    File_Write(In("job.toml"), "mine");
    const auto kept = Boardmap_Run("init a.tif");
    EXPECT_EQ(kept.status, 2);
    EXPECT_EQ(kept.error, "job.toml: is there already; --force replaces it, -o names another file\n");
    EXPECT_EQ(File_Read(In("job.toml")), "mine");
    EXPECT_EQ(Boardmap_Run("init a.tif --force -o a.tif").error,
              "a.tif: this is a separation; name another file for the job\n");
    EXPECT_EQ(Boardmap_Run("init a.tif --force").status, 0);
    EXPECT_THAT(File_Read(In("job.toml")), StartsWith("# A page of 40 x 30 pixels"));
    EXPECT_EQ(Boardmap_Run("init a.tif -o gone/job.toml").status, 2);
}

TEST_F(Init, NamesSeparationsFromTheFolderOfTheJob)
{
    std::filesystem::create_directories(In("pages/one"));
    std::filesystem::create_directories(In("jobs"));
    Page_Write({"pages/one/a.tif"});
    ASSERT_EQ(Boardmap_Run("init pages/one/a.tif -o jobs/one.toml").status, 0);
    EXPECT_THAT(File_Read(In("jobs/one.toml")), HasSubstr("\"../pages/one/a.tif\""));
    EXPECT_EQ(Boardmap_Run("check jobs/one.toml").status, 0);
    ASSERT_EQ(Boardmap_Run("init pages/one/a.tif -o pages/one/one.toml").status, 0);
    EXPECT_THAT(File_Read(In("pages/one/one.toml")), HasSubstr("Separation         = \"a.tif\""));
}

TEST_F(Init, SeveralPagesBecomeAPatternAndAMissingInkABlankPage)
{
    Page_Write({"page1(Black).tif", "page2(Black).tif", "page3(Black).tif", "page1(Gold).tif", "page3(Gold).tif"});
    const auto result = Boardmap_Run("init \"page1(Black).tif\" \"page1(Gold).tif\" \"page2(Black).tif\" "
                                     "\"page3(Black).tif\" \"page3(Gold).tif\"");
    EXPECT_EQ(result.status, 0) << result.error;
    const std::string job = File_Read(In("job.toml"));
    EXPECT_THAT(job, StartsWith("# 3 pages of 40 x 30 pixels of 1 bit, in 2 separations.\n"));
    EXPECT_THAT(job, HasSubstr("[Pages]\nFirst              = 1\nLast               = 3\nMissingIsBlank     = true  "));
    EXPECT_THAT(job, HasSubstr("Name               = \"Black\"\nSeparation         = \"page%d(Black).tif\"\n"));
    EXPECT_THAT(job, HasSubstr("Name               = \"Gold\"\nSeparation         = \"page%d(Gold).tif\"\n"));
    EXPECT_THAT(Boardmap_Run("check job.toml").out, HasSubstr("blank on 1 of 3 pages"));
    const auto gap = Boardmap_Run("init \"page1(Black).tif\" \"page3(Black).tif\" --force");
    EXPECT_EQ(gap.status, 2);
    EXPECT_THAT(gap.error, HasSubstr("none of page 2"));
}

TEST_F(Init, OptionsAndStandardOutput)
{
    Page_Write({"a.tif"});
    const auto result = Boardmap_Run("init a.tif --style 7 --nozzles 31 --one-way -o -");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("Nozzles            = 31 "));
    EXPECT_THAT(result.out, HasSubstr("Bidirectional      = false "));
    EXPECT_THAT(result.out, HasSubstr("DotSizeMode        = \"Middle\""));
    EXPECT_THAT(result.out, HasSubstr("PrinterDataWidth   = 1                 # bytes in a frame: 1 unit at most"));
    EXPECT_THAT(result.out, Not(HasSubstr("Name"))); // "a.tif" says nothing of an ink
    EXPECT_THAT(Files(), ElementsAre("a.tif"));
    EXPECT_THAT(Boardmap_Run("init a.tif --style 1 --nozzles 31 -o -").error, HasSubstr("warning: Nozzles is 31"));
}

TEST(JobDraft, InksAreTakenFromTheNames)
{
    const auto Inks = [](const std::vector<std::string>& names) { return Inks_FromNames(names); };
    EXPECT_THAT(Inks({"page1(Cyan).tif", "page1(PANTONE 300 C).tif"}), ElementsAre("Cyan", "PANTONE 300 C"));
    EXPECT_THAT(Inks({"page.Cyan.tif", "page.Black.tif"}), ElementsAre("Cyan", "Black"));
    EXPECT_THAT(Inks({"my_page_Light cyan.tif", "my_page_Light black.tif"}), ElementsAre("Light cyan", "Light black"));
    EXPECT_THAT(Inks({"cyan.tif", "black.tif"}), ElementsAre("cyan", "black"));
    EXPECT_THAT(Inks({"blue.tif", "black.tif"}), ElementsAre("blue", "black"));
    EXPECT_THAT(Inks({"page.Cyan.tif", "page.Cyan.tif"}), ElementsAre("Cyan", "Cyan"));
    EXPECT_THAT(Inks({"page.Grey.tif"}), ElementsAre("Grey"));
    EXPECT_THAT(Inks({"page.tif"}), ElementsAre(""));
    EXPECT_THAT(Inks({"().tif", ".tif"}), ElementsAre("()", ".tif"));
}

TEST(JobDraft, PagesAreToldByTheNumbersBeforeTheInks)
{
    const auto Patterns = [](const std::vector<std::string>& names)
    {
        const auto pages = Pages_FromNames(names);
        return pages ? pages->m_patterns : std::vector<std::string>();
    };
    EXPECT_THAT(Patterns({"a/p-01.Cyan.tif", "a/p-02.Cyan.tif", "a/p-01.K.tif", "a/p-02.K.tif"}),
                ElementsAre("a/p-%02d.Cyan.tif", "a/p-%02d.K.tif"));
    EXPECT_THAT(Patterns({"50% 9(C).tif", "50% 10(C).tif"}), ElementsAre("50%% %d(C).tif"));
    EXPECT_THAT(Patterns({"grey1.tif", "grey2.tif"}), ElementsAre("grey%d.tif"));
    EXPECT_THAT(Patterns({"p1.PMS300.tif", "p2.PMS300.tif"}), ElementsAre("p%d.PMS300.tif"));
    EXPECT_THAT(Patterns({"600dpi-1.C.tif", "600dpi-2.C.tif", "600dpi-1.K.tif"}),
                ElementsAre("600dpi-%d.C.tif", "600dpi-%d.K.tif"));
    EXPECT_THAT(Patterns({"page1(Cyan).tif", "page1(PANTONE 300 C).tif", "page1(PANTONE 301 C).tif"}), IsEmpty());
    EXPECT_THAT(Patterns({"page.Cyan1.tif", "page.Cyan2.tif", "page.Black1.tif", "page.Black2.tif"}), IsEmpty())
        << "two heads of an ink";
    EXPECT_THAT(Patterns({"page.Cyan.tif", "page.Black.tif"}), IsEmpty());
    const auto pages = Pages_FromNames({"p2.C.tif", "p3.C.tif", "p3.K.tif"});
    EXPECT_EQ(pages->m_pages.m_first, 2);
    EXPECT_EQ(pages->m_pages.m_last, 3);
    EXPECT_TRUE(pages->m_pages.m_bMissing);
    EXPECT_THAT(pages->m_files, ElementsAre(0, 2));
    EXPECT_THROW(Pages_FromNames({"p01.C.tif", "p002.C.tif"}), CInputError);
}

TEST(JobDraft, ProcessInksHaveTheirPlacesOnTheCarriage)
{
    EXPECT_EQ(Ink_Order("CYAN"), 0);
    EXPECT_EQ(Ink_Order("m"), 1);
    EXPECT_EQ(Ink_Order("Yellow"), 2);
    EXPECT_EQ(Ink_Order("K"), 3);
    EXPECT_EQ(Ink_Order("PANTONE 300 C"), 4);
    EXPECT_EQ(Ink_Order(""), 4);
}

TEST(JobDraft, EveryMapHasOptionsForTheDepthsThatItTakesAndTheSmallestWidth)
{
    for (const SMapClass& row : MapClasses())
    {
        SCOPED_TRACE(row.m_pName);
        int depths = 0;
        for (const int bits : {1, 2})
        {
            const auto option = Map_Options(row.m_class, bits);
            if (!option)
            {
                continue;
            }
            ++depths;
            const SJobMap map = Job_MapClass(*option, bits);
            EXPECT_EQ(map.m_class, row.m_class);
            for (const int units : {1, 4, 9, 16})
            {
                const auto width = Map_FrameWidth(map, units);
                ASSERT_TRUE(width.has_value());
                EXPECT_GE(MapClass_UnitCount(map, *width), units);
                for (int less = row.m_widthLeast; less < *width; ++less)
                {
                    EXPECT_TRUE(less % row.m_widthMultiple != 0 || row.m_widthOnly > 0 ||
                                MapClass_UnitCount(map, less) < units)
                        << less;
                }
            }
        }
        EXPECT_GE(depths, 1);
    }
    EXPECT_FALSE(Map_FrameWidth({EMapClass::Map_1, 1, 1}, 17).has_value());
}
