// Builds the table of the general map with one frame per pixel.
#include "DataMap/PrintUnitDataMap_5.h"

#include "DataMap/BitPosition.h"
#include "KelCommon/KelLog.h"

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
