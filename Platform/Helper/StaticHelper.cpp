// Byte counts from bit counts.
#include "Platform/Helper/StaticHelper.h"

#include <cstdint>

int CStaticHelper::AlignBytesByBits(int alignBytes, int bitCount)
{
    const std::int64_t bytes = (static_cast<std::int64_t>(bitCount) + 7) / 8;
    return static_cast<int>((bytes + alignBytes - 1) / alignBytes * alignBytes);
}
