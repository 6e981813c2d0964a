// The board stream, written and read back.
#include "Host/Output/BoardRawWriter.h"

#include "Host/Board/BoardRawReader.h"
#include "Host/HostError.h"
#include "Tests/Host/Output/TestBand.h"
#include "Tests/Support/TestFolder.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

namespace
{

// Collects what a writer writes.
class CStringSink : public CByteSink
{
public:
    explicit CStringSink(std::string& bytes) : m_bytes(bytes) {}
    void Write(const void* pData, std::size_t size) override { m_bytes.append(static_cast<const char*>(pData), size); }
    void Finish() override {}
    const std::string& Name() const override { return m_name; }

private:
    std::string& m_bytes;
    std::string m_name = "memory";
};

std::string Stream_Make(const std::vector<const CBandData*>& bands)
{
    std::string bytes;
    CBoardRawWriter writer(std::make_unique<CStringSink>(bytes), TestInfo_Make());
    for (const CBandData* pBand : bands)
    {
        writer.Band_Write(*pBand);
    }
    writer.Finish();
    return bytes;
}

// Two bands of different sizes, the second with longer lines than its pixels need.
std::string Stream_MakeOfTwo()
{
    const auto first = TestBand_Make(0, 20, 3);
    const auto second = TestBand_Make(1, 33, 2, 8);
    return Stream_Make({first.get(), second.get()});
}

// Reads the whole stream; the number of its bands.
int Stream_Read(const std::string& bytes)
{
    std::istringstream stream(bytes);
    CBoardRawReader reader(stream, "s");
    CBandData band;
    SBoardPass pass;
    int count = 0;
    while (reader.Band_Read(band, pass))
    {
        ++count;
    }
    return count;
}

std::string Refusal_Of(const std::string& bytes)
{
    return Error_Of<CInputError>([&] { Stream_Read(bytes); });
}

std::size_t HeaderSize()
{
    return 16 + BoardInfo_Json(TestInfo_Make()).size();
}

std::string Replaced(std::string bytes, std::size_t offset, const std::string& part)
{
    return bytes.replace(offset, part.size(), part);
}

} // namespace

TEST(BoardRaw, BandsComeBackBitByBit)
{
    const CTestFolder folder;
    const std::vector<std::unique_ptr<CBandData>> bands = []
    {
        std::vector<std::unique_ptr<CBandData>> made;
        made.push_back(TestBand_Make(0, 6400, 50));
        made.push_back(TestBand_Make(1, 13, 7));
        made.push_back(TestBand_Make(2, 13, 7, 64));
        made.push_back(TestBand_Make(3, 1, 1));
        made.push_back(TestBand_Make(4, 800, 0));
        made.push_back(TestBand_Make(5, 0, 5));
        return made;
    }();
    {
        CBoardRawWriter writer(folder / "page.boards", TestInfo_Make());
        for (const auto& band : bands)
        {
            writer.Band_Write(*band);
        }
        EXPECT_EQ(writer.BandCount(), 6);
        writer.Finish();
    }
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"page.boards"});

    CBoardRawReader reader(folder / "page.boards");
    EXPECT_EQ(reader.BoardInfo(), TestInfo_Make());
    CBandData read;
    SBoardPass pass;
    for (const auto& band : bands)
    {
        ASSERT_TRUE(reader.Band_Read(read, pass));
        EXPECT_TRUE(HeadersEqual(read, *band));
        SBoardPass expected = BoardPass_Of(TestInfo_Make(), *band);
        expected.m_bBlank = band->m_dataSize == 0;
        EXPECT_EQ(pass, expected);
        EXPECT_EQ(read.m_width, band->m_width);
        EXPECT_EQ(read.m_height, band->m_height);
        EXPECT_EQ(read.m_bitsPerPixel, 1);
        EXPECT_EQ(read.m_bytesPerLine, band->m_bytesPerLine);
        ASSERT_EQ(read.m_dataSize, band->m_dataSize);
        EXPECT_EQ(std::memcmp(read.m_pData, band->m_pData, static_cast<std::size_t>(read.m_dataSize)), 0);
    }
    EXPECT_FALSE(reader.Band_Read(read, pass));
    EXPECT_FALSE(reader.Band_Read(read, pass));
}

TEST(BoardRaw, BytesAreExactlyAsDocumented)
{
    CBandData band;
    ASSERT_TRUE(band.Create(9, 1, 1, 1));
    band.m_pData[0] = 0xA5;
    band.m_pData[1] = 0x80;
    band.m_bandNo = 0x01020304;
    band.m_reserved_13 = -2;
    band.m_bSkip = true;
    const std::string json = BoardInfo_Json(TestInfo_Make());
    ASSERT_LT(json.size(), 0xFFFFU - 16U);
    const auto headerSize = static_cast<unsigned int>(16 + json.size());
    std::string expected("\x89"
                         "BMS\r\n\x1A\n\x02\0\0\0",
                         12);
    expected += static_cast<char>(headerSize & 0xFFU);
    expected += static_cast<char>(headerSize >> 8U);
    expected += std::string("\0\0", 2) + json;
    expected += std::string("BAND\x04\x03\x02\x01", 8) + std::string(44, '\0') + std::string("\xFE\xFF\xFF\xFF", 4);
    expected += std::string("\x01\0\0\0\x09\0\0\0\x01\0\0\0\x01\0\0\0\x02\0\0\0\x02\0\0\0", 24);
    // From right to left: 24 + 100 + 40 + 3 positions from column 99 + 24 on, steps of -1, the zones, the offset; ink.
    expected += std::string("\xA7\0\0\0\x7B\0\0\0\xFF\xFF\xFF\xFF\x18\0\0\0\x28\0\0\0\x03\0\0\0\0\0\0\0", 28);
    expected += "\xA5\x80";
    expected += std::string("ENDB\x01\0\0\0\0\0\0\0", 12);
    EXPECT_EQ(Stream_Make({&band}), expected);
}

TEST(BoardRaw, StreamWithoutBandsIsComplete)
{
    EXPECT_EQ(Stream_Read(Stream_Make({})), 0);
}

TEST(BoardRaw, EveryProperPrefixIsRefused)
{
    const std::string bytes = Stream_MakeOfTwo();
    ASSERT_EQ(Stream_Read(bytes), 2);
    for (std::size_t size = 0; size < bytes.size(); ++size)
    {
        const std::string error = Refusal_Of(bytes.substr(0, size));
        EXPECT_EQ(error.substr(0, error.find(": the stream")), "s: byte " + std::to_string(size)) << error;
        EXPECT_NE(error.find("; it was cut off"), std::string::npos) << error;
    }
}

TEST(BoardRaw, RefusalOfACutStreamNamesThePart)
{
    const std::string bytes = Stream_MakeOfTwo();
    const std::size_t firstBand = HeaderSize();
    const std::size_t secondBand = firstBand + 108 + 9;
    EXPECT_EQ(Refusal_Of(bytes.substr(0, 10)), "s: byte 10: the stream ends inside its header; it was cut off");
    EXPECT_EQ(Refusal_Of(bytes.substr(0, 100)), "s: byte 100: the stream ends inside its header; it was cut off");
    EXPECT_EQ(Refusal_Of(bytes.substr(0, firstBand + 4)),
              "s: byte " + std::to_string(firstBand + 4) + ": the stream ends inside band 0; it was cut off");
    EXPECT_EQ(Refusal_Of(bytes.substr(0, secondBand)), "s: byte " + std::to_string(secondBand) +
                                                           ": the stream ends inside the record after 1 bands; it was "
                                                           "cut off");
    EXPECT_EQ(Refusal_Of(bytes.substr(0, secondBand + 113)),
              "s: byte " + std::to_string(secondBand + 113) + ": the stream ends inside band 1; it was cut off");
    EXPECT_EQ(Refusal_Of(bytes.substr(0, bytes.size() - 1)), "s: byte " + std::to_string(bytes.size() - 1) +
                                                                 ": the stream ends inside its end record; it was cut "
                                                                 "off");
}

TEST(BoardRaw, AnotherVersionIsRefused)
{
    const std::string bytes = Stream_MakeOfTwo();
    EXPECT_EQ(Refusal_Of(Replaced(bytes, 8, "\x03")),
              "s: byte 8: the stream has version 3; this program reads versions 1 and 2");
    EXPECT_EQ(Refusal_Of(Replaced(bytes, 8, std::string(1, '\0'))),
              "s: byte 8: the stream has version 0; this program reads versions 1 and 2");
}

TEST(BoardRaw, AnythingElseIsNoBoardStream)
{
    const std::string bytes = Stream_MakeOfTwo();
    for (std::size_t i = 0; i < 8; ++i)
    {
        EXPECT_EQ(Refusal_Of(Replaced(bytes, i, "?")), "s: byte 0: this is no board stream") << i;
    }
}

TEST(BoardRaw, DamagedHeaderIsRefused)
{
    const std::string bytes = Stream_MakeOfTwo();
    EXPECT_EQ(Refusal_Of(Replaced(bytes, 12, std::string("\x0F\0\0\0", 4))),
              "s: byte 12: the header cannot be 15 bytes long");
    EXPECT_EQ(Refusal_Of(Replaced(bytes, 12, "\xFF\xFF\xFF\xFF")),
              "s: byte 12: the header cannot be 4294967295 bytes long");
    const std::string error = Refusal_Of(Replaced(bytes, 16, "?"));
    EXPECT_EQ(error.substr(0, 39), "s: byte 16: the board info is damaged: ") << error;
}

TEST(BoardRaw, DamagedRecordsAreRefused)
{
    const std::string bytes = Stream_MakeOfTwo();
    const std::size_t band = HeaderSize();
    const std::string place = "s: byte " + std::to_string(band) + ": ";
    EXPECT_EQ(Refusal_Of(Replaced(bytes, band, "D")), place + "neither a band nor the end of the stream begins here");
    const std::string sizes = place + "the sizes of band 0 do not fit together";
    struct SDamage
    {
        std::size_t m_offset;
        std::string m_bytes;
    };
    const std::vector<SDamage> damages = {
        {56, "\x02"},             // the flag
        {60, "\xFF\xFF\xFF\xFF"}, // a negative width
        {60, "\x19"},             // lines too short for 25 pixels
        {64, "\x04"},             // more lines than data
        {64, "\xFF\xFF\xFF\xFF"}, // a negative height
        {68, std::string(1, '\0')},
        {72, "\x02"},
        {76, "\x08"},
        {88, "\x02"},  // the step
        {104, "\x02"}, // blank or not
    };
    for (const SDamage& damage : damages)
    {
        const std::string error = Refusal_Of(Replaced(bytes, band + damage.m_offset, damage.m_bytes));
        EXPECT_EQ(error.substr(0, sizes.size()), sizes) << damage.m_offset;
    }
}

TEST(BoardRaw, WrongCountAndBytesBehindTheEndAreRefused)
{
    const std::string bytes = Stream_MakeOfTwo();
    const std::size_t count = bytes.size() - 8;
    EXPECT_EQ(Refusal_Of(Replaced(bytes, count, "\x03")),
              "s: byte " + std::to_string(count) + ": the stream counts 3 bands but holds 2");
    EXPECT_EQ(Refusal_Of(bytes + "x"),
              "s: byte " + std::to_string(bytes.size()) + ": there are bytes behind the end of the stream");
}

TEST(BoardRaw, FileThatCannotBeOpenedIsRefused)
{
    const CTestFolder folder;
    EXPECT_EQ(Error_Of<CInputError>([&] { CBoardRawReader(folder / "missing"); }),
              (folder / "missing").string() + ": there is no such file");
    EXPECT_EQ(Error_Of<CInputError>([&] { CBoardRawReader(folder.Path()); }),
              folder.Path().string() + ": is a folder, not a board file");
}

TEST(BoardRaw, AbandonedWriterLeavesTheExistingFileAndNoTemporaryFile)
{
    const CTestFolder folder;
    File_Write(folder / "page.boards", "earlier");
    {
        CBoardRawWriter writer(folder / "page.boards", TestInfo_Make());
        writer.Band_Write(*TestBand_Make(0, 800, 10));
    }
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"page.boards"});
    EXPECT_EQ(File_Read(folder / "page.boards"), "earlier");
}

TEST(BoardRaw, FullDiskIsAnErrorOfTheRun)
{
    if (!std::filesystem::is_character_file("/dev/full"))
    {
        GTEST_SKIP() << "no such device here";
    }
    EXPECT_EQ(Error_Of<CRunError>([] { CBoardRawWriter("/dev/full", TestInfo_Make()); }),
              "/dev/full: cannot be written: No space left on device");
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST(BoardRaw, WriterIsOfNoUseAfterItsEnd)
{
    std::string bytes;
    CBoardRawWriter writer(std::make_unique<CStringSink>(bytes), TestInfo_Make());
    writer.Finish();
    const auto band = TestBand_Make(0, 8, 1);
    EXPECT_THROW(writer.Band_Write(*band), std::logic_error);
    EXPECT_THROW(writer.Finish(), std::logic_error);
}
