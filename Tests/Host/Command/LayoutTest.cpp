// boardmap layout: what the probing finds in the maps is held against the layouts' model, on random jobs of every map;
// and its words, JSON and picture.
#include "Tests/Host/Command/PngFile.h"
#include "Tests/Host/Command/RandomJob.h"

#include "Host/Command/Layout.h"
#include "Host/Job/JobPage.h"
#include "Host/Model/PageModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>

namespace
{

using testing::HasSubstr;
using CJson = nlohmann::json;

class Layout : public CRandomJobTest
{
protected:
    // Two units with the places 0 and 3 in frames of 8 bits, three nozzles; no separation is there.
    void SmallJob_Write()
    {
        File_Write(In("job.toml"),
                   "Version = 1\n[DPOption]\nDataMapStyle = 6\nDataPushStyle = 2\nPrinterSupportBits = 1\n"
                   "PrinterDataWidth = 8\n[PrintParam]\nBitsPerPixel = 1\n[CartInfo]\nNozzles = 3\n"
                   "[[CartInfo.Unit]]\nUnitId = 0\nName = \"A & B\"\nSeparation = \"c.tif\"\n"
                   "[[CartInfo.Unit]]\nUnitId = 3\nSeparation = \"m.tif\"\n");
    }
};

// A picture of a layout.
class CLayoutPng : public CPngFile
{
public:
    using CPngFile::CPngFile;

    // Where the cell of a bit is black, a letter for a pixel. The cells begin at 150, 82.
    std::string Letters(int frame, int bit) const
    {
        std::string letters;
        for (int y = 1; y < 36; ++y)
        {
            for (int x = 1; x < 68; ++x)
            {
                letters += Color(300 + 68 * bit + x, 164 + 36 * frame + y) == 0 ? '#' : ' ';
            }
        }
        return letters;
    }
    unsigned Ground(int frame, int bit) const { return Color(300 + 68 * bit + 4, 164 + 36 * frame + 4); }
};

std::size_t Count_Of(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
    {
        ++count;
    }
    return count;
}

} // namespace

TEST_F(Layout, FindsInTheMapsOfRandomJobsWhatTheLayoutsSay)
{
    std::set<std::string> maps;
    for (int i = 0; i < 2 * static_cast<int>(randomBoards.size()); ++i)
    {
        Job_WriteRandom(i % static_cast<int>(randomBoards.size()));
        const CJobPage page(In("job.toml"));
        const CPageModel model(Page_BoardInfo(page, ""));
        const SLayout layout = Layout_Probe(page.Job());
        ASSERT_FALSE(layout.m_bits.empty());
        for (const SLayoutBit& bit : layout.m_bits)
        {
            std::vector<std::int64_t> expected;
            for (const SModelBit& place : model.Bits_Of(*model.Unit_Find(bit.m_unitId), bit.m_nozzle, 0))
            {
                const SModelSource source = model.Source_Of(0, place);
                const bool bMine = source.m_layout.place.bDotCode ? source.m_layout.place.bDotBit
                                                                  : source.m_layout.place.bit == bit.m_bit;
                if (bMine && place.m_line == 0)
                {
                    expected.push_back(place.m_bit);
                }
            }
            std::ranges::sort(expected);
            ASSERT_EQ(bit.m_places, expected) << "unit " << bit.m_unitId << ", nozzle " << bit.m_nozzle << ", job\n"
                                              << File_Read(In("job.toml"));
        }
        maps.insert(layout.m_info.m_map);
    }
    EXPECT_EQ(maps.size(), 8U);
}

TEST_F(Layout, TheTableNamesByteAndBitWithoutASeparation)
{
    SmallJob_Write();
    const auto result = Boardmap_Run("layout job.toml");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.out,
              "Layout 5: lines of 24 bits, frames of 8. byte.bit of each bit of a nozzle; bit 0 is the most "
              "significant.\n"
              "nozzle  unit 0 (A & B)  unit 3\n"
              "0       0.0             0.3\n"
              "1       1.0             1.3\n"
              "2       2.0             2.3\n");
}

TEST_F(Layout, TheJsonHasTheBitsOfTheLine)
{
    SmallJob_Write();
    const auto result = Boardmap_Run("layout job.toml --json");
    EXPECT_EQ(result.status, 0) << result.error;
    const CJson json = CJson::parse(result.out);
    EXPECT_EQ(json["LineBits"], 24);
    EXPECT_EQ(json["Units"][1]["UnitId"], 3);
    EXPECT_EQ(json["Units"][1]["Bits"][2], CJson({{"Nozzle", 2}, {"PixelBit", 0}, {"LineBits", {19}}}));
    EXPECT_EQ(Boardmap_Run("layout job.toml --format json").out, result.out);
}

TEST_F(Layout, ThePictureHasACellForEachBitAndANumberForEachNozzle)
{
    SmallJob_Write();
    const auto result = Boardmap_Run("layout job.toml --format svg -o line.svg");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.out, "");
    const std::string svg = File_Read(In("line.svg"));
    EXPECT_EQ(Count_Of(svg, "<rect "), 1U + 2U + 24U); // the ground, the units' colours, the bits
    EXPECT_EQ(Count_Of(svg, "#eeeeee"), 18U);
    EXPECT_EQ(Count_Of(svg, "text-anchor=\"middle\">2</text>"), 2U);
    EXPECT_THAT(svg, HasSubstr("unit 0 (A &amp; B)</text>"));
    const auto part = Boardmap_Run("layout job.toml --format svg --first-frame 2 --frames 5");
    EXPECT_EQ(Count_Of(part.out, "text-anchor=\"middle\">"), 2U);
    EXPECT_THAT(part.out, HasSubstr("frame 2, byte 2</text>"));
}

TEST_F(Layout, ThePngShowsTheSameCellsInTheUnitsColours)
{
    SmallJob_Write();
    const auto result = Boardmap_Run("layout job.toml --png line.png");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.out, "");
    const CLayoutPng png(In("line.png"));
    EXPECT_EQ(png.Width(), 2 * 700);
    EXPECT_EQ(png.Height(), 2 * (82 + 3 * 18 + 10));        // a row of the legend, three frames
    EXPECT_EQ(png.Ground(0, 0), png.Color(2 * 12, 2 * 46)); // as the legend says
    EXPECT_EQ(png.Ground(0, 3), png.Color(2 * 182, 2 * 46));
    std::set<unsigned> grounds;
    for (int frame = 0; frame < 3; ++frame)
    {
        for (int bit = 0; bit < 8; ++bit)
        {
            const bool bUsed = bit == 0 || bit == 3;
            EXPECT_EQ(png.Ground(frame, bit) != 0xeeeeee, bUsed) << frame << ' ' << bit;
            EXPECT_EQ(png.Letters(frame, bit).find('#') != std::string::npos, bUsed) << frame << ' ' << bit;
            grounds.insert(png.Ground(frame, bit));
        }
        EXPECT_EQ(png.Letters(frame, 0), png.Letters(frame, 3)); // the same nozzle
    }
    EXPECT_EQ(grounds.size(), 3U);
    EXPECT_NE(png.Letters(0, 0), png.Letters(1, 0));
    EXPECT_NE(png.Letters(1, 0), png.Letters(2, 0));
}

TEST_F(Layout, ThePngGoesWhereItIsToldTo)
{
    SmallJob_Write();
    ASSERT_EQ(Boardmap_Run("layout job.toml --png line.png --first-frame 1 --frames 1").status, 0);
    const CLayoutPng part(In("line.png"));
    EXPECT_EQ(part.Height(), 2 * (82 + 18 + 10));
    ASSERT_EQ(Boardmap_Run("layout job.toml --png whole.png").status, 0);
    EXPECT_EQ(part.Letters(0, 0), CLayoutPng(In("whole.png")).Letters(1, 0));
    ASSERT_EQ(Boardmap_Run(std::string("layout job.toml --format png ") + intoFile + "piped.png").status, 0);
    EXPECT_EQ(File_Read(In("piped.png")), File_Read(In("whole.png")));
    for (const std::string more : {"--format svg", "--json", "-o other.png"})
    {
        const auto result = Boardmap_Run("layout job.toml --png line.png " + more);
        EXPECT_EQ(result.status, 2) << more;
        EXPECT_EQ(result.error, "--png says the format and the file; leave out --format, --json and --output\n");
    }
    const auto both = Boardmap_Run("layout job.toml --format svg --json");
    EXPECT_EQ(both.status, 2);
    EXPECT_EQ(both.error, "--json and --format both say the format; leave one out\n");
}

TEST_F(Layout, LettersThatTheFontLacksAreQuestionMarks)
{
    const auto Picture_Make = [&](const std::string& name)
    {
        SmallJob_Write();
        std::string job = File_Read(In("job.toml"));
        job.replace(job.find("A & B"), 5, name);
        File_Write(In("job.toml"), job);
        EXPECT_EQ(Boardmap_Run("layout job.toml --png line.png").status, 0);
        return File_Read(In("line.png"));
    };
    EXPECT_EQ(Picture_Make("Gr\u00fcn \u2713"), Picture_Make("Gr?n ?"));
    EXPECT_NE(Picture_Make("Gr\u00fcn"), Picture_Make("Grun"));
}

TEST_F(Layout, WhatIsNoJobIsRefusedAndNothingIsWritten)
{
    SmallJob_Write();
    EXPECT_EQ(Boardmap_Run("layout none.toml").status, 2);
    const auto frame = Boardmap_Run("layout job.toml --format svg --first-frame 3");
    EXPECT_EQ(frame.status, 2);
    EXPECT_EQ(frame.error, "--first-frame is 3; a line has the frames 0 to 2\n");
    File_Write(In("job.toml"), File_Read(In("job.toml")) + "Nozzles = 4\n");
    const auto broken = Boardmap_Run("layout job.toml --format svg -o line.svg");
    EXPECT_EQ(broken.status, 2);
    EXPECT_THAT(broken.error, HasSubstr("job.toml:"));
    EXPECT_FALSE(std::filesystem::exists(In("line.svg")));
    SmallJob_Write();
    const auto folder = Boardmap_Run("layout job.toml --png none/line.png");
    EXPECT_EQ(folder.status, 2);
    EXPECT_EQ(std::count(folder.error.begin(), folder.error.end(), '\n'), 1) << folder.error;
    EXPECT_THAT(folder.error, HasSubstr("none"));
    EXPECT_EQ(Files(), std::vector<std::string>{"job.toml"});
}

#if !defined(_WIN32)

TEST_F(Layout, AClosedPipeFailsTheRun)
{
    SmallJob_Write();
    const auto closed = Shell_Run("{ sleep 0.2; \"$boardmap\" layout job.toml; echo $? >status; } | true; sleep 0.5; "
                                  "cat status");
    EXPECT_EQ(closed.out, "1\n");
    EXPECT_THAT(closed.error, HasSubstr("standard output"));
}

TEST_F(Layout, AFullDiskFailsTheRunAndLeavesNothing)
{
    SmallJob_Write();
    const auto device = Boardmap_Run("layout job.toml --png /dev/full");
    EXPECT_EQ(device.status, 1);
    EXPECT_EQ(device.error, "/dev/full: cannot be written: No space left on device\n");
    const auto limited =
        Shell_Run("trap '' XFSZ; ulimit -f 1; \"$boardmap\" layout job.toml --png line.png"); // 512 bytes
    EXPECT_EQ(limited.status, 1);
    EXPECT_THAT(limited.error, HasSubstr("line.png: "));
    EXPECT_EQ(std::count(limited.error.begin(), limited.error.end(), '\n'), 1) << limited.error;
    EXPECT_EQ(Files(), std::vector<std::string>{"job.toml"});
}

#endif
