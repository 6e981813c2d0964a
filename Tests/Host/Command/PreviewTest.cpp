// boardmap preview. Its pictures are read back with libpng and held against the separations, dot by dot, and against
// pages that are small enough to work out by hand; the outputs are the real program's.
#include "Tests/Host/Command/PngFile.h"
#include "Tests/Host/Command/RandomJob.h"
#include "Tests/Host/Verify/VerifySupport.h"

#include "Host/Board/BoardReader.h"
#include "Host/Job/Job.h"
#include "Host/Picture/InkColor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>

namespace
{

using testing::HasSubstr;
using CJson = nlohmann::json;

constexpr unsigned paper = 0xffffff;
constexpr unsigned around = 0xf0f0f0;

unsigned Grey(int level)
{
    return static_cast<unsigned>(level) * 0x10101U;
}

// What a pixel of this value shows of a unit alone, in an output that says this of itself.
int Level_Of(int value, const SBoardInfo& info)
{
    const std::array<std::string, 4> sizes = {"", "Small", "Middle", "Big"};
    if (!info.m_dotSizeMode.empty())
    {
        const auto size = std::ranges::find(sizes, info.m_dotSizeMode) - sizes.begin();
        return value == 0 ? 255 : 255 - 85 * static_cast<int>(size);
    }
    return info.m_bitsPerPixel == 1 ? 255 * (1 - value) : 255 - 85 * value;
}

// A job of two units that print a page of 6 x 5, by heads of 4 nozzles, in both directions, with offsets and zones; a
// third unit has stripes of 2 positions, the rightmost ones of its zones.
class Preview : public CRandomJobTest
{
protected:
    void SmallPage_Write(const std::string& job, const std::string& map = "6")
    {
        Separation_Write("cyan.tif", 6, 5, [&](int x, int y) { return Ink(0, x, y); });
        Separation_Write("magenta.tif", 6, 5, [&](int x, int y) { return Ink(1, x, y); });
        File_Write(In(job),
                   "Version = 1\n[DPOption]\nDataMapStyle = " + map +
                       "\nDataPushStyle = 2\nPrinterSupportBits = 1\nPrinterDataWidth = 8\n[PrintParam]\n"
                       "BitsPerPixel = 1\nBidirectional = true\n[InkStripe]\nLeftStripeWidth = 6\n"
                       "RightStripeWidth = 7\nUnitPitch = 2\nUnitPositionCount = 3\n[CartInfo]\nNozzles = 4\n"
                       "[[CartInfo.Unit]]\nUnitId = 0\nName = \"Cyan\"\nSeparation = \"cyan.tif\"\nHorizon_1 = 3\n"
                       "[[CartInfo.Unit]]\nUnitId = 1\nName = \"Magenta\"\nSeparation = \"magenta.tif\"\n"
                       "Horizon_2 = 2\n[[CartInfo.Unit]]\nUnitId = 2\nName = \"Primer\"\nStripeColor = \"Full\"\n"
                       "Horizon_1 = 1\n");
    }
    bool Ink(int unit, int x, int y) const { return m_ink[static_cast<std::size_t>(unit)].contains({x, y}); }

    std::array<std::set<std::pair<int, int>>, 2> m_ink = {std::set<std::pair<int, int>>{{0, 0}, {3, 2}, {5, 4}},
                                                          std::set<std::pair<int, int>>{{3, 2}, {1, 4}}};
};

} // namespace

TEST_F(Preview, PutsEveryDotOfRandomJobsOfEveryMapBackWhereItsSeparationHasIt)
{
    std::set<std::string> maps;
    for (int i = 0; i < 2 * static_cast<int>(randomBoards.size()); ++i)
    {
        Job_WriteRandom(i % static_cast<int>(randomBoards.size()));
        std::map<SPixel, int> values;
        Pages_Write([&](const SPixel& pixel) { return values[pixel] = Number(0, (1 << m_bits) - 1); });
        ASSERT_EQ(Boardmap_Run(std::string("convert job.toml -o out --format ") + (i % 2 == 0 ? "raw" : "tiff")).status,
                  0);
        const SBoardInfo info = CBoardReader::Open(In("out"))->BoardInfo();
        maps.insert(info.m_map);
        const auto result = Boardmap_Run("preview out --planes --reduce 1 --without-zones -o p.png");
        ASSERT_EQ(result.status, 0) << result.error << File_Read(In("job.toml"));
        for (const auto& [unit, name] : m_pages)
        {
            const CPngFile png(In("p.unit-" + std::to_string(unit) + ".png"));
            ASSERT_EQ(png.Width(), m_columns);
            ASSERT_EQ(png.Height(), m_rows);
            for (const auto& [pixel, value] : values)
            {
                const bool bLost = info.m_map == "1" && info.m_nozzles % 2 == 1 &&
                                   pixel.row % info.m_nozzles == info.m_nozzles - 1; // has no place there
                if (pixel.unit == unit)
                {
                    ASSERT_EQ(png.Color(pixel.column, pixel.row), Grey(bLost ? 255 : Level_Of(value, info)))
                        << pixel.row << ' ' << pixel.column << File_Read(In("job.toml"));
                }
            }
        }
    }
    EXPECT_EQ(maps, (std::set<std::string>{"1", "2", "03", "03_01", "5", "6", "7", "8"}));
}

TEST_F(Preview, ShowsTheExampleJobsAsTheirSeparationsAreFromBothFormats)
{
    int jobs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(DEMO_JOB_FOLDER))
    {
        const SJob job = Job_Load(entry.path());
        m_columns = 37;
        m_rows = 450;
        m_bits = job.m_bitsPerPixel;
        m_pages.clear();
        std::map<std::string, int> first; // units may share a separation
        for (const SJobUnit& unit : job.m_units)
        {
            if (unit.HasSeparation() && first.try_emplace(unit.m_separation, unit.m_unitId).second)
            {
                m_pages[unit.m_unitId] = unit.m_separation;
            }
        }
        std::map<SPixel, int> values;
        Pages_Write([&](const SPixel& pixel) { return values[pixel] = Number(0, (1 << m_bits) - 1); });
        std::filesystem::copy(entry.path(), In("job.toml"), std::filesystem::copy_options::overwrite_existing);
        for (const std::string format : {"tiff", "raw"})
        {
            ASSERT_EQ(Boardmap_Run("convert job.toml -o " + format + ".out --format " + format).status, 0);
            const auto result =
                Boardmap_Run("preview " + format + ".out --planes --reduce 1 --without-zones -o " + format + ".png");
            ASSERT_EQ(result.status, 0) << result.error;
        }
        const SBoardInfo info = CBoardReader::Open(In("raw.out"))->BoardInfo();
        for (const SJobUnit& unit : job.m_units)
        {
            const std::string ending = ".unit-" + std::to_string(unit.m_unitId) + ".png";
            const CPngFile png(In("tiff" + ending));
            EXPECT_EQ(File_Read(In("tiff" + ending)), File_Read(In("raw" + ending)));
            for (int row = 0; row < m_rows; ++row)
            {
                for (int column = 0; column < m_columns; ++column)
                {
                    const int value = unit.HasSeparation() ? values.at({first.at(unit.m_separation), row, column}) : 0;
                    ASSERT_EQ(png.Color(column, row), Grey(Level_Of(value, info)))
                        << entry.path() << " unit " << unit.m_unitId << ' ' << row << ' ' << column;
                }
            }
        }
        ++jobs;
    }
    EXPECT_EQ(jobs, 10);
}

TEST_F(Preview, ComposesInksStripesAndPaper)
{
    SmallPage_Write("job.toml");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.tif").status, 0);
    const auto result = Boardmap_Run("preview out.tif --ink primer=#80FF00 --ink Cyan=0000ff --ink cyan=#00AEEF");
    EXPECT_EQ(result.status, 0) << result.error;
    const CPngFile png(In("out.png"));
    ASSERT_EQ(png.Width(), 6 + 6 + 7);
    ASSERT_EQ(png.Height(), 8); // two swaths; the page ends in the second one
    for (int y = 0; y < 8; ++y)
    {
        for (int x = -6; x < 13; ++x)
        {
            const bool bPage = x >= 0 && x < 6 && y < 5;
            const bool bStripe = (x >= -2 && x < 0) || x >= 11;
            const bool bCyan = bPage && Ink(0, x, y);
            const bool bMagenta = bPage && Ink(1, x, y);
            const unsigned expected = bCyan && bMagenta ? 0x000083 // each channel of the one dims that of the other
                                      : bCyan           ? 0x00aeef
                                      : bMagenta        ? 0xec008c
                                      : bStripe         ? 0x78f000 // on the ground around the page
                                      : bPage           ? paper
                                                        : around;
            EXPECT_EQ(png.Color(x + 6, y), expected) << x << ' ' << y;
        }
    }
    EXPECT_THAT(result.out, HasSubstr("out.tif: page 0, 6 x 5 dots; 2 bands for 2 swaths\n"
                                      "unit  ink        color  dots on the page  coverage  dots beside it\n"
                                      "0     Cyan     #00aeef                 3   10.00 %               0\n"
                                      "1     Magenta  #ec008c                 2    6.67 %               0\n"
                                      "2     Primer   #80ff00                 0    0.00 %              32\n"
                                      "out.png: 19 x 8 pixels, rows 0 to 7, columns -6 to 12\n"));
}

TEST_F(Preview, AveragesTheColoursOfSquaresOfDotsAndOfThoseThatTheEdgeCutsOff)
{
    SmallPage_Write("job.toml");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.tif").status, 0);
    ASSERT_EQ(Boardmap_Run("preview out.tif --reduce 4 --without-zones -o p.png").status, 0);
    const CPngFile png(In("p.png"));
    ASSERT_EQ(png.Width(), 2);
    ASSERT_EQ(png.Height(), 2);
    const auto Mean = [](int count, std::initializer_list<unsigned> inks)
    {
        unsigned color = 0;
        for (const int shift : {16, 8, 0})
        {
            int sum = 255 * (count - static_cast<int>(inks.size()));
            for (const unsigned ink : inks)
            {
                sum += static_cast<int>(ink >> shift & 0xFFU);
            }
            color |= static_cast<unsigned>((sum + count / 2) / count) << shift;
        }
        return color;
    };
    EXPECT_EQ(png.Color(0, 0), Mean(16, {0x00aeef, 0x000083})); // a row of the page goes over two swaths
    EXPECT_EQ(png.Color(1, 0), paper);
    EXPECT_EQ(png.Color(0, 1), Mean(4, {0xec008c}));
    EXPECT_EQ(png.Color(1, 1), Mean(2, {0x00aeef}));
}

TEST_F(Preview, ShowsAPartDotByDot)
{
    SmallPage_Write("job.toml");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.tif").status, 0);
    ASSERT_EQ(Boardmap_Run("preview out.tif -o whole.png").status, 0);
    ASSERT_EQ(Boardmap_Run("preview out.tif --rows 2..4 --columns=-3..4 -o part.png").status, 0);
    const CPngFile whole(In("whole.png"));
    const CPngFile part(In("part.png"));
    ASSERT_EQ(part.Width(), 8);
    ASSERT_EQ(part.Height(), 3);
    for (int y = 0; y < 3; ++y)
    {
        for (int x = 0; x < 8; ++x)
        {
            EXPECT_EQ(part.Color(x, y), whole.Color(x + 3, y + 2));
        }
    }
}

TEST_F(Preview, StripesStandInTheZonesOfAUnitThatPrintsInBothDirections)
{
    SmallPage_Write("job.toml");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.raw --format raw").status, 0);
    ASSERT_EQ(Boardmap_Run("preview out.raw --unit 2 -o p.png").status, 0);
    const CPngFile png(In("p.png"));
    for (int y = 0; y < 8; ++y)
    {
        std::string row;
        for (int x = 0; x < png.Width(); ++x)
        {
            row += png.Color(x, y) == 0 ? '#' : png.Color(x, y) == paper ? '.' : '?';
        }
        EXPECT_EQ(row, "....##...........##");
    }
}

TEST_F(Preview, JsonHasTheNumbersOfTheText)
{
    SmallPage_Write("job.toml");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.tif").status, 0);
    const auto result = Boardmap_Run("preview out.tif --json");
    ASSERT_EQ(result.status, 0) << result.error;
    const CJson json = CJson::parse(result.out);
    EXPECT_EQ(json["Output"], "out.tif");
    EXPECT_EQ(json["Page"], 0);
    EXPECT_EQ(json["Pages"], CJson::array({0}));
    EXPECT_EQ(json["Units"][1],
              CJson::parse(R"({"UnitId":1,"Name":"Magenta","Color":"#ec008c","Page":{"Dots":2},"Beside":{"Dots":0},
                               "Coverage":6.666666666666667})"));
    EXPECT_EQ(json["Pictures"][0],
              CJson::parse(R"({"File":"out.png","Width":19,"Height":8,"Reduce":1,"FirstRow":0,"RowCount":8,
                               "FirstColumn":-6,"ColumnCount":19})"));
}

TEST_F(Preview, DropSizesAreLevelsAndAreCountedApart)
{
    m_pages = {{0, "grey.tif"}};
    m_columns = 4;
    m_rows = 2;
    m_bits = 2;
    Pages_Write([](const SPixel& pixel) { return pixel.row == 0 ? pixel.column : 3; });
    File_Write(In("job.toml"), "Version = 1\n[DPOption]\nDataMapStyle = 9\nPrinterDataWidth = 8\n[PrintParam]\n"
                               "BitsPerPixel = 2\n[CartInfo]\nNozzles = 4\n[[CartInfo.Unit]]\nUnitId = 0\n"
                               "Name = \"Black\"\nSeparation = \"grey.tif\"\n");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.tif").status, 0);
    const auto result = Boardmap_Run("preview out.tif --ink Black=#000000");
    ASSERT_EQ(result.status, 0) << result.error;
    const CPngFile png(In("out.png"));
    for (int value = 0; value < 4; ++value)
    {
        EXPECT_EQ(png.Color(value, 0), Grey(255 - 85 * value));
        EXPECT_EQ(png.Color(value, 1), 0U);
    }
    EXPECT_THAT(result.out,
                HasSubstr("unit  ink      color  dots on the page  coverage  small  middle  big  dots beside it\n"
                          "0     Black  #000000                 7   87.50 %      1       1    5               0\n"));
}

TEST_F(Preview, DiffPaintsWhatIsInOneOutputOnlyAndKeepsItInSight)
{
    SmallPage_Write("job.toml");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o a.tif").status, 0);
    m_ink[0].erase({0, 0});
    m_ink[0].insert({4, 1});
    SmallPage_Write("other.toml", "7"); // another layout
    ASSERT_EQ(Boardmap_Run("convert other.toml -o b.raw --format raw").status, 0);
    const auto result = Boardmap_Run("preview --diff a.tif b.raw -o d.png --without-zones");
    EXPECT_EQ(result.status, 1) << result.error;
    EXPECT_EQ(result.out, "A a.tif, B b.raw: 2 dots differ\n"
                          "unit  ink      only in A  only in B  of another size  the same in both\n"
                          "0     Cyan             1          1                0                 2\n"
                          "1     Magenta          0          0                0                 2\n"
                          "2     Primer           0          0                0                32\n"
                          "d.png: 6 x 5 pixels, rows 0 to 4, columns 0 to 5\n");
    const CPngFile png(In("d.png"));
    EXPECT_EQ(png.Color(0, 0), 0xd62728U);
    EXPECT_EQ(png.Color(4, 1), 0x1f77ffU);
    EXPECT_EQ(png.Color(3, 2), 0xc0c0c0U);
    EXPECT_EQ(png.Color(1, 0), paper);
    ASSERT_EQ(Boardmap_Run("preview --diff a.tif b.raw -o d.png --without-zones --reduce 3").status, 1);
    const CPngFile small(In("d.png"));
    EXPECT_EQ(small.Color(0, 0), 0xd62728U) << "one dot of nine";
    EXPECT_EQ(small.Color(1, 0), 0x1f77ffU);
    ASSERT_EQ(Boardmap_Run("preview --diff a.tif b.raw -o d.png --without-zones --reduce 6").status, 1);
    EXPECT_EQ(CPngFile(In("d.png")).Color(0, 0), 0x8b1fb0U) << "both kinds in one pixel";
    const auto same = Boardmap_Run("preview --diff a.tif a.tif -o d.png --json");
    EXPECT_EQ(same.status, 0);
    EXPECT_EQ(CJson::parse(same.out)["Equal"], true);
    EXPECT_EQ(Boardmap_Run("preview --diff a.tif b.raw -o d.png --unit 1").status, 0) << "magenta is the same";
}

TEST_F(Preview, DiffTellsDropSizesApart)
{
    m_pages = {{0, "grey.tif"}};
    m_columns = 4;
    m_rows = 1;
    m_bits = 2;
    File_Write(In("job.toml"), "Version = 1\n[DPOption]\nDataMapStyle = 9\nPrinterDataWidth = 8\n[PrintParam]\n"
                               "BitsPerPixel = 2\n[CartInfo]\nNozzles = 4\n[[CartInfo.Unit]]\nUnitId = 0\n"
                               "Separation = \"grey.tif\"\n");
    Pages_Write([](const SPixel& pixel) { return pixel.column; });
    ASSERT_EQ(Boardmap_Run("convert job.toml -o a.tif").status, 0);
    Pages_Write([](const SPixel& pixel) { return pixel.column == 3 ? 3 : 1; });
    ASSERT_EQ(Boardmap_Run("convert job.toml -o b.tif").status, 0);
    const CJson json = CJson::parse(Boardmap_Run("preview --diff a.tif b.tif -o d.png --json").out);
    EXPECT_EQ(json["Units"][0], CJson::parse(R"({"UnitId":0,"Name":"","OnlyA":0,"OnlyB":1,"OtherSize":1,"Both":2})"));
    EXPECT_EQ(CPngFile(In("d.png")).Color(2, 0), 0xff9f0eU);
}

TEST_F(Preview, DiffRefusesPagesOfAnotherShape)
{
    SmallPage_Write("job.toml");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o a.tif").status, 0);
    std::string text = File_Read(In("job.toml"));
    text.replace(text.find("RightStripeWidth = 7"), 20, "RightStripeWidth = 8");
    File_Write(In("job.toml"), text);
    ASSERT_EQ(Boardmap_Run("convert job.toml -o b.tif").status, 0);
    const auto result = Boardmap_Run("preview --diff a.tif b.tif -o d.png");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.error, "a.tif and b.tif: the pages have not the same shape: RightStripeWidth is 7 and 8; only "
                            "outputs of one page and carriage can be compared\n");
    EXPECT_FALSE(std::filesystem::exists(In("d.png")));
}

TEST_F(Preview, RefusesWhatMakesNoSenseInOneSentenceAndLeavesNothing)
{
    SmallPage_Write("job.toml");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.tif").status, 0);
    const std::string before = File_Read(In("out.tif"));
    const auto files = Files();
    Refusals_Check({
        {"preview out.tif --unit 7", "--unit is 7; the output has 0, 1 and 2\n"},
        {"preview out.tif --page 3", "out.tif: --page is 3; the file has 0\n"},
        {"preview out.tif --rows 4..9", "--rows is 4..9; the picture has 0 to 7\n"},
        {"preview out.tif --columns=-7..0", "--columns is -7..0; the picture has -6 to 12\n"},
        {"preview out.tif --rows 5..4", "--rows is 5..4; the last one cannot be before the first\n"},
        {"preview out.tif --rows some", "--rows is some; it is A..B, the first and the last of them\n"},
        {"preview out.tif --ink Green=#00ff00",
         "--ink names Green, which no unit has; there are Cyan, Magenta and Primer\n"},
        {"preview out.tif --ink Cyan=blue",
         "--ink is Cyan=blue; it is NAME=#RRGGBB, a unit's name or separation, and six hexadecimal digits\n"},
        {"preview out.tif --diff", "--diff needs two outputs, A and B\n"},
        {"preview out.tif out.tif", "one output is shown at a time; --diff compares two\n"},
        {"preview out.tif --planes --unit 1", "--planes makes a picture of every unit; leave out --diff and --unit\n"},
        {"preview out.tif -o out.tif", "out.tif: is the output that is to be shown; name another file\n"},
        {"preview out.tif -o - --json", "standard output takes the picture or the JSON; name a file for one of them\n"},
        {"preview out.tif -o none/p.png", "none/p.png: there is no folder none\n"},
        {"preview none.tif", "none.tif: there is no such file\n"},
        {"preview job.toml", "job.toml: byte 0: this is no board stream\n"},
    });
    EXPECT_EQ(File_Read(In("out.tif")), before);
    const auto old = Boardmap_Run("preview '" VERSION_1_FOLDER "/boards.tif' -o p.png");
    EXPECT_EQ(old.status, 2);
    EXPECT_THAT(old.error, HasSubstr("is of version 1, which does not say where its bits are on the page"));
    EXPECT_EQ(Files(), files);
}

TEST_F(Preview, TakesTheBandsOfOnePageOnly)
{
    SmallPage_Write("first.toml");
    ASSERT_EQ(Boardmap_Run("convert first.toml -o first.tif").status, 0);
    ASSERT_EQ(Boardmap_Run("preview first.tif -o first.png").status, 0);
    for (const std::string ink : {"cyan", "magenta"})
    {
        std::filesystem::copy(In(ink + ".tif"), In(ink + ".1.tif"));
    }
    m_ink[0] = {{2, 1}, {4, 4}};
    m_ink[1] = {{5, 0}};
    SmallPage_Write("job.toml");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o second.tif").status, 0);
    ASSERT_EQ(Boardmap_Run("preview second.tif -o second.png").status, 0);
    std::string text = File_Read(In("job.toml"));
    for (const std::string ink : {"cyan", "magenta"})
    {
        const std::string one = "Separation = \"" + ink + ".tif\"";
        text.replace(text.find(one), one.size(), "Separations = [\"" + ink + ".1.tif\", \"" + ink + ".tif\"]");
    }
    File_Write(In("both.toml"), text);
    ASSERT_EQ(Boardmap_Run("convert both.toml -o both.raw --format raw").status, 0);
    const auto first = Boardmap_Run("preview both.raw -o page.png");
    EXPECT_EQ(first.status, 0) << first.error;
    EXPECT_THAT(first.out, HasSubstr("both.raw: page 0 of 0 and 1, 6 x 5 dots; 2 bands for 2 swaths\n"));
    EXPECT_EQ(File_Read(In("page.png")), File_Read(In("first.png")));
    EXPECT_EQ(Boardmap_Run("preview both.raw --page 1 -o page.png").status, 0);
    EXPECT_EQ(File_Read(In("page.png")), File_Read(In("second.png")));
    EXPECT_NE(File_Read(In("first.png")), File_Read(In("second.png")));
    EXPECT_EQ(Boardmap_Run("preview both.raw --page 2 -o page.png").error,
              "both.raw: --page is 2; the file has 0 and 1\n");
}

TEST_F(Preview, OnStandardOutputIsThePictureAlone)
{
    SmallPage_Write("job.toml");
    ASSERT_EQ(Boardmap_Run("convert job.toml -o out.tif").status, 0);
    ASSERT_EQ(Boardmap_Run("preview out.tif -o file.png").status, 0);
    ASSERT_EQ(Boardmap_Run(std::string("preview out.tif -o - ") + intoFile + "pipe.png").status, 0);
    EXPECT_EQ(File_Read(In("pipe.png")), File_Read(In("file.png")));
}

namespace
{

class PreviewOfStream : public CVerifyTest
{
};

} // namespace

TEST_F(PreviewOfStream, SaysWhichBandsAreMissingAndWhatIsNoNozzles)
{
    SStream part = m_stream;
    part.m_records.erase(part.m_records.begin() + 1);
    part.Word_Set(1, 1, 1);
    part.Word_Set(2, 1, 2);
    part.Byte(0, 0, 0) = static_cast<char>(part.Byte(0, 0, 0) | 0x04); // padding
    File_Write(In("part.raw"), part.Text());
    const auto result = Boardmap_Run("preview part.raw -o part.png");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, HasSubstr("3 bands for 4 swaths: THE OTHERS ARE MISSING\n"));
    EXPECT_THAT(result.out, HasSubstr("bits that are set and no nozzle's: 1\n"));
    const CPngFile png(In("part.png"));
    for (int y = 16; y < 32; ++y)
    {
        for (int x = 0; x < png.Width(); ++x)
        {
            ASSERT_EQ(png.Color(x, y), x >= zone && x < zone + 40 ? paper : around);
        }
    }
}

TEST_F(PreviewOfStream, RefusesDamageAndSwathsOutOfOrderWithTheirPlace)
{
    File_Write(In("short.raw"), m_stream.Text().substr(0, 5000));
    const auto damaged = Boardmap_Run("preview short.raw -o p.png");
    EXPECT_EQ(damaged.status, 2);
    EXPECT_THAT(damaged.error, HasSubstr("short.raw: byte "));
    SStream turned = m_stream;
    std::swap(turned.m_records[0], turned.m_records[2]);
    File_Write(In("turned.raw"), turned.Text());
    const auto result = Boardmap_Run("preview turned.raw -o p.png");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.error, HasSubstr(": m_swathIndex is 1 behind swath 2 of the same page; swaths come in their "
                                        "order, once each\n"));
    SStream wrong = m_stream;
    wrong.Word_Set(1, 2, 1);
    File_Write(In("wrong.raw"), wrong.Text());
    EXPECT_THAT(Boardmap_Run("preview wrong.raw -o p.png").error,
                HasSubstr("m_bandAttr says left to right, but swath 1 goes right to left\n"));
    EXPECT_FALSE(std::filesystem::exists(In("p.png")));
}

TEST(InkColor, IsThatOfTheLongestInkThatTheNameMentions)
{
    EXPECT_EQ(InkColor_Find("Cyan"), 0x00aeefU);
    EXPECT_EQ(InkColor_Find("page.Cyan.tif"), 0x00aeefU);
    EXPECT_EQ(InkColor_Find("LIGHT_magenta, left head"), 0xf59ac9U);
    EXPECT_EQ(InkColor_Find("Black again"), 0x231f20U);
    EXPECT_EQ(InkColor_Find("LK"), 0x8c8a8bU);
    EXPECT_EQ(InkColor_Find("c.tif"), 0x00aeefU);
    EXPECT_EQ(InkColor_Find("Spot C"), std::nullopt);
    EXPECT_EQ(InkColor_Find("blackish"), std::nullopt);
    EXPECT_EQ(InkColor_Find(""), std::nullopt);
}

TEST(InkColor, OfASpotInkIsDerivedFromItsNameAndOneOfItsOwn)
{
    SBoardInfo info;
    for (const char* const pName : {"Cyan", "Spot A", "Spot B", "Spot A", "Spot C", ""})
    {
        SBoardUnitInfo unit;
        unit.m_unitId = static_cast<int>(info.m_units.size());
        unit.m_name = pName;
        info.m_units.push_back(unit);
    }
    const auto colors = InkColors_Choose(info, {});
    EXPECT_EQ(colors[0], 0x00aeefU);
    EXPECT_EQ(colors[1], colors[3]);
    EXPECT_EQ(std::set<std::uint32_t>(colors.begin(), colors.end()).size(), 5U);
    SBoardInfo alone;
    alone.m_units = {info.m_units[1]};
    EXPECT_EQ(InkColors_Choose(alone, {}).front(), colors[1]) << "the same in every picture";
    EXPECT_EQ(InkColors_Choose(alone, {{"spot a", 0x123456}}).front(), 0x123456U);
}
