// The print parameters of the process.
#pragma once

#include "Platform/BandData/BandData.h"
#include "Platform/PrintParam/PrintParamRecords.h"

class CUnitInfo_Horizon
{
public:
    SPlainHorizon HorizonInfo_Get(int unitId) const; // zero offsets for an unknown unit
    int XMaxOffset_Right2Left_Get() const;
    int XMaxOffset_Left2Right_Get() const;
};

class CPrintParamGlobal
{
public:
    const SRipJobInfo& JobInfo_Get() const;
    const SRipJobInfo& JobInfo_CurPrint_Get() const;
    int CurPrint_JobWidth_Get() const;
    EDotSizeMode DotSizeMode_Get() const;
    int AlignByteCountPerLine() const;
    const SPlainMask& MaskData_Ref() const;
    const SInkStripeParam_Pixel& InkStripeParam_Get() const;
    const CBandData* InkStripeColorData_Get(int unitId) const; // null if the unit has none
    const CUnitInfo_Horizon& UnitInfo_Horizon() const;
};

CPrintParamGlobal* DPD_PrintParam();
