// Bit-granular copies. Bits are numbered from the most significant: position q is bit 7 - (q mod 8) of byte q / 8.
#pragma once

class CBitOperator
{
public:
    // False, with nothing written, for a negative position or count and for a copy that would pass `dstByteCount`
    // bytes.
    static bool BitCopy(const unsigned char* src, int srcBitPos, unsigned char* dst, int dstBitPos, int bitCount,
                        int dstByteCount);
};
