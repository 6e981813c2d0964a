// Makes separations for the tests: random ink, TIFF files of it in every layout that libtiff writes, and TIFF files put
// together byte by byte for what no library would write. Test code only; any thread.
#pragma once

#include "Tests/Support/TestFolder.h"

#include <tiffio.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

// A page as ink: packed from the high bits on, 0 = none, unused bits of a row's last byte 0.
struct SInk
{
    int width = 0;
    int height = 0;
    int bitsPerPixel = 1;
    std::vector<unsigned char> bytes; // row after row

    std::size_t RowBytes() const;
    const unsigned char* Row(int row) const;
    unsigned Pixel_Get(int row, int column) const;
    void Pixel_Set(int row, int column, unsigned ink);

    bool operator==(const SInk&) const = default;
};

SInk Ink_Blank(int width, int height, int bitsPerPixel);
// Runs of random lengths, like the edges of real halftones; the same for the same seed.
SInk Ink_Random(int width, int height, int bitsPerPixel, unsigned seed);

struct STiffLayout
{
    std::string name;
    std::uint16_t compression = COMPRESSION_NONE;
    std::uint16_t photometric = PHOTOMETRIC_MINISWHITE;
    std::uint16_t fillOrder = FILLORDER_MSB2LSB;
    std::uint32_t rowsPerStrip = 0; // 0: tiles
    std::uint32_t tileWidth = 0;
    std::uint32_t tileHeight = 0;
    std::uint32_t group3Options = 0;
    const char* mode = "w"; // "w8": BigTIFF; "wb": big-endian
};

// Every combination of layout, compression, polarity and fill order that libtiff writes for this many bits per pixel
// and reads back itself (word-aligned run lengths are none of these).
std::vector<STiffLayout> TiffLayouts_All(int bitsPerPixel, int height);

// Writes `ink` as the page of a new file, through libtiff.
void Tiff_Write(const std::filesystem::path& path, const SInk& ink, const STiffLayout& layout);

// A little-endian TIFF file made by hand: the directory first (at byte 8), then the pixel data (at byte 512).
class CHandMadeTiff
{
public:
    static constexpr std::uint32_t dataOffset = 512;

    // An uncompressed page, white 0, in one strip of `data`.
    CHandMadeTiff(std::uint32_t width, std::uint32_t height, std::string data);

    void Short_Set(std::uint16_t tag, std::uint16_t value) { Shorts_Set(tag, {value}); }
    void Shorts_Set(std::uint16_t tag, std::vector<std::uint32_t> values) { m_tags[tag] = {3, std::move(values)}; }
    void Long_Set(std::uint16_t tag, std::vector<std::uint32_t> values) { m_tags[tag] = {4, std::move(values)}; }
    void Tag_Remove(std::uint16_t tag) { m_tags.erase(tag); }
    void NextDirectory_Set(std::uint32_t offset) { m_nextDirectory = offset; }
    std::string Bytes_Get() const;

private:
    struct STag
    {
        std::uint16_t type = 4; // 3: 16 bits, 4: 32 bits
        std::vector<std::uint32_t> values;
    };

    std::map<std::uint16_t, STag> m_tags;
    std::uint32_t m_nextDirectory = 0;
    std::string m_data;
};

// The file's compressed strips, one after the other, moved behind a hand-made directory: what is cut off at the end is
// pixel data, not the directory.
std::string DirectoryFirst_Get(const std::filesystem::path& path, const SInk& ink);

// Where the compressed data of a strip or tile stands in a file: its first byte and how many there are.
std::pair<std::size_t, std::size_t> PixelData_Find(const std::filesystem::path& path, std::uint32_t index);
