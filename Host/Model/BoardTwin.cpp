// The layout rules, one function per family, each a loop over single bits.
#include "Host/Model/BoardTwin.h"

#include <cstddef>
#include <stdexcept>
#include <string>

namespace
{
[[noreturn]] void Throw_Outside(const char* what, long long position)
{
    throw std::out_of_range(std::string(what) + " of bit " + std::to_string(position) + " outside the line's memory");
}

// Bit `position` counted from the most significant bit of the first byte.
bool Bit_Get(std::span<const unsigned char> bytes, long long position)
{
    if (position < 0 || position >= static_cast<long long>(bytes.size()) * 8)
    {
        Throw_Outside("read", position);
    }
    const int shift = static_cast<int>(7 - position % 8);
    return ((bytes[static_cast<std::size_t>(position / 8)] >> shift) & 1) == 1;
}

void Bit_Store(std::span<unsigned char> bytes, long long position, bool value)
{
    if (position < 0 || position >= static_cast<long long>(bytes.size()) * 8)
    {
        Throw_Outside("write", position);
    }
    const int shift = static_cast<int>(7 - position % 8);
    unsigned char& byte = bytes[static_cast<std::size_t>(position / 8)];
    const int cleared = byte & ~(1 << shift);
    byte = static_cast<unsigned char>(cleared | (value ? 1 << shift : 0));
}

// Board position of pixel `pixel` of the line in the layout of 16-bit frames in reversed pairs: two pixels share four
// bytes; the even one has bytes 3 (units 0 to 7) and 2 (units 8 to 15), the odd one bytes 1 and 0; a unit's bit counts
// from the least significant.
long long PairPosition(int unit, int pixel)
{
    const int lastByte = pixel % 2 == 0 ? 3 : 1;
    const long long byteIndex = 4LL * (pixel / 2) + (unit < 8 ? lastByte : lastByte - 1);
    return byteIndex * 8 + (7 - unit % 8);
}

// Bit `which` (0 = the more significant) of the 2-bit code of a drop size.
bool DotCode_Bit(int dotSizeMode, int which)
{
    switch (dotSizeMode)
    {
    case 1:
        return which == 1; // 01
    case 2:
        return which == 0; // 10
    case 3:
        return true; // 11
    default:
        throw std::invalid_argument("no such drop size");
    }
}

int Bytes_FromBits(int bitCount)
{
    return bitCount / 8 + (bitCount % 8 > 0 ? 1 : 0);
}

std::span<const unsigned char> Line_Of(const STwinBand& band, int y)
{
    const auto stride = static_cast<std::size_t>(band.bytesPerLine);
    const auto offset = static_cast<std::size_t>(y) * stride;
    if (offset + stride > band.data.size())
    {
        throw std::out_of_range("line " + std::to_string(y) + " outside the band's memory");
    }
    return band.data.subspan(offset, stride);
}

// The block's place among the four of its unit.
int Block_Place(int unitDirection, int block)
{
    return unitDirection == 2 ? block : 3 - block;
}
} // namespace

int STwinStyle::UnitCount() const
{
    switch (style)
    {
    case ETwinStyle::Style_2:
        return frameWidth / 2;
    case ETwinStyle::Style_5:
        return frameWidth / srcBitCount;
    case ETwinStyle::Style_03:
        return frameWidth / 32 * 8;
    case ETwinStyle::Style_03_01:
        return frameWidth / 4;
    default:
        return frameWidth;
    }
}

int CBoardTwin::BoardBitCount(int pixelCount) const
{
    const int w = m_style.frameWidth;
    switch (m_style.style)
    {
    case ETwinStyle::Style_6:
        return Bytes_FromBits(m_style.srcBitCount * pixelCount) * w * 8;
    case ETwinStyle::Style_7:
        return Bytes_FromBits(2 * pixelCount) * w * 8;
    case ETwinStyle::Style_03:
        return pixelCount / 4 * w;
    case ETwinStyle::Style_03_01:
        return 13 * 8 * w;
    default:
        return w * pixelCount;
    }
}

void CBoardTwin::Line_Map(const STwinLine& line, std::span<unsigned char> dst, int dstByteCount) const
{
    switch (m_style.style)
    {
    case ETwinStyle::Style_1:
    case ETwinStyle::Style_2:
    case ETwinStyle::Style_5:
        return Line_Map_Frames(line, dst, dstByteCount);
    case ETwinStyle::Style_6:
        return Line_Map_Columns(line, dst);
    case ETwinStyle::Style_7:
        return Line_Map_DotColumns(line, dst);
    case ETwinStyle::Style_8:
        return Line_Map_Planes(line, dst, dstByteCount);
    case ETwinStyle::Style_03:
        return Line_Map_Blocks(line, dst);
    case ETwinStyle::Style_03_01:
        return Line_Map_Chunks(line, dst);
    }
}

// One frame per pixel, ORed. A started last source byte counts with all its bits, and only these are kept inside the
// line that the map was told of.
void CBoardTwin::Line_Map_Frames(const STwinLine& line, std::span<unsigned char> dst, int dstByteCount) const
{
    const int wholeBits = line.lineBitCount - line.lineBitCount % 8;
    const int allBits = line.lineBitCount > wholeBits ? wholeBits + 8 : wholeBits;
    const auto set = [&](int bit, long long position)
    {
        if (bit < wholeBits || position / 8 < dstByteCount)
        {
            Bit_Store(dst, position, true);
        }
    };
    const long long w = m_style.frameWidth;
    for (int bit = 0; bit < allBits; ++bit)
    {
        if (!Bit_Get(line.src, bit))
        {
            continue;
        }
        if (m_style.style == ETwinStyle::Style_1)
        {
            set(bit, PairPosition(line.unitIndex, bit));
        }
        else if (m_style.style == ETwinStyle::Style_2)
        {
            for (int which = 0; which < 2; ++which)
            {
                if (DotCode_Bit(m_style.dotSizeMode, which))
                {
                    set(bit, bit * w + 2 * line.unitIndex + which);
                }
            }
        }
        else
        {
            const int pixel = bit / m_style.srcBitCount;
            set(bit, pixel * w + m_style.srcBitCount * line.unitIndex + bit % m_style.srcBitCount);
        }
    }
}

// The line's bytes, stored one per group of columns.
void CBoardTwin::Line_Map_Columns(const STwinLine& line, std::span<unsigned char> dst) const
{
    for (int bit = 0; bit < Bytes_FromBits(line.lineBitCount) * 8; ++bit)
    {
        const long long byteIndex = line.unitIndex + static_cast<long long>(bit / 8) * m_style.frameWidth;
        Bit_Store(dst, byteIndex * 8 + bit % 8, Bit_Get(line.src, bit));
    }
}

// The same with two bits per pixel, in whole bytes.
void CBoardTwin::Line_Map_DotColumns(const STwinLine& line, std::span<unsigned char> dst) const
{
    for (int bit = 0; bit < Bytes_FromBits(2 * line.lineBitCount) * 8; ++bit)
    {
        const long long byteIndex = line.unitIndex + static_cast<long long>(bit / 8) * m_style.frameWidth;
        const bool bDot = Bit_Get(line.src, bit / 2);
        Bit_Store(dst, byteIndex * 8 + bit % 8, bDot && DotCode_Bit(m_style.dotSizeMode, bit % 2));
    }
}

// Two planes, ORed: pixel P of unit u at position 2u + P mod 2 of frame P / 2, frames of twice the width. A started
// last source byte goes to both planes alike: with bits of one plane only, its pixels; with bits of both, all four
// pixels of the unit before, where there is one.
void CBoardTwin::Line_Map_Planes(const STwinLine& line, std::span<unsigned char> dst, int dstByteCount) const
{
    const long long w = m_style.frameWidth;
    const long long planeBytes = dstByteCount / 2;
    const auto position = [&](int plane, int unit, int pixel)
    { return plane * planeBytes * 8 + (pixel / 2) * 2 * w + 2 * unit + pixel % 2; };
    const int wholePixels = line.lineBitCount / 8 * 4;
    for (int pixel = 0; pixel < wholePixels; ++pixel)
    {
        for (int plane = 0; plane < 2; ++plane)
        {
            if (Bit_Get(line.src, 2LL * pixel + plane))
            {
                Bit_Store(dst, position(plane, line.unitIndex, pixel), true);
            }
        }
    }
    if (line.lineBitCount % 8 <= 0)
    {
        return;
    }
    bool bAnyOfPlane[2] = {false, false};
    for (int pixel = wholePixels; pixel < wholePixels + 4; ++pixel)
    {
        bAnyOfPlane[0] = bAnyOfPlane[0] || Bit_Get(line.src, 2LL * pixel);
        bAnyOfPlane[1] = bAnyOfPlane[1] || Bit_Get(line.src, 2LL * pixel + 1);
    }
    const bool bBoth = bAnyOfPlane[0] && bAnyOfPlane[1];
    const int unit = bBoth ? line.unitIndex - 1 : line.unitIndex;
    for (int pixel = wholePixels; pixel < wholePixels + 4 && unit >= 0; ++pixel)
    {
        const bool bSet = bBoth || Bit_Get(line.src, 2LL * pixel) || Bit_Get(line.src, 2LL * pixel + 1);
        for (int plane = 0; plane < 2 && bSet; ++plane)
        {
            const long long at = position(plane, unit, pixel);
            if (at / 8 < (plane + 1) * planeBytes)
            {
                Bit_Store(dst, at, true);
            }
        }
    }
}

// 400 pixels, ORed: pixel 100 k + j of unit 8 g + b in frame j, byte 4 g + place of block k, bit 7 - b.
void CBoardTwin::Line_Map_Blocks(const STwinLine& line, std::span<unsigned char> dst) const
{
    for (int pixel = 0; pixel < 400; ++pixel)
    {
        if (Bit_Get(line.src, pixel))
        {
            const int place = Block_Place(line.unitDirection, pixel / 100);
            const int frameByte = 4 * (line.unitIndex / 8) + place;
            const long long frame = pixel % 100;
            Bit_Store(dst, frame * m_style.frameWidth + 8LL * frameByte + line.unitIndex % 8, true);
        }
    }
}

// 400 bits, stored: bit n of chunk k in byte n / 8 of its board unit. After its 100 bits a chunk has the four bits that
// follow in the source if it began on a byte, else zeros.
void CBoardTwin::Line_Map_Chunks(const STwinLine& line, std::span<unsigned char> dst) const
{
    for (int chunk = 0; chunk < 4; ++chunk)
    {
        const long long boardUnit = 4LL * line.unitIndex + Block_Place(line.unitDirection, chunk);
        const bool bOnByte = chunk % 2 == 0;
        for (int n = 0; n < 13 * 8; ++n)
        {
            const long long byteIndex = boardUnit + static_cast<long long>(n / 8) * m_style.frameWidth;
            const bool bValue = (n < 100 || bOnByte) && Bit_Get(line.src, 100 * chunk + n);
            Bit_Store(dst, byteIndex * 8 + n % 8, bValue);
        }
    }
}

STwinBoardBand CBoardTwin::Band_Map(std::span<const STwinBand> bands) const
{
    STwinBoardBand board;
    if (bands.empty())
    {
        return board;
    }
    board.width = BoardBitCount(bands[0].width);
    board.height = bands[0].height;
    board.bytesPerLine = Bytes_FromBits(board.width);
    const auto lineSize = static_cast<std::size_t>(board.bytesPerLine);
    board.data.resize(lineSize * static_cast<std::size_t>(board.height));
    for (int y = 0; y < board.height; ++y)
    {
        const auto dst = std::span(board.data).subspan(static_cast<std::size_t>(y) * lineSize, lineSize);
        for (const STwinBand& band : bands)
        {
            if (y < band.height)
            {
                Line_Map({band.unitIndex, band.unitDirection, band.width * band.bitsPerPixel, Line_Of(band, y)}, dst,
                         board.bytesPerLine);
            }
        }
    }
    return board;
}

int CBoardTwin::BitsPerNozzle() const
{
    switch (m_style.style)
    {
    case ETwinStyle::Style_5:
    case ETwinStyle::Style_6:
        return m_style.srcBitCount;
    case ETwinStyle::Style_8:
        return 2;
    default:
        return 1;
    }
}

long long CBoardTwin::LineBitCount(int nozzleCount) const
{
    const long long w = m_style.frameWidth;
    const long long n = nozzleCount;
    switch (m_style.style)
    {
    case ETwinStyle::Style_6:
        return (n * m_style.srcBitCount + 7) / 8 * w * 8;
    case ETwinStyle::Style_7:
        return (n * 2 + 7) / 8 * w * 8;
    case ETwinStyle::Style_8:
        return 2 * n * w;
    case ETwinStyle::Style_03:
        return n / 4 * w;
    case ETwinStyle::Style_03_01:
        return 13LL * 8 * w;
    default:
        return n * w;
    }
}

std::vector<STwinPlace> CBoardTwin::Places_Of(int unitIndex, int unitDirection, int nozzle, int nozzleCount) const
{
    const long long w = m_style.frameWidth;
    const long long n = nozzle;
    const long long unit = unitIndex;
    const long long lineBits = LineBitCount(nozzleCount);
    std::vector<STwinPlace> places;
    const auto Place_Add = [&](const STwinPlace& place)
    {
        if (place.position >= 0 && place.position < lineBits)
        {
            places.push_back(place);
        }
    };
    const auto Add = [&](long long position, int bit) { Place_Add({position, bit}); };
    const auto Add_Code = [&](long long position, int which) {
        Place_Add({position, 0, true, DotCode_Bit(m_style.dotSizeMode, which)});
    };
    switch (m_style.style)
    {
    case ETwinStyle::Style_1:
        Add(PairPosition(unitIndex, nozzle), 0);
        break;
    case ETwinStyle::Style_2:
        Add_Code(n * w + 2 * unit, 0);
        Add_Code(n * w + 2 * unit + 1, 1);
        break;
    case ETwinStyle::Style_5:
        for (int bit = 0; bit < m_style.srcBitCount; ++bit)
        {
            Add(n * w + m_style.srcBitCount * unit + bit, bit);
        }
        break;
    case ETwinStyle::Style_6:
        for (int bit = 0; bit < m_style.srcBitCount; ++bit)
        {
            const long long at = n * m_style.srcBitCount + bit;
            Add((unit + at / 8 * w) * 8 + at % 8, bit);
        }
        break;
    case ETwinStyle::Style_7:
        for (int which = 0; which < 2; ++which)
        {
            const long long at = 2 * n + which;
            Add_Code((unit + at / 8 * w) * 8 + at % 8, which);
        }
        break;
    case ETwinStyle::Style_8:
        for (int plane = 0; plane < 2; ++plane)
        {
            Add(plane * (lineBits / 2) + n / 2 * 2 * w + 2 * unit + n % 2, plane);
        }
        break;
    case ETwinStyle::Style_03:
        Add(n % 100 * w + 8 * (4 * (unit / 8) + Block_Place(unitDirection, nozzle / 100)) + unit % 8, 0);
        break;
    case ETwinStyle::Style_03_01:
    {
        const auto In_Chunk = [&](int chunk, int bit)
        { return (4 * unit + Block_Place(unitDirection, chunk) + bit / 8 * w) * 8 + bit % 8; };
        Add(In_Chunk(nozzle / 100, nozzle % 100), 0);
        // The four bits behind a chunk that begins on a byte are the first of the next one.
        if (nozzle / 100 % 2 == 1 && nozzle % 100 < 4)
        {
            Place_Add({In_Chunk(nozzle / 100 - 1, 100 + nozzle % 100), 0, false, false, true});
        }
        break;
    }
    }
    return places;
}

STwinSource CBoardTwin::Source_Of(long long position, int nozzleCount, const std::function<int(int)>& directionOf) const
{
    const int w = m_style.frameWidth;
    const auto frame = static_cast<int>(position / w);
    const auto inFrame = static_cast<int>(position % w);
    const auto byteIndex = position / 8;
    const auto column = static_cast<int>(byteIndex % w);
    const auto group = static_cast<int>(byteIndex / w);
    const auto inByte = static_cast<int>(position % 8);
    STwinSource source;
    switch (m_style.style)
    {
    case ETwinStyle::Style_1:
    {
        // Bytes of a pair: units 8 to 15 and 0 to 7 of the odd pixel, then of the even one.
        const auto byteOfPair = static_cast<int>(byteIndex % 4);
        source.unitIndex = 7 - inByte + (byteOfPair % 2 == 0 ? 8 : 0);
        source.nozzle = static_cast<int>(byteIndex / 4 * 2) + (byteOfPair < 2 ? 1 : 0);
        break;
    }
    case ETwinStyle::Style_2:
        source.unitIndex = inFrame / 2;
        source.nozzle = frame;
        break;
    case ETwinStyle::Style_5:
        source.unitIndex = inFrame / m_style.srcBitCount;
        source.nozzle = frame;
        break;
    case ETwinStyle::Style_6:
        source.unitIndex = column;
        source.nozzle = (group * 8 + inByte) / m_style.srcBitCount;
        break;
    case ETwinStyle::Style_7:
        source.unitIndex = column;
        source.nozzle = (group * 8 + inByte) / 2;
        break;
    case ETwinStyle::Style_8:
    {
        const long long planeBits = LineBitCount(nozzleCount) / 2;
        const auto inPlane = position % planeBits;
        const auto inDoubleFrame = static_cast<int>(inPlane % (2LL * w));
        source.plane = static_cast<int>(position / planeBits);
        source.unitIndex = inDoubleFrame / 2;
        source.nozzle = static_cast<int>(inPlane / (2LL * w) * 2) + inDoubleFrame % 2;
        break;
    }
    case ETwinStyle::Style_03:
    {
        const int frameByte = inFrame / 8;
        source.unitIndex = frameByte / 4 * 8 + inFrame % 8;
        // The place of a block is its own inverse.
        source.block = Block_Place(directionOf(source.unitIndex), frameByte % 4);
        source.nozzle = 100 * source.block + frame;
        break;
    }
    case ETwinStyle::Style_03_01:
    {
        source.unitIndex = column / 4;
        source.block = Block_Place(directionOf(source.unitIndex), column % 4);
        const int bitOfChunk = 8 * group + inByte;
        const bool bPadding = bitOfChunk >= 100 && source.block % 2 == 1;
        source.nozzle = bPadding ? -1 : 100 * source.block + bitOfChunk;
        break;
    }
    }
    if (source.unitIndex >= m_style.UnitCount())
    {
        return {};
    }
    if (source.nozzle >= nozzleCount)
    {
        source.nozzle = -1;
    }
    if (source.nozzle >= 0)
    {
        for (const STwinPlace& place :
             Places_Of(source.unitIndex, directionOf(source.unitIndex), source.nozzle, nozzleCount))
        {
            if (place.position == position)
            {
                source.place = place;
            }
        }
    }
    source.place.position = position;
    return source;
}
