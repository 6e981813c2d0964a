// The checked twin: an independent model of every board layout, against which tests hold the data maps, and from which
// the page model answers what a bit of an output means.
//
// It places single bits straight from the layout rules, without tables and without a line of the library. It is slow
// and obvious on purpose. Every read and write is checked against the memory that it was given: what a correct caller
// would never do throws std::out_of_range. No state but the layout; any thread.
#pragma once

#include <functional>
#include <span>
#include <vector>

// The layouts, by the map class that makes them.
enum class ETwinStyle
{
    Style_1,     // frame per pixel, 16-bit frames, pixels and bytes reversed in pairs
    Style_2,     // frame per pixel, one drop size in two bits
    Style_5,     // frame per pixel
    Style_6,     // byte column per unit
    Style_7,     // byte column per unit, one drop size in two bits
    Style_8,     // 2-bit pixels as two planes
    Style_03,    // four blocks of 100 pixels over 100 frames
    Style_03_01, // four chunks of 100 bits, 13 bytes each
};

struct STwinStyle
{
    ETwinStyle style = ETwinStyle::Style_5;
    int srcBitCount = 1; // bits per source pixel; looked at by styles 5 and 6
    int frameWidth = 16; // bits of a frame, or byte columns; 16 for style 1, a multiple of 8 for style 8
    int dotSizeMode = 1; // 1 small, 2 middle, 3 big; looked at by styles 2 and 7

    // How many print units a board of this layout has.
    int UnitCount() const;
};

// One source line.
struct STwinLine
{
    int unitIndex = 0;
    int unitDirection = 1;
    int lineBitCount = 0;
    std::span<const unsigned char> src; // all bytes that a map may read for this line
};

// One unit band. Line y begins at data[y * bytesPerLine].
struct STwinBand
{
    int unitIndex = 0;
    int unitDirection = 1;
    int width = 0; // pixels
    int bitsPerPixel = 1;
    int height = 0;
    int bytesPerLine = 0;
    std::span<const unsigned char> data;
};

// A board band: lines of `width` bits, rounded up to whole bytes.
struct STwinBoardBand
{
    int width = 0; // bits
    int height = 0;
    int bytesPerLine = 0;
    std::vector<unsigned char> data;
};

// A bit of a board line that shows a nozzle's pixel.
struct STwinPlace
{
    long long position = 0; // of the line, from the most significant bit of its first byte
    int bit = 0;            // of the nozzle's bits in the unit line, 0 = the first
    bool bDotCode = false;  // the bit is one of a drop size's code: set if the pixel has ink and bDotBit says so
    bool bDotBit = false;
    bool bRepeat = false; // the same bit stands in the line a second time, in the padding of its chunk
};

// What a bit of a board line shows.
struct STwinSource
{
    int unitIndex = -1; // -1: padding, which is never set
    int nozzle = -1;    // -1: padding, or a unit's bits beyond its nozzles
    int block = -1;     // the quarter of the nozzles, for styles 03 and 03_01
    int plane = -1;     // the bit plane, for style 8
    STwinPlace place;   // the same as Places_Of says
};

class CBoardTwin
{
public:
    explicit CBoardTwin(const STwinStyle& style) : m_style(style) {}

    // Bits of the board line for source lines of `pixelCount` pixels.
    int BoardBitCount(int pixelCount) const;

    // Maps `line` into `dst`, all the memory there is, of which the map is told that the line has `dstByteCount` bytes.
    // The two differ because whole source bytes are mapped whatever the map was told.
    void Line_Map(const STwinLine& line, std::span<unsigned char> dst, int dstByteCount) const;

    // The board band of one step: width and height follow the first band, all bands are mapped in order, line by line,
    // into a zeroed board band.
    STwinBoardBand Band_Map(std::span<const STwinBand> bands) const;

    // The bits of a line that show the pixel of a nozzle, out of `nozzleCount` that the unit has; a line that the
    // layout cuts off may show none. Lines of whole bytes are exact; those that end inside a byte are as Line_Map maps
    // them if the rest of that byte is 0.
    std::vector<STwinPlace> Places_Of(int unitIndex, int unitDirection, int nozzle, int nozzleCount) const;

    // The inverse, for a position of the line. `directionOf` tells a unit's direction, for units that the layout has.
    STwinSource Source_Of(long long position, int nozzleCount, const std::function<int(int)>& directionOf) const;

    // Bits of a board line for a unit of so many nozzles.
    long long LineBitCount(int nozzleCount) const;

    // Bits that a nozzle has in a unit line.
    int BitsPerNozzle() const;

private:
    void Line_Map_Frames(const STwinLine& line, std::span<unsigned char> dst, int dstByteCount) const;
    void Line_Map_Columns(const STwinLine& line, std::span<unsigned char> dst) const;
    void Line_Map_DotColumns(const STwinLine& line, std::span<unsigned char> dst) const;
    void Line_Map_Planes(const STwinLine& line, std::span<unsigned char> dst, int dstByteCount) const;
    void Line_Map_Blocks(const STwinLine& line, std::span<unsigned char> dst) const;
    void Line_Map_Chunks(const STwinLine& line, std::span<unsigned char> dst) const;

    STwinStyle m_style;
};
