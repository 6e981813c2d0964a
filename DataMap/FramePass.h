// All units of a board line in one pass: rows of pixels in, frames out.
//
// A row is one position of the frame: a line of 1-bit pixels that land there, frame after frame. The maps set up rows
// from the units' lines and have them transposed into the board line, on whatever thread maps it. Everything lives on
// the stack; nothing is allocated, locked or logged.
#pragma once

#include "DataMap/FrameLayout.h"
#include "DataMap/MapKernel.h"
#include "DataMap/SrcBandDataParam.h"

class CPrintUnitDataMap_Base;

class CFramePass
{
public:
    static constexpr int frameByteCountMax = 32;
    static constexpr int rowCountMax = 8 * frameByteCountMax;
    // A column without a bit set, as long as any.
    static const unsigned char zeroColumn[transposeRoom];
    // `frameByteCount`: 1 to frameByteCountMax. To be cleared before its first use.
    explicit CFramePass(int frameByteCount) : m_frameByteCount(frameByteCount) {}

    // Forgets all rows.
    void Clear();

    bool HasRow(int row) const { return m_rows[row] != nullptr; }
    void Row_Set(int row, const unsigned char* pixels) { m_rows[row] = pixels; }

    // Rows that were parted into scratch memory have all the room that there can be. Taking more of it than was written
    // spares the kernels the handling of an odd rest; the frames of that go nowhere.
    static constexpr int PartedByteCount(int byteCount) { return (byteCount + 31) / 32 * 32; }

    // ORs dst[0 .. dstByteCount - 1], the first frames of the rows' bytes `offset` to `offset + byteCount - 1` (at most
    // transposeByteCountMax). `bSwapPairs`: pixel k goes to frame k ^ 1.
    void Frames_Or(int offset, int byteCount, bool bSwapPairs, unsigned char* dst, int dstByteCount) const;

    // Maps the lines in order, as many at once as go together; what does not, through the map's MapData_Line. False as
    // soon as that is.
    static bool Lines_Map(const CPrintUnitDataMap_Base& map, const SFrameLayout& layout, const SSrcBandLine* lines,
                          int lineCount, unsigned char* dst, int dstByteCount);

    // Whether any of the eight rows of a column is set; and those rows' frames, all of the rows' room.
    bool HasColumn(int column) const
    {
        const auto* const* rows = m_rows + 8 * column;
        bool bSet = false;
        for (int row = 0; row < 8; ++row)
        {
            bSet = bSet || rows[row] != nullptr;
        }
        return bSet;
    }
    void Column_Transpose(const SMapKernel& kernel, int column, unsigned char* tile) const
    {
        kernel.m_pRows_Transpose(m_rows + 8 * column, 0, transposeByteCountMax, false, tile);
    }

private:
    int m_frameByteCount;
    const unsigned char* m_rows[rowCountMax];
};
