// What the ink-stripe stage knows while it makes stripe bands: the job's stripe parameters, captured once per stage,
// and a few words that change from unit to unit and step to step.
#pragma once

#include "Platform/PrintParam/PrintParamRecords.h"

#include <cstdint>

struct SInkStripeParam_Run
{
    SInkStripeParam_Pixel pixelParam;       // of the job; its unit position is the current unit's
    std::int32_t bandAttr = 0;              // pass of the current step: 1 = left to right, else right to left
    std::int32_t xMaxOffset_Right2Left = 0; // scan positions
    std::int32_t xMaxOffset_Left2Right = 0; // scan positions
    std::int32_t unitHorizon_1 = 0;         // of the current unit, for the right-to-left pass; scan positions
    std::int32_t unitHorizon_2 = 0;         // of the current unit, for the left-to-right pass; scan positions
    std::int32_t maskCount_1 = 0;           // masks in the scan direction, which share the job's width
    std::int32_t jobInfo_3 = 0;             // bits per pixel of the job
    std::int32_t jobWidth = 0;              // scan positions
};
