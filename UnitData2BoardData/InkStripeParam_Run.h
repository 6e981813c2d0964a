// What the ink-stripe stage knows while it makes stripe bands: the job's stripe parameters, captured once per stage,
// and a few words that change from unit to unit and step to step.
#pragma once

#include "Platform/PrintParam/PrintParamRecords.h"

#include <cstddef>
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
static_assert(sizeof(SInkStripeParam_Pixel) == 32); // seven words, and one of 16 bits
static_assert(offsetof(SInkStripeParam_Run, pixelParam) == 0);
static_assert(offsetof(SInkStripeParam_Run, bandAttr) == 32);
static_assert(offsetof(SInkStripeParam_Run, xMaxOffset_Right2Left) == 36);
static_assert(offsetof(SInkStripeParam_Run, xMaxOffset_Left2Right) == 40);
static_assert(offsetof(SInkStripeParam_Run, unitHorizon_1) == 44);
static_assert(offsetof(SInkStripeParam_Run, unitHorizon_2) == 48);
static_assert(offsetof(SInkStripeParam_Run, maskCount_1) == 52);
static_assert(offsetof(SInkStripeParam_Run, jobInfo_3) == 56);
static_assert(offsetof(SInkStripeParam_Run, jobWidth) == 60);
static_assert(sizeof(SInkStripeParam_Run) == 64);
