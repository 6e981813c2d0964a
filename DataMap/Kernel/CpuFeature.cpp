// Reads the processor's feature words (CPUID) and the system's register mask (XGETBV).
#include "DataMap/Kernel/CpuFeature.h"

#if defined(DATAMAPPING_X86_KERNELS)

#include <immintrin.h>
#if defined(_MSC_VER) && !defined(__clang__)
#include <intrin.h>
#else
#include <cpuid.h>
#endif

namespace
{
struct SCpuWords
{
    unsigned m_b = 0;
    unsigned m_c = 0;
    unsigned m_d = 0;
};

// All words 0 for a leaf that the processor does not have.
SCpuWords CpuWords_Get(unsigned leaf)
{
    SCpuWords words;
#if defined(_MSC_VER) && !defined(__clang__)
    int values[4] = {};
    __cpuid(values, 0);
    if (static_cast<unsigned>(values[0]) >= leaf)
    {
        __cpuidex(values, static_cast<int>(leaf), 0);
        words = {static_cast<unsigned>(values[1]), static_cast<unsigned>(values[2]), static_cast<unsigned>(values[3])};
    }
#else
    unsigned a = 0;
    __get_cpuid_count(leaf, 0, &a, &words.m_b, &words.m_c, &words.m_d);
#endif
    return words;
}

constexpr bool Bit_IsSet(unsigned long long word, int bit)
{
    return ((word >> bit) & 1) != 0;
}

// Bits of the system's register mask.
constexpr unsigned long long registersAvx = 0x06;    // 128 and 256 bits
constexpr unsigned long long registersAvx512 = 0xE6; // those, 512 bits, and the mask registers
} // namespace

SCpuFeatures CpuFeatures_Get()
{
    SCpuFeatures features;
    const SCpuWords leaf1 = CpuWords_Get(1);
    features.m_bSsse3 = Bit_IsSet(leaf1.m_c, 9);
    const bool bSystemSaves = Bit_IsSet(leaf1.m_c, 27);
    const bool bAvx = Bit_IsSet(leaf1.m_c, 28);
    if (!bSystemSaves || !bAvx)
    {
        return features;
    }
    const unsigned long long saved = _xgetbv(0);
    const SCpuWords leaf7 = CpuWords_Get(7);
    features.m_bAvx2 = (saved & registersAvx) == registersAvx && Bit_IsSet(leaf7.m_b, 5);
    const bool bFoundation = Bit_IsSet(leaf7.m_b, 16);
    const bool bDoubleQuad = Bit_IsSet(leaf7.m_b, 17);
    const bool bByteWord = Bit_IsSet(leaf7.m_b, 30);
    const bool bLength = Bit_IsSet(leaf7.m_b, 31);
    features.m_bAvx512 = features.m_bAvx2 && (saved & registersAvx512) == registersAvx512 && bFoundation &&
                         bDoubleQuad && bByteWord && bLength;
    const bool bBytePermute = Bit_IsSet(leaf7.m_c, 1);
    const bool bGaloisField = Bit_IsSet(leaf7.m_c, 8);
    features.m_bAvx512Gfni = features.m_bAvx512 && bBytePermute && bGaloisField;
    return features;
}

#else

SCpuFeatures CpuFeatures_Get()
{
    return {};
}

#endif
