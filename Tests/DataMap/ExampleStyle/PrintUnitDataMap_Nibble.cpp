// Builds the table of the example style: one bit in four for every pixel.
#include "Tests/DataMap/ExampleStyle/PrintUnitDataMap_Nibble.h"

#include "DataMap/BitPosition.h"
#include "KelCommon/KelLog.h"

CPrintUnitDataMap_Nibble::CPrintUnitDataMap_Nibble() = default;

CPrintUnitDataMap_Nibble::CPrintUnitDataMap_Nibble(const CPrintUnitDataMap_Nibble& other) = default;

CPrintUnitDataMap_Nibble& CPrintUnitDataMap_Nibble::operator=(const CPrintUnitDataMap_Nibble& other) = default;

CPrintUnitDataMap_Nibble::~CPrintUnitDataMap_Nibble() = default;

bool CPrintUnitDataMap_Nibble::Init(int dataFrameWidth)
{
    if (dataFrameWidth % 4 != 0)
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    Geometry_Set(4, dataFrameWidth, dataFrameWidth / 4);
    Init_MapDataSizeOfByte();
    MapData_Allocate(m_unitCount, 256);
    MapData_Build([this](unsigned char* entry, int unit, int pixel)
                  { BitPosition_Set(entry, pixel * m_dataFrameWidth + 4 * unit + 3); });
    return true;
}
