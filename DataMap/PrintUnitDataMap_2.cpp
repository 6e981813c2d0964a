// Builds the table of the dot-size map with a frame per pixel: each set pixel becomes a 2-bit drop-size code.
#include "DataMap/PrintUnitDataMap_2.h"

#include "DataMap/BitPosition.h"
#include "DataMap/PlatformWord.h"
#include "KelCommon/KelLog.h"

namespace
{
void Code_Set(unsigned char* entry, int position, int code)
{
    if ((code & 0b10) != 0)
    {
        BitPosition_Set(entry, position);
    }
    if ((code & 0b01) != 0)
    {
        BitPosition_Set(entry, position + 1);
    }
}
} // namespace

CPrintUnitDataMap_2::CPrintUnitDataMap_2() = default;

CPrintUnitDataMap_2::CPrintUnitDataMap_2(const CPrintUnitDataMap_2& other) = default;

CPrintUnitDataMap_2& CPrintUnitDataMap_2::operator=(const CPrintUnitDataMap_2& other) = default;

CPrintUnitDataMap_2::~CPrintUnitDataMap_2() = default;

bool CPrintUnitDataMap_2::Init(EDotSizeMode dotSizeMode, int dataFrameWidth)
{
    Geometry_Set(2, dataFrameWidth, dataFrameWidth / 2);
    Init_MapDataSizeOfByte();
    m_dotSizeMode = static_cast<std::int32_t>(dotSizeMode);
    m_mapDataSizeOfByte = (8 / m_srcBitCount) * m_dataFrameWidth / 8;
    MapData_Allocate(m_unitCount, 256);
    if (!MapData())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CPrintUnitDataMap_2::MapData()
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

bool CPrintUnitDataMap_2::MapData_Small()
{
    MapData_Fill(codeSmall);
    return true;
}

bool CPrintUnitDataMap_2::MapData_Middle()
{
    MapData_Fill(codeMiddle);
    return true;
}

bool CPrintUnitDataMap_2::MapData_Big()
{
    MapData_Fill(codeBig);
    return true;
}

void CPrintUnitDataMap_2::MapData_Fill(int code)
{
    MapData_Build([=, this](unsigned char* entry, int unit, int pixel)
                  { Code_Set(entry, pixel * m_dataFrameWidth + 2 * unit, code); });
}
