// boardmap verify: every kind of mistake planted in an output is found, and its place is named.
#include "Tests/Host/Verify/VerifySupport.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>

namespace
{

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class Verify : public CVerifyTest
{
protected:
    // Status and text for a stream.
    SCommandResult Text_Verify(const std::string& text, const std::string& options = "") const
    {
        File_Write(In("bad.raw"), text);
        return Boardmap_Run("verify job.toml bad.raw " + options);
    }
    SCommandResult Stream_Verify(const SStream& stream, const std::string& options = "") const
    {
        return Text_Verify(stream.Text(), options);
    }
};

// Status 1, and all of the words.
void Found_Expect(const SCommandResult& result, const std::vector<std::string>& words)
{
    EXPECT_EQ(result.status, 1) << result.error;
    for (const std::string& word : words)
    {
        EXPECT_THAT(result.out, HasSubstr(word));
    }
}

TEST_F(Verify, AnOutputThatIsRightIsSaidToBe)
{
    const auto raw = Boardmap_Run("verify job.toml good.raw");
    EXPECT_EQ(raw.status, 0) << raw.out << raw.error;
    EXPECT_THAT(raw.out, AllOf(StartsWith("good.raw: 4 bands, 352 lines, 5632 bytes in "),
                               HasSubstr(": every bit, header and pass is what job.toml asks for\n")));
    EXPECT_EQ(raw.error, "");
    ASSERT_EQ(Boardmap_Run("convert job.toml --compress deflate -o good.tif").status, 0);
    EXPECT_EQ(Boardmap_Run("verify job.toml good.tif").status, 0);
    EXPECT_THAT(Boardmap_Run("verify job.toml good.tif --progress plain").error, HasSubstr("4/4 bands"));
}

TEST_F(Verify, OneBitIsFound)
{
    m_stream.Byte(1, 30, 3) ^= static_cast<char>(0x80);
    const std::string ink = Ink(0, 33, 19) ? "1" : "0"; // the pass runs from right to left: 39 - (30 - 24)
    const std::string other = Ink(0, 33, 19) ? "0" : "1";
    Found_Expect(
        Stream_Verify(m_stream),
        {"band 1 (byte " + std::to_string(m_stream.m_header.size() + m_stream.m_records[0].size()) +
             "): 1 bit differs\n",
         "unit 0 (Cyan): 1 bit, ", "line 30; 1 on the page\n",
         "    Unit 0 (Cyan), nozzle 3, at position 30 of band 1 (swath 1, right to left) prints row 19, column 33 "
         "of the page, from a.tif; the separation has " +
             ink + " of 1 there",
         "The bit in question is line 30, byte 3, bit 0 (frame 3; ink): " + other + " in the output, BUT " + ink +
             " BY THE JOB.",
         "1 difference from what job.toml asks for"});
}

TEST_F(Verify, ABitThatDiffersIsExplainedAsExplainDoes)
{
    m_stream.Byte(1, 30, 3) ^= static_cast<char>(0x80); // of the page
    m_stream.Byte(1, 2, 9) ^= static_cast<char>(0x20);  // of a stripe's zone
    m_stream.Byte(1, 30, 5) ^= static_cast<char>(0x04); // padding
    const auto result = Stream_Verify(m_stream);
    const auto json = nlohmann::json::parse(Stream_Verify(m_stream, "--json").out);
    std::size_t number = 0;
    for (const std::string place :
         {"--line 2 --byte 9 --bit 2", "--line 30 --byte 3 --bit 0", "--line 30 --byte 5 --bit 5"})
    {
        const auto explained = Boardmap_Run("explain job.toml bad.raw --band 1 " + place);
        EXPECT_EQ(explained.status, 1) << explained.error;
        EXPECT_THAT(result.out, HasSubstr("    " + explained.out));
        EXPECT_EQ(json["Differences"].at(0)["First"].at(number++),
                  nlohmann::json::parse(Boardmap_Run("explain job.toml bad.raw --json --band 1 " + place).out));
    }
}

TEST_F(Verify, SwappedUnitsAreFound)
{
    for (int line = 0; line < lineCount; ++line)
    {
        for (int byte = 0; byte < lineBytes; ++byte)
        {
            char& bits = m_stream.Byte(0, line, byte);
            const auto old = static_cast<unsigned>(static_cast<unsigned char>(bits));
            bits = static_cast<char>((old & 0x3FU) | (old & 0x80U) >> 1U | (old & 0x40U) << 1U);
        }
    }
    Found_Expect(Stream_Verify(m_stream),
                 {"unit 0 has the bits of unit 1\n", "unit 1 has the bits of unit 0\n", "  unit 1: "});
}

TEST_F(Verify, LinesThatStandLaterAreFound)
{
    for (int line = lineCount - 1; line > 40; --line)
    {
        m_stream.Line_Set(2, line, m_stream.Line_Get(2, line - 1));
    }
    Found_Expect(Stream_Verify(m_stream), {"band 2", "stand 1 line later than they should\n"});
}

TEST_F(Verify, AShiftedLineIsFound)
{
    std::string bytes = m_stream.Line_Get(2, 40);
    unsigned carry = 0;
    for (char& byte : bytes)
    {
        const auto old = static_cast<unsigned>(static_cast<unsigned char>(byte));
        byte = static_cast<char>(old >> 1U | carry);
        carry = (old & 1U) << 7U;
    }
    m_stream.Line_Set(2, 40, bytes);
    Found_Expect(Stream_Verify(m_stream), {"band 2", "the bits of line 40 stand 1 bit later than they should\n"});
}

TEST_F(Verify, AReversedPassIsFound)
{
    const SStream good = m_stream;
    for (int line = 0; line < lineCount; ++line)
    {
        m_stream.Line_Set(1, line, good.Line_Get(1, lineCount - 1 - line));
    }
    Found_Expect(Stream_Verify(m_stream), {"band 1", "the pass runs the other way\n"});
}

TEST_F(Verify, AMissingStripeIsFound)
{
    for (int line = 0; line < zone; ++line)
    {
        for (int byte = 0; byte < lineBytes; ++byte)
        {
            m_stream.Byte(0, line, byte) &= static_cast<char>(0xDF);
        }
    }
    Found_Expect(Stream_Verify(m_stream),
                 {"band 0",
                  "unit 2 (Primer): 128 bits, 128 missing, 0 too many; lines 16 to 23; "
                  "128 in left stripes\n",
                  "nozzle 0, at position 16 of band 0 (swath 0, left to right) prints position 0 "
                  "of the unit's left ink stripe (Full); the stripe has 1 of 1 there"});
}

TEST_F(Verify, EachHeaderWordIsFound)
{
    struct SWord
    {
        int m_word;
        const char* m_pText;
    };
    for (const SWord& word :
         {SWord{1, "m_bandNo is 77; it should be 2"}, SWord{2, "m_bandAttr is 77; it should be 1"},
          SWord{3, "m_swathIndex is 77; it should be 2"}, SWord{4, "m_pageIndex is 77; it should be 0"},
          SWord{5, "m_unitIndex is 77; it should be 0"}, SWord{6, "m_unitDirection is 77; it should be 1"},
          SWord{7, "m_firstRow is 77; it should be 32"}, SWord{8, "m_rowCount is 77; it should be 16"},
          SWord{9, "m_firstColumn is 77; it should be 0"}, SWord{10, "m_columnCount is 77; it should be 40"},
          SWord{11, "m_reserved_11 is 77; it should be 0"}, SWord{13, "m_reserved_13 is 77; it should be 0"},
          SWord{20, "Positions is 77; it should be 88"}, SWord{21, "FirstLineColumn is 77; it should be -24"},
          SWord{23, "FirstZone is 77; it should be 24"}, SWord{24, "LastZone is 77; it should be 24"},
          SWord{25, "MaxOffset is 77; it should be 0"}})
    {
        SStream stream = m_stream;
        stream.Word_Set(2, word.m_word, 77);
        Found_Expect(Stream_Verify(stream), {std::string("): ") + word.m_pText + "\n", "band 2 (", ": 1 difference"});
    }
    SStream stream = m_stream;
    stream.Word_Set(2, 14, 1);
    Found_Expect(Stream_Verify(stream), {"m_bSkip is true; it should be false\n"});
    stream = m_stream;
    stream.Word_Set(3, 22, 1);
    Found_Expect(Stream_Verify(stream), {"ColumnStep is 1; it should be -1\n"});
    stream = m_stream;
    stream.Word_Set(3, 26, 1);
    Found_Expect(Stream_Verify(stream), {"Blank is true; the band has ink\n"});
}

TEST_F(Verify, APaddingBitIsFound)
{
    m_stream.Byte(3, 5, 2) |= 1;
    Found_Expect(Stream_Verify(m_stream), {"padding: 1 bit, 0 missing, 1 too many; line 5\n",
                                           "Line 5, byte 2, bit 7 of band 3 (swath 3, right to left) (frame 2) is the "
                                           "place of unit 7, which the job does not have: it is never set. In the "
                                           "output it is 1, WHICH IS WRONG."});
}

TEST_F(Verify, InkBelowThePageIsFound)
{
    m_stream.Byte(3, 30, 12) |= static_cast<char>(0x40);
    Found_Expect(Stream_Verify(m_stream), {"1 below the page\n", "Unit 1, nozzle 12, at position 30 of band 3",
                                           "is below the page: its row would be 60, the page's last one is 55"});
}

TEST_F(Verify, AMissingBandIsFound)
{
    m_stream.m_records.erase(m_stream.m_records.begin() + 1);
    const auto result = Stream_Verify(m_stream);
    Found_Expect(result, {"band 1: this band is missing\n", ": 1 difference", "3 bands"});
    m_stream.m_records.pop_back();
    Found_Expect(Stream_Verify(m_stream), {"band 3: this band is missing\n", ": 2 differences"});
}

TEST_F(Verify, ADoubledBandIsFound)
{
    m_stream.m_records.insert(m_stream.m_records.begin() + 2, m_stream.m_records[1]);
    Found_Expect(Stream_Verify(m_stream),
                 {"there is a band of swath 1, which stands twice or too late", ": 1 difference", "4 bands"});
}

TEST_F(Verify, BandsInAnotherOrderAreFound)
{
    std::swap(m_stream.m_records[1], m_stream.m_records[2]);
    Found_Expect(Stream_Verify(m_stream), {"band 1: this band is missing\n", "a band of swath 1, which stands twice"});
}

TEST_F(Verify, ABandBeyondThePageIsFound)
{
    m_stream.m_records.push_back(m_stream.m_records.back());
    m_stream.Word_Set(4, 1, 4);
    m_stream.Word_Set(4, 3, 4);
    m_stream.Word_Set(4, 7, 64);
    Found_Expect(Stream_Verify(m_stream), {"there is a band of swath 4; the page has 4 swaths\n", ": 1 difference"});
}

TEST_F(Verify, ABlankBandIsFound)
{
    for (int line = 0; line < lineCount; ++line)
    {
        m_stream.Line_Set(2, line, std::string(lineBytes, '\0'));
    }
    Found_Expect(Stream_Verify(m_stream), {"the band is blank\n", "Blank is false; not a bit of the band is set\n"});
}

TEST_F(Verify, ATruncatedFileIsFound)
{
    const std::string text = m_stream.Text();
    Found_Expect(Text_Verify(text.substr(0, text.size() - 12 - 500)),
                 {"the stream ends inside band 3; it was cut off\n", "band 3: this band is missing\n", "3 bands"});
    Found_Expect(Text_Verify(text.substr(0, text.size() - 3)), {"the stream ends inside its end record", "4 bands"});
    ASSERT_EQ(Boardmap_Run("convert job.toml -o bad.tif").status, 0);
    const std::string tiff = File_Read(In("bad.tif"));
    File_Write(In("bad.tif"), tiff.substr(0, tiff.size() / 2));
    Found_Expect(Boardmap_Run("verify job.toml bad.tif"), {"page ", ": this band is missing\n"});
}

TEST_F(Verify, AWrongCountAndADamagedRecordAreFound)
{
    Found_Expect(Text_Verify(m_stream.Text(5)), {"the stream counts 5 bands but holds 4", "4 bands"});
    m_stream.m_records[1][0] = 'X';
    Found_Expect(Stream_Verify(m_stream),
                 {"neither a band nor the end of the stream begins here", "band 1: this band is missing\n", "3 bands"});
}

TEST_F(Verify, LinesThatAreMissingAreFound)
{
    m_stream.Word_Set(2, 16, lineCount - 8); // height
    m_stream.Word_Set(2, 19, (lineCount - 8) * lineBytes);
    m_stream.m_records[2].resize(recordBytes + static_cast<std::size_t>(lineCount - 8) * lineBytes);
    Found_Expect(Stream_Verify(m_stream), {"the number of lines is 80; it should be 88\n", ": 1 difference"});
}

TEST_F(Verify, RoomBehindALineIsFound)
{
    std::string& record = m_stream.m_records[2];
    for (std::size_t line = lineCount; line > 0; --line)
    {
        record.insert(recordBytes + line * lineBytes, 4, '\1');
    }
    m_stream.Word_Set(2, 18, lineBytes + 4);
    m_stream.Word_Set(2, 19, lineCount * (lineBytes + 4));
    Found_Expect(Stream_Verify(m_stream),
                 {"band 2", "the number of bytes of a line is 20; it should be 16\n", ": 1 difference"});
}

TEST_F(Verify, AnotherJobIsFound)
{
    std::string job = m_job;
    job.replace(job.find("Cyan"), 4, "Teal");
    File_Write(In("other.toml"), job);
    Found_Expect(Boardmap_Run("verify other.toml good.raw"),
                 {"the board info's Units/0/Name is \"Cyan\"; it should be \"Teal\"\n", ": 1 difference"});
    job.replace(job.find("Nozzles = 16"), 12, "Nozzles = 8 ");
    File_Write(In("other.toml"), job);
    Found_Expect(Boardmap_Run("verify other.toml good.raw"), {"the board info's Nozzles is 16; it should be 8\n",
                                                              "the line's length is 128 bits; it should be 64"});
}

TEST_F(Verify, BandsCanBeChosen)
{
    m_stream.Byte(1, 30, 3) ^= 1;
    for (const std::string good : {"0", "2..3", "2..", "..0", "3..99"})
    {
        EXPECT_EQ(Stream_Verify(m_stream, "--bands " + good).status, 0) << good;
    }
    for (const std::string bad : {"1", "0..3", "..", "1..", "..1"})
    {
        EXPECT_EQ(Stream_Verify(m_stream, "--bands " + bad).status, 1) << bad;
    }
    EXPECT_THAT(Stream_Verify(m_stream, "--bands 2..3").out, HasSubstr("2 bands 2 to 3, 176 lines"));
    for (const std::string none : {"x", "3..1", "4", "-1..2", "1..2..3", "1-2"})
    {
        const auto result = Stream_Verify(m_stream, "--bands=" + none);
        EXPECT_EQ(result.status, 2) << none;
        EXPECT_THAT(result.error, StartsWith("--bands: ")) << none;
    }
}

TEST_F(Verify, JsonSaysTheSame)
{
    const auto good = nlohmann::json::parse(Boardmap_Run("verify job.toml good.raw --json").out);
    EXPECT_EQ(good["Equal"], true);
    EXPECT_EQ(good["Bands"], 4);
    EXPECT_TRUE(good["Differences"].empty());
    m_stream.Byte(1, 30, 3) ^= static_cast<char>(0x80);
    const auto result = Stream_Verify(m_stream, "--json");
    EXPECT_EQ(result.status, 1);
    const auto bad = nlohmann::json::parse(result.out);
    EXPECT_EQ(bad["Equal"], false);
    EXPECT_EQ(bad["BitDifferences"], 1);
    const auto& difference = bad["Differences"].at(0);
    EXPECT_EQ(difference["Kind"], "bits");
    EXPECT_EQ(difference["Band"], 1);
    EXPECT_EQ(difference["Units"].at(0)["UnitId"], 0);
    EXPECT_EQ(difference["First"].at(0)["Nozzle"], 3);
    EXPECT_EQ(difference["First"].at(0)["Row"], 19);
    EXPECT_EQ(difference["First"].at(0)["Column"], 33);
}

// Version 1 has no pass; everything else is compared.
TEST_F(Verify, FilesOfVersionOneAreHeldAgainstTheirJob)
{
    const std::string folder = VERSION_1_FOLDER;
    for (const std::string name : {"boards.raw", "boards.tif", "boards.lzw.tif"})
    {
        const auto result = Boardmap_Run("verify \"" + folder + "/job.toml\" \"" + folder + "/" + name + "\"");
        EXPECT_EQ(result.status, 0) << name << result.out << result.error;
    }
    std::string bytes = File_Read(std::filesystem::path(folder) / "boards.raw");
    bytes.at(bytes.size() - 12 - 3) ^= 0x10; // the end record, and a byte of the last line
    File_Write(In("bad.raw"), bytes);
    Found_Expect(Boardmap_Run("verify \"" + folder + "/job.toml\" bad.raw"),
                 {"1 bit differs\n", ": 1 difference", "WHICH IS WRONG"});
}

TEST_F(Verify, ABitOfATiffIsFoundOnItsPage)
{
    ASSERT_EQ(Boardmap_Run("convert job.toml -o bad.tif").status, 0);
    std::string bytes = File_Read(In("bad.tif"));
    const std::string line = m_stream.Line_Get(2, 40) + m_stream.Line_Get(2, 41) + m_stream.Line_Get(2, 42);
    const auto at = bytes.find(line);
    ASSERT_NE(at, std::string::npos);
    ASSERT_EQ(bytes.find(line, at + 1), std::string::npos);
    bytes[at + 3] ^= 0x40;
    File_Write(In("bad.tif"), bytes);
    Found_Expect(Boardmap_Run("verify job.toml bad.tif"),
                 {"band 2 (page 2): 1 bit differs\n", "The bit in question is line 40, byte 3, bit 1 "});
}

TEST_F(Verify, BandsOfBlankSwathsAreKnownWithSkipBlank)
{
    Separation_Write("a.tif", 40, 56, [](int, int y) { return y < 16 || y >= 48; });
    std::string job = m_job.substr(0, m_job.find("[[CartInfo.Unit]]\nUnitId = 1")) +
                      m_job.substr(m_job.find("[[CartInfo.Unit]]\nUnitId = 2"));
    File_Write(In("all.toml"), job);
    job.replace(job.find("Kind ="), 0, "SkipBlank = true\n");
    File_Write(In("job.toml"), job);
    ASSERT_EQ(Boardmap_Run("convert job.toml --format raw -o skipped.raw").status, 0);
    EXPECT_EQ(Boardmap_Run("verify job.toml skipped.raw").status, 0);
    EXPECT_THAT(Boardmap_Run("verify job.toml skipped.raw --bands 1").out, HasSubstr("1 band 1 to 1, 88 lines"));
    ASSERT_EQ(Boardmap_Run("convert all.toml --format raw -o whole.raw").status, 0);
    Found_Expect(Boardmap_Run("verify job.toml whole.raw"),
                 {"the board info's SkipBlank is false; it should be true\n",
                  "there is a band of swath 1, which has no ink and is left out with SkipBlank\n",
                  "there is a band of swath 2, which has no ink and is left out with SkipBlank\n"});
    Found_Expect(Boardmap_Run("verify all.toml skipped.raw"),
                 {"band 1: this band is missing\n", "band 2: this band is missing\n"});
}

TEST_F(Verify, BadInputIsNoDifference)
{
    EXPECT_EQ(Boardmap_Run("verify job.toml none.raw").status, 2);
    EXPECT_EQ(Boardmap_Run("verify none.toml good.raw").status, 2);
    EXPECT_EQ(Boardmap_Run("verify job.toml job.toml").status, 2);
    EXPECT_EQ(Boardmap_Run("verify job.toml").status, 2);
    EXPECT_EQ(Boardmap_Run("verify job.toml .").status, 2);
}

#if !defined(_WIN32)
TEST_F(Verify, AnInterruptEndsTheRunWithStatus130AndSaysNothing)
{
    Separation_Write("big.tif", 6000, 4000, [](int x, int y) { return x == y; });
    Job_Write("job.toml", {"big.tif", "big.tif", "big.tif"}, 400);
    ASSERT_EQ(Boardmap_Run("convert job.toml --format raw -o big.raw").status, 0);
    for (const std::string signal : {"INT", "TERM"})
    {
        const auto result = Boardmap_Interrupt("verify job.toml big.raw", signal);
        EXPECT_EQ(result.status, 130) << result.out << result.error;
        EXPECT_EQ(result.out, "interrupted; nothing is said of the output\n");
    }
}

TEST_F(Verify, AClosedOutputIsAFailure)
{
    const auto result = Boardmap_Run("verify job.toml good.raw > /dev/full");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, "standard output: cannot be written: No space left on device\n");
    const auto closed =
        Shell_Run("{ sleep 0.3; \"$boardmap\" verify job.toml good.raw; echo $? >status; } | true; cat status");
    EXPECT_EQ(closed.out, "1\n");
    EXPECT_EQ(closed.error, "standard output: cannot be written: Broken pipe\n");
}
#endif

} // namespace
