// The makers of test separations; see the header.
#include "Tests/Host/Input/TiffMaker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>

namespace
{

using CTiffPointer = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

void Require(bool bCondition, const std::string& what)
{
    if (!bCondition)
    {
        throw std::runtime_error("cannot make a test file: " + what);
    }
}

// `rows` rows from `firstRow` on, `bytes` bytes of each from byte `firstByte` on, as the file's samples; beyond the
// page all bits are 0.
std::vector<unsigned char> Samples_Get(const SInk& ink, const STiffLayout& layout, std::uint32_t firstRow,
                                       std::uint32_t rows, std::size_t firstByte, std::size_t bytes)
{
    std::vector<unsigned char> samples(rows * bytes);
    for (std::uint32_t row = 0; row < rows && firstRow + row < static_cast<std::uint32_t>(ink.height); ++row)
    {
        for (std::size_t i = 0; i < bytes && firstByte + i < ink.RowBytes(); ++i)
        {
            const unsigned char byte = ink.Row(static_cast<int>(firstRow + row))[firstByte + i];
            samples[row * bytes + i] =
                layout.photometric == PHOTOMETRIC_MINISBLACK ? static_cast<unsigned char>(~byte) : byte;
        }
    }
    return samples;
}

void Strips_Write(TIFF* tiff, const SInk& ink, const STiffLayout& layout)
{
    const auto height = static_cast<std::uint32_t>(ink.height);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, layout.rowsPerStrip);
    for (std::uint32_t row = 0, strip = 0; row < height; row += layout.rowsPerStrip, ++strip)
    {
        auto samples = Samples_Get(ink, layout, row, std::min(layout.rowsPerStrip, height - row), 0, ink.RowBytes());
        Require(TIFFWriteEncodedStrip(tiff, strip, samples.data(), static_cast<tmsize_t>(samples.size())) > 0,
                layout.name);
    }
}

void Tiles_Write(TIFF* tiff, const SInk& ink, const STiffLayout& layout)
{
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, layout.tileWidth);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, layout.tileHeight);
    const std::size_t tileRowBytes = layout.tileWidth * static_cast<std::size_t>(ink.bitsPerPixel) / 8;
    std::uint32_t tile = 0;
    for (std::uint32_t row = 0; row < static_cast<std::uint32_t>(ink.height); row += layout.tileHeight)
    {
        for (std::size_t byte = 0; byte < ink.RowBytes(); byte += tileRowBytes, ++tile)
        {
            auto samples = Samples_Get(ink, layout, row, layout.tileHeight, byte, tileRowBytes);
            Require(TIFFWriteEncodedTile(tiff, tile, samples.data(), static_cast<tmsize_t>(samples.size())) > 0,
                    layout.name);
        }
    }
}

void Number_Append(std::string& bytes, std::uint32_t value, int byteCount)
{
    for (int i = 0; i < byteCount; ++i)
    {
        bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
    }
}

} // namespace

std::size_t SInk::RowBytes() const
{
    return (static_cast<std::size_t>(width * bitsPerPixel) + 7) / 8;
}

const unsigned char* SInk::Row(int row) const
{
    return bytes.data() + static_cast<std::size_t>(row) * RowBytes();
}

unsigned SInk::Pixel_Get(int row, int column) const
{
    const int bit = column * bitsPerPixel;
    return Row(row)[bit / 8] >> (8 - bitsPerPixel - bit % 8) & ((1U << bitsPerPixel) - 1);
}

void SInk::Pixel_Set(int row, int column, unsigned ink)
{
    const int bit = column * bitsPerPixel;
    const int shift = 8 - bitsPerPixel - bit % 8;
    unsigned char& byte = bytes[static_cast<std::size_t>(row) * RowBytes() + static_cast<std::size_t>(bit / 8)];
    const unsigned mask = ((1U << bitsPerPixel) - 1) << shift;
    byte = static_cast<unsigned char>((byte & ~mask) | ink << shift);
}

SInk Ink_Blank(int width, int height, int bitsPerPixel)
{
    SInk ink{width, height, bitsPerPixel, {}};
    ink.bytes.resize(ink.RowBytes() * static_cast<std::size_t>(height));
    return ink;
}

SInk Ink_Random(int width, int height, int bitsPerPixel, unsigned seed)
{
    SInk ink = Ink_Blank(width, height, bitsPerPixel);
    std::mt19937 random(seed);
    unsigned value = 0;
    unsigned left = 0;
    for (int row = 0; row < height; ++row)
    {
        for (int column = 0; column < width; ++column, --left)
        {
            if (left == 0)
            {
                value = static_cast<unsigned>(random()) & ((1U << bitsPerPixel) - 1);
                left = 1 + static_cast<unsigned>(random()) % 9;
            }
            ink.Pixel_Set(row, column, value);
        }
    }
    return ink;
}

std::vector<STiffLayout> TiffLayouts_All(int bitsPerPixel, int height)
{
    struct SCodec
    {
        const char* name;
        int compression;
        std::uint32_t group3Options;
        bool bOneBitOnly;
        bool bOneStripOnly;
    };
    const std::vector<SCodec> codecs = {
        {"none", COMPRESSION_NONE, 0, false, false},
        {"packbits", COMPRESSION_PACKBITS, 0, false, false},
        {"lzw", COMPRESSION_LZW, 0, false, false},
        {"deflate", COMPRESSION_ADOBE_DEFLATE, 0, false, false},
        {"lzma", COMPRESSION_LZMA, 0, false, false},
        {"zstd", COMPRESSION_ZSTD, 0, false, false},
        {"rle", COMPRESSION_CCITTRLE, 0, true, false},
        {"g3", COMPRESSION_CCITTFAX3, 0, true, false},
        {"g3-2d", COMPRESSION_CCITTFAX3, GROUP3OPT_2DENCODING | GROUP3OPT_FILLBITS, true, false},
        {"g4", COMPRESSION_CCITTFAX4, 0, true, false},
        {"jbig", COMPRESSION_JBIG, 0, true, true},
    };
    struct SShape
    {
        const char* name;
        std::uint32_t rowsPerStrip;
        std::uint32_t tileWidth;
        std::uint32_t tileHeight;
        const char* mode;
    };
    const auto wholePage = static_cast<std::uint32_t>(height);
    const std::vector<SShape> shapes = {
        {"one strip", wholePage, 0, 0, "w"},
        {"strips of 1", 1, 0, 0, "w"},
        {"strips of 7", 7, 0, 0, "w8"},
        {"strips of 16, big-endian", 16, 0, 0, "wb"},
        {"tiles of 16 x 16", 0, 16, 16, "w"},
        {"tiles of 48 x 32, BigTIFF", 0, 48, 32, "w8"},
        {"one tile of 256 x 256", 0, 256, 256, "w"},
    };
    std::vector<STiffLayout> layouts;
    for (const auto& codec : codecs)
    {
        const auto compression = static_cast<std::uint16_t>(codec.compression);
        if (TIFFIsCODECConfigured(compression) != 1 || (codec.bOneBitOnly && bitsPerPixel != 1))
        {
            continue;
        }
        for (const auto& shape : shapes)
        {
            if (codec.bOneStripOnly && shape.rowsPerStrip != wholePage)
            {
                continue;
            }
            for (const int photometric : {PHOTOMETRIC_MINISWHITE, PHOTOMETRIC_MINISBLACK})
            {
                for (const int fillOrder : {FILLORDER_MSB2LSB, FILLORDER_LSB2MSB})
                {
                    layouts.push_back({std::string(codec.name) + ", " + shape.name +
                                           (photometric == PHOTOMETRIC_MINISWHITE ? ", 0 is white" : ", 0 is black") +
                                           (fillOrder == FILLORDER_MSB2LSB ? "" : ", low bits first"),
                                       compression, static_cast<std::uint16_t>(photometric),
                                       static_cast<std::uint16_t>(fillOrder), shape.rowsPerStrip, shape.tileWidth,
                                       shape.tileHeight, codec.group3Options, shape.mode});
                }
            }
        }
    }
    return layouts;
}

void Tiff_Write(const std::filesystem::path& path, const SInk& ink, const STiffLayout& layout)
{
    if (layout.mode[0] == 'w')
    {
        std::filesystem::remove(path);
    }
    const CTiffPointer tiff(TIFFOpen(path.string().c_str(), layout.mode), &TIFFClose);
    Require(tiff != nullptr, path.string());
    TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, ink.width);
    TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, ink.height);
    TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, ink.bitsPerPixel);
    TIFFSetField(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff.get(), TIFFTAG_COMPRESSION, layout.compression);
    TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, layout.photometric);
    TIFFSetField(tiff.get(), TIFFTAG_FILLORDER, layout.fillOrder);
    if (layout.compression == COMPRESSION_LZMA)
    {
        TIFFSetField(tiff.get(), TIFFTAG_LZMAPRESET, 0); // the others clear many megabytes for every strip
    }
    if (layout.compression == COMPRESSION_CCITTFAX3)
    {
        TIFFSetField(tiff.get(), TIFFTAG_GROUP3OPTIONS, layout.group3Options);
    }
    if (layout.rowsPerStrip > 0)
    {
        Strips_Write(tiff.get(), ink, layout);
    }
    else
    {
        Tiles_Write(tiff.get(), ink, layout);
    }
}

CHandMadeTiff::CHandMadeTiff(std::uint32_t width, std::uint32_t height, std::string data) : m_data(std::move(data))
{
    Long_Set(TIFFTAG_IMAGEWIDTH, {width});
    Long_Set(TIFFTAG_IMAGELENGTH, {height});
    Short_Set(TIFFTAG_BITSPERSAMPLE, 1);
    Short_Set(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    Short_Set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    Long_Set(TIFFTAG_STRIPOFFSETS, {dataOffset});
    Short_Set(TIFFTAG_SAMPLESPERPIXEL, 1);
    Long_Set(TIFFTAG_ROWSPERSTRIP, {height});
    Long_Set(TIFFTAG_STRIPBYTECOUNTS, {static_cast<std::uint32_t>(m_data.size())});
}

std::string CHandMadeTiff::Bytes_Get() const
{
    std::string bytes("II*\0", 4);
    std::string arrays;
    const std::size_t directorySize = 2 + 12 * m_tags.size() + 4;
    Number_Append(bytes, 8, 4);
    Number_Append(bytes, static_cast<std::uint32_t>(m_tags.size()), 2);
    for (const auto& [number, tag] : m_tags)
    {
        std::string values;
        for (const std::uint32_t value : tag.values)
        {
            Number_Append(values, value, tag.type == 3 ? 2 : 4);
        }
        values.resize(std::max<std::size_t>(values.size(), 4));
        Number_Append(bytes, number, 2);
        Number_Append(bytes, tag.type, 2);
        Number_Append(bytes, static_cast<std::uint32_t>(tag.values.size()), 4);
        if (values.size() == 4)
        {
            bytes += values;
        }
        else
        {
            Number_Append(bytes, static_cast<std::uint32_t>(8 + directorySize + arrays.size()), 4);
            arrays += values;
        }
    }
    Number_Append(bytes, m_nextDirectory, 4);
    bytes += arrays;
    Require(bytes.size() <= dataOffset, "the directory does not fit before the data");
    bytes.resize(dataOffset);
    return bytes + m_data;
}

std::string DirectoryFirst_Get(const std::filesystem::path& path, const SInk& ink)
{
    const CTiffPointer tiff(TIFFOpen(path.string().c_str(), "rmc"), &TIFFClose);
    Require(tiff != nullptr, path.string());
    std::string data;
    std::vector<std::uint32_t> offsets;
    std::vector<std::uint32_t> sizes;
    for (std::uint32_t strip = 0; strip < TIFFNumberOfStrips(tiff.get()); ++strip)
    {
        std::string raw(static_cast<std::size_t>(TIFFGetStrileByteCount(tiff.get(), strip)), '\0');
        Require(TIFFReadRawStrip(tiff.get(), strip, raw.data(), static_cast<tmsize_t>(raw.size())) > 0, "raw strip");
        offsets.push_back(CHandMadeTiff::dataOffset + static_cast<std::uint32_t>(data.size()));
        sizes.push_back(static_cast<std::uint32_t>(raw.size()));
        data += raw;
    }
    CHandMadeTiff made(static_cast<std::uint32_t>(ink.width), static_cast<std::uint32_t>(ink.height), data);
    made.Short_Set(TIFFTAG_BITSPERSAMPLE, static_cast<std::uint16_t>(ink.bitsPerPixel));
    for (const auto tag : {TIFFTAG_COMPRESSION, TIFFTAG_PHOTOMETRIC, TIFFTAG_FILLORDER})
    {
        std::uint16_t value = 0;
        Require(TIFFGetField(tiff.get(), static_cast<std::uint32_t>(tag), &value) == 1, "tag");
        made.Short_Set(static_cast<std::uint16_t>(tag), value);
    }
    std::uint32_t rowsPerStrip = 0;
    Require(TIFFGetField(tiff.get(), TIFFTAG_ROWSPERSTRIP, &rowsPerStrip) == 1, "rows per strip");
    made.Long_Set(TIFFTAG_ROWSPERSTRIP, {rowsPerStrip});
    made.Long_Set(TIFFTAG_STRIPOFFSETS, offsets);
    made.Long_Set(TIFFTAG_STRIPBYTECOUNTS, sizes);
    return made.Bytes_Get();
}

std::pair<std::size_t, std::size_t> PixelData_Find(const std::filesystem::path& path, std::uint32_t index)
{
    const CTiffPointer tiff(TIFFOpen(path.string().c_str(), "rmc"), &TIFFClose);
    Require(tiff != nullptr, path.string());
    return {static_cast<std::size_t>(TIFFGetStrileOffset(tiff.get(), index)),
            static_cast<std::size_t>(TIFFGetStrileByteCount(tiff.get(), index))};
}
