// Builds the table of style 1: two pixels per group of four bytes, bytes and pixels reversed inside the group.
#include "DataMap/PrintUnitDataMap_1.h"

#include "DataMap/BitPosition.h"
#include "KelCommon/KelLog.h"

#include <string>

namespace
{
// The bit position, inside an entry, of pixel `pixel` (0 to 7, 0 = most significant) of unit `unit` (0 to 15). Even
// pixels have the last two bytes of their group, odd pixels the first two; units 8 to 15 the lower byte of each two. A
// unit's bit counts from the least significant.
constexpr int EntryPosition(int unit, int pixel)
{
    const int byteIndex = 4 * (pixel / 2) + (pixel % 2 == 0 ? 3 : 1) - unit / 8;
    return 8 * byteIndex + 7 - unit % 8;
}
} // namespace

CPrintUnitDataMap_1::CPrintUnitDataMap_1() = default;

CPrintUnitDataMap_1::CPrintUnitDataMap_1(const CPrintUnitDataMap_1& other) = default;

CPrintUnitDataMap_1& CPrintUnitDataMap_1::operator=(const CPrintUnitDataMap_1& other) = default;

CPrintUnitDataMap_1::~CPrintUnitDataMap_1() = default;

bool CPrintUnitDataMap_1::Init(int dataFrameWidth)
{
    Geometry_Set(1, dataFrameWidth, dataFrameWidth);
    Init_MapDataSizeOfByte();
    if (m_dataFrameWidth == 16)
    {
        return Init_DataWidth_16();
    }
    KEL_LOG(kelSeverity_Failure, "DataFrameWidth = " + std::to_string(m_dataFrameWidth));
    return false;
}

void CPrintUnitDataMap_1::Usage()
{
    CPrintUnitDataMap_1 map;
    map.Init(16);
}

void CPrintUnitDataMap_1::Init_MapDataSizeOfByte()
{
    m_mapDataSizeOfByte = m_dataFrameWidth;
}

bool CPrintUnitDataMap_1::Init_DataWidth_16()
{
    m_mapDataSizeOfByte = m_dataFrameWidth;
    MapData_Allocate(m_unitCount, 256);
    MapData_Build([](unsigned char* entry, int unit, int pixel)
                  { BitPosition_Set(entry, EntryPosition(unit, pixel)); });
    return true;
}
