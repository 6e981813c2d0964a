// The records of the print parameters. Their words have positions; of most of them nobody here knows a meaning.
#pragma once

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
