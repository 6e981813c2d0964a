// A unit's line of 400 pixels as the four blocks of 100 of the block styles (03 and 03_01).
//
// The maps have a line cut up by the kernel in use when they map it, on any thread, into a record on their stack. Block
// k, pixels 100 k to 100 k + 99, takes place k (ascending) or 3 - k.
#pragma once

#include "DataMap/MapKernelInUse.h"

struct SBlockLine
{
    static constexpr int blockCount = 4;
    static constexpr int blockPixelCount = 100;
    static constexpr int blockByteCount = 13;
    static constexpr int room = blockRoom; // bytes per block; what comes behind the block's own is undefined

    // By place. A block that begins on a byte of the line keeps the four pixels behind it; the others end in four
    // zeros.
    unsigned char m_blocks[blockCount][room];

    // Cuts up the 50 bytes of `src`.
    void Cut(const SMapKernel& kernel, const unsigned char* src, bool bAscending)
    {
        kernel.m_pBlocks_Cut(src, bAscending, m_blocks[0]);
    }
};

// The same with the blocks side by side: byte i of the block at place p is m_bytes[4 i + p].
struct SBlockColumns
{
    unsigned char m_bytes[SBlockLine::blockCount * SBlockLine::room];

    void Cut(const SMapKernel& kernel, const unsigned char* src, bool bAscending)
    {
        kernel.m_pBlocks_Interleave(src, bAscending, m_bytes);
    }
};
