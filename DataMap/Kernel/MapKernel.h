// What a kernel is: the inner loops of the data maps, as one record of functions with a name, none of them ever null.
//
// The engine that runs plans asks MapKernel_Get() (MapKernelInUse.h) for the kernel in use, on whatever thread maps a
// line, and calls its functions; nobody else does. The scalar kernel is the definition: every other leaves the same
// bytes, with other instructions. DataMapKernel.h is the users' side: which kernels there are and which one is in use.
// Nothing here allocates, locks or logs, and nothing is read or written beyond what a function says; source and
// destination never overlap.
#pragma once

#include "DataMap/Kernel/CpuFeature.h"
#include "DataMap/Kernel/FieldPattern.h"

// The most bytes of each row that RowsTranspose takes at once.
constexpr int transposeByteCountMax = 64;
// What RowsTranspose needs room for, however few bytes it is given.
constexpr int transposeRoom = 8 * transposeByteCountMax;
// Room that Planes_Split and Nibbles_Expand round their results up to.
constexpr int splitRoom = 64;
// The most bytes that Quads_Split takes at once, and the length of each half of its results.
constexpr int quadSrcByteCountMax = 128;
constexpr int quadRoom = quadSrcByteCountMax / 4;

// ORs the field of one unit into board frames: dst[0 .. dstByteCount - 1] only, frame 0 at dst. `place`: 8 x the byte
// of a frame that has the field, or the first of them, + the field's lowest bit in that byte, an even one if it has
// two. The `srcByteCount` bytes of `src` must be enough for the frames.
using FieldFunction = void (*)(const SFieldPattern& pattern, unsigned place, const unsigned char* src, int srcByteCount,
                               unsigned char* dst, int dstByteCount);

// What a field takes from a source byte.
enum EFieldKind
{
    Field_OneBit, // a 1-bit pixel sets the one bit of the field
    Field_Double, // a 1-bit pixel sets both bits of the field
    Field_TwoBit, // a 2-bit pixel, both bits of the field
    Field_Block,  // a 1-bit pixel from each of four source bytes, one bit in each of four board bytes
    Field_Count
};

// Bytes that Blocks_Cut gives each of the four blocks.
constexpr int blockRoom = 16;

struct SMapKernel
{
    const char* m_name;

    // Transposes 8 rows of pixels: bit 7 - r of dst[p] becomes pixel p of rows[r], with bSwapPairs pixel p ^ 1. Bytes
    // `offset` to `offset + byteCount - 1` of each row are read, 1 to transposeByteCountMax; a null row has no pixel
    // set. `dst` has room for transposeRoom bytes; what comes after 8 x byteCount is undefined.
    void (*m_pRows_Transpose)(const unsigned char* const* rows, int offset, int byteCount, bool bSwapPairs,
                              unsigned char* dst);

    // Interleaves columns: dst[i x columnCount + c] is column c's byte i, i = 0 .. byteCount - 1. The first ORs, and
    // has no null column; the second stores, and leaves the bytes of a null column alone.
    void (*m_pColumns_Or)(const unsigned char* const* columns, int columnCount, int byteCount, unsigned char* dst);
    void (*m_pColumns_Store)(const unsigned char* const* columns, int columnCount, int byteCount, unsigned char* dst);

    // Parts pairs of bits: the high bits of the pairs in `src` go to `high`, the low bits to `low`, both packed again.
    // An odd last byte leaves the low halves of the last results 0. The room of both is rounded up to splitRoom.
    void (*m_pPlanes_Split)(const unsigned char* src, int byteCount, unsigned char* high, unsigned char* low);

    // Parts groups of four bits, the pixel pairs of two planes: bits 3 of all groups go to the first half of `even`,
    // bits 2 to its second half, bits 1 and 0 to those of `odd`; packed again, an incomplete last byte filled up with
    // 0. `byteCount` is at most quadSrcByteCountMax, `even` and `odd` have room for 2 x quadRoom bytes.
    void (*m_pQuads_Split)(const unsigned char* src, int byteCount, unsigned char* even, unsigned char* odd);

    // Cuts the 50 bytes of a line of 400 pixels into four blocks of 100 pixels, each blockRoom bytes: 13 bytes, and
    // what comes behind them is undefined. Block k, which begins at pixel 100 k, takes place k (ascending) or 3 - k. A
    // block that begins on a byte keeps the four pixels behind it; the others end in four zeros. The second
    // interleaves: byte i of the block at place p is dst[4 i + p].
    void (*m_pBlocks_Cut)(const unsigned char* src, bool bAscending, unsigned char* dst);
    void (*m_pBlocks_Interleave)(const unsigned char* src, bool bAscending, unsigned char* dst);

    // Every nibble of `src`, the high one first, becomes the byte that `table` (16 bytes) has for it: 2 x byteCount
    // bytes in `dst`, whose room is rounded up to splitRoom.
    void (*m_pNibbles_Expand)(const unsigned char* table, const unsigned char* src, int byteCount, unsigned char* dst);

    // By kind and by the pattern's group size; those that no pattern of the kind has are as good as any.
    FieldFunction m_pField_Or[Field_Count][SFieldPattern::groupSizeCount];
};

// The kernels, one per source file. Calling a function of one whose instructions the processor lacks ends the program.
extern const SMapKernel mapKernelScalar;
#if defined(DATAMAPPING_X86_KERNELS)
extern const SMapKernel mapKernelSsse3;
extern const SMapKernel mapKernelAvx2;
extern const SMapKernel mapKernelAvx512;
extern const SMapKernel mapKernelAvx512Gfni;
#elif defined(DATAMAPPING_ARM_KERNELS)
extern const SMapKernel mapKernelNeon;
#endif
