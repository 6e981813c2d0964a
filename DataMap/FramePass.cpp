// Rows to frames, tile by tile, and the lines of frame-per-pixel maps as rows.
#include "DataMap/FramePass.h"

#include "DataMap/LineRuns.h"
#include "DataMap/MapKernelInUse.h"

#include <algorithm>

namespace
{
// Lines of 2-bit pixels, parted into two rows each before they are transposed.
struct SPlanePair
{
    unsigned char m_high[transposeByteCountMax];
    unsigned char m_low[transposeByteCountMax];
};

// The units of a regular layout: each line is one row, or two.
class CLayoutPass
{
public:
    static constexpr int lineRunMin = 5;

    explicit CLayoutPass(const SFrameLayout& layout)
        : m_layout(layout),
          m_frames(layout.m_frameByteCount),
          m_unitCount(static_cast<unsigned>(layout.m_unitCount)),
          m_firstRow(layout.Row(0)),
          m_rowStep(layout.Row(1) - layout.Row(0)),
          m_kind(layout.FieldKind())
    {
    }

    void Begin(const SSrcBandLine& line)
    {
        m_frames.Clear();
        m_lineBitCount = line.m_param.m_lineBitCount;
        m_lineCount = 0;
    }

    bool Line_Add(const SSrcBandLine& line)
    {
        const SSrcBandDataParam& param = line.m_param;
        const int row = m_firstRow + m_rowStep * param.m_unitIndex;
        if (static_cast<unsigned>(param.m_unitIndex) >= m_unitCount || param.m_lineBitCount != m_lineBitCount ||
            m_frames.HasRow(row) || m_frames.HasRow(row + m_layout.m_fieldBitCount - 1))
        {
            return false;
        }
        if (m_kind == Field_TwoBit)
        {
            m_frames.Row_Set(row, m_planes[m_lineCount].m_high);
            m_frames.Row_Set(row + 1, m_planes[m_lineCount].m_low);
            ++m_lineCount;
            return true;
        }
        m_frames.Row_Set(m_layout.m_fieldBits == 0b01 ? row + m_layout.m_fieldBitCount - 1 : row, line.m_pLine);
        if (m_kind == Field_Double)
        {
            m_frames.Row_Set(row + 1, line.m_pLine);
        }
        return true;
    }

    void Run_Map(const SSrcBandLine* lines, int lineCount, unsigned char* dst, int dstByteCount)
    {
        const int entrySize = m_layout.EntrySize();
        const int srcByteCount = (m_lineBitCount + 7) / 8;
        const int step = transposeByteCountMax * m_layout.m_srcBitCount;
        const int byteCount = BoardBytes_Clipped(m_lineBitCount, entrySize, dstByteCount);
        for (int offset = 0; offset < srcByteCount && offset * entrySize < byteCount; offset += step)
        {
            const int count = std::min(step, srcByteCount - offset);
            const int tileByteCount = std::min(count * entrySize, byteCount - offset * entrySize);
            unsigned char* out = dst + offset * entrySize;
            if (m_layout.m_srcBitCount == 1)
            {
                m_frames.Frames_Or(offset, count, m_layout.m_bReversed, out, tileByteCount);
            }
            else
            {
                Lines_Part(lines, lineCount, offset, count);
                m_frames.Frames_Or(0, CFramePass::PartedByteCount((count + 1) / 2), false, out, tileByteCount);
            }
        }
    }

private:
    void Lines_Part(const SSrcBandLine* lines, int lineCount, int offset, int byteCount)
    {
        const SMapKernel& kernel = MapKernel_Get();
        for (int i = 0; i < lineCount; ++i)
        {
            kernel.m_pPlanes_Split(lines[i].m_pLine + offset, byteCount, m_planes[i].m_high, m_planes[i].m_low);
        }
    }

    const SFrameLayout& m_layout;
    CFramePass m_frames;
    unsigned m_unitCount;
    int m_firstRow;
    int m_rowStep;
    EFieldKind m_kind;
    int m_lineBitCount = 0;
    int m_lineCount = 0;                              // of lines that are parted
    SPlanePair m_planes[CFramePass::rowCountMax / 2]; // of the lines in the order in which they were added
};
} // namespace

const unsigned char CFramePass::zeroColumn[transposeRoom] = {};

void CFramePass::Clear()
{
    std::fill_n(m_rows, 8 * m_frameByteCount, nullptr);
}

void CFramePass::Frames_Or(int offset, int byteCount, bool bSwapPairs, unsigned char* dst, int dstByteCount) const
{
    const SMapKernel& kernel = MapKernel_Get();
    alignas(64) unsigned char tile[frameByteCountMax][transposeRoom];
    const unsigned char* columns[frameByteCountMax];
    for (int column = 0; column < m_frameByteCount; ++column)
    {
        columns[column] = zeroColumn;
        if (HasColumn(column))
        {
            kernel.m_pRows_Transpose(m_rows + 8 * column, offset, byteCount, bSwapPairs, tile[column]);
            columns[column] = tile[column];
        }
    }
    const int frameCount = dstByteCount / m_frameByteCount;
    const int rest = dstByteCount % m_frameByteCount;
    kernel.m_pColumns_Or(columns, m_frameByteCount, frameCount, dst);
    unsigned char* partial = dst + frameCount * m_frameByteCount;
    for (int column = 0; column < rest; ++column)
    {
        partial[column] = static_cast<unsigned char>(partial[column] | columns[column][frameCount]);
    }
}

bool CFramePass::Lines_Map(const CPrintUnitDataMap_Base& map, const SFrameLayout& layout, const SSrcBandLine* lines,
                           int lineCount, unsigned char* dst, int dstByteCount)
{
    CLayoutPass pass(layout);
    return LineRuns_Map(pass, map, lines, lineCount, dst, dstByteCount);
}
