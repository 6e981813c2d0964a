// The limits' loops, left to the compiler. Compiled once for every vector width, LIMIT_LOOPS naming the result.
#include "Benchmarks/KernelLimits.h"

#include <cstring>

namespace
{
void Or(unsigned char* dst, int byteCount, unsigned char value)
{
    for (int i = 0; i < byteCount; ++i)
    {
        dst[i] = static_cast<unsigned char>(dst[i] | value);
    }
}

void Store(unsigned char* dst, int count, int stride, unsigned char value)
{
    for (int i = 0; i < count; ++i)
    {
        dst[i * stride] = value;
    }
}

void Store4(unsigned char* dst, int count, int stride, unsigned char value)
{
    const unsigned char values[4] = {value, value, value, value};
    for (int i = 0; i < count; ++i)
    {
        std::memcpy(dst + i * stride, values, sizeof(values));
    }
}
} // namespace

const SLimitLoops LIMIT_LOOPS = {Or, Store, Store4};
