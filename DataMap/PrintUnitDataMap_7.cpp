// The dot-size map with a byte column per unit: a table of two bytes per source byte, stored into the unit's column.
#include "DataMap/PrintUnitDataMap_7.h"

#include "DataMap/PlatformWord.h"
#include "KelCommon/KelLog.h"
#include "Platform/Helper/StaticHelper.h"

#include <array>

namespace
{
// Four 1-bit pixels -> four 2-bit drop-size codes, both with the first pixel most significant.
using NibbleTable = std::array<unsigned char, 16>;

constexpr NibbleTable nibbleTableSmall = {0x00, 0x01, 0x04, 0x05, 0x10, 0x11, 0x14, 0x15,
                                          0x40, 0x41, 0x44, 0x45, 0x50, 0x51, 0x54, 0x55};
constexpr NibbleTable nibbleTableMiddle = {0x00, 0x02, 0x08, 0x0A, 0x20, 0x22, 0x28, 0x2A,
                                           0x80, 0x82, 0x88, 0x8A, 0xA0, 0xA2, 0xA8, 0xAA};
constexpr NibbleTable nibbleTableBig = {0x00, 0x03, 0x0C, 0x0F, 0x30, 0x33, 0x3C, 0x3F,
                                        0xC0, 0xC3, 0xCC, 0xCF, 0xF0, 0xF3, 0xFC, 0xFF};
} // namespace

CPrintUnitDataMap_7::CPrintUnitDataMap_7() = default;

CPrintUnitDataMap_7::CPrintUnitDataMap_7(const CPrintUnitDataMap_7& other) = default;

CPrintUnitDataMap_7& CPrintUnitDataMap_7::operator=(const CPrintUnitDataMap_7& other) = default;

CPrintUnitDataMap_7::~CPrintUnitDataMap_7() = default;

bool CPrintUnitDataMap_7::MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                                       int /*dstByteCount*/) const
{
    const int byteCount = CStaticHelper::AlignBytesByBits(1, 2 * param.m_lineBitCount);
    const int columnCount = m_unitCount; // the stores below might be to members, for all that the compiler knows
    const unsigned char* table = m_mapData;
    unsigned char* out = dst + param.m_unitIndex;
    for (int i = 0; i < byteCount / 2; ++i)
    {
        const unsigned char* entry = table + 2 * src[i];
        out[0] = entry[0];
        out[columnCount] = entry[1];
        out += 2 * columnCount;
    }
    if (byteCount % 2 > 0)
    {
        *out = table[2 * src[byteCount / 2]];
    }
    return true;
}

int CPrintUnitDataMap_7::SrcPixelCount_2_BoardBitCount(int srcPixelCount) const
{
    return CStaticHelper::AlignBytesByBits(1, 2 * srcPixelCount) * m_unitCount * 8;
}

bool CPrintUnitDataMap_7::Init(EDotSizeMode dotSizeMode, int dataFrameWidth)
{
    m_srcBitCount = 1;
    m_srcBitMask = 1;
    m_dstBitCount = 2;
    m_dataFrameWidth = dataFrameWidth;
    m_unitCount = dataFrameWidth; // byte columns, not bit pairs
    m_dotSizeMode = static_cast<std::int32_t>(dotSizeMode);
    m_mapDataSizeOfByte = 2;
    m_unitMapDataSize = 256 * m_mapDataSizeOfByte;
    m_mapDataSize = m_unitMapDataSize; // one table for all units
    MapData_Allocate();
    if (!MapData())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CPrintUnitDataMap_7::MapData()
{
    switch (m_dotSizeMode)
    {
    case DotSize_Small:
        return MapData_Small();
    case DotSize_Middle:
        return MapData_Middle();
    case DotSize_Big:
        return MapData_Big();
    default:
        return false;
    }
}

bool CPrintUnitDataMap_7::MapData_Small()
{
    MapData_Fill(nibbleTableSmall.data());
    return true;
}

bool CPrintUnitDataMap_7::MapData_Middle()
{
    MapData_Fill(nibbleTableMiddle.data());
    return true;
}

bool CPrintUnitDataMap_7::MapData_Big()
{
    MapData_Fill(nibbleTableBig.data());
    return true;
}

void CPrintUnitDataMap_7::MapData_Fill(const unsigned char* nibbleTable)
{
    for (int value = 0; value < 256; ++value)
    {
        unsigned char* entry = MapData_Entry(0, value);
        entry[0] = nibbleTable[value / 16];
        entry[1] = nibbleTable[value % 16];
    }
}
