// The map that never is: sets its geometry, reports the failure, builds nothing.
#include "DataMap/PrintUnitDataMap_4.h"

#include "KelCommon/KelLog.h"

CPrintUnitDataMap_4::CPrintUnitDataMap_4() = default;

CPrintUnitDataMap_4::CPrintUnitDataMap_4(const CPrintUnitDataMap_4& other) = default;

CPrintUnitDataMap_4& CPrintUnitDataMap_4::operator=(const CPrintUnitDataMap_4& other) = default;

CPrintUnitDataMap_4::~CPrintUnitDataMap_4() = default;

bool CPrintUnitDataMap_4::Init(int dataFrameWidth)
{
    Geometry_Set(1, dataFrameWidth, dataFrameWidth);
    Init_MapDataSizeOfByte();
    KEL_LOG(kelSeverity_Failure, "failure");
    return false;
}

void CPrintUnitDataMap_4::Usage()
{
    CPrintUnitDataMap_4 map;
    map.Init(16);
}
