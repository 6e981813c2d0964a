// Jobs split into parts and joined: the bytes of an undivided run however it is split, and parts that do not fit.
#include "Host/Board/BoardReader.h"
#include "Tests/Host/Command/CommandSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <random>

using testing::HasSubstr;

namespace
{

class Join : public CCommandTest
{
protected:
    // Two pages of four swaths, units with offsets, a third with stripes; the second swath of the second page is blank.
    void Job_Make(const std::string& stage = "", const std::string& name = "job.toml") const
    {
        constexpr int width = 41;
        constexpr int height = 30;
        for (int page = 1; page <= 2; ++page)
        {
            for (const std::string ink : {"c", "k"})
            {
                Separation_Write("p" + std::to_string(page) + "." + ink + ".tif", width, height,
                                 [&](int x, int y)
                                 {
                                     const bool bBlank = page == 2 && y >= 8 && y < 16;
                                     return !bBlank && (x * 7 + y * 13 + x * y * page + ink[0]) % 5 == 0;
                                 });
            }
        }
        File_Write(In(name), "Version = 1\n" + stage +
                                 "[DPOption]\nDataMapStyle = 6\nDataPushStyle = 2\nPrinterSupportBits = 1\n"
                                 "PrinterDataWidth = 8\n[PrintParam]\nBitsPerPixel = 1\nBidirectional = true\n"
                                 "[InkStripe]\nLeftStripeWidth = 6\nRightStripeWidth = 4\nUnitPitch = 2\n"
                                 "UnitPositionCount = 2\n[Pages]\nLast = 2\n[CartInfo]\nNozzles = 8\n"
                                 "[[CartInfo.Unit]]\nUnitId = 0\nSeparation = \"p%d.c.tif\"\nHorizon_1 = 3\n"
                                 "[[CartInfo.Unit]]\nUnitId = 3\nSeparation = \"p%d.k.tif\"\nHorizon_2 = 2\n"
                                 "[[CartInfo.Unit]]\nUnitId = 5\nUnitPosition = 1\nStripeColor = \"Full\"\n");
    }

    SCommandResult Run(const std::string& arguments) const { return Boardmap_Run(arguments + " --progress none"); }

    void Part_Make(const std::string& bands, const std::string& output, const std::string& options = "") const
    {
        const auto result = Run("convert job.toml --bands " + bands + " -o " + output + ' ' + options);
        ASSERT_EQ(result.status, 0) << result.error;
    }

    void Refusal_Expect(const std::string& parts, const std::string& text) const
    {
        File_Write(In("kept.raw"), "kept");
        const auto result = Run("join " + parts + " -o kept.raw");
        EXPECT_EQ(result.status, 2) << parts;
        EXPECT_THAT(result.error, HasSubstr(text)) << parts;
        EXPECT_EQ(File_Read(In("kept.raw")), "kept") << parts;
    }

    int Number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(m_random); }

    std::mt19937 m_random{4711};
};

constexpr int bands = 8;

} // namespace

TEST_F(Join, AnySplitGivesTheBytesOfAnUndividedRun)
{
    struct SFormat
    {
        std::string m_name;
        std::string m_convert;
        std::string m_join;
    };
    const std::vector<SFormat> formats = {
        {"raw", "--format raw", ""}, {"tif", "", ""}, {"lzw.tif", "--compress lzw", "--compress lzw"}};
    for (const std::string stage : {"", "[Stage]\nKind = \"one-fifo\"\n", "[Stage]\nSkipBlank = true\n",
                                    "[Stage]\nKind = \"one-fifo\"\nSkipBlank = true\n"})
    {
        Job_Make(stage);
        for (const SFormat& format : formats)
        {
            ASSERT_EQ(Run("convert job.toml -o whole." + format.m_name + ' ' + format.m_convert).status, 0);
            std::vector<std::string> parts;
            for (int first = 0; first < bands;)
            {
                // The blank swath is no TIFF by itself.
                const int last = std::min(first + Number(first == 5 ? 1 : 0, 3), bands - 1);
                parts.push_back("part-" + std::to_string(first) + '.' + format.m_name);
                Part_Make(std::to_string(first) + ".." + std::to_string(last), parts.back(), format.m_convert);
                first = last + 1;
            }
            std::ranges::shuffle(parts, m_random);
            std::string names;
            for (const std::string& part : parts)
            {
                names += part + ' ';
            }
            const auto joined = Run("join " + names + " -o joined." + format.m_name + ' ' + format.m_join);
            ASSERT_EQ(joined.status, 0) << joined.error;
            EXPECT_THAT(joined.out, HasSubstr(std::to_string(parts.size()) + " parts"));
            EXPECT_EQ(File_Read(In("joined." + format.m_name)), File_Read(In("whole." + format.m_name)))
                << stage << names;
        }
    }
}

TEST_F(Join, SinglePartsOfOneBandEach)
{
    Job_Make("[Stage]\nSkipBlank = true\n");
    ASSERT_EQ(Run("convert job.toml --format raw -o whole.raw").status, 0);
    std::string names;
    for (int band = 0; band < bands; ++band)
    {
        const std::string name = "part-" + std::to_string(band) + ".raw";
        Part_Make(std::to_string(band), name, "--format raw");
        names += name + ' ';
        const auto info = Run("info " + name);
        EXPECT_THAT(Boardmap_Run("info " + name).out,
                    HasSubstr("part: bands " + std::to_string(band) + " to " + std::to_string(band) + " of 8"));
    }
    ASSERT_EQ(Run("join " + names + " -o joined.raw").status, 0);
    EXPECT_EQ(File_Read(In("joined.raw")), File_Read(In("whole.raw")));
    // Blank: a stream has room for nothing, a TIFF has not.
    const auto blank = Run("convert job.toml --bands 5 -o blank.tif");
    EXPECT_EQ(blank.status, 1);
    EXPECT_THAT(blank.error, HasSubstr("--format raw"));
    const auto json = Run("join " + names + " -o joined.tif --format tiff --json");
    EXPECT_EQ(nlohmann::json::parse(json.out).at("Bands"), 7);
    EXPECT_EQ(nlohmann::json::parse(json.out).at("Parts"), 8);
    ASSERT_EQ(Run("convert job.toml -o whole.tif").status, 0);
    EXPECT_EQ(File_Read(In("joined.tif")), File_Read(In("whole.tif"))) << "parts of the other format";
}

TEST_F(Join, ARangeIsThoseBandsOfTheJob)
{
    Job_Make();
    Part_Make("6..99", "end.raw", "--format raw");
    EXPECT_THAT(Boardmap_Run("info end.raw").out, HasSubstr("part: bands 6 to 7 of 8"));
    Part_Make("..7", "all.raw", "--format raw");
    ASSERT_EQ(Run("convert job.toml --format raw -o whole.raw").status, 0);
    EXPECT_EQ(File_Read(In("all.raw")), File_Read(In("whole.raw"))) << "all of it is no part";
    for (const std::string range : {"8", "8..9", "5..4", "a..b", "-1"})
    {
        const auto result = Run("convert job.toml --format raw -o none.raw --bands=" + range);
        EXPECT_EQ(result.status, 2) << range;
        EXPECT_THAT(result.error, HasSubstr("--bands"));
    }
    EXPECT_FALSE(std::filesystem::exists(In("none.raw")));
}

TEST_F(Join, APartIsVerifiedAndExplainedAsWhatItIs)
{
    for (const std::string stage : {"", "[Stage]\nSkipBlank = true\n"})
    {
        Job_Make(stage);
        Part_Make("3..6", "part.raw", "--format raw");
        const auto verified = Run("verify job.toml part.raw");
        EXPECT_EQ(verified.status, 0) << verified.out << verified.error;
        const auto pixel = Boardmap_Run("explain job.toml part.raw --page 1 --row 2 --column 5 --unit 3");
        EXPECT_EQ(pixel.status, 0) << pixel.out << pixel.error;
        EXPECT_THAT(pixel.out, HasSubstr("of band 1 (page 1, swath 0, left to right)"));
        const auto outside = Boardmap_Run("explain job.toml part.raw --row 2 --column 5 --unit 3");
        EXPECT_EQ(outside.status, 2);
        EXPECT_THAT(outside.error, HasSubstr("is the part of the bands 3 to 6 of the job; the row is in band 0"));
        // One band less is one that is missing.
        std::string bytes = File_Read(In("part.raw"));
        const std::size_t last = bytes.rfind("BAND");
        const std::size_t end = bytes.rfind("ENDB");
        bytes.erase(last, end - last);
        bytes[bytes.size() - 8] = static_cast<char>(bytes[bytes.size() - 8] - 1);
        File_Write(In("short.raw"), bytes);
        const auto missing = Run("verify job.toml short.raw");
        EXPECT_EQ(missing.status, 1);
        EXPECT_THAT(missing.out, HasSubstr("page 1, swath 2: this band is missing"));
    }
}

TEST_F(Join, PartsThatAreNotOneJobAreRefused)
{
    Job_Make();
    Part_Make("0..2", "a.raw", "--format raw");
    Part_Make("3..5", "b.raw", "--format raw");
    Part_Make("6..7", "c.raw", "--format raw");
    Part_Make("4..7", "d.raw", "--format raw");
    Refusal_Expect("a.raw b.raw", "bands 6 to 7 of the job are in none of the parts; b.raw ends with band 5");
    Refusal_Expect("b.raw c.raw", "bands 0 to 2 of the job are in none of the parts; b.raw begins with band 3");
    Refusal_Expect("a.raw d.raw",
                   "band 3 of the job is in none of the parts; a.raw ends with band 2; d.raw begins with "
                   "band 4");
    Refusal_Expect("a.raw b.raw d.raw", "d.raw: has bands 4 to 5 of the job, which b.raw has, too");
    Refusal_Expect("a.raw b.raw c.raw a.raw", "a.raw: has bands 0 to 2 of the job, which a.raw has, too");
    Refusal_Expect("a.raw b.raw none.raw", "none.raw: there is no such file");
    Refusal_Expect("a.raw b.raw job.toml", "job.toml");
    ASSERT_EQ(Run("convert job.toml --format raw -o whole.raw").status, 0);
    Refusal_Expect("whole.raw", "whole.raw: is the output of a whole job");
    EXPECT_THAT(Run("join a.raw b.raw c.raw").error, HasSubstr("-o is missing"));
    EXPECT_THAT(Run("join a.raw b.raw c.raw -o b.raw").error, HasSubstr("b.raw: is a part and the output"));

    Job_Make("[Stage]\nKind = \"one-fifo\"\n");
    Part_Make("6..7", "foreign.raw", "--format raw");
    Refusal_Expect("a.raw b.raw foreign.raw", "foreign.raw: is no part of the same job as a.raw: Stage of the board "
                                              "info differs");
}

TEST_F(Join, ADamagedPartIsNamedAndLeavesTheOutputAlone)
{
    Job_Make();
    for (const std::string format : {"raw", "tif"})
    {
        const std::string option = format == "raw" ? "--format raw" : "";
        Part_Make("0..3", "a." + format, option);
        Part_Make("4..7", "b." + format, option);
        const std::string bytes = File_Read(In("b." + format));
        File_Write(In("b." + format), bytes.substr(0, bytes.size() - bytes.size() / 3));
        Refusal_Expect("a." + format + " b." + format, "b." + format);
    }
    // Bands out of their order.
    Part_Make("4..7", "b.raw", "--format raw");
    std::string bytes = File_Read(In("b.raw"));
    constexpr std::size_t swathWord = 12; // behind the marker and two words
    bytes[bytes.find("BAND", bytes.find("BAND") + 4) + swathWord] = 3;
    File_Write(In("b.raw"), bytes);
    Refusal_Expect("a.raw b.raw", "a band of page 1, swath 3 stands where band 5 of the job should");
}

#if !defined(_WIN32)

TEST_F(Join, FourWorkersOfGnuParallelMakeTheBytesOfOne)
{
    Job_Make("[Stage]\nSkipBlank = true\n");
    const auto result = Shell_Run("$boardmap convert job.toml --format raw -o whole.raw --progress none && "
                                  "parallel --will-cite --jobs 4 $boardmap convert job.toml --bands {} --format raw "
                                  "-o part-{}.raw --progress none ::: 0..1 2..3 4..4 5..7 && "
                                  "$boardmap join part-*.raw -o joined.raw --progress none && "
                                  "cmp whole.raw joined.raw");
    EXPECT_EQ(result.status, 0) << result.out << result.error;
}

#endif
