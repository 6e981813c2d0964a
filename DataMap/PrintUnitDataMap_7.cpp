// The dot-size map with a byte column per unit: a table of two bytes per source byte, stored into the unit's column.
#include "DataMap/PrintUnitDataMap_7.h"

#include "DataMap/BitPosition.h"
#include "DataMap/PlatformWord.h"
#include "KelCommon/KelLog.h"
#include "Platform/Helper/StaticHelper.h"

namespace
{
// What four 1-bit pixels become if each set one becomes 01; a small drop. Both have the first pixel most significant.
constexpr unsigned char nibbleTable[16] = {0x00, 0x01, 0x04, 0x05, 0x10, 0x11, 0x14, 0x15,
                                           0x40, 0x41, 0x44, 0x45, 0x50, 0x51, 0x54, 0x55};
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
    Geometry_Set(2, dataFrameWidth, dataFrameWidth); // units have byte columns, not bit pairs
    m_dotSizeMode = static_cast<std::int32_t>(dotSizeMode);
    m_mapDataSizeOfByte = 2;
    MapData_Allocate(1, 256); // one table for all units
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
    MapData_Fill(codeSmall);
    return true;
}

bool CPrintUnitDataMap_7::MapData_Middle()
{
    MapData_Fill(codeMiddle);
    return true;
}

bool CPrintUnitDataMap_7::MapData_Big()
{
    MapData_Fill(codeBig);
    return true;
}

void CPrintUnitDataMap_7::MapData_Fill(int code)
{
    for (int value = 0; value < 256; ++value)
    {
        unsigned char* entry = MapData_Entry(0, value);
        entry[0] = static_cast<unsigned char>(code * nibbleTable[value / 16]);
        entry[1] = static_cast<unsigned char>(code * nibbleTable[value % 16]);
    }
}
