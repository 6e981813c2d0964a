// A bit copy in destination bytes: each step fills one destination byte, from the two source bytes that can feed it.
#include "Platform/Helper/BitOperator.h"

#include <algorithm>
#include <cstdint>

bool CBitOperator::BitCopy(const unsigned char* src, int srcBitPos, unsigned char* dst, int dstBitPos, int bitCount,
                           int dstByteCount)
{
    if (srcBitPos < 0 || dstBitPos < 0 || bitCount < 0)
    {
        return false;
    }
    if (std::int64_t{dstBitPos} + bitCount > std::int64_t{dstByteCount} * 8)
    {
        return false;
    }
    std::int64_t from = srcBitPos;
    std::int64_t to = dstBitPos;
    const std::int64_t end = to + bitCount;
    while (to < end)
    {
        const int dstBit = static_cast<int>(to % 8);
        const int count = static_cast<int>(std::min<std::int64_t>(8 - dstBit, end - to));
        const int srcBit = static_cast<int>(from % 8);
        unsigned window = static_cast<unsigned>(src[from / 8]) << 8;
        if (srcBit + count > 8)
        {
            window |= src[from / 8 + 1]; // read only when a wanted bit is in it
        }
        const unsigned bits = (window >> (16 - srcBit - count)) & ((1U << count) - 1U);
        const int shift = 8 - dstBit - count;
        const unsigned mask = ((1U << count) - 1U) << shift;
        dst[to / 8] = static_cast<unsigned char>((dst[to / 8] & ~mask) | (bits << shift));
        to += count;
        from += count;
    }
    return true;
}
