// What the processor can do, and what the operating system lets programs use of it.
//
// Asked once, by the thread that first needs a kernel. Both halves are looked at: the instructions that the processor
// reports, and the registers that the system saves when it switches threads.
#pragma once

#if defined(__x86_64__) || defined(_M_X64)
#define DATAMAPPING_X86_KERNELS
#elif defined(__aarch64__) || defined(_M_ARM64)
#define DATAMAPPING_ARM_KERNELS // what they need, every such processor has
#endif

struct SCpuFeatures
{
    bool m_bSsse3 = false;
    bool m_bAvx2 = false;
    bool m_bAvx512 = false;     // F, BW, DQ and VL
    bool m_bAvx512Gfni = false; // those, VBMI and GFNI
};

// Everything false on other than x86 processors. Any thread.
SCpuFeatures CpuFeatures_Get();
