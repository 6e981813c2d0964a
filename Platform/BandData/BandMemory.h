// The memory of bands: large blocks that come back warm.
//
// A board band is made and freed for every step, always of about the same size. Memory that is fresh from the system
// costs a page fault for every few kilobytes, many times what clearing it costs. So a block that a band gives back is
// cleared, by who gives it back, and kept for the next band that it fits.
//
// What is kept is bounded by what was in use: blocks in use and kept blocks together are never more than the most that
// was in use at once lately, that is, during the current and the previous round of some dozens of blocks given back.
// After a peak the kept blocks are freed, oldest first, as rounds go by; and when no block is in use any more, all are.
// Small blocks are the general allocator's and are neither kept nor counted.
//
// Any thread may call everything here. The lock is never held while memory is cleared or the system is asked for some.
#pragma once

#include "Platform/PlatformExport.h"

#include <cstddef>
#include <cstdint>

// Bytes are those of whole blocks, which are somewhat larger than the bands in them.
struct SBandMemoryStatistic
{
    std::int64_t m_inUseBytes = 0;
    std::int64_t m_keptBytes = 0;
    std::int64_t m_peakBytes = 0;    // the most in use at once in the current and the previous round
    std::int64_t m_freshBlocks = 0;  // blocks that the system gave, since the start of the process
    std::int64_t m_reusedBlocks = 0; // blocks that were kept ones
};

class PLATFORM_API CBandMemory
{
public:
    // Blocks below this size are not kept.
    static constexpr std::size_t smallestKept = std::size_t{64} << 10;
    // So many blocks given back are a round.
    static constexpr int blocksPerRound = 64;

    // At least `size` zero bytes, aligned to `alignment`; null if there is no memory. Freed with Release and the same
    // size.
    static unsigned char* Allocate(std::size_t size);
    static void Release(unsigned char* data, std::size_t size);

    static constexpr std::size_t alignment = 64;

    // Frees all kept blocks now. Returns their bytes.
    static std::int64_t Trim();

    // Off: nothing is kept from now on, and what was is freed. On is the state at the start.
    static void Reuse_Set(bool bOn);

    static SBandMemoryStatistic Statistic_Get();
};
