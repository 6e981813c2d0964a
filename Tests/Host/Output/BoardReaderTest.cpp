// The reader of both formats: files of version 1 that its own program wrote, both formats against each other, and
// damage of every kind.
#include "Host/Board/BoardReader.h"

#include "Host/HostError.h"
#include "Host/Job/JobPage.h"
#include "Host/Model/PageInk.h"
#include "Host/Output/BoardRawWriter.h"
#include "Host/Output/BoardTiffWriter.h"
#include "Tests/Host/Output/TestBand.h"
#include "Tests/Support/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{

const std::filesystem::path g_version1 = VERSION_1_FOLDER;

class BoardReader : public testing::Test
{
protected:
    // Three bands in either format; the file's bytes.
    std::string File_Make(EBoardFormat format, EBoardCompression compression = EBoardCompression::None) const
    {
        const std::filesystem::path path = m_folder / "boards";
        const auto Write = [](CBoardWriter& writer)
        {
            for (int i = 0; i < 3; ++i)
            {
                writer.Band_Write(*TestBand_Make(i, 40 + 8 * i, 30));
            }
            writer.Finish();
        };
        if (format == EBoardFormat::Raw)
        {
            CBoardRawWriter writer(path, TestInfo_Make());
            Write(writer);
        }
        else
        {
            CBoardTiffWriter writer(path, TestInfo_Make(), {3, true, 30, 7}, compression);
            Write(writer);
        }
        return File_Read(path);
    }

    // Reads on over all damage; what it said, a line each, and the numbers of the bands that came.
    std::string Read_Over(const std::string& bytes, std::vector<int>& bands) const
    {
        File_Write(m_folder / "boards", bytes);
        std::string said;
        CBandData band;
        SBoardPass pass;
        try
        {
            const auto reader = CBoardReader::Open(m_folder / "boards");
            for (bool bMore = true; bMore;)
            {
                try
                {
                    bMore = reader->Band_Read(band, pass);
                    if (bMore)
                    {
                        bands.push_back(band.m_bandNo);
                    }
                }
                catch (const CBoardDamageError& error)
                {
                    said += error.what() + std::string("\n");
                    bMore = reader->Resume();
                }
            }
        }
        catch (const CBoardDamageError& error)
        {
            said += error.what() + std::string("\n");
        }
        return said;
    }

    CTestFolder m_folder;
};

} // namespace

TEST_F(BoardReader, FilesOfVersionOneHaveTheBandsThatTheirJobStillMakes)
{
    const CJobPage page(g_version1 / "job.toml");
    const CPageModel model(Page_BoardInfo(page, "test"));
    for (const std::string name : {"boards.raw", "boards.tif", "boards.lzw.tif"})
    {
        SCOPED_TRACE(name);
        CPageInk ink(page);
        const auto reader = CBoardReader::Open(g_version1 / name);
        EXPECT_EQ(reader->BoardInfo().m_version, 1);
        EXPECT_EQ(reader->BoardInfo().m_nozzles, 8);
        EXPECT_EQ(reader->BoardInfo().m_units.at(0).m_name, "Cyan");
        CBandData band;
        SBoardPass pass;
        for (int swath = 0; swath < model.SwathCount(); ++swath)
        {
            ink.Swath_Read(swath);
            ASSERT_TRUE(reader->Band_Read(band, pass));
            EXPECT_TRUE(HeadersEqual(band, model.Header_Get(swath, swath, ink)));
            EXPECT_EQ(pass.m_bLeftToRight, swath == 0);
            EXPECT_FALSE(pass.m_bBlank);
            std::vector<unsigned char> bytes(static_cast<std::size_t>(band.m_dataSize));
            model.Lines_Make(swath, 0, bytes, ink);
            EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), band.m_pData));
        }
        EXPECT_FALSE(reader->Band_Read(band, pass));
        EXPECT_EQ(reader->BandCount(), 2);
    }
}

TEST_F(BoardReader, AModelNeedsMoreThanVersionOneSays)
{
    const auto reader = CBoardReader::Open(g_version1 / "boards.raw");
    EXPECT_EQ(Error_Of<CInputError>([&] { CPageModel(reader->BoardInfo()); }),
              "the board info is of version 1, which says neither zones, offsets nor the page's size; convert the job "
              "again");
}

TEST_F(BoardReader, BothFormatsAndAllCompressionsReadAlike)
{
    for (const auto compression :
         {EBoardCompression::None, EBoardCompression::PackBits, EBoardCompression::Lzw, EBoardCompression::Deflate})
    {
        for (const EBoardFormat format : {EBoardFormat::Raw, EBoardFormat::Tiff})
        {
            File_Make(format, compression);
            const auto reader = CBoardReader::Open(m_folder / "boards");
            EXPECT_EQ(reader->Format(), format);
            EXPECT_EQ(reader->BoardInfo(), TestInfo_Make());
            CBandData band;
            SBoardPass pass;
            for (int i = 0; i < 3; ++i)
            {
                ASSERT_TRUE(reader->Band_Read(band, pass));
                const auto expected = TestBand_Make(i, 40 + 8 * i, 30);
                EXPECT_TRUE(HeadersEqual(band, *expected));
                EXPECT_EQ(pass, BoardPass_Of(TestInfo_Make(), *expected));
                ASSERT_EQ(band.m_dataSize, expected->m_dataSize);
                EXPECT_TRUE(std::equal(band.m_pData, band.m_pData + band.m_dataSize, expected->m_pData));
            }
            EXPECT_FALSE(reader->Band_Read(band, pass));
        }
    }
}

TEST_F(BoardReader, ReadsOnBehindADamagedRecordOfAStream)
{
    std::string bytes = File_Make(EBoardFormat::Raw);
    const std::size_t second = bytes.find("BAND", bytes.find("BAND") + 1);
    const std::string before = bytes;
    bytes[second + 72] = '\x7F'; // bytes per line
    std::vector<int> bands;
    EXPECT_EQ(
        Read_Over(bytes, bands),
        (m_folder / "boards").string() + ": byte " + std::to_string(second) +
            ": the sizes of band 1 do not fit together: 48 x 30 pixels at 1 bits, 127 bytes per line, 180 bytes\n");
    EXPECT_EQ(bands, (std::vector<int>{0, 2}));
    // Bytes that were lost or put in between shift what follows.
    bands.clear();
    EXPECT_EQ(Read_Over(before.substr(0, second) + "xyz" + before.substr(second), bands),
              (m_folder / "boards").string() + ": byte " + std::to_string(second) +
                  ": neither a band nor the end of the stream begins here\n");
    EXPECT_EQ(bands, (std::vector<int>{0, 1, 2}));
}

TEST_F(BoardReader, ReadsOnBehindADamagedPageOfATiff)
{
    std::string bytes = File_Make(EBoardFormat::Tiff);
    const std::size_t second = bytes.find("boardmap-band", bytes.find("boardmap-band") + 1);
    bytes[second] = 'x';
    std::vector<int> bands;
    EXPECT_EQ(Read_Over(bytes, bands),
              (m_folder / "boards").string() +
                  ": page 1: the image description is no board band's: Format is \"xoardmap-band\"; it is "
                  "boardmap-band\n");
    EXPECT_EQ(bands, (std::vector<int>{0, 2}));
}

TEST_F(BoardReader, SizesAreHeldAgainstTheFileBeforeMemoryIsTaken)
{
    // A band that says two gigabytes.
    std::string bytes = File_Make(EBoardFormat::Raw);
    const std::size_t first = bytes.find("BAND");
    const auto Word_Put = [&](std::size_t offset, const std::string& word) { bytes.replace(first + offset, 4, word); };
    Word_Put(64, std::string("\0\0\0\x10", 4)); // height 2^28
    Word_Put(72, std::string("\x07\0\0\0", 4));
    Word_Put(76, std::string("\0\0\0\x70", 4)); // 7 * 2^28
    std::vector<int> bands;
    EXPECT_EQ(Read_Over(bytes, bands), (m_folder / "boards").string() + ": byte " + std::to_string(bytes.size()) +
                                           ": the stream ends inside band 0; it was cut off\n");
    EXPECT_EQ(bands, (std::vector<int>{1, 2}));
}

TEST_F(BoardReader, EveryDamagedByteIsReadOverOrNamed)
{
    for (const EBoardFormat format : {EBoardFormat::Raw, EBoardFormat::Tiff})
    {
        const std::string bytes = File_Make(format, EBoardCompression::Lzw);
        for (std::size_t i = 0; i < bytes.size(); i += 3)
        {
            std::string damaged = bytes;
            damaged[i] = static_cast<char>(~damaged[i]);
            std::vector<int> bands;
            std::string said;
            try
            {
                said = Read_Over(damaged, bands);
            }
            catch (const CInputError& error)
            {
                said = error.what();
            }
            EXPECT_LE(bands.size(), 3U);
            EXPECT_TRUE(bands.size() == 3U || !said.empty()) << i;
        }
    }
}

TEST_F(BoardReader, CutFilesAreNamedAndWhatIsWholeIsRead)
{
    for (const EBoardFormat format : {EBoardFormat::Raw, EBoardFormat::Tiff})
    {
        const std::string bytes = File_Make(format);
        for (std::size_t size = 0; size < bytes.size(); size += 7)
        {
            std::vector<int> bands;
            EXPECT_FALSE(Read_Over(bytes.substr(0, size), bands).empty()) << size;
        }
    }
}

TEST_F(BoardReader, WhatIsNoBoardFileIsRefused)
{
    const auto Error_OfFile = [&](const std::string& name)
    { return Error_Of<CInputError>([&] { CBoardReader::Open(m_folder / name); }); };
    const std::string path = (m_folder / "x").string();
    EXPECT_EQ(Error_OfFile("x"), path + ": there is no such file");
    std::filesystem::create_directory(m_folder / "x");
    EXPECT_EQ(Error_OfFile("x"), path + ": is a folder, not a board file");
    std::filesystem::remove(m_folder / "x");
    File_Write(m_folder / "x", "");
    EXPECT_EQ(Error_OfFile("x"), path + ": the file is empty");
    File_Write(m_folder / "x", "this is a text, and no board stream");
    EXPECT_EQ(Error_OfFile("x"), path + ": byte 0: this is no board stream");
    std::filesystem::copy_file(g_version1 / "a.tif", m_folder / "y");
    EXPECT_EQ(Error_OfFile("y"),
              (m_folder / "y").string() + ": page 0: there is no image description; a board band's has its header");
}
