// Splits 2-bit pixels into two planes by look-ups of 16 pixel patterns per unit.
#include "DataMap/PrintUnitDataMap_8.h"

#include "DataMap/BitPosition.h"
#include "DataMap/OrKernel.h"
#include "DataMap/Plan/MapLine.h"
#include "KelCommon/KelLog.h"

namespace
{
constexpr int pixelsPerByte = 4;
constexpr int patternCount = 16;
constexpr unsigned char maskHigh = 0xAA; // the high bits of a byte's four pixels
constexpr unsigned char maskLow = 0x55;  // their low bits

// The bits of pixel `pixel` in a byte, of both planes.
constexpr unsigned Pixel_ByteMask(int pixel)
{
    return 0xC0U >> (2 * pixel);
}

// The pattern of the pixels that have a bit set in `value`: bit 3 - k stands for pixel k.
int Pattern_FromByte(unsigned char value)
{
    int pattern = 0;
    for (int pixel = 0; pixel < pixelsPerByte; ++pixel)
    {
        pattern = 2 * pattern + ((value & Pixel_ByteMask(pixel)) != 0 ? 1 : 0);
    }
    return pattern;
}

// The byte of the plane `planeMask` in which exactly the pattern's pixels are set.
unsigned char Pattern_ToByte(int pattern, unsigned char planeMask)
{
    unsigned value = 0;
    for (int pixel = 0; pixel < pixelsPerByte; ++pixel)
    {
        value |= (pattern & 8 >> pixel) != 0 ? Pixel_ByteMask(pixel) & planeMask : 0U;
    }
    return static_cast<unsigned char>(value);
}
} // namespace

CPrintUnitDataMap_8::CPrintUnitDataMap_8() = default;

CPrintUnitDataMap_8::CPrintUnitDataMap_8(const CPrintUnitDataMap_8& other) = default;

CPrintUnitDataMap_8& CPrintUnitDataMap_8::operator=(const CPrintUnitDataMap_8& other) = default;

CPrintUnitDataMap_8::~CPrintUnitDataMap_8() = default;

const unsigned char* CPrintUnitDataMap_8::ByteMapData_Buffer(int unitIndex, int byteValue) const
{
    const int index = ByteValue_2_Index(static_cast<unsigned char>(byteValue));
    return m_mapData + (index * MapDataSizeOfByte() + unitIndex * m_unitMapDataSize);
}

bool CPrintUnitDataMap_8::MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                                       int dstByteCount) const
{
    if (CMapLine::Map<Cut_Quads>(*this, param, src, dst, dstByteCount))
    {
        return true;
    }
    const int planeByteCount = dstByteCount / 2;
    if (!MapData_Line_BitMask(param, src, dst, planeByteCount, maskHigh) ||
        !MapData_Line_BitMask(param, src, dst + planeByteCount, planeByteCount, maskLow))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CPrintUnitDataMap_8::Init(int dataFrameWidth)
{
    Geometry_Set(1, dataFrameWidth, dataFrameWidth);
    m_mapDataSizeOfByte = (dataFrameWidth / 8) * 4;
    if (!Init_MapDataBuffer())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

// The low-bit plane needs no entries of its own: the same index names the same pixels.
bool CPrintUnitDataMap_8::Init_MapDataBuffer()
{
    MapData_Allocate(m_unitCount, patternCount);
    for (int unit = 0; unit < m_unitCount; ++unit)
    {
        for (int index = 0; index < patternCount; ++index)
        {
            MapData_Fill(MapData_Entry(unit, index), unit, Index_2_ByteValue(index));
        }
    }
    return true;
}

void CPrintUnitDataMap_8::MapData_Fill(unsigned char* entry, int unitIndex, unsigned char planeValue) const
{
    for (int pixel = 0; pixel < pixelsPerByte; pixel += m_srcBitCount)
    {
        if ((planeValue & Pixel_ByteMask(pixel)) != 0)
        {
            const int frame = pixel / 2;
            BitPosition_Set(entry, 2 * (frame * m_dataFrameWidth + m_srcBitCount * unitIndex) + pixel % 2);
        }
    }
}

bool CPrintUnitDataMap_8::MapData_Line_BitMask(const SSrcBandDataParam& param, const unsigned char* src,
                                               unsigned char* dst, int dstByteCount, unsigned char bitMask) const
{
    const int entrySize = MapDataSizeOfByte();
    const int fullByteCount = param.m_lineBitCount / 8;
    for (int i = 0; i < fullByteCount; ++i)
    {
        COrKernel::Or_Bytes(dst + i * entrySize, ByteMapData_Buffer(param.m_unitIndex, src[i] & bitMask), entrySize);
    }
    MapData_Tail(param, entrySize, src, dst, dstByteCount); // looked up unmasked, unlike the full bytes
    return true;
}

int CPrintUnitDataMap_8::ByteValue_2_Index(unsigned char value) const
{
    return (value & maskHigh) != 0 ? ByteValue_2_Index_Bit0246(value) : ByteValue_2_Index_Bit1357(value);
}

int CPrintUnitDataMap_8::ByteValue_2_Index_Bit0246(unsigned char value) const
{
    return (value & maskLow) == 0 ? Pattern_FromByte(value) : -1;
}

int CPrintUnitDataMap_8::ByteValue_2_Index_Bit1357(unsigned char value) const
{
    return (value & maskHigh) == 0 ? Pattern_FromByte(value) : -1;
}

unsigned char CPrintUnitDataMap_8::Index_2_ByteValue(int index)
{
    return index < patternCount ? Index_2_ByteValue_Bit0246(index) : Index_2_ByteValue_Bit1357(index);
}

unsigned char CPrintUnitDataMap_8::Index_2_ByteValue_Bit0246(int index)
{
    return index >= 0 && index < patternCount ? Pattern_ToByte(index, maskHigh) : static_cast<unsigned char>(0);
}

unsigned char CPrintUnitDataMap_8::Index_2_ByteValue_Bit1357(int index)
{
    const int pattern = index - patternCount;
    return pattern >= 0 && pattern < patternCount ? Pattern_ToByte(pattern, maskLow) : static_cast<unsigned char>(0);
}
