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
    // `frameByteCount`: 1 to frameByteCountMax. No row is set.
    explicit CFramePass(int frameByteCount);

    bool HasRow(int row) const { return m_rows[row] != nullptr; }
    void Row_Set(int row, const unsigned char* pixels) { m_rows[row] = pixels; }

    // ORs dst[0 .. dstByteCount - 1], the first frames of the rows' bytes `offset` to `offset + byteCount - 1` (at most
    // transposeByteCountMax). `bSwapPairs`: pixel k goes to frame k ^ 1.
    void Frames_Or(int offset, int byteCount, bool bSwapPairs, unsigned char* dst, int dstByteCount) const;

    // Maps the lines in order, as many at once as go together; what does not, through the map's MapData_Line. False as
    // soon as that is.
    static bool Lines_Map(const CPrintUnitDataMap_Base& map, const SFrameLayout& layout, const SSrcBandLine* lines,
                          int lineCount, unsigned char* dst, int dstByteCount);

private:
    bool HasColumn(int column) const;

    int m_frameByteCount;
    const unsigned char* m_rows[rowCountMax];
};
