// The loops that the kernels are held against: the cheapest ones that touch the same bytes in the same pattern.
//
// KernelBench calls them on its own thread. Each exists in as many versions as there are vector widths, every one
// compiled by itself from KernelLimits.cpp, so that a kernel meets a loop that may use the same instructions.
#pragma once

struct SLimitLoops
{
    // dst[0 .. byteCount - 1] |= value.
    void (*m_pOr)(unsigned char* dst, int byteCount, unsigned char value);
    // dst[i x stride] = value for i below count.
    void (*m_pStore)(unsigned char* dst, int count, int stride, unsigned char value);
    // The same with 4 bytes at a time.
    void (*m_pStore4)(unsigned char* dst, int count, int stride, unsigned char value);
};

extern const SLimitLoops limitLoops16;
extern const SLimitLoops limitLoops32;
extern const SLimitLoops limitLoops64;
