// The helpers: bits one by one, and the bytes that hold them.
#include "Platform/Helper/BitOperator.h"
#include "Platform/Helper/StaticHelper.h"

bool CBitOperator::BitCopy(const unsigned char* src, int srcBitPos, unsigned char* dst, int dstBitPos, int bitCount,
                           int dstByteCount)
{
    if (srcBitPos < 0 || dstBitPos < 0 || bitCount < 0 ||
        static_cast<long long>(dstBitPos) + bitCount > 8LL * dstByteCount)
    {
        return false;
    }
    for (int i = 0; i < bitCount; ++i)
    {
        const int from = srcBitPos + i;
        const int to = dstBitPos + i;
        const unsigned bit = src[from / 8] >> (7 - from % 8) & 1U;
        const unsigned mask = 0x80U >> (to % 8);
        dst[to / 8] = static_cast<unsigned char>(bit != 0 ? dst[to / 8] | mask : dst[to / 8] & ~mask);
    }
    return true;
}

int CStaticHelper::AlignBytesByBits(int alignBytes, int bitCount)
{
    const long long bytes = (static_cast<long long>(bitCount) + 7) / 8;
    return static_cast<int>((bytes + alignBytes - 1) / alignBytes * alignBytes);
}
