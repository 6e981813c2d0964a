// Small arithmetic that several subsystems share. Pure functions; any thread.
#pragma once

#include "Platform/PlatformExport.h"

class PLATFORM_API CStaticHelper
{
public:
    // The number of bytes that hold `bitCount` bits, rounded up to a multiple of `alignBytes`.
    // `alignBytes` >= 1, `bitCount` >= 0; the result must fit an int.
    static int AlignBytesByBits(int alignBytes, int bitCount);
};
