// Small arithmetic that several subsystems share.
#pragma once

class CStaticHelper
{
public:
    // The bytes that hold `bitCount` bits, rounded up to a multiple of `alignBytes`.
    static int AlignBytesByBits(int alignBytes, int bitCount);
};
