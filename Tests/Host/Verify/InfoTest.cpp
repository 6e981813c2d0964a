// boardmap info: what it says of sound and of damaged files, of both formats and versions.
#include "Tests/Host/Verify/VerifySupport.h"

#include "Host/Job/Job.h"
#include "Host/Model/Sha256.h"
#include "Tests/Host/Command/RandomJob.h"
#include "Tests/Host/Job/StripeTiff.h"

#include <nlohmann/json.hpp>

#include <array>
#include <set>

namespace
{

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Info : public CVerifyTest
{
protected:
    SCommandResult Text_Info(const std::string& text, const std::string& options = "") const
    {
        File_Write(In("bad.raw"), text);
        return Boardmap_Run("info bad.raw " + options);
    }
    static int InkCount(int unit, int firstRow, int lastRow)
    {
        int count = 0;
        for (int y = firstRow; y <= lastRow; ++y)
        {
            for (int x = 0; x < 40; ++x)
            {
                count += Ink(unit, x, y) ? 1 : 0;
            }
        }
        return count;
    }
    std::string Hash() const
    {
        CSha256 hash;
        for (const std::string& record : m_stream.m_records)
        {
            hash.Add(
                {reinterpret_cast<const unsigned char*>(record.data()) + recordBytes, record.size() - recordBytes});
        }
        return hash.Text_Finish();
    }
};

TEST_F(Info, SizesHeadersDotsAndTheHashAreSaid)
{
    const auto result = Boardmap_Run("info good.raw");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, StartsWith("good.raw: board stream, version 2, by boardmap "));
    for (const std::string& text :
         {std::string("page: 40 x 56 pixels"), std::string("zones 24 and 24"),
          "unit 0 (Cyan), prints a.tif: " + std::to_string(InkCount(0, 0, 55)) + " dots\n",
          std::string("unit 2 (Primer), stripes Full: 1024 dots\n"), // 2 of 8 positions, 16 nozzles, 4 bands
          "band 0 (byte " + std::to_string(m_stream.m_header.size()) +
              "): swath 0, left to right, rows 0 to 15, 88 lines of 128 bits; dots unit 0: " +
              std::to_string(InkCount(0, 0, 15)) + ", unit 1: " + std::to_string(InkCount(1, 0, 15)) +
              ", unit 2: 256\n",
          std::string("swath 3, right to left, rows 48 to 55"),
          "4 bands, 352 lines, 5632 bytes of board data, SHA-256 " + Hash() + "\n"})
    {
        EXPECT_THAT(result.out, HasSubstr(text));
    }
}

TEST_F(Info, BothFormatsHaveTheSameHash)
{
    ASSERT_EQ(Boardmap_Run("convert job.toml --compress lzw -o good.tif").status, 0);
    const auto result = Boardmap_Run("info good.tif");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, AllOf(StartsWith("good.tif: TIFF, version 2"), HasSubstr("SHA-256 " + Hash() + "\n"),
                                  HasSubstr("band 3 (page 3): swath 3")));
}

TEST_F(Info, JsonHasIt)
{
    const auto result = Boardmap_Run("info good.raw --json");
    EXPECT_EQ(result.status, 0);
    const auto json = nlohmann::json::parse(result.out);
    EXPECT_EQ(json["Sound"], true);
    EXPECT_EQ(json["Format"], "raw");
    EXPECT_EQ(json["FileBytes"], File_Read(In("good.raw")).size());
    EXPECT_EQ(json["Sha256"], Hash());
    EXPECT_EQ(json["Board"]["Nozzles"], 16);
    EXPECT_EQ(json["Dots"].at(1)["Dots"], InkCount(1, 0, 55));
    ASSERT_EQ(json["Bands"].size(), 4U);
    EXPECT_EQ(json["Bands"].at(2)["Header"]["m_firstRow"], 32);
    EXPECT_EQ(json["Bands"].at(1)["Pass"]["Direction"], "right-to-left");
    EXPECT_EQ(json["Bands"].at(1)["Dots"].at(0)["Dots"], InkCount(0, 16, 31));
    EXPECT_EQ(json["Bands"].at(0)["StrayBits"], 0);
    EXPECT_TRUE(json["Damages"].empty());
}

// Columns 0 to 3 of a page have the values 0 to 3, column x in x + 1 of the rows; whatever way the bits go.
TEST_F(Info, DropSizesAreCounted)
{
    std::vector<std::string> rows(8, std::string(1, '\0'));
    for (int y = 0; y < 8; ++y)
    {
        unsigned bits = 0;
        for (unsigned x = 0; x < 4; ++x)
        {
            bits |= y <= static_cast<int>(x) ? x << (6U - 2U * x) : 0U;
        }
        rows[static_cast<std::size_t>(y)][0] = static_cast<char>(bits);
    }
    StripeTiff_Write(In("two.tif").string(), 4, 2, rows);
    struct SBoard
    {
        const char* m_pOptions;
        const char* m_pDots;
        int m_bits;
        int m_width;
    };
    const char* const all = "prints two.tif: 9 (2 small, 3 middle, 4 big) dots\n";
    for (const SBoard& board :
         {SBoard{"DataMapStyle = 6\nPrinterSupportBits = 5\n", all, 2, 16},
          SBoard{"DataMapStyle = 6\nDataPushStyle = 1\nPrinterSupportBits = 1\n", all, 2, 16},
          SBoard{"DataMapStyle = 7\nPrinterSupportBits = 2\n", all, 2, 9}, SBoard{"DataMapStyle = 9\n", all, 2, 16}})
    {
        File_Write(In("two.toml"), std::string("Version = 1\n[DPOption]\n") + board.m_pOptions +
                                       "PrinterDataWidth = " + std::to_string(board.m_width) +
                                       "\n[PrintParam]\nBitsPerPixel = 2\n[CartInfo]\nNozzles = 8\n"
                                       "[[CartInfo.Unit]]\nUnitId = 1\nSeparation = \"two.tif\"\n");
        const auto converted = Boardmap_Run("convert two.toml --format raw -o two.raw");
        ASSERT_EQ(converted.status, 0) << board.m_pOptions << converted.error;
        EXPECT_THAT(Boardmap_Run("info two.raw").out, HasSubstr(board.m_pDots)) << board.m_pOptions;
    }
}

class InfoOfRandomJob : public CRandomJobTest
{
};

// The separations are known, and so are the dots of every unit by size, whatever the map makes of them. Where 1-bit
// data prints with one drop size, that is the job's.
TEST_F(InfoOfRandomJob, DotsAndDropSizesAreThoseOfTheSeparations)
{
    constexpr int jobs = 3 * static_cast<int>(randomBoards.size());
    constexpr std::array sizes = {"", "Small", "Middle", "Big"};
    std::set<std::string> maps;
    for (int i = 0; i < jobs; ++i)
    {
        do
        {
            Job_WriteRandom(i % static_cast<int>(randomBoards.size()));
        } while (File_Read(In("job.toml")).find("[InkStripe]") != std::string::npos);
        // The layout with pairs of nozzles has no place for an odd one at the end.
        const SJob job = Job_Load(In("job.toml"));
        const bool bLastLost = job.m_map.m_class == EMapClass::Map_1 && job.m_nozzles % 2 == 1;
        std::map<int, std::array<int, 4>> counts;
        Pages_Write(
            [&](const SPixel& pixel)
            {
                const int value = Number(0, (1 << m_bits) - 1);
                if (!bLastLost || pixel.row % job.m_nozzles != job.m_nozzles - 1)
                {
                    ++counts[pixel.unit].at(static_cast<std::size_t>(value));
                }
                return value;
            });
        const auto converted = Boardmap_Run("convert job.toml --format raw -o out.raw");
        ASSERT_EQ(converted.status, 0) << converted.error;
        const auto info = nlohmann::json::parse(Boardmap_Run("info out.raw --json").out);
        const std::string map = info["Board"]["Map"];
        const bool bDotSize = map == "2" || map == "7";
        for (const auto& entry : info["Dots"])
        {
            const auto& expected = counts[entry["UnitId"].get<int>()];
            SCOPED_TRACE(File_Read(In("job.toml")) + info.dump());
            ASSERT_EQ(entry["Dots"], expected[1] + expected[2] + expected[3]);
            ASSERT_EQ(entry.contains("Small"), bDotSize || m_bits == 2);
            for (std::size_t size = 1; size < sizes.size() && entry.contains("Small"); ++size)
            {
                const bool bTheSize = info["Board"]["DotSizeMode"] == sizes.at(size);
                ASSERT_EQ(entry[sizes.at(size)], bDotSize ? (bTheSize ? expected[1] : 0) : expected.at(size));
            }
        }
        for (const auto& band : info["Bands"])
        {
            ASSERT_EQ(band["StrayBits"], 0);
        }
        maps.insert(map);
    }
    EXPECT_EQ(maps.size(), 8U);
}

TEST_F(Info, DamageIsSaidWithItsPlaceAndTheRestIsRead)
{
    m_stream.m_records[1][0] = 'X';
    const auto result = Text_Info(m_stream.Text());
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, HasSubstr("bad.raw: damaged: byte " +
                                      std::to_string(m_stream.m_header.size() + m_stream.m_records[0].size()) +
                                      ": neither a band nor the end of the stream begins here\n"));
    EXPECT_THAT(result.out,
                AllOf(HasSubstr("swath 0"), Not(HasSubstr("swath 1")), HasSubstr("swath 3"), HasSubstr("\n3 bands, ")));
    const auto json = nlohmann::json::parse(Text_Info(m_stream.Text(), "--json").out);
    EXPECT_EQ(json["Sound"], false);
    EXPECT_EQ(json["Damages"].at(0)["Offset"], m_stream.m_header.size() + m_stream.m_records[0].size());
    EXPECT_EQ(json["Bands"].size(), 3U);
}

TEST_F(Info, EveryLengthOfATruncatedFileIsDamage)
{
    const std::string text = m_stream.Text();
    for (std::size_t size = 0; size < text.size(); size += 211)
    {
        const auto result = Text_Info(text.substr(0, size));
        EXPECT_EQ(result.status, 1) << size;
        EXPECT_THAT(result.out, HasSubstr("bad.raw: damaged: ")) << size;
        EXPECT_EQ(result.error, "") << size;
    }
    ASSERT_EQ(Boardmap_Run("convert job.toml -o bad.tif").status, 0);
    const std::string tiff = File_Read(In("bad.tif"));
    for (std::size_t size = 0; size < tiff.size(); size += 499)
    {
        File_Write(In("cut.tif"), tiff.substr(0, size));
        const auto result = Boardmap_Run("info cut.tif");
        EXPECT_EQ(result.status, 1) << size;
        EXPECT_THAT(result.out, HasSubstr("cut.tif: damaged: ")) << size;
    }
}

TEST_F(Info, StrayBitsAndOtherLinesAreSaid)
{
    m_stream.Byte(3, 5, 2) |= 1;
    m_stream.Word_Set(2, 15, 120); // bits of a line
    const auto result = Text_Info(m_stream.Text());
    EXPECT_THAT(result.out, HasSubstr("; no nozzle's: 1 bit\n"));
    EXPECT_THAT(result.out, HasSubstr("lines of 120 bits; not the line length of the board info\n"));
}

TEST_F(Info, VersionOneIsRead)
{
    for (const std::string name : {"boards.raw", "boards.tif", "boards.lzw.tif"})
    {
        const auto result = Boardmap_Run("info \"" VERSION_1_FOLDER "/" + name + "\" --json");
        EXPECT_EQ(result.status, 0) << result.out << result.error;
        const auto json = nlohmann::json::parse(result.out);
        EXPECT_EQ(json["Version"], 1);
        EXPECT_GT(json["Dots"].at(0)["Dots"], 0);
        EXPECT_FALSE(json["Bands"].at(0).contains("Pass"));
    }
}

TEST_F(Info, BadInputIsNoDamage)
{
    EXPECT_EQ(Boardmap_Run("info none.raw").status, 2);
    EXPECT_EQ(Boardmap_Run("info .").status, 2);
    EXPECT_EQ(Boardmap_Run("info").status, 2);
}

#if !defined(_WIN32)
TEST_F(Info, AClosedOutputIsAFailure)
{
    const auto full = Boardmap_Run("info good.raw > /dev/full");
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.error, "standard output: cannot be written: No space left on device\n");
    const auto closed = Shell_Run("{ sleep 0.3; \"$boardmap\" info good.raw; echo $? >status; } | true; cat status");
    EXPECT_EQ(closed.out, "1\n");
    EXPECT_EQ(closed.error, "standard output: cannot be written: Broken pipe\n");
}
#endif

} // namespace
