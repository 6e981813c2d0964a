// The print parameters of the process. Their words have positions; of most of them nobody here knows a meaning.
#pragma once

#include "Platform/BandData/BandData.h"

#include <cstdint>

enum EDotSizeMode : std::int32_t
{
    dot_unset = 0,
    dot_1 = 1,
    dot_2 = 2,
    dot_3 = 3,
};

// A job. The third word is its bits per pixel.
struct SRipJobInfo
{
    std::int32_t w1 = 0;
    std::int32_t w2 = 0;
    std::int32_t w3 = 0;
};

// What the job says of ink stripes.
struct SInkStripeParam_Pixel
{
    std::int32_t w1 = 0;
    std::int32_t leftStripeWidth = 0;
    std::int32_t rightStripeWidth = 0;
    std::int32_t unitPitch = 0;
    std::int32_t w5 = 0;
    std::int32_t unitPosition = 0;
    std::int32_t unitPositionCount = 0;
    std::int16_t w8 = 0;
};

// The mask data. Word 17 and word 18 (counted from 1) are its two mask counts.
struct SPlainMask
{
    std::int32_t word[18] = {};
};

// The horizontal place of one print unit. The second and the third word are its offsets in the two passes.
struct SPlainHorizon
{
    std::int32_t w1 = 0;
    std::int32_t w2 = 0;
    std::int32_t w3 = 0;
};

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
