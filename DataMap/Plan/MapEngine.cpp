// Lines are cut into strips, strips become columns of bytes, columns go into the board line.
#include "DataMap/Plan/MapEngine.h"

#include "Compiler/KelCompiler.h"
#include "DataMap/Kernel/MapKernelInUse.h"
#include "DataMap/Plan/MapLine.h"

#include <algorithm>
#include <cstring>

namespace
{
// How far ahead a run asks for what will be wanted soon. Bands lie line after line, but one line takes too little of
// too many of them for a processor to notice by itself.
constexpr int srcAhead = 512;          // bytes
constexpr int srcLineBitMax = 8 * 128; // longer lines are noticed
constexpr int dstLineByteMax = 4096;   // likewise

// A column without a bit set, as long as any.
constexpr unsigned char zeroColumn[transposeRoom] = {};

void Lines_OneByOne(const SMapPlan& plan, const SSrcBandLine* first, const SSrcBandLine* end, unsigned char* dst,
                    int dstByteCount)
{
    for (const SSrcBandLine* line = first; line != end; ++line)
    {
        plan.m_pMap->MapData_Line(line->m_param, line->m_pLine, dst, dstByteCount);
    }
}

// Lines that go into the board line together: no two of the same unit, all of the same length. One for each way that
// strips are cut and go.
template<EMapCut cut>
class CLineRun
{
public:
    explicit CLineRun(const SMapPlan& plan) : m_plan(plan), m_style(*plan.m_pStyle), m_kernel(MapKernel_Get())
    {
        if constexpr (cut == Cut_Nibbles)
        {
            const unsigned char* table = plan.m_pMap->AllMapData_Get();
            for (int nibble = 0; nibble < 16; ++nibble)
            {
                m_nibbles[nibble] = table[2 * nibble + 1];
            }
        }
    }

    // Maps all lines, as many at once as go together. A line that shares its place with an earlier one, or differs in
    // length, begins the next run, so that the bytes are those of one line after the other.
    void Lines_Map(const SSrcBandLine* lines, int lineCount, unsigned char* dst, int dstByteCount)
    {
        const SSrcBandLine* const end = lines + lineCount;
        while (lines != end)
        {
            const SSrcBandLine* first = lines;
            lines = Run_Collect(first, end);
            if (lines - first >= m_style.m_lineRunMin)
            {
                m_lineCount = static_cast<int>(lines - first);
                if constexpr (bRows)
                {
                    Rows_Map(first, dst, dstByteCount);
                }
                else
                {
                    Columns_Map(first, dst);
                }
                continue;
            }
            lines = std::max(lines, first + 1);
            Lines_OneByOne(m_plan, first, lines, dst, dstByteCount);
        }
    }

private:
    static constexpr bool bRows = Cut_IsRows(cut);
    static constexpr bool bWhole = cut == Cut_Row || cut == Cut_Column; // nothing is cut out
    static constexpr bool bBlocks = cut == Cut_Blocks || cut == Cut_BlockColumns;
    static constexpr int planeCount = cut == Cut_Quads ? 2 : 1;
    static constexpr int columnsPerGroup = cut == Cut_Blocks ? blockCount : 1;
    // What is cut out of a line: the strips, and the bytes of all of them.
    static constexpr int cutCount = Cut_StripCount(cut);
    static constexpr int pieceSize = (bBlocks ? 1 : 2) * transposeByteCountMax;

    // Sets the strips of the lines from `first` on, up to one that cannot join those before it. Returns that one.
    const SSrcBandLine* Run_Collect(const SSrcBandLine* first, const SSrcBandLine* end)
    {
        std::fill_n(m_strips, (bRows ? 8 : 1) * m_plan.m_frameByteCount, nullptr);
        m_lineBitCount = first->m_param.m_lineBitCount;
        const SSrcBandLine* line = first;
        while (line != end && Strips_Set(*line, m_pieces[bWhole ? 0 : line - first]))
        {
            if (m_lineBitCount <= srcLineBitMax)
            {
                KEL_PREFETCH(line->m_pLine + srcAhead);
            }
            ++line;
        }
        return line;
    }

    // `piece`: where the line's strips will be cut out to. False if the line cannot join the run, or no run at all.
    bool Strips_Set(const SSrcBandLine& line, const unsigned char* piece)
    {
        const int unit = line.m_param.m_unitIndex;
        if (!m_plan.HasUnit(unit) || (!bBlocks && line.m_param.m_lineBitCount != m_lineBitCount))
        {
            return false;
        }
        const unsigned char** strips =
            m_strips + (bRows ? m_style.m_firstStrip + m_style.m_stripStep * unit : cutCount * unit);
        if (strips[0] != nullptr)
        {
            return false;
        }
        for (int i = 0; i < cutCount; ++i)
        {
            strips[i] = bWhole ? line.m_pLine : piece + i * (pieceSize / cutCount);
        }
        if (cut == Cut_Row)
        {
            strips[m_style.m_stripCount - 1] = line.m_pLine; // a unit may have two
        }
        return true;
    }

    // The run's lines, from `lines` on.
    void Rows_Map(const SSrcBandLine* lines, unsigned char* dst, int dstByteCount)
    {
        constexpr int step = (cut == Cut_Planes || cut == Cut_Quads ? 2 : 1) * transposeByteCountMax; // source bytes
        const int entrySize = m_plan.EntrySize();
        int srcByteCount = (m_lineBitCount + 7) / 8;
        int byteCount = 0; // of the board line, or of each plane
        if constexpr (cut == Cut_Blocks)
        {
            srcByteCount = 1; // any: there is one piece
            byteCount = blockPixelCount * m_plan.m_frameByteCount;
        }
        else if constexpr (cut == Cut_Quads)
        {
            srcByteCount = m_lineBitCount / 8;
            byteCount = srcByteCount * entrySize;
        }
        else
        {
            byteCount = CMapLine::BoardBytes_Clipped(m_lineBitCount, entrySize, dstByteCount);
        }
        for (int offset = 0; offset < srcByteCount && offset * entrySize < byteCount; offset += step)
        {
            const int count = std::min(step, srcByteCount - offset);
            Lines_Cut(lines, offset, count);
            Rows_Or(offset, count, dst + offset * entrySize, dstByteCount / 2,
                    cut == Cut_Blocks ? byteCount : std::min(count * entrySize, byteCount - offset * entrySize));
        }
        if constexpr (cut == Cut_Quads)
        {
            for (int i = 0; i < m_lineCount && m_lineBitCount % 8 > 0; ++i)
            {
                SMapReader::Tail_Or(m_plan, lines[i].m_param, lines[i].m_pLine, dst, dstByteCount);
            }
        }
    }

    void Columns_Map(const SSrcBandLine* lines, unsigned char* dst)
    {
        if constexpr (cut == Cut_Column)
        {
            Columns_Store((m_lineBitCount + 7) / 8, dst);
        }
        else if constexpr (cut == Cut_BlockColumns)
        {
            Lines_Cut(lines, 0, 0);
            if (blockCount * m_lineCount != m_plan.m_frameByteCount)
            {
                Columns_Store(blockByteCount, dst);
                return;
            }
            unsigned char frames[blockRoom * SMapPlan::columnCountMax];
            Columns_Store(blockRoom, frames); // the kernels prefer whole vectors
            std::memcpy(dst, frames, blockByteCount * static_cast<std::size_t>(m_plan.m_frameByteCount));
        }
        else
        {
            const int byteCount = (2 * m_lineBitCount + 7) / 8; // of a column
            for (int done = 0; done < byteCount; done += pieceSize)
            {
                const int count = std::min(pieceSize, byteCount - done);
                Lines_Cut(lines, done / 2, (count + 1) / 2);
                Columns_Store(count, dst + done * m_plan.m_frameByteCount);
            }
        }
    }

    void Lines_Cut(const SSrcBandLine* lines, int offset, int byteCount)
    {
        for (int i = 0; i < m_lineCount && !bWhole; ++i)
        {
            const unsigned char* src = lines[i].m_pLine + offset;
            unsigned char* piece = m_pieces[i];
            switch (cut)
            {
            case Cut_Planes:
                m_kernel.m_pPlanes_Split(src, byteCount, piece, piece + transposeByteCountMax);
                break;
            case Cut_Quads:
                m_kernel.m_pQuads_Split(src, byteCount, piece, piece + transposeByteCountMax);
                break;
            case Cut_Blocks:
            case Cut_BlockColumns:
                m_kernel.m_pBlocks_Cut(src, CMapLine::IsAscending(lines[i].m_param), piece);
                break;
            default:
                m_kernel.m_pNibbles_Expand(m_nibbles, src, byteCount, piece);
                break;
            }
        }
    }

    // Transposes `srcByteCount` bytes of the rows, from `offset` on where they are the lines themselves, and ORs the
    // first `byteCount` bytes of frames that they make, in each plane.
    void Rows_Or(int offset, int srcByteCount, unsigned char* dst, int planeDistance, int byteCount) const
    {
        // What was cut out has all the room that there can be. Taking more of it than was written spares the kernels
        // the handling of an odd rest; the frames of that go nowhere.
        const int rowByteCount = bWhole              ? srcByteCount
                                 : cut == Cut_Planes ? (srcByteCount + 63) / 64 * 32
                                                     : transposeByteCountMax;
        alignas(64) unsigned char tiles[SMapPlan::rowBytesMax][transposeRoom];
        const unsigned char* columns[planeCount][SMapPlan::rowBytesMax];
        const int frameByteCount = m_plan.m_frameByteCount;
        const int groupCount = frameByteCount / columnsPerGroup;
        for (int group = 0; group < groupCount; ++group)
        {
            const bool bSet = Group_IsSet(group);
            if (bSet)
            {
                m_kernel.m_pRows_Transpose(m_strips + 8 * group, bWhole ? offset : 0, rowByteCount,
                                           m_style.m_bSwapPairs, tiles[group]);
            }
            for (int part = 0; part < planeCount * columnsPerGroup; ++part)
            {
                columns[part / columnsPerGroup][group * columnsPerGroup + part % columnsPerGroup] =
                    bSet ? tiles[group] + part * (transposeRoom / (planeCount * columnsPerGroup)) : zeroColumn;
            }
        }
        std::fill(columns[0] + groupCount * columnsPerGroup, columns[0] + frameByteCount, zeroColumn);
        for (int plane = 0; plane < planeCount; ++plane)
        {
            Frames_Or(columns[plane], byteCount, dst + plane * planeDistance);
        }
    }

    bool Group_IsSet(int group) const
    {
        int row = 0;
        while (row < 8 && m_strips[8 * group + row] == nullptr)
        {
            ++row;
        }
        return row < 8;
    }

    // The last frame may be partial.
    void Frames_Or(const unsigned char* const* columns, int byteCount, unsigned char* dst) const
    {
        const int frameByteCount = m_plan.m_frameByteCount;
        const int frameCount = byteCount / frameByteCount;
        m_kernel.m_pColumns_Or(columns, frameByteCount, frameCount, dst);
        for (int i = frameCount * frameByteCount; i < byteCount; ++i)
        {
            dst[i] = static_cast<unsigned char>(dst[i] | columns[i - frameCount * frameByteCount][frameCount]);
        }
    }

    void Columns_Store(int byteCount, unsigned char* dst) const
    {
        m_kernel.m_pColumns_Store(m_strips, m_plan.m_frameByteCount, byteCount, dst);
    }

    const SMapPlan& m_plan;
    const SStylePlan& m_style;
    const SMapKernel& m_kernel;
    int m_lineBitCount = 0;
    int m_lineCount = 0;
    unsigned char m_nibbles[16]; // what every four pixels become
    const unsigned char* m_strips[SMapPlan::stripCountMax];
    alignas(64) unsigned char m_pieces[bWhole ? 1 : SMapPlan::stripCountMax][pieceSize]; // by line
};

template<EMapCut cut>
void Lines_MapSo(const SMapPlan& plan, const SSrcBandLine* lines, int lineCount, unsigned char* dst, int dstByteCount)
{
    CLineRun<cut>(plan).Lines_Map(lines, lineCount, dst, dstByteCount);
}
} // namespace

void CMapEngine::Lines_Map(const SMapPlan& plan, const SSrcBandLine* lines, int lineCount, unsigned char* dst,
                           int dstByteCount)
{
    // Not in a function of its own: GCC takes one that only fetches for one that does nothing.
    for (int offset = 0; offset < dstByteCount && dstByteCount <= dstLineByteMax; offset += 64)
    {
        KEL_PREFETCH(dst + 2 * dstByteCount + offset);
    }
    const EMapCut cut = plan.m_pStyle->m_cut;
    if (plan.m_frameByteCount > (Cut_IsRows(cut) ? SMapPlan::rowBytesMax : SMapPlan::columnCountMax))
    {
        return Lines_OneByOne(plan, lines, lines + lineCount, dst, dstByteCount);
    }
    constexpr decltype(&Lines_MapSo<Cut_Row>) byCut[] = {
        Lines_MapSo<Cut_Row>,    Lines_MapSo<Cut_Planes>,       Lines_MapSo<Cut_Quads>,  Lines_MapSo<Cut_Blocks>,
        Lines_MapSo<Cut_Column>, Lines_MapSo<Cut_BlockColumns>, Lines_MapSo<Cut_Nibbles>};
    byCut[cut](plan, lines, lineCount, dst, dstByteCount);
}
