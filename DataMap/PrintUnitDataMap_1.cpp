// Builds the table of style 1: two pixels per group of four bytes, bytes and pixels reversed inside the group.
#include "DataMap/PrintUnitDataMap_1.h"

#include "DataMap/BitPosition.h"
#include "DataMap/FrameLayout.h"
#include "DataMap/FramePass.h"
#include "KelCommon/KelLog.h"

#include <string>
#include <typeinfo>

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
    m_srcBitCount = 1;
    m_srcBitMask = 1;
    m_dstBitCount = 1;
    m_dataFrameWidth = dataFrameWidth;
    m_unitCount = dataFrameWidth;
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

bool CPrintUnitDataMap_1::FrameLayout_Get(SFrameLayout& layout) const
{
    constexpr int frameByteCount = 2;
    // The sizes stand for all that Init has set: calling the base's Init on top of it leaves a table that is not meant.
    if (typeid(*this) != typeid(CPrintUnitDataMap_1) || m_unitMapDataSize != 4096 || m_mapDataSizeOfByte != 16 ||
        m_unitCount != 16)
    {
        return false;
    }
    layout = {frameByteCount, m_unitCount, 1, 1, 1, true};
    return true;
}

bool CPrintUnitDataMap_1::MapData_Line_AllInput(const SSrcBandLine* lines, int lineCount, unsigned char* dst,
                                                int dstByteCount) const
{
    SFrameLayout layout;
    if (FrameLayout_Get(layout) && layout.m_frameByteCount <= CFramePass::frameByteCountMax)
    {
        return CFramePass::Lines_Map(*this, layout, lines, lineCount, dst, dstByteCount);
    }
    return MapData_Line_OneByOne(lines, lineCount, dst, dstByteCount);
}

bool CPrintUnitDataMap_1::MapData_Line_Direct(const SSrcBandDataParam& param, const unsigned char* src,
                                              unsigned char* dst, int dstByteCount) const
{
    SFrameLayout layout;
    return FrameLayout_Get(layout) && layout.Line_Map(param, src, dst, dstByteCount);
}

bool CPrintUnitDataMap_1::Init_DataWidth_16()
{
    m_mapDataSizeOfByte = m_dataFrameWidth;
    m_unitMapDataSize = m_dataFrameWidth * 256;
    m_mapDataSize = m_unitMapDataSize * m_unitCount;
    MapData_Allocate();
    for (int unit = 0; unit < m_unitCount; ++unit)
    {
        for (int value = 0; value < 256; ++value)
        {
            unsigned char* entry = MapData_Entry(unit, value);
            for (int pixel = 0; pixel < 8; ++pixel)
            {
                if ((value & BitPosition_Mask(pixel)) != 0)
                {
                    BitPosition_Set(entry, EntryPosition(unit, pixel));
                }
            }
        }
    }
    return true;
}
