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

constexpr bool Bits_AreSet(unsigned long long word, unsigned long long bits)
{
    return (word & bits) == bits;
}

// Bits of the feature words: of leaf 1's word c, of leaf 7's words b and c.
constexpr unsigned leaf1Ssse3 = 1U << 9;
constexpr unsigned leaf1Avx = 1U << 27 | 1U << 28; // and the system saves registers
constexpr unsigned leaf7Avx2 = 1U << 5;
constexpr unsigned leaf7Avx512 = 1U << 16 | 1U << 17 | 1U << 30 | 1U << 31; // F, DQ, BW, VL
constexpr unsigned leaf7VbmiGfni = 1U << 1 | 1U << 8;

// Bits of the system's register mask.
constexpr unsigned long long registersAvx = 0x06;    // 128 and 256 bits
constexpr unsigned long long registersAvx512 = 0xE6; // those, 512 bits, and the mask registers
} // namespace

SCpuFeatures CpuFeatures_Get()
{
    SCpuFeatures features;
    const SCpuWords leaf1 = CpuWords_Get(1);
    features.m_bSsse3 = Bits_AreSet(leaf1.m_c, leaf1Ssse3);
    if (Bits_AreSet(leaf1.m_c, leaf1Avx))
    {
        const unsigned long long saved = _xgetbv(0);
        const SCpuWords leaf7 = CpuWords_Get(7);
        features.m_bAvx2 = Bits_AreSet(saved, registersAvx) && Bits_AreSet(leaf7.m_b, leaf7Avx2);
        features.m_bAvx512 =
            features.m_bAvx2 && Bits_AreSet(saved, registersAvx512) && Bits_AreSet(leaf7.m_b, leaf7Avx512);
        features.m_bAvx512Gfni = features.m_bAvx512 && Bits_AreSet(leaf7.m_c, leaf7VbmiGfni);
    }
    return features;
}

#else

SCpuFeatures CpuFeatures_Get()
{
    return {};
}

#endif
