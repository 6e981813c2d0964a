// The separation reader on files that are as they should be: every layout gives the same ink.
#include "Host/Input/SeparationReader.h"

#include "Host/HostError.h"
#include "Tests/Host/Input/TiffMaker.h"

#include <gtest/gtest.h>

#include <fstream>

namespace
{

// Reads the page; every row into memory that held something else before.
SInk Page_Read(CSeparationReader& reader)
{
    SInk ink{reader.Width(), reader.Height(), reader.BitsPerPixel(), {}};
    EXPECT_EQ(ink.RowBytes(), static_cast<std::size_t>(reader.RowBytes()));
    std::vector<unsigned char> row(ink.RowBytes(), 0xA5);
    while (reader.Row_Read(row.data()))
    {
        ink.bytes.insert(ink.bytes.end(), row.begin(), row.end());
        row.assign(row.size(), 0xA5);
    }
    return ink;
}

SInk Page_Read(const std::filesystem::path& path)
{
    try
    {
        CSeparationReader reader(path.string());
        return Page_Read(reader);
    }
    catch (const CInputError& error)
    {
        ADD_FAILURE() << error.what();
        return {};
    }
}

void EveryLayoutGivesTheSameInk(int width, int height, int bitsPerPixel)
{
    const CTestFolder folder;
    const auto path = folder / "page.tif";
    const SInk ink = Ink_Random(width, height, bitsPerPixel, 1);
    testing::internal::CaptureStderr();
    for (const auto& layout : TiffLayouts_All(bitsPerPixel, height))
    {
        SCOPED_TRACE(layout.name);
        Tiff_Write(path, ink, layout);
        EXPECT_EQ(Page_Read(path), ink);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// One row of one byte, written by hand.
SInk HandMadeByte_Read(unsigned char byte, int bitsPerPixel, std::uint16_t photometric, std::uint16_t fillOrder)
{
    const CTestFolder folder;
    CHandMadeTiff made(static_cast<std::uint32_t>(8 / bitsPerPixel), 1, std::string(1, static_cast<char>(byte)));
    made.Short_Set(TIFFTAG_BITSPERSAMPLE, static_cast<std::uint16_t>(bitsPerPixel));
    made.Short_Set(TIFFTAG_PHOTOMETRIC, photometric);
    made.Short_Set(TIFFTAG_FILLORDER, fillOrder);
    File_Write(folder / "page.tif", made.Bytes_Get());
    return Page_Read(folder / "page.tif");
}

} // namespace

TEST(SeparationReader, EveryLayoutOfOneBitGivesTheSameInk)
{
    EveryLayoutGivesTheSameInk(101, 37, 1);
    EveryLayoutGivesTheSameInk(64, 32, 1);
    EveryLayoutGivesTheSameInk(1, 1, 1);
}

TEST(SeparationReader, EveryLayoutOfTwoBitsGivesTheSameInk)
{
    EveryLayoutGivesTheSameInk(101, 37, 2);
    EveryLayoutGivesTheSameInk(64, 32, 2);
    EveryLayoutGivesTheSameInk(1, 1, 2);
}

TEST(SeparationReader, AllWhitePagesHaveNoInkAndAllBlackPagesAllOfIt)
{
    const CTestFolder folder;
    for (const int bitsPerPixel : {1, 2})
    {
        SInk white = Ink_Blank(19, 23, bitsPerPixel);
        SInk black = white;
        for (int i = 0; i < 19 * 23; ++i)
        {
            black.Pixel_Set(i / 19, i % 19, bitsPerPixel == 1 ? 1 : 3);
        }
        for (const auto& layout : TiffLayouts_All(bitsPerPixel, 23))
        {
            SCOPED_TRACE(layout.name);
            Tiff_Write(folder / "white.tif", white, layout);
            EXPECT_EQ(Page_Read(folder / "white.tif"), white);
            Tiff_Write(folder / "black.tif", black, layout);
            EXPECT_EQ(Page_Read(folder / "black.tif"), black);
        }
    }
}

TEST(SeparationReader, TheFilesFirstBitIsTheFirstPixelWhicheverTheFillOrder)
{
    EXPECT_EQ(HandMadeByte_Read(0x80, 1, PHOTOMETRIC_MINISWHITE, FILLORDER_MSB2LSB).bytes.at(0), 0x80);
    EXPECT_EQ(HandMadeByte_Read(0x01, 1, PHOTOMETRIC_MINISWHITE, FILLORDER_LSB2MSB).bytes.at(0), 0x80);
    EXPECT_EQ(HandMadeByte_Read(0xFE, 1, PHOTOMETRIC_MINISBLACK, FILLORDER_LSB2MSB).bytes.at(0), 0x80);
}

TEST(SeparationReader, DarkerIsMoreInkWhicheverThePolarity)
{
    EXPECT_EQ(HandMadeByte_Read(0b00'01'10'11, 2, PHOTOMETRIC_MINISWHITE, FILLORDER_MSB2LSB).bytes.at(0),
              0b00'01'10'11);
    EXPECT_EQ(HandMadeByte_Read(0b00'01'10'11, 2, PHOTOMETRIC_MINISBLACK, FILLORDER_MSB2LSB).bytes.at(0),
              0b11'10'01'00);
}

TEST(SeparationReader, PaddingBitsThatAreSetInTheFileAreNoInk)
{
    const CTestFolder folder;
    for (const auto photometric : {PHOTOMETRIC_MINISWHITE, PHOTOMETRIC_MINISBLACK})
    {
        const bool bWhiteIsZero = photometric == PHOTOMETRIC_MINISWHITE;
        CHandMadeTiff made(3, 2, bWhiteIsZero ? "\x5F\xBF" : "\xA0\x40");
        made.Short_Set(TIFFTAG_PHOTOMETRIC, static_cast<std::uint16_t>(photometric));
        File_Write(folder / "page.tif", made.Bytes_Get());
        EXPECT_EQ(Page_Read(folder / "page.tif").bytes, (std::vector<unsigned char>{0x40, 0xA0}));
    }
}

TEST(SeparationReader, TheHeaderSaysPathSizeAndBits)
{
    const CTestFolder folder;
    const auto path = (folder / "page.tif").string();
    Tiff_Write(path, Ink_Random(101, 37, 2, 5), {.name = "plain", .rowsPerStrip = 5});
    const SSeparationInfo info = SeparationInfo_Get(path);
    EXPECT_EQ(info.path, path);
    EXPECT_EQ(info.width, 101);
    EXPECT_EQ(info.height, 37);
    EXPECT_EQ(info.bitsPerPixel, 2);
}

TEST(SeparationReader, TagsThatAreMissingHaveTheirDefaults)
{
    const CTestFolder folder;
    CHandMadeTiff made(8, 2, "\x0F\xF0");
    made.Tag_Remove(TIFFTAG_BITSPERSAMPLE);
    made.Tag_Remove(TIFFTAG_COMPRESSION);
    made.Tag_Remove(TIFFTAG_SAMPLESPERPIXEL);
    made.Tag_Remove(TIFFTAG_ROWSPERSTRIP);
    File_Write(folder / "page.tif", made.Bytes_Get());
    EXPECT_EQ(Page_Read(folder / "page.tif").bytes, (std::vector<unsigned char>{0x0F, 0xF0}));
}

TEST(SeparationReader, NoRowIsLeftAfterTheLast)
{
    const CTestFolder folder;
    File_Write(folder / "page.tif", CHandMadeTiff(8, 2, "\x0F\xF0").Bytes_Get());
    CSeparationReader reader((folder / "page.tif").string());
    unsigned char row = 0;
    EXPECT_TRUE(reader.Row_Read(&row));
    EXPECT_TRUE(reader.Row_Read(&row));
    EXPECT_EQ(row, 0xF0);
    EXPECT_FALSE(reader.Row_Read(&row));
    EXPECT_FALSE(reader.Row_Read(&row));
    EXPECT_EQ(row, 0xF0);
}

TEST(SeparationReader, RowsThatAreLeftOutChangeNothingOfTheOthers)
{
    const CTestFolder folder;
    constexpr int height = 43;
    for (const int bitsPerPixel : {1, 2})
    {
        const SInk ink = Ink_Random(70, height, bitsPerPixel, 8);
        for (const STiffLayout& layout : TiffLayouts_All(bitsPerPixel, height))
        {
            SCOPED_TRACE(layout.name);
            Tiff_Write(folder / "page.tif", ink, layout);
            for (const auto& [before, skipped] : {std::pair(0, 1), {0, 17}, {3, 1}, {5, 20}, {7, 36}, {0, 42}, {9, 0}})
            {
                CSeparationReader reader((folder / "page.tif").string());
                std::vector<unsigned char> row(static_cast<std::size_t>(reader.RowBytes()));
                for (int i = 0; i < before; ++i)
                {
                    ASSERT_TRUE(reader.Row_Read(row.data()));
                }
                reader.Rows_Skip(skipped);
                for (int i = before + skipped; i < height; ++i)
                {
                    ASSERT_TRUE(reader.Row_Read(row.data()));
                    EXPECT_TRUE(std::equal(row.begin(), row.end(), ink.Row(i))) << before << ' ' << skipped << ' ' << i;
                }
                EXPECT_FALSE(reader.Row_Read(row.data()));
            }
        }
    }
}

TEST(SeparationReader, AThumbnailAfterThePageDoesNotCount)
{
    const CTestFolder folder;
    const auto path = folder / "page.tif";
    const SInk ink = Ink_Random(101, 37, 1, 2);
    Tiff_Write(path, ink, {.name = "page", .compression = COMPRESSION_CCITTFAX4, .rowsPerStrip = 10});
    Tiff_Write(folder / "thumbnail.tif", Ink_Blank(10, 4, 1), {.name = "thumbnail", .rowsPerStrip = 4});
    TIFF* tiff = TIFFOpen(path.string().c_str(), "a");
    TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, FILETYPE_REDUCEDIMAGE);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 8);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    std::string thumbnail(8, '\x7F');
    TIFFWriteScanline(tiff, thumbnail.data(), 0, 0);
    TIFFClose(tiff);
    EXPECT_EQ(Page_Read(path), ink);
}

TEST(SeparationReader, AFileNameIsUtf8)
{
    const CTestFolder folder;
    const std::filesystem::path name = folder / "plain.tif";
    const SInk ink = Ink_Random(20, 20, 1, 3);
    Tiff_Write(name, ink, {.name = "plain", .rowsPerStrip = 5});
    const std::filesystem::path renamed = name.parent_path() / std::filesystem::path(u8"d\u00e9coup\u00e9.tif");
    std::filesystem::rename(name, renamed);
    const std::u8string utf8 = renamed.u8string();
    CSeparationReader reader(std::string(utf8.begin(), utf8.end()));
    EXPECT_EQ(Page_Read(reader), ink);
}

// The page has 50 MB in one strip; with the largest piece of memory limited to a hundredth of that, only a reader that
// takes the strip row by row can read it.
TEST(SeparationReader, ALargeUncompressedStripIsNeverInMemoryAsAWhole)
{
    const CTestFolder folder;
    const auto path = folder / "page.tif";
    constexpr std::uint32_t side = 20000;
    constexpr std::uint32_t size = side / 8 * side;
    CHandMadeTiff made(side, side, "");
    made.Long_Set(TIFFTAG_STRIPBYTECOUNTS, {size});
    File_Write(path, made.Bytes_Get());
    std::filesystem::resize_file(path, CHandMadeTiff::dataOffset + size - 1);
    std::ofstream(path, std::ios::binary | std::ios::app) << '\x01';

    SSeparationLimit limit;
    limit.maxBlockBytes = size / 100;
    CSeparationReader reader(path.string(), limit);
    std::vector<unsigned char> row(static_cast<std::size_t>(reader.RowBytes()));
    int rows = 0;
    int inkedRows = 0;
    while (reader.Row_Read(row.data()))
    {
        ++rows;
        inkedRows += row != std::vector<unsigned char>(row.size()) ? 1 : 0;
    }
    EXPECT_EQ(rows, 20000);
    EXPECT_EQ(inkedRows, 1);
    EXPECT_EQ(row.back(), 0x01);
}

TEST(SeparationReader, APageOfManyTileRowsNeedsTheMemoryOfOne)
{
    const CTestFolder folder;
    const SInk ink = Ink_Random(640, 640, 1, 4);
    Tiff_Write(folder / "page.tif", ink,
               {.name = "tiles", .compression = COMPRESSION_ADOBE_DEFLATE, .tileWidth = 64, .tileHeight = 64});
    SSeparationLimit limit;
    limit.maxBlockBytes = 640 * 64 / 8;
    CSeparationReader reader((folder / "page.tif").string(), limit);
    EXPECT_EQ(Page_Read(reader), ink);
}
