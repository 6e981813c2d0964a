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
    if (!CPrintUnitDataMap_Base::Init(srcBitCount, srcBitCount, dataFrameWidth) || !Init_MapDataBuffer())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CPrintUnitDataMap_5::Init_MapDataBuffer()
{
    MapData_Allocate(m_unitCount, 256);
    // Pixel k of the source byte becomes the unit's field of frame k.
    MapData_Build(
        [this](unsigned char* entry, int unit, int bit)
        {
            const int frame = bit / m_srcBitCount;
            BitPosition_Set(entry, frame * m_dataFrameWidth + m_srcBitCount * unit + bit % m_srcBitCount);
        });
    return true;
}
