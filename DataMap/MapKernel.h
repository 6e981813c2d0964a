// What a kernel is: the inner loops of the data maps, as one record of functions with a name.
//
// The maps ask MapKernel_Get() (MapKernelInUse.h) for the kernel in use, on whatever thread maps a line, and call its functions. Every
// kernel leaves the same bytes as the scalar one; they differ in the instructions that they need. DataMapKernel.h is
// the users' side: which kernels there are and which one is in use. Nothing here allocates, locks or logs, and nothing
// is read or written beyond what a function says; source and destination never overlap.
#pragma once

#include "DataMap/CpuFeature.h"
#include "DataMap/FieldPattern.h"

// The most bytes of each row that RowsTranspose takes at once.
constexpr int transposeByteCountMax = 64;
// What RowsTranspose needs room for, however few bytes it is given.
constexpr int transposeRoom = 8 * transposeByteCountMax;
// Room that Planes_Split and Nibbles_Expand round their results up to.
constexpr int splitRoom = 64;

// ORs the field of one unit into board frames: dst[0 .. dstByteCount - 1] only, frame 0 at dst. The `srcByteCount` bytes
// of `src` must be enough for these frames.
using FieldFunction = void (*)(const SFrameField& field, const unsigned char* src, int srcByteCount, unsigned char* dst,
                               int dstByteCount);

// For every group size of SFieldPattern.
struct SFieldFunctions
{
    FieldFunction m_oneBit[SFieldPattern::groupSizeCount]; // a 1-bit pixel sets all bits of the field's mask
    FieldFunction m_double[SFieldPattern::groupSizeCount]; // the same where that are two bits
    FieldFunction m_twoBit[SFieldPattern::groupSizeCount]; // both bits of a 2-bit pixel
};

struct SMapKernel
{
    const char* m_name;

    // Null in the scalar kernel: there the table is the road.
    const SFieldFunctions* m_pField_Or;

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

    // Every nibble of `src`, the high one first, becomes the byte that `table` (16 bytes) has for it: 2 x byteCount
    // bytes in `dst`, whose room is rounded up to splitRoom.
    void (*m_pNibbles_Expand)(const unsigned char* table, const unsigned char* src, int byteCount, unsigned char* dst);
};

// The kernels, one per source file. Calling a function of one whose instructions the processor lacks ends the program.
extern const SMapKernel mapKernelScalar;
#if defined(DATAMAPPING_X86_KERNELS)
extern const SMapKernel mapKernelSsse3;
extern const SMapKernel mapKernelAvx2;
extern const SMapKernel mapKernelAvx512;
extern const SMapKernel mapKernelAvx512Gfni;
#endif
