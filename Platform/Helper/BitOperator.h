// Bit-granular copies. Bits are numbered from the most significant: position q is bit 7 - (q mod 8) of byte q / 8.
// Pure functions; any thread.
#pragma once

#include "Platform/PlatformExport.h"

class PLATFORM_API CBitOperator
{
public:
    // Copies `bitCount` bits from bit position `srcBitPos` of `src` to bit position `dstBitPos` of `dst`; every other
    // bit of `dst` keeps its value. `dstByteCount` is the size of `dst` in bytes: a copy that would pass it, or any
    // negative position or count, returns false and writes nothing. The regions must not overlap.
    static bool BitCopy(const unsigned char* src, int srcBitPos, unsigned char* dst, int dstBitPos, int bitCount,
                        int dstByteCount);
};
