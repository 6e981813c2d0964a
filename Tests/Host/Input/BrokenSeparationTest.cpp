// The separation reader on files that are damaged, that lie, or that are no separations: one clear error each, nothing
// printed, nothing crashed.
#include "Host/HostError.h"
#include "Host/Input/SeparationReader.h"

#include "Tests/Host/Input/TiffMaker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>

namespace
{

using testing::HasSubstr;

// Opens the separation and reads it to its end. What it was refused with, without the file's name in front; empty if it
// was not.
std::string Refusal_Get(const std::filesystem::path& path, const SSeparationLimit& limit = {},
                        std::vector<unsigned char>* ink = nullptr)
{
    try
    {
        CSeparationReader reader(path.string(), limit);
        std::vector<unsigned char> row(static_cast<std::size_t>(reader.RowBytes()));
        while (reader.Row_Read(row.data()))
        {
            if (ink != nullptr)
            {
                ink->insert(ink->end(), row.begin(), row.end());
            }
        }
        return "";
    }
    catch (const CInputError& error)
    {
        const std::string text = error.what();
        EXPECT_EQ(text.rfind(path.string() + ": ", 0), 0U) << text;
        EXPECT_EQ(text.find('\n'), std::string::npos) << text;
        return text.substr(path.string().size() + 2);
    }
}

class BrokenSeparation : public testing::Test
{
protected:
    BrokenSeparation() { testing::internal::CaptureStderr(); }
    ~BrokenSeparation() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }

    std::string Refusal_Of(const CHandMadeTiff& made) const { return Refusal_Of(made.Bytes_Get()); }
    std::string Refusal_Of(const std::string& bytes) const
    {
        File_Write(m_path, bytes);
        return Refusal_Get(m_path);
    }

    // A page of 16 x 4 pixels that is as it should be.
    static CHandMadeTiff Good() { return {16, 4, "\x01\x02\x03\x04\x05\x06\x07\x08"}; }
    static CHandMadeTiff GoodWith(std::uint16_t tag, std::uint16_t value)
    {
        CHandMadeTiff made = Good();
        made.Short_Set(tag, value);
        return made;
    }
    static CHandMadeTiff GoodWithLong(std::uint16_t tag, std::vector<std::uint32_t> values)
    {
        CHandMadeTiff made = Good();
        made.Long_Set(tag, std::move(values));
        return made;
    }

    CTestFolder m_folder;
    std::filesystem::path m_path = m_folder / "page.tif";
};

// Layouts that differ in how they can break.
std::vector<STiffLayout> Layouts_Selected()
{
    std::vector<STiffLayout> layouts;
    for (const auto& [name, compression] :
         {std::pair{"none", COMPRESSION_NONE}, std::pair{"packbits", COMPRESSION_PACKBITS},
          std::pair{"lzw", COMPRESSION_LZW}, std::pair{"deflate", COMPRESSION_ADOBE_DEFLATE},
          std::pair{"rle", COMPRESSION_CCITTRLE}, std::pair{"g3", COMPRESSION_CCITTFAX3},
          std::pair{"g4", COMPRESSION_CCITTFAX4}})
    {
        layouts.push_back({.name = name, .compression = static_cast<std::uint16_t>(compression), .rowsPerStrip = 64});
        layouts.push_back({.name = std::string(name) + ", strips of 8",
                           .compression = static_cast<std::uint16_t>(compression),
                           .photometric = PHOTOMETRIC_MINISBLACK,
                           .rowsPerStrip = 8,
                           .mode = "w8"});
        layouts.push_back({.name = std::string(name) + ", tiles",
                           .compression = static_cast<std::uint16_t>(compression),
                           .tileWidth = 32,
                           .tileHeight = 16});
    }
    return layouts;
}

} // namespace

TEST_F(BrokenSeparation, ThePageThatTheOthersAreMadeFromIsWhole)
{
    EXPECT_EQ(Refusal_Of(Good()), "");
}

TEST_F(BrokenSeparation, AFileThatIsNotThere)
{
    EXPECT_EQ(Refusal_Get(m_folder / "none.tif"), "there is no such file");
    EXPECT_EQ(Refusal_Get(m_folder / "no-folder/none.tif"), "there is no such file");
}

TEST_F(BrokenSeparation, AFolderInPlaceOfAFile)
{
    std::filesystem::create_directory(m_path);
    EXPECT_EQ(Refusal_Get(m_path), "is a folder, not a TIFF file");
}

TEST_F(BrokenSeparation, AFileThatMayNotBeRead)
{
    File_Write(m_path, Good().Bytes_Get());
    std::filesystem::permissions(m_path, std::filesystem::perms::none);
    if (std::ifstream(m_path).is_open())
    {
        GTEST_SKIP() << "this user may read every file";
    }
    EXPECT_EQ(Refusal_Get(m_path), "cannot be opened: Permission denied");
}

TEST_F(BrokenSeparation, AFileThatIsNoTiff)
{
    EXPECT_EQ(Refusal_Of(std::string()), "the file is empty");
    EXPECT_EQ(Refusal_Of(std::string("II*")), "this is not a TIFF file");
    EXPECT_EQ(Refusal_Of(std::string("%PDF-1.4 and so on")), "this is not a TIFF file");
    EXPECT_EQ(Refusal_Of(std::string("II\0*wrong way round", 20)), "this is not a TIFF file");
    EXPECT_THAT(Refusal_Of(std::string("II*\0", 4)), HasSubstr("the TIFF header cannot be read"));
    EXPECT_THAT(Refusal_Of(std::string("II+\0\x08\0\0\0", 8)), HasSubstr("the TIFF header cannot be read"));
}

TEST_F(BrokenSeparation, TheWrongKindOfPixels)
{
    EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_BITSPERSAMPLE, 8)), "8 bits per sample; a separation needs 1 or 2");
    EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_BITSPERSAMPLE, 4)), "4 bits per sample; a separation needs 1 or 2");
    EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_INT)),
              "sample format 2; a separation needs unsigned samples (1)");
    CHandMadeTiff palette = GoodWith(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE);
    palette.Shorts_Set(TIFFTAG_COLORMAP, {0, 65535, 0, 65535, 0, 65535});
    EXPECT_EQ(Refusal_Of(palette), "a palette image; a separation needs black and white, either of them 0");
    EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB)),
              "an RGB image; a separation needs black and white, either of them 0");
    EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_SEPARATED)),
              "a CMYK image; a separation needs black and white, either of them 0");
    EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MASK)),
              "a transparency mask; a separation needs black and white, either of them 0");
    EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_PHOTOMETRIC, 77)),
              "an image of photometric interpretation 77; a separation needs black and white, either of them 0");
    CHandMadeTiff unknown = Good();
    unknown.Tag_Remove(TIFFTAG_PHOTOMETRIC);
    EXPECT_EQ(Refusal_Of(unknown),
              "the photometric interpretation is missing: nothing says whether 0 is black or white");
}

TEST_F(BrokenSeparation, SeveralSamplesPerPixel)
{
    CHandMadeTiff made(4, 4, std::string(16, '\0'));
    made.Short_Set(TIFFTAG_SAMPLESPERPIXEL, 4);
    EXPECT_EQ(Refusal_Of(made), "4 samples per pixel; a separation needs 1");
}

TEST_F(BrokenSeparation, APageThatLiesOnItsSide)
{
    EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_ORIENTATION, ORIENTATION_LEFTTOP)),
              "orientation 5; a separation needs the first row on top and the first column at the left (1)");
    EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_ORIENTATION, ORIENTATION_BOTLEFT)),
              "orientation 4; a separation needs the first row on top and the first column at the left (1)");
    EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT)), "");
}

TEST_F(BrokenSeparation, ValuesThatDoNotExist)
{
    for (const int value : {0, 9})
    {
        const std::string bad = "bad value " + std::to_string(value) + " for ";
        EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_ORIENTATION, static_cast<std::uint16_t>(value))),
                  bad + "\"Orientation\" tag; a separation needs the first row on top and the first column at the left "
                        "(1)");
        EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_FILLORDER, static_cast<std::uint16_t>(value))),
                  bad + "\"FillOrder\" tag; it is 1, the high bits first, or 2");
    }
}

TEST_F(BrokenSeparation, SizesOfZeroOrAbsurdSizes)
{
    EXPECT_NE(Refusal_Of(GoodWithLong(TIFFTAG_IMAGEWIDTH, {0})), "");
    EXPECT_NE(Refusal_Of(GoodWithLong(TIFFTAG_IMAGELENGTH, {0})), "");
    EXPECT_EQ(Refusal_Of(GoodWithLong(TIFFTAG_IMAGEWIDTH, {16777217})),
              "16777217 columns; a separation can have 16777216");
    CHandMadeTiff endless = Good();
    endless.Long_Set(TIFFTAG_IMAGELENGTH, {4000000000});
    endless.Tag_Remove(TIFFTAG_ROWSPERSTRIP);
    EXPECT_EQ(Refusal_Of(endless), "4000000000 rows; a separation can have 2147483647");
    CHandMadeTiff noWidth = Good();
    noWidth.Tag_Remove(TIFFTAG_IMAGEWIDTH);
    EXPECT_THAT(Refusal_Of(noWidth), HasSubstr("the TIFF header cannot be read"));
}

// The tables of so many strips would take 32 GB: the header's promise alone must not allocate them.
TEST_F(BrokenSeparation, MoreStripsThanMemoryCouldList)
{
    CHandMadeTiff made = Good();
    made.Short_Set(TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
    made.Long_Set(TIFFTAG_IMAGELENGTH, {2000000000});
    made.Long_Set(TIFFTAG_ROWSPERSTRIP, {1});
    EXPECT_THAT(Refusal_Of(made), HasSubstr("the TIFF header cannot be read"));
}

TEST_F(BrokenSeparation, ACompressionThatNobodyKnows)
{
    EXPECT_EQ(Refusal_Of(GoodWith(TIFFTAG_COMPRESSION, 4711)), "compression 4711 is none that can be read here");
}

TEST_F(BrokenSeparation, TooFewBytesForTheRows)
{
    CHandMadeTiff made = Good();
    made.Long_Set(TIFFTAG_ROWSPERSTRIP, {2});
    made.Long_Set(TIFFTAG_STRIPOFFSETS, {512, 516});
    made.Long_Set(TIFFTAG_STRIPBYTECOUNTS, {4, 3});
    EXPECT_EQ(Refusal_Of(made), "strip 1 has 3 bytes; its rows need 4");
}

TEST_F(BrokenSeparation, StripSizesThatAreMissingOrWrong)
{
    for (const std::uint32_t size : {0U, 1U, 7U, 9U, 4000000000U})
    {
        SCOPED_TRACE(size);
        EXPECT_NE(Refusal_Of(GoodWithLong(TIFFTAG_STRIPBYTECOUNTS, {size})), "");
    }
    EXPECT_THAT(Refusal_Of(GoodWithLong(TIFFTAG_STRIPBYTECOUNTS, {7})),
                HasSubstr("the strips' sizes are missing or wrong"));
    CHandMadeTiff missing = Good();
    missing.Tag_Remove(TIFFTAG_STRIPBYTECOUNTS);
    EXPECT_THAT(Refusal_Of(missing), HasSubstr("the strips' sizes are missing or wrong"));
    CHandMadeTiff nowhere = Good();
    nowhere.Tag_Remove(TIFFTAG_STRIPOFFSETS);
    EXPECT_THAT(Refusal_Of(nowhere), HasSubstr("the TIFF header cannot be read"));
}

TEST_F(BrokenSeparation, StripsThatAreNotInTheFile)
{
    CHandMadeTiff made = Good();
    made.Long_Set(TIFFTAG_ROWSPERSTRIP, {2});
    made.Long_Set(TIFFTAG_STRIPBYTECOUNTS, {4, 4});
    made.Long_Set(TIFFTAG_STRIPOFFSETS, {512, 517});
    EXPECT_EQ(Refusal_Of(made), "strip 1 lies beyond the end of the file (4 bytes from 517 on, the file has 520): the "
                                "file is truncated or damaged");
    made.Long_Set(TIFFTAG_STRIPOFFSETS, {512, 4294967295});
    EXPECT_THAT(Refusal_Of(made), HasSubstr("strip 1 lies beyond the end of the file (4 bytes from 4294967295 on"));
    made.Long_Set(TIFFTAG_STRIPOFFSETS, {512, 0});
    EXPECT_EQ(Refusal_Of(made), "strip 1 has no data");
    made.Long_Set(TIFFTAG_STRIPOFFSETS, {512});
    made.Long_Set(TIFFTAG_STRIPBYTECOUNTS, {4});
    EXPECT_EQ(Refusal_Of(made), "strip 1 has no data");
}

// A page that says it has more rows than its data gives, for every codec; one row more is the hardest to see.
TEST_F(BrokenSeparation, MoreRowsToldThanThereAre)
{
    const SInk ink = Ink_Random(101, 64, 1, 1);
    for (const auto& layout : Layouts_Selected())
    {
        if (layout.rowsPerStrip != 64)
        {
            continue;
        }
        Tiff_Write(m_folder / "whole.tif", ink, layout);
        const std::string whole = DirectoryFirst_Get(m_folder / "whole.tif", ink);
        for (const std::uint32_t lie : {65U, 66U, 80U, 100000U})
        {
            SCOPED_TRACE(layout.name + ", " + std::to_string(lie));
            std::string lying = whole;
            const std::size_t heightTag = lying.find(std::string("\x01\x01\x04\0\x01\0\0\0", 8));
            ASSERT_NE(heightTag, std::string::npos);
            const std::size_t rowsPerStripTag = lying.find(std::string("\x16\x01\x04\0\x01\0\0\0", 8));
            ASSERT_NE(rowsPerStripTag, std::string::npos);
            for (int i = 0; i < 4; ++i)
            {
                lying[heightTag + 8 + static_cast<std::size_t>(i)] = static_cast<char>(lie >> (8 * i));
                lying[rowsPerStripTag + 8 + static_cast<std::size_t>(i)] = static_cast<char>(lie >> (8 * i));
            }
            EXPECT_NE(Refusal_Of(lying), "");
        }
    }
}

TEST_F(BrokenSeparation, MoreThanOnePage)
{
    const SInk ink = Ink_Random(20, 20, 1, 1);
    Tiff_Write(m_path, ink, {.name = "first", .rowsPerStrip = 20});
    Tiff_Write(m_path, ink, {.name = "second", .rowsPerStrip = 20, .mode = "a"});
    EXPECT_EQ(Refusal_Get(m_path), "the file has more than one page; a separation is a file of its own");
}

TEST_F(BrokenSeparation, ADirectoryThatFollowsItself)
{
    CHandMadeTiff made = Good();
    made.NextDirectory_Set(8);
    EXPECT_NE(Refusal_Of(made), "");
    made.NextDirectory_Set(100000);
    EXPECT_THAT(Refusal_Of(made), HasSubstr("what follows the first page cannot be read"));
}

TEST_F(BrokenSeparation, TilesThatAreTooLargeOrCutThroughBytes)
{
    CHandMadeTiff made(16, 16, std::string(64, '\0'));
    made.Tag_Remove(TIFFTAG_STRIPOFFSETS);
    made.Tag_Remove(TIFFTAG_STRIPBYTECOUNTS);
    made.Tag_Remove(TIFFTAG_ROWSPERSTRIP);
    made.Short_Set(TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
    made.Long_Set(TIFFTAG_TILEOFFSETS, {512});
    made.Long_Set(TIFFTAG_TILEBYTECOUNTS, {64});
    made.Long_Set(TIFFTAG_TILEWIDTH, {1048576});
    made.Long_Set(TIFFTAG_TILELENGTH, {4096});
    EXPECT_EQ(Refusal_Of(made), "tile 0 has 64 bytes of compressed data, which cannot be 4096 rows of 131072 bytes");
    made.Long_Set(TIFFTAG_TILEWIDTH, {4294967280});
    made.Long_Set(TIFFTAG_TILELENGTH, {4294967280});
    EXPECT_NE(Refusal_Of(made), "");
    made.Long_Set(TIFFTAG_TILEWIDTH, {20});
    made.Long_Set(TIFFTAG_TILELENGTH, {16});
    EXPECT_EQ(Refusal_Of(made), "tiles of 20 columns by 16 rows; a tile's columns must be a multiple of 16");
}

TEST_F(BrokenSeparation, ATileRowBeyondTheLimit)
{
    Tiff_Write(m_path, Ink_Random(640, 640, 1, 4), {.name = "tiles", .tileWidth = 64, .tileHeight = 64});
    SSeparationLimit limit;
    limit.maxBlockBytes = 640 * 64 / 8 - 1;
    EXPECT_EQ(Refusal_Get(m_path, limit),
              "a row of tiles (64 rows of 80 bytes) is too large to be decoded; at most 5119 bytes");
}

TEST_F(BrokenSeparation, ACompressedStripBeyondTheLimit)
{
    Tiff_Write(m_path, Ink_Random(640, 640, 1, 4),
               {.name = "strip", .compression = COMPRESSION_ADOBE_DEFLATE, .rowsPerStrip = 640});
    const std::size_t size = PixelData_Find(m_path, 0).second;
    SSeparationLimit limit;
    limit.maxBlockBytes = static_cast<std::int64_t>(size) - 1;
    EXPECT_EQ(Refusal_Get(m_path, limit), "strip 0 has " + std::to_string(size) +
                                              " bytes of compressed data; at most " + std::to_string(size - 1) +
                                              " can be decoded (write the file with smaller strips)");
}

TEST_F(BrokenSeparation, DamagedPixelDataNamesItsRowAndPlace)
{
    const SInk ink = Ink_Random(101, 64, 1, 1);
    Tiff_Write(m_path, ink, {.name = "deflate", .compression = COMPRESSION_ADOBE_DEFLATE, .rowsPerStrip = 8});
    std::string bytes = File_Read(m_path);
    bytes[PixelData_Find(m_path, 2).first] = '\xFF';
    EXPECT_THAT(Refusal_Of(bytes), HasSubstr("row 16 (strip 2) cannot be decoded: Decoding error at scanline 16"));

    Tiff_Write(m_path, ink, {.name = "tiles", .compression = COMPRESSION_PACKBITS, .tileWidth = 32, .tileHeight = 16});
    bytes = File_Read(m_path);
    const auto [tile, size] = PixelData_Find(m_path, 6);
    bytes.replace(tile, size, std::string(size, '\x80'));
    EXPECT_THAT(Refusal_Of(bytes), HasSubstr("row 16 (tile 6) cannot be decoded: "));
}

// A fax-coded page that ends early is white from there on for most readers.
TEST_F(BrokenSeparation, FaxDataThatEndsEarlyIsNotWhitePaper)
{
    const SInk ink = Ink_Random(101, 64, 1, 1);
    for (const auto compression : {COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4})
    {
        Tiff_Write(m_folder / "whole.tif", ink,
                   {.name = "fax", .compression = static_cast<std::uint16_t>(compression), .rowsPerStrip = 64});
        const std::string data = DirectoryFirst_Get(m_folder / "whole.tif", ink).substr(CHandMadeTiff::dataOffset);
        for (std::size_t kept = 1; kept < data.size() - 4; kept += 13)
        {
            SCOPED_TRACE(std::to_string(compression) + ", " + std::to_string(kept));
            CHandMadeTiff made(101, 64, data.substr(0, kept));
            made.Short_Set(TIFFTAG_COMPRESSION, static_cast<std::uint16_t>(compression));
            EXPECT_THAT(Refusal_Of(made), HasSubstr("(strip 0) cannot be decoded: "));
        }
    }
}

// Cut off anywhere, a file is refused, or (when only the padding behind the last byte is gone) read exactly.
TEST_F(BrokenSeparation, EveryPrefixOfAFileIsRefusedOrReadExactly)
{
    const SInk ink = Ink_Random(45, 24, 1, 1);
    for (auto layout : Layouts_Selected())
    {
        SCOPED_TRACE(layout.name);
        layout.rowsPerStrip = std::min(layout.rowsPerStrip, 24U);
        Tiff_Write(m_folder / "whole.tif", ink, layout);
        std::vector<std::string> files = {File_Read(m_folder / "whole.tif")};
        if (layout.rowsPerStrip > 0)
        {
            files.push_back(DirectoryFirst_Get(m_folder / "whole.tif", ink));
        }
        for (const auto& whole : files)
        {
            EXPECT_EQ(Refusal_Of(whole), "");
            for (std::size_t length = whole.size() - 1; length > 0; --length)
            {
                std::filesystem::resize_file(m_path, length);
                std::vector<unsigned char> read;
                if (Refusal_Get(m_path, {}, &read).empty())
                {
                    EXPECT_EQ(read, ink.bytes) << length;
                    EXPECT_GE(length + 8, whole.size());
                }
            }
        }
    }
}

// Whatever the damage: an error of the one kind, or pixels. With --gtest_shuffle --gtest_repeat=N the damage is another
// one each time.
TEST_F(BrokenSeparation, RandomDamageNeverCrashes)
{
    const SInk ink = Ink_Random(101, 64, 1, 1);
    std::mt19937 random(20240U + static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
    for (const auto& layout : Layouts_Selected())
    {
        SCOPED_TRACE(layout.name);
        Tiff_Write(m_folder / "whole.tif", ink, layout);
        std::vector<std::string> files = {File_Read(m_folder / "whole.tif")};
        if (layout.rowsPerStrip > 0)
        {
            files.push_back(DirectoryFirst_Get(m_folder / "whole.tif", ink));
        }
        for (const auto& whole : files)
        {
            for (int round = 0; round < 250; ++round)
            {
                std::string damaged = whole;
                for (auto flips = random() % 4; flips < 4; ++flips)
                {
                    damaged[random() % damaged.size()] ^= static_cast<char>(1U << random() % 8);
                }
                File_Write(m_path, damaged);
                Refusal_Get(m_path);
            }
        }
    }
}
