// Board bands as TIFF pages, read back through libtiff.
#include "Host/Output/BoardTiffWriter.h"

#include "Host/HostError.h"
#include "Tests/Host/Output/TestBand.h"
#include "Tests/Support/TestFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <tiffio.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>

namespace
{

using CTiff = std::unique_ptr<TIFF, void (*)(TIFF*)>;

CTiff Tiff_Open(const std::filesystem::path& path)
{
    return {TIFFOpen(path.string().c_str(), "r"), &TIFFClose};
}

template<class TValue>
TValue Tag_Get(TIFF* pTiff, std::uint32_t tag)
{
    TValue value = {};
    EXPECT_EQ(TIFFGetField(pTiff, tag, &value), 1) << tag;
    return value;
}

// The rows of the current page, without anything between them.
std::vector<unsigned char> Rows_Read(TIFF* pTiff)
{
    const auto height = Tag_Get<std::uint32_t>(pTiff, TIFFTAG_IMAGELENGTH);
    const auto rowBytes = static_cast<std::size_t>(TIFFScanlineSize(pTiff));
    std::vector<unsigned char> rows(rowBytes * height);
    for (std::uint32_t row = 0; row < height; ++row)
    {
        EXPECT_EQ(TIFFReadScanline(pTiff, rows.data() + rowBytes * row, row), 1);
    }
    return rows;
}

std::vector<unsigned char> Rows_Of(const CBandData& band)
{
    std::vector<unsigned char> rows;
    for (int line = 0; line < band.m_height; ++line)
    {
        const unsigned char* pLine = band.m_pData + std::ptrdiff_t{line} * band.m_bytesPerLine;
        rows.insert(rows.end(), pLine, pLine + (band.m_width + 7) / 8);
    }
    return rows;
}

std::string Description_Of(const CBandData& band)
{
    SBoardPass pass = BoardPass_Of(TestInfo_Make(), band);
    pass.m_bBlank = Band_IsBlank(band);
    return BandHeader_Json(band, pass, TestInfo_Make());
}

// The most that these bands may need.
SBoardTiffSize Size_Of(std::int64_t bandCount, const CBandData& band)
{
    return {bandCount, true, band.m_height, band.m_bytesPerLine};
}

} // namespace

class BoardTiffWriter_Compression : public testing::TestWithParam<std::pair<EBoardCompression, int>>
{
};

TEST_P(BoardTiffWriter_Compression, BandsComeBackBitByBit)
{
    const auto& [compression, tag] = GetParam();
    const CTestFolder folder;
    std::vector<std::unique_ptr<CBandData>> bands;
    bands.push_back(TestBand_Make(0, 6400, 3000)); // three strips, the last one shorter
    bands.push_back(TestBand_Make(1, 64, 1));
    bands.push_back(TestBand_Make(2, 1003, 41));       // a last byte with bits to spare
    bands.push_back(TestBand_Make(3, 1003, 4100, 64)); // lines longer than rows, in more than one strip
    {
        CBoardTiffWriter writer(folder / "page.tif", TestInfo_Make(), Size_Of(4, *bands[0]), compression);
        for (const auto& band : bands)
        {
            writer.Band_Write(*band);
        }
        EXPECT_EQ(writer.BandCount(), 4);
        writer.Finish();
    }
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"page.tif"});

    const CTiff tiff = Tiff_Open(folder / "page.tif");
    ASSERT_NE(tiff, nullptr);
    ASSERT_EQ(TIFFNumberOfDirectories(tiff.get()), 4U);
    for (std::size_t i = 0; i < bands.size(); ++i)
    {
        ASSERT_EQ(TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(i)), 1);
        EXPECT_EQ(Tag_Get<std::uint32_t>(tiff.get(), TIFFTAG_IMAGEWIDTH),
                  static_cast<std::uint32_t>(bands[i]->m_width));
        EXPECT_EQ(Tag_Get<std::uint16_t>(tiff.get(), TIFFTAG_COMPRESSION), tag);
        EXPECT_EQ(Rows_Read(tiff.get()), Rows_Of(*bands[i])) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(All, BoardTiffWriter_Compression,
                         testing::Values(std::pair{EBoardCompression::None, COMPRESSION_NONE},
                                         std::pair{EBoardCompression::PackBits, COMPRESSION_PACKBITS},
                                         std::pair{EBoardCompression::Lzw, COMPRESSION_LZW},
                                         std::pair{EBoardCompression::Deflate, COMPRESSION_ADOBE_DEFLATE}));

TEST(BoardTiffWriter, PagesSayWhatTheyAre)
{
    const CTestFolder folder;
    const auto first = TestBand_Make(0, 6400, 3000);
    const auto second = TestBand_Make(1, 6400, 3000);
    {
        CBoardTiffWriter writer(folder / "page.tif", TestInfo_Make(), Size_Of(2, *first));
        writer.Band_Write(*first);
        writer.Band_Write(*second);
        writer.Finish();
    }
    const CTiff tiff = Tiff_Open(folder / "page.tif");
    ASSERT_NE(tiff, nullptr);
    ASSERT_EQ(TIFFSetDirectory(tiff.get(), 1), 1);
    EXPECT_EQ(TIFFIsBigTIFF(tiff.get()), 0);
    EXPECT_EQ(Tag_Get<std::uint16_t>(tiff.get(), TIFFTAG_BITSPERSAMPLE), 1);
    EXPECT_EQ(Tag_Get<std::uint16_t>(tiff.get(), TIFFTAG_SAMPLESPERPIXEL), 1);
    EXPECT_EQ(Tag_Get<std::uint16_t>(tiff.get(), TIFFTAG_PHOTOMETRIC), PHOTOMETRIC_MINISWHITE);
    EXPECT_EQ(Tag_Get<std::uint16_t>(tiff.get(), TIFFTAG_FILLORDER), FILLORDER_MSB2LSB);
    EXPECT_EQ(Tag_Get<std::uint32_t>(tiff.get(), TIFFTAG_SUBFILETYPE), static_cast<std::uint32_t>(FILETYPE_PAGE));
    EXPECT_EQ(Tag_Get<std::uint32_t>(tiff.get(), TIFFTAG_ROWSPERSTRIP), 1310U); // 1 MiB of 800 bytes each
    EXPECT_STREQ(Tag_Get<const char*>(tiff.get(), TIFFTAG_SOFTWARE), "boardmap");
    std::uint16_t page = 0;
    std::uint16_t pageCount = 0;
    ASSERT_EQ(TIFFGetField(tiff.get(), TIFFTAG_PAGENUMBER, &page, &pageCount), 1);
    EXPECT_EQ(page, 1);
    EXPECT_EQ(pageCount, 2);
    EXPECT_EQ(Tag_Get<const char*>(tiff.get(), TIFFTAG_IMAGEDESCRIPTION), Description_Of(*second));
    EXPECT_EQ(nlohmann::json::parse(Tag_Get<const char*>(tiff.get(), TIFFTAG_IMAGEDESCRIPTION))["Header"]["m_bandNo"],
              1);
}

TEST(BoardTiffWriter, TotalOfPagesIsLeftOpenWhereItIsNotKnown)
{
    const CTestFolder folder;
    const auto band = TestBand_Make(0, 64, 2);
    SBoardTiffSize size = Size_Of(9, *band);
    size.m_bBandCountExact = false;
    {
        CBoardTiffWriter writer(folder / "page.tif", TestInfo_Make(), size);
        writer.Band_Write(*band);
        writer.Finish();
    }
    const CTiff tiff = Tiff_Open(folder / "page.tif");
    ASSERT_NE(tiff, nullptr);
    std::uint16_t page = 9;
    std::uint16_t pageCount = 9;
    ASSERT_EQ(TIFFGetField(tiff.get(), TIFFTAG_PAGENUMBER, &page, &pageCount), 1);
    EXPECT_EQ(page, 0);
    EXPECT_EQ(pageCount, 0);
}

TEST(BoardTiffWriter, FileThatCouldPassFourGibibytesIsABigTiff)
{
    const CTestFolder folder;
    const auto band = TestBand_Make(0, 64, 2);
    {
        CBoardTiffWriter writer(folder / "page.tif", TestInfo_Make(), {1000, true, 10000, 800});
        writer.Band_Write(*band);
        writer.Finish();
    }
    const CTiff tiff = Tiff_Open(folder / "page.tif");
    ASSERT_NE(tiff, nullptr);
    EXPECT_EQ(TIFFIsBigTIFF(tiff.get()), 1);
    EXPECT_EQ(Rows_Read(tiff.get()), Rows_Of(*band));
}

TEST(BoardTiffWriter, BigTiffDecisionStandsOnTheSafeSideOfTheLimit)
{
    const auto needsBigTiff = [](std::int64_t bandCount, std::int64_t lineCount, std::int64_t bytesPerLine,
                                 EBoardCompression compression = EBoardCompression::None) {
        return BoardTiff_NeedsBigTiff({bandCount, true, lineCount, bytesPerLine}, compression, 1000);
    };
    EXPECT_FALSE(needsBigTiff(0, 0, 0));
    EXPECT_FALSE(needsBigTiff(1, 5000, 800));
    // 4087 pages of 1 MiB leave room for their tags and descriptions, one more does not.
    EXPECT_FALSE(needsBigTiff(4087, 1024, 1024));
    EXPECT_TRUE(needsBigTiff(4088, 1024, 1024));
    EXPECT_FALSE(needsBigTiff(1, 1024, 2097152));
    EXPECT_TRUE(needsBigTiff(2, 1024, 2097152));
    // Pages so small that their tags are what counts.
    EXPECT_FALSE(needsBigTiff(2000000, 1, 1));
    EXPECT_TRUE(needsBigTiff(2100000, 1, 1));
    // What a compression may add in the worst case: a byte per 128, a half, a thousandth.
    EXPECT_TRUE(needsBigTiff(4087, 1024, 1024, EBoardCompression::PackBits));
    EXPECT_FALSE(needsBigTiff(4050, 1024, 1024, EBoardCompression::PackBits));
    EXPECT_TRUE(needsBigTiff(30, 104857600, 1, EBoardCompression::PackBits));
    EXPECT_TRUE(needsBigTiff(2730, 1024, 1024, EBoardCompression::Lzw));
    EXPECT_FALSE(needsBigTiff(2720, 1024, 1024, EBoardCompression::Lzw));
    EXPECT_TRUE(needsBigTiff(4087, 1024, 1024, EBoardCompression::Deflate));
    EXPECT_FALSE(needsBigTiff(4080, 1024, 1024, EBoardCompression::Deflate));
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    EXPECT_TRUE(needsBigTiff(most, most, 1));
}

TEST(BoardTiffWriter, AbandonedWriterLeavesTheExistingFileAndNoTemporaryFile)
{
    const CTestFolder folder;
    File_Write(folder / "page.tif", "earlier");
    {
        const auto band = TestBand_Make(0, 800, 10);
        CBoardTiffWriter writer(folder / "page.tif", TestInfo_Make(), Size_Of(2, *band));
        writer.Band_Write(*band);
    }
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"page.tif"});
    EXPECT_EQ(File_Read(folder / "page.tif"), "earlier");
}

TEST(BoardTiffWriter, FullDiskIsOneErrorOfTheRunAndNothingOnStandardError)
{
    if (!std::filesystem::is_character_file("/dev/full"))
    {
        GTEST_SKIP() << "no such device here";
    }
    testing::internal::CaptureStderr();
    const auto band = TestBand_Make(0, 6400, 3000);
    {
        const auto open = [&]
        {
            CBoardTiffWriter(std::make_unique<COutputFile>("/dev/full", ESpecialFile::WriteInPlace), TestInfo_Make(),
                             Size_Of(1, *band));
        };
        EXPECT_EQ(Error_Of<CRunError>(open), "/dev/full: cannot be written: No space left on device");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(BoardTiffWriter, FailedWriteLeavesTheExistingFileAndNoTemporaryFile)
{
    const CTestFolder folder;
    File_Write(folder / "page.tif", "earlier");
    {
        const auto band = TestBand_Make(0, 800, 10);
        CBoardTiffWriter writer(folder / "page.tif", TestInfo_Make(), Size_Of(2, *band));
        writer.Band_Write(*band);
        EXPECT_THROW(writer.Band_Write(*TestBand_Make(1, 800, 0)), CRunError);
        EXPECT_THROW(writer.Finish(), std::logic_error);
    }
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"page.tif"});
    EXPECT_EQ(File_Read(folder / "page.tif"), "earlier");
}

TEST(BoardTiffWriter, BandThatIsNoPageIsRefused)
{
    const CTestFolder folder;
    const std::filesystem::path path = folder / "page.tif";
    CBoardTiffWriter empty(path, TestInfo_Make(), {});
    EXPECT_EQ(Error_Of<CRunError>([&] { empty.Band_Write(*TestBand_Make(0, 800, 0)); }),
              path.string() + ": band 0 has 0 lines of 800 pixels at 1 bits; a TIFF page needs lines of 1-bit pixels");
    CBandData deep;
    ASSERT_TRUE(deep.Create(8, 1, 2, 1));
    CBoardTiffWriter writer(path, TestInfo_Make(), {});
    EXPECT_THROW(writer.Band_Write(deep), CRunError);
}

TEST(BoardTiffWriter, FileWithoutPagesIsNeverMade)
{
    const CTestFolder folder;
    const std::filesystem::path path = folder / "page.tif";
    {
        CBoardTiffWriter writer(path, TestInfo_Make(), {});
        EXPECT_EQ(Error_Of<CRunError>([&] { writer.Finish(); }),
                  path.string() + ": there is no board band, and a TIFF without pages cannot be read");
    }
    EXPECT_TRUE(folder.Names().empty());
}

TEST(BoardTiffWriter, UnwritableTargetIsRefusedBeforeAnyBand)
{
    const CTestFolder folder;
    EXPECT_EQ(Error_Of<CInputError>([&] { CBoardTiffWriter(folder / "no/page.tif", TestInfo_Make(), {}); }),
              (folder / "no/page.tif").string() + ": there is no folder " + (folder / "no").string());
}
