// Jobs of several pages from outside: each page as it is alone, pages that lack an ink, and what is said of mistakes.
#include "Host/Board/BoardReader.h"
#include "Tests/Host/Command/CommandSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>

using testing::HasSubstr;
using testing::Not;

namespace
{

constexpr int width = 37;
constexpr int height = 21; // three swaths of eight nozzles, the last with five rows
constexpr int swaths = 3;

struct SBand
{
    SBandHeader m_header;
    SBoardPass m_pass;
    std::vector<unsigned char> m_bytes;
};

bool IsSame(const SBand& one, const SBand& other)
{
    return one.m_pass == other.m_pass && one.m_bytes == other.m_bytes;
}

class Batch : public CCommandTest
{
protected:
    void Ink_Write(const std::string& name, int seed, int rows = height) const
    {
        Separation_Write(name, width, rows, [&](int x, int y) { return (x * 7 + y * 13 + x * y * seed) % 5 == 0; });
    }

    void Blank_Write(const std::string& name) const
    {
        Separation_Write(name, width, height, [](int, int) { return false; });
    }

    // p1.c.tif to p3.c.tif, and p1.k.tif to p3.k.tif.
    void Pages_Write() const
    {
        for (int page = 1; page <= 3; ++page)
        {
            Ink_Write("p" + std::to_string(page) + ".c.tif", page);
            Ink_Write("p" + std::to_string(page) + ".k.tif", page + 10);
        }
    }

    // Two units with offsets and one with stripes; `pages` is the table [Pages], `cyan` and `black` are keys of units.
    static std::string Job_Text(const std::string& pages, const std::string& cyan, const std::string& black,
                                const std::string& stage = "")
    {
        const bool bStripes = stage.find("base") == std::string::npos;
        return "Version = 1\n" + stage +
               "[DPOption]\nDataMapStyle = 6\nDataPushStyle = 2\nPrinterSupportBits = 1\nPrinterDataWidth = 8\n"
               "[PrintParam]\nBitsPerPixel = 1\nBidirectional = true\n"
               "[InkStripe]\nLeftStripeWidth = 6\nRightStripeWidth = 4\nUnitPitch = 2\nUnitPositionCount = 2\n" +
               pages + "[CartInfo]\nNozzles = 8\n[[CartInfo.Unit]]\nUnitId = 0\nName = \"Cyan\"\nHorizon_1 = 3\n" +
               cyan + "[[CartInfo.Unit]]\nUnitId = 3\nName = \"Black\"\nHorizon_2 = 2\n" + black +
               (bStripes ? "[[CartInfo.Unit]]\nUnitId = 5\nUnitPosition = 1\nStripeColor = \"Full\"\n" : "");
    }

    void PatternJob_Write(const std::string& name, const std::string& pages = "[Pages]\nFirst = 1\nLast = 3\n",
                          const std::string& stage = "") const
    {
        File_Write(In(name), Job_Text(pages, "Separation = \"p%d.c.tif\"\n", "Separation = \"p%d.k.tif\"\n", stage));
    }

    std::vector<SBand> Bands_Read(const std::string& file) const
    {
        const auto reader = CBoardReader::Open(In(file));
        std::vector<SBand> bands;
        CBandData band;
        SBoardPass pass;
        while (reader->Band_Read(band, pass))
        {
            bands.push_back({band, pass, {band.m_pData, band.m_pData + band.m_dataSize}});
        }
        return bands;
    }

    std::vector<SBand> Job_Convert(const std::string& job) const
    {
        const auto result = Boardmap_Run("convert " + job + " --format raw -o out.raw --progress none");
        EXPECT_EQ(result.status, 0) << result.error;
        return result.status == 0 ? Bands_Read("out.raw") : std::vector<SBand>();
    }

    void Verify_Expect(const std::string& job, const std::string& output) const
    {
        const auto verified = Boardmap_Run("verify " + job + " " + output + " --progress none");
        EXPECT_EQ(verified.status, 0) << verified.out << verified.error;
    }

    void Refusal_Expect(const std::string& job, const std::string& text) const
    {
        File_Write(In("out.raw"), "kept");
        const auto result = Boardmap_Run("convert " + job + " --format raw -o out.raw --progress none");
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.error, HasSubstr(text));
        EXPECT_EQ(File_Read(In("out.raw")), "kept");
        EXPECT_THAT(Boardmap_Run("check " + job).out, HasSubstr(text));
    }
};

} // namespace

TEST_F(Batch, EachPageIsWhatItIsAlone)
{
    Pages_Write();
    for (const std::string stage : {"ink-stripe", "one-fifo", "base"})
    {
        const std::string table = "[Stage]\nKind = \"" + stage + "\"\n";
        PatternJob_Write("batch.toml", "[Pages]\nLast = 3\n", table);
        const std::vector<SBand> batch = Job_Convert("batch.toml");
        ASSERT_EQ(batch.size(), std::size_t{3 * swaths});
        Verify_Expect("batch.toml", "out.raw");
        for (int page = 0; page < 3; ++page)
        {
            const std::string name = "\"p" + std::to_string(page + 1);
            File_Write(In("alone.toml"), Job_Text("", "Separation = " + name + ".c.tif\"\n",
                                                  "Separation = " + name + ".k.tif\"\n", table));
            const std::vector<SBand> alone = Job_Convert("alone.toml");
            ASSERT_EQ(alone.size(), std::size_t{swaths});
            for (int swath = 0; swath < swaths; ++swath)
            {
                const SBand& band = batch[static_cast<std::size_t>(page * swaths + swath)];
                EXPECT_TRUE(IsSame(band, alone[static_cast<std::size_t>(swath)])) << stage << page << swath;
                EXPECT_EQ(band.m_header.m_bandNo, page * swaths + swath);
                EXPECT_EQ(band.m_header.m_pageIndex, page);
                EXPECT_EQ(band.m_header.m_swathIndex, swath);
                EXPECT_EQ(band.m_header.m_firstRow, swath * 8);
                EXPECT_EQ(band.m_header.m_bandAttr, swath % 2 == 0 ? 1 : 2) << "each page begins from left to right";
            }
        }
    }
}

TEST_F(Batch, AListIsAsGoodAsAPatternAndTakesPagesInItsOrder)
{
    Pages_Write();
    PatternJob_Write("pattern.toml");
    const std::vector<SBand> pattern = Job_Convert("pattern.toml");
    File_Write(In("list.toml"), Job_Text("", "Separations = [\"p3.c.tif\", \"p1.c.tif\"]\n",
                                         "Separations = [\"p3.k.tif\", \"p1.k.tif\"]\n"));
    const std::vector<SBand> list = Job_Convert("list.toml");
    ASSERT_EQ(list.size(), std::size_t{2 * swaths});
    for (std::size_t swath = 0; swath < swaths; ++swath)
    {
        EXPECT_TRUE(IsSame(list[swath], pattern[2 * swaths + swath]));
        EXPECT_TRUE(IsSame(list[swaths + swath], pattern[swath]));
    }
    Verify_Expect("list.toml", "out.raw");
}

TEST_F(Batch, APatternFillsUpNumbersAndStartsWhereTheJobSays)
{
    Ink_Write("50% page-0009.c.tif", 4);
    Ink_Write("50% page-0010.c.tif", 5);
    File_Write(In("job.toml"), "Version = 1\n[DPOption]\nDataMapStyle = 6\nPrinterSupportBits = 1\n"
                               "PrinterDataWidth = 8\n[PrintParam]\nBitsPerPixel = 1\n[Pages]\nFirst = 9\nLast = 10\n"
                               "[CartInfo]\nNozzles = 8\n[[CartInfo.Unit]]\nUnitId = 0\n"
                               "Separation = \"50%% page-%04d.c.tif\"\n");
    EXPECT_EQ(Job_Convert("job.toml").size(), std::size_t{2 * swaths});
    Verify_Expect("job.toml", "out.raw");
    const auto answer = Boardmap_Run("explain out.raw --page 1 --row 0 --column 0 --unit 0");
    EXPECT_THAT(answer.out, HasSubstr("of page 1, from 50% page-0010.c.tif"));
}

TEST_F(Batch, APercentSignIsOneWithoutPages)
{
    Ink_Write("p%d.tif", 1);
    Job_Write("job.toml", {"p%d.tif"}, 8);
    EXPECT_EQ(Job_Convert("job.toml").size(), std::size_t{swaths});
}

TEST_F(Batch, APageWithoutAnInkIsBlankWhenTheJobSaysSo)
{
    for (const std::string missing : {"p1", "p2", "p3"})
    {
        Pages_Write();
        std::filesystem::remove(In(missing + ".k.tif"));
        PatternJob_Write("refused.toml");
        Refusal_Expect("refused.toml", "unit 3 (Black), page " + std::to_string(missing[1] - '1') + ": Separation " +
                                           missing + ".k.tif: there is no such file");
        for (const bool bSkip : {false, true})
        {
            const std::string stage = bSkip ? "[Stage]\nSkipBlank = true\n" : "";
            PatternJob_Write("missing.toml", "[Pages]\nLast = 3\nMissingIsBlank = true\n", stage);
            const std::vector<SBand> bands = Job_Convert("missing.toml");
            Verify_Expect("missing.toml", "out.raw");
            Blank_Write(missing + ".k.tif");
            const std::vector<SBand> blank = Job_Convert("missing.toml");
            std::filesystem::remove(In(missing + ".k.tif"));
            ASSERT_EQ(bands.size(), blank.size());
            for (std::size_t i = 0; i < bands.size(); ++i)
            {
                EXPECT_TRUE(IsSame(bands[i], blank[i])) << missing << ' ' << i;
                EXPECT_EQ(bands[i].m_header.m_bSkip, blank[i].m_header.m_bSkip);
            }
        }
    }
    File_Write(In("list.toml"),
               Job_Text("", "Separations = [\"\", \"p1.c.tif\"]\n", "Separations = [\"p1.k.tif\", \"\"]\n"));
    EXPECT_EQ(Job_Convert("list.toml").size(), std::size_t{2 * swaths});
    Verify_Expect("list.toml", "out.raw");
    const auto answer = Boardmap_Run("explain list.toml out.raw --page 1 --row 3 --column 4 --unit 3");
    EXPECT_THAT(answer.out, HasSubstr("of page 1, for which the unit has no separation"));
    EXPECT_EQ(answer.status, 0);
}

TEST_F(Batch, AnAllBlankPageFailsNothing)
{
    for (const int blank : {1, 2, 3})
    {
        Pages_Write();
        Blank_Write("p" + std::to_string(blank) + ".c.tif");
        Blank_Write("p" + std::to_string(blank) + ".k.tif");
        for (const std::string stage : {"ink-stripe", "one-fifo"})
        {
            const std::string kind = "[Stage]\nKind = \"" + stage + "\"\n";
            PatternJob_Write("all.toml", "[Pages]\nLast = 3\n", kind);
            EXPECT_EQ(Job_Convert("all.toml").size(), std::size_t{3 * swaths});
            Verify_Expect("all.toml", "out.raw");
            PatternJob_Write("skip.toml", "[Pages]\nLast = 3\n", kind + "SkipBlank = true\n");
            const std::vector<SBand> bands = Job_Convert("skip.toml");
            ASSERT_EQ(bands.size(), std::size_t{2 * swaths});
            for (std::size_t i = 0; i < bands.size(); ++i)
            {
                EXPECT_EQ(bands[i].m_header.m_bandNo, static_cast<int>(i));
                EXPECT_NE(bands[i].m_header.m_pageIndex, blank - 1);
            }
            Verify_Expect("skip.toml", "out.raw");
        }
    }
    for (const std::string name : {"p1", "p2", "p3"})
    {
        Blank_Write(name + ".c.tif");
        Blank_Write(name + ".k.tif");
    }
    EXPECT_TRUE(Job_Convert("skip.toml").empty()) << "a stream without bands is one";
    Verify_Expect("skip.toml", "out.raw");
    const auto tiff = Boardmap_Run("convert skip.toml --progress none");
    EXPECT_EQ(tiff.status, 1);
    EXPECT_THAT(tiff.error, HasSubstr("there is no board band"));
}

TEST_F(Batch, WhatIsWrongWithPagesIsSaid)
{
    Pages_Write();
    const auto Pattern_Refuse = [&](const std::string& pages, const std::string& cyan, const std::string& text)
    {
        File_Write(In("job.toml"), Job_Text(pages, cyan, "Separation = \"p%d.k.tif\"\n"));
        Refusal_Expect("job.toml", text);
    };
    const std::string pages = "[Pages]\nLast = 3\n";
    const std::string good = "Separation = \"p%d.c.tif\"\n";
    Pattern_Refuse(pages, "Separation = \"p1.c.tif\"\n", "each page has a file of its own");
    Pattern_Refuse(pages, "Separation = \"p%x.c.tif\"\n", "a percent sign itself is %%");
    Pattern_Refuse(pages, "Separation = \"p%d.%d.tif\"\n", "in one place only");
    Pattern_Refuse(pages, "Separation = \"p%d.c.tif%\"\n", "a percent sign itself is %%");
    Pattern_Refuse(pages, good + "Separations = [\"p1.c.tif\"]\n", "both Separation and Separations");
    Pattern_Refuse(pages, "Separations = [\"p1.c.tif\"]\n", "a job names its pages one way");
    Pattern_Refuse("[Pages]\nFirst = 1\n", good, "Last is missing from [Pages]");
    Pattern_Refuse("[Pages]\nFirst = 3\nLast = 2\n", good, "Last is 2; First is 3");
    Pattern_Refuse("[Pages]\nLast = 200000\n", good, "1 to 100000 pages");
    Pattern_Refuse("[Pages]\nLast = 3\nMissing = true\n", good, "did you mean MissingIsBlank?");
    Pattern_Refuse("[Pages]\nFirst = 4\nLast = 5\n", good, "Separation p4.c.tif: there is no such file");
    Pattern_Refuse("[Pages]\nFirst = 4\nLast = 5\nMissingIsBlank = true\n", good,
                   "Separation p4.c.tif and the others to p5.c.tif are not there");

    const auto List_Refuse = [&](const std::string& cyan, const std::string& text)
    {
        File_Write(In("job.toml"), Job_Text("", cyan, "Separations = [\"p1.k.tif\", \"p2.k.tif\"]\n"));
        Refusal_Expect("job.toml", text);
    };
    List_Refuse("Separations = [\"p1.c.tif\", \"p2.c.tif\", \"p3.c.tif\"]\n",
                "Separations has 2 names; Separations of unit 0 has 3");
    List_Refuse("Separation = \"p1.c.tif\"\n", "Separation names one file; Separations of unit 3 has 2");
    List_Refuse("Separations = [\"\", \"\"]\n", "Separations names no file");
    List_Refuse("Separations = [\"p1.c.tif\", 2]\n", "Separations holds 2; it takes the names of TIFF files");
    List_Refuse("Separations = \"p1.c.tif\"\n", "a list of names, one for each page");
    List_Refuse("Separations = [\"p1.c.tif\", \"p9.c.tif\"]\n",
                "unit 0 (Cyan), page 1: Separation p9.c.tif: there is no such file");
}

TEST_F(Batch, AnInkThatNoPageHasIsAWarning)
{
    Pages_Write();
    File_Write(In("job.toml"), Job_Text("[Pages]\nLast = 3\nMissingIsBlank = true\n", "Separation = \"p%d.c.tif\"\n",
                                        "Separation = \"p%d.gold.tif\"\n"));
    const auto result = Boardmap_Run("convert job.toml --format raw -o out.raw --progress none");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.error, HasSubstr("warning: unit 3 (Black), page 0: Separation p1.gold.tif and the others to "
                                        "p3.gold.tif are not there"));
    Verify_Expect("job.toml", "out.raw");
}

TEST_F(Batch, APageOfAnotherSizeIsNamedWithBothSizes)
{
    Pages_Write();
    Ink_Write("p2.k.tif", 2, height + 1);
    PatternJob_Write("job.toml");
    Refusal_Expect("job.toml", "unit 3 (Black), page 1: Separation p2.k.tif has 37 x 22 pixels, but p1.c.tif has "
                               "37 x 21 pixels; all separations of a job have one size");
}

TEST_F(Batch, ADamagedPageIsNamedWhenItsTurnComes)
{
    Pages_Write();
    // Rows that are said to be there, and break when they are decoded.
    std::string bytes = File_Read(In("p3.k.tif"));
    std::fill_n(bytes.begin() + 8, 16, '\x7F');
    File_Write(In("p3.k.tif"), bytes);
    PatternJob_Write("job.toml");
    const auto result = Boardmap_Run("convert job.toml --format raw -o out.raw --progress none");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.error, HasSubstr("unit 3 (Black), page 2: Separation p3.k.tif: row"));
    EXPECT_FALSE(std::filesystem::exists(In("out.raw")));
}

TEST_F(Batch, EveryCommandKnowsPages)
{
    Pages_Write();
    PatternJob_Write("job.toml");
    const auto check = Boardmap_Run("check job.toml");
    EXPECT_THAT(check.out, HasSubstr("pages           3 pages of 37 x 21 pixels; 2 units of 3 print them"));
    EXPECT_THAT(check.out, HasSubstr("9 bands of 8 nozzles, 3 for each page; the last of a page has 5 rows"));
    EXPECT_THAT(check.out, HasSubstr("unit 0 (Cyan): p%d.c.tif at positions"));
    const auto run = Boardmap_Run("convert job.toml --json --progress none");
    const auto summary = nlohmann::json::parse(run.out);
    EXPECT_EQ(summary.at("Pages"), 3);
    EXPECT_EQ(summary.at("Bands"), 9);
    EXPECT_EQ(summary.at("FirstBand"), 0);
    EXPECT_EQ(summary.at("LastBand"), 8);
    const auto info = Boardmap_Run("info job.boards.tif");
    EXPECT_THAT(info.out, HasSubstr("pages: 3 of 37 x 21 pixels"));
    EXPECT_THAT(info.out, HasSubstr("unit 0 (Cyan), prints p1.c.tif to p3.c.tif: "));
    EXPECT_THAT(info.out, HasSubstr("band 4 (page 4): page 1, swath 1, right to left, rows 8 to 15"));
    for (const std::string files : {"job.toml", "job.boards.tif", "job.toml job.boards.tif"})
    {
        const auto pixel = Boardmap_Run("explain " + files + " --page 2 --row 9 --column 4 --ink cyan");
        EXPECT_EQ(pixel.status, 0) << pixel.error;
        EXPECT_THAT(pixel.out, HasSubstr("of band 7 (page 2, swath 1, right to left) prints row 9, column 4 of page 2, "
                                         "from p3.c.tif"));
        const auto nozzle = Boardmap_Run("explain " + files + " --unit 0 --nozzle 1 --position 39 --band 7 --json");
        EXPECT_EQ(nlohmann::json::parse(nozzle.out).at("Page"), 2);
        EXPECT_EQ(nlohmann::json::parse(nozzle.out).at("Separation"), "p3.c.tif");
    }
    EXPECT_THAT(Boardmap_Run("explain job.toml --page 3 --row 9 --column 4 --ink cyan").error,
                HasSubstr("--page is 3; here it is 0 to 2"));
    EXPECT_EQ(Boardmap_Run("explain job.toml --page 1 --unit 0 --nozzle 1 --position 39 --band 7").status, 2);
}

TEST_F(Batch, ATraceHasThePages)
{
    Pages_Write();
    std::filesystem::remove(In("p2.k.tif"));
    PatternJob_Write("job.toml", "[Pages]\nLast = 3\nMissingIsBlank = true\n");
    ASSERT_EQ(Boardmap_Run("convert job.toml --format raw -o out.raw --progress none --trace t.json").status, 0);
    std::vector<int> mapped;
    std::vector<int> read;
    const auto trace = nlohmann::json::parse(File_Read(In("t.json")));
    for (const auto& event : trace.at("traceEvents"))
    {
        if (event.at("name") == "map")
        {
            mapped.push_back(event.at("args").at("page").get<int>() * swaths + event.at("args").at("swath").get<int>());
        }
        if (event.at("name") == "read")
        {
            read.push_back(event.at("args").at("page"));
        }
    }
    EXPECT_THAT(mapped, testing::ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_EQ(std::ranges::count(read, 0), 2 * swaths);
    EXPECT_EQ(std::ranges::count(read, 1), swaths) << "a page without a file is not read";
    EXPECT_EQ(std::ranges::count(read, 2), 2 * swaths);
}

TEST_F(Batch, VerifyNoticesAPageThatIsAnother)
{
    Pages_Write();
    PatternJob_Write("job.toml");
    ASSERT_EQ(Job_Convert("job.toml").size(), std::size_t{9});
    Ink_Write("p2.c.tif", 99);
    const auto changed = Boardmap_Run("verify job.toml out.raw --progress none");
    EXPECT_EQ(changed.status, 1);
    EXPECT_THAT(changed.out, HasSubstr("band 3, page 1, swath 0"));
    EXPECT_THAT(changed.out, Not(HasSubstr("page 2")));
    // A wrong m_pageIndex: one word of a header, not a page out of place.
    Pages_Write();
    std::string bytes = File_Read(In("out.raw"));
    constexpr std::size_t pageWord = 16; // behind the marker and three words
    std::size_t at = 0;
    for (int band = 0; band <= 4; ++band)
    {
        at = bytes.find("BAND", at + 1);
    }
    bytes[at + pageWord] = 0;
    File_Write(In("out.raw"), bytes);
    const auto word = Boardmap_Run("verify job.toml out.raw --progress none");
    EXPECT_THAT(word.out, HasSubstr("m_pageIndex is 0; it should be 1"));
    EXPECT_THAT(word.out, HasSubstr("1 difference from"));
}

#if !defined(_WIN32)

TEST_F(Batch, SeparationsAreOpenedPageByPage)
{
    for (int page = 1; page <= 60; ++page)
    {
        Ink_Write("p" + std::to_string(page) + ".c.tif", page);
        std::filesystem::copy_file(In("p" + std::to_string(page) + ".c.tif"),
                                   In("p" + std::to_string(page) + ".k.tif"));
    }
    PatternJob_Write("job.toml", "[Pages]\nLast = 60\n");
    const auto result = Shell_Run("ulimit -n 32; $boardmap convert job.toml --format raw -o out.raw --progress none && "
                                  "$boardmap verify job.toml out.raw --progress none");
    EXPECT_EQ(result.status, 0) << result.error;
}

#endif
