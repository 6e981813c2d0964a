// Builds the table of the general map with one frame per pixel.
#include "DataMap/PrintUnitDataMap_5.h"

#include "DataMap/BitPosition.h"
#include "DataMap/FrameLayout.h"
#include "DataMap/FramePass.h"
#include "KelCommon/KelLog.h"

#include <typeinfo>

CPrintUnitDataMap_5::CPrintUnitDataMap_5() = default;

CPrintUnitDataMap_5::CPrintUnitDataMap_5(const CPrintUnitDataMap_5& other) = default;

CPrintUnitDataMap_5& CPrintUnitDataMap_5::operator=(const CPrintUnitDataMap_5& other) = default;

CPrintUnitDataMap_5::~CPrintUnitDataMap_5() = default;

bool CPrintUnitDataMap_5::Init(int srcBitCount, int dataFrameWidth)
{
    if (!CPrintUnitDataMap_Base::Init(srcBitCount, srcBitCount, dataFrameWidth))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    if (!Init_MapDataBuffer())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

// Only for this very class. Whatever a subclass changes, be it the look-up, the entry size or the mapping of a line, it
// cannot forget to say so; it gets the plain road. A flag or a probe of the look-up at Init could be inherited, or be
// right at Init and wrong later.
bool CPrintUnitDataMap_5::FrameLayout_Get(SFrameLayout& layout) const
{
    const int frameByteCount = m_dataFrameWidth >> 3;
    // The size stands for all that Init has set: calling the base's Init on top of it leaves a table that is not meant.
    if (typeid(*this) != typeid(CPrintUnitDataMap_5) || m_dstBitCount != m_srcBitCount || m_unitMapDataSize <= 0 ||
        m_unitMapDataSize != 2048 * frameByteCount >> (m_srcBitCount - 1))
    {
        return false;
    }
    layout = {frameByteCount, m_unitCount, m_srcBitCount, m_srcBitCount, m_srcBitMask, false};
    return true;
}

bool CPrintUnitDataMap_5::MapData_Line_AllInput(const SSrcBandLine* lines, int lineCount, unsigned char* dst,
                                                int dstByteCount) const
{
    SFrameLayout layout;
    if (FrameLayout_Get(layout) && layout.m_frameByteCount <= CFramePass::frameByteCountMax)
    {
        return CFramePass::Lines_Map(*this, layout, lines, lineCount, dst, dstByteCount);
    }
    return MapData_Line_OneByOne(lines, lineCount, dst, dstByteCount);
}

bool CPrintUnitDataMap_5::MapData_Line_Direct(const SSrcBandDataParam& param, const unsigned char* src,
                                              unsigned char* dst, int dstByteCount) const
{
    SFrameLayout layout;
    return FrameLayout_Get(layout) && layout.Line_Map(param, src, dst, dstByteCount);
}

bool CPrintUnitDataMap_5::Init_MapDataBuffer()
{
    m_unitMapDataSize = 256 * m_mapDataSizeOfByte;
    m_mapDataSize = m_unitCount * m_unitMapDataSize;
    MapData_Allocate();
    for (int unit = 0; unit < m_unitCount; ++unit)
    {
        for (int value = 0; value < 256; ++value)
        {
            MapData_Fill(MapData_Entry(unit, value), unit, value);
        }
    }
    return true;
}

// Pixel k of the source byte becomes the unit's field of frame k.
void CPrintUnitDataMap_5::MapData_Fill(unsigned char* entry, int unitIndex, int byteValue) const
{
    for (int offset = 0; offset < 8; ++offset)
    {
        if ((byteValue & BitPosition_Mask(offset)) != 0)
        {
            const int pixel = offset / m_srcBitCount;
            const int bit = offset % m_srcBitCount;
            BitPosition_Set(entry, pixel * m_dataFrameWidth + m_srcBitCount * unitIndex + bit);
        }
    }
}
