// Where the pixels of every unit stand in board frames: what a map with a regular table can say about itself.
//
// A map fills it when it maps lines, on any thread; the base's mapping takes its place in the board line from it
// instead of looking every source byte up. Pure arithmetic.
#pragma once

#include "DataMap/MapKernelInUse.h"
#include "DataMap/SrcBandDataParam.h"

// The board bytes that a source line of `lineBitCount` bits becomes: whole source bytes whatever the line's length, the
// entry of a partial last one clipped to `dstByteCount`.
constexpr int BoardBytes_Clipped(int lineBitCount, int entrySize, int dstByteCount)
{
    if (lineBitCount <= 0)
    {
        return 0;
    }
    const int whole = static_cast<int>(static_cast<unsigned>(lineBitCount) / 8) * entrySize;
    if (static_cast<unsigned>(lineBitCount) % 8 == 0)
    {
        return whole;
    }
    const int tail = dstByteCount - whole;
    return whole + (tail < 0 ? 0 : tail < entrySize ? tail : entrySize);
}

// Frame positions are counted from the most significant bit of the frame's first byte. Unit u has the positions from
// m_fieldBitCount x u on; in a reversed layout, from the frame's end backwards. Pixel k is in frame k, in a reversed
// layout in frame k ^ 1.
struct SFrameLayout
{
    int m_frameByteCount; // bytes of a frame
    int m_unitCount;
    int m_srcBitCount;   // bits of one source pixel
    int m_fieldBitCount; // bits of one unit in a frame
    int m_fieldBits;     // those of them that a pixel sets; with 2-bit pixels both, each from its own
    bool m_bReversed;

    // Bytes of board data that one source byte becomes.
    int EntrySize() const { return 8 * m_frameByteCount >> (m_srcBitCount - 1); }
    bool HasUnit(int unitIndex) const { return static_cast<unsigned>(unitIndex) < static_cast<unsigned>(m_unitCount); }

    // The frame's row (position) of the first bit of a unit's field.
    int Row(int unitIndex) const
    {
        return m_bReversed ? 8 * m_frameByteCount - 1 - unitIndex : m_fieldBitCount * unitIndex;
    }

    // Null for frames that have none.
    const SFieldPattern* Pattern() const
    {
        return m_bReversed ? &CFieldPattern::swappedPattern : CFieldPattern::Pixel_Get(m_frameByteCount, m_srcBitCount);
    }

    EFieldKind FieldKind() const
    {
        return m_srcBitCount == 2 ? Field_TwoBit : m_fieldBits == 0b11 ? Field_Double : Field_OneBit;
    }

    // ORs the field of a unit of the layout into frames that have the pattern `pattern`, as a FieldFunction does.
    void Field_Or(const SFieldFunctions& functions, const SFieldPattern& pattern, int unitIndex,
                  const unsigned char* src, int srcByteCount, unsigned char* dst, int dstByteCount) const
    {
        const auto row = static_cast<unsigned>(Row(unitIndex));
        const unsigned lastBit = 8 - row % 8 - static_cast<unsigned>(m_fieldBitCount);
        const unsigned lowestBit = lastBit + (m_fieldBits == 0b10 ? 1U : 0U);
        functions.m_functions[FieldKind()][pattern.m_groupSizeIndex](
            pattern.Begin(static_cast<int>(row / 8)), lowestBit, static_cast<unsigned>(m_fieldBits) << lastBit, src,
            srcByteCount, dst, dstByteCount);
    }

    // MapData_Line for such a layout; false, with nothing done, if the kernel in use has no way for it.
    bool Line_Map(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst, int dstByteCount) const
    {
        const SFieldFunctions* functions = MapKernel_Get().m_pField_Or;
        const SFieldPattern* pattern = Pattern();
        if (functions == nullptr || pattern == nullptr || !HasUnit(param.m_unitIndex))
        {
            return false;
        }
        const int byteCount = BoardBytes_Clipped(param.m_lineBitCount, EntrySize(), dstByteCount);
        Field_Or(*functions, *pattern, param.m_unitIndex, src, (param.m_lineBitCount + 7) >> 3, dst, byteCount);
        return true;
    }
};
