// Lines are cut into strips, strips become columns of bytes, columns go into the board line; and the shorter way of a
// line that is alone.
#include "DataMap/Plan/MapEngine.h"

#include "Compiler/KelCompiler.h"
#include "DataMap/Kernel/MapKernelInUse.h"
#include "DataMap/PrintUnitDataMap_Base.h"

#include <algorithm>
#include <cstring>

namespace
{
// The block styles' geometry.
constexpr int blockCount = 4;
constexpr int blockPixelCount = 100;
constexpr int blockByteCount = 13;

// How far ahead a run asks for what will be wanted soon. Bands lie line after line, but one line takes too little of
// too many of them for a processor to notice by itself.
constexpr int srcAhead = 512;          // bytes
constexpr int srcLineBitMax = 8 * 128; // longer lines are noticed
constexpr int dstLineByteMax = 4096;   // likewise

// A column without a bit set, as long as any.
constexpr unsigned char zeroColumn[transposeRoom] = {};

bool IsAscending(const SSrcBandDataParam& param)
{
    return param.m_unitDirection == unitDirection_Ascending;
}

// The board bytes that a source line of `lineBitCount` bits becomes: whole source bytes whatever the line's length, the
// entry of a partial last one clipped to `dstByteCount`.
int BoardBytes_Clipped(int lineBitCount, int entrySize, int dstByteCount)
{
    if (lineBitCount <= 0)
    {
        return 0;
    }
    const int whole = static_cast<int>(static_cast<unsigned>(lineBitCount) / 8) * entrySize;
    return static_cast<unsigned>(lineBitCount) % 8 == 0 ? whole
                                                        : whole + std::clamp(dstByteCount - whole, 0, entrySize);
}

void Lines_OneByOne(const SMapPlan& plan, const SSrcBandLine* lines, int lineCount, unsigned char* dst,
                    int dstByteCount)
{
    for (const SSrcBandLine* line = lines; line != lines + lineCount; ++line)
    {
        plan.m_pMap->MapData_Line(line->m_param, line->m_pLine, dst, dstByteCount);
    }
}

// Lines that go into the board line together: no two of the same unit, all of the same length. One for each way that
// strips are cut and go.
template<EMapCut cut, EMapTarget target>
class CLineRun
{
public:
    explicit CLineRun(const SMapPlan& plan) : m_plan(plan), m_style(*plan.m_pStyle), m_kernel(MapKernel_Get()) {}

    // Maps all lines, as many at once as go together. A line that shares its place with an earlier one, or differs in
    // length, begins the next run, so that the bytes are those of one line after the other.
    void Lines_Map(const SSrcBandLine* lines, int lineCount, unsigned char* dst, int dstByteCount)
    {
        int next = 0;
        while (next < lineCount)
        {
            const SSrcBandLine* first = lines + next;
            Begin(*first);
            while (next < lineCount && Line_Add(lines[next]))
            {
                if (m_lineBitCount <= srcLineBitMax)
                {
                    KEL_PREFETCH(lines[next].m_pLine + srcAhead);
                }
                ++next;
            }
            if (m_lineCount >= m_style.m_lineRunMin)
            {
                Run_Map(first, dst, dstByteCount);
                continue;
            }
            next = std::max(next, static_cast<int>(first - lines) + 1);
            Lines_OneByOne(m_plan, first, static_cast<int>(lines + next - first), dst, dstByteCount);
        }
    }

private:
    static constexpr int planeCount = cut == Cut_Quads ? 2 : 1;
    static constexpr int columnsPerGroup = cut == Cut_Blocks ? blockCount : 1;
    static constexpr int pieceSize = 2 * transposeByteCountMax; // of one line, all its strips

    // A new run whose first line this will be; nothing has been added yet.
    void Begin(const SSrcBandLine& line)
    {
        std::fill_n(m_strips, (target == Target_Rows ? 8 : 1) * m_plan.m_frameByteCount, nullptr);
        m_lineBitCount = line.m_param.m_lineBitCount;
        m_lineCount = 0;
    }

    // False if the line cannot join those added so far, or no run at all.
    bool Line_Add(const SSrcBandLine& line)
    {
        const SSrcBandDataParam& param = line.m_param;
        if (!m_plan.HasUnit(param.m_unitIndex) || (cut != Cut_Blocks && param.m_lineBitCount != m_lineBitCount))
        {
            return false;
        }
        const unsigned char** strips = m_strips + m_plan.Strip(param.m_unitIndex);
        if (strips[0] != nullptr)
        {
            return false;
        }
        const unsigned char* strip = cut == Cut_Line ? line.m_pLine : m_pieces[m_lineCount];
        constexpr int distance = cut == Cut_Line ? 0 : cut == Cut_Blocks ? blockRoom : transposeByteCountMax;
        for (int i = 0; i < m_style.m_stripCount; ++i)
        {
            strips[i] = strip + i * distance;
        }
        ++m_lineCount;
        return true;
    }

    // The lines that were added, from `lines` on.
    void Run_Map(const SSrcBandLine* lines, unsigned char* dst, int dstByteCount)
    {
        if constexpr (target == Target_Rows)
        {
            Rows_Map(lines, dst, dstByteCount);
        }
        else
        {
            Columns_Map(lines, dst);
        }
    }

    void Rows_Map(const SSrcBandLine* lines, unsigned char* dst, int dstByteCount)
    {
        constexpr int step = (cut == Cut_Planes || cut == Cut_Quads ? 2 : 1) * transposeByteCountMax; // source bytes
        const int entrySize = m_style.m_frameCount * m_plan.m_frameByteCount;
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
            byteCount = BoardBytes_Clipped(m_lineBitCount, entrySize, dstByteCount);
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
                m_plan.Tail_Or(lines[i].m_param, lines[i].m_pLine, dst, dstByteCount);
            }
        }
    }

    void Columns_Map(const SSrcBandLine* lines, unsigned char* dst)
    {
        if constexpr (cut == Cut_Line)
        {
            Columns_Store((m_lineBitCount + 7) / 8, dst);
        }
        else if constexpr (cut == Cut_Blocks)
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
        for (int i = 0; i < m_lineCount && cut != Cut_Line; ++i)
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
                m_kernel.m_pBlocks_Cut(src, IsAscending(lines[i].m_param), piece);
                break;
            default:
                m_kernel.m_pNibbles_Expand(m_plan.m_nibbles, src, byteCount, piece);
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
        const int rowByteCount = cut == Cut_Line     ? srcByteCount
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
                m_kernel.m_pRows_Transpose(m_strips + 8 * group, cut == Cut_Line ? offset : 0, rowByteCount,
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
        const auto* const* rows = m_strips + 8 * group;
        return std::any_of(rows, rows + 8, [](const unsigned char* row) { return row != nullptr; });
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
    const SMapStyle& m_style;
    const SMapKernel& m_kernel;
    int m_lineBitCount = 0;
    int m_lineCount = 0;
    const unsigned char* m_strips[SMapPlan::stripCountMax];
    alignas(64) unsigned char m_pieces[cut == Cut_Line ? 1 : SMapPlan::stripCountMax][pieceSize]; // by line
};

template<EMapCut cut, EMapTarget target>
void Lines_MapSo(const SMapPlan& plan, const SSrcBandLine* lines, int lineCount, unsigned char* dst, int dstByteCount)
{
    CLineRun<cut, target>(plan).Lines_Map(lines, lineCount, dst, dstByteCount);
}

// One line whose blocks are columns: four neighbouring bytes of every frame.
void Blocks_Store(const SMapKernel& kernel, const SMapPlan& plan, const SSrcBandDataParam& param,
                  const unsigned char* src, unsigned char* dst)
{
    unsigned char columns[blockCount * blockRoom];
    kernel.m_pBlocks_Interleave(src, IsAscending(param), columns);
    unsigned char* out = dst + plan.Strip(param.m_unitIndex);
    for (int i = 0; i < blockByteCount; ++i)
    {
        std::memcpy(out + i * plan.m_frameByteCount, columns + blockCount * i, blockCount);
    }
}

// Both planes of one line's whole source bytes: in each a frame is a field of two neighbouring pixels, as of a map with
// 2-bit pixels.
void Planes_Or(const SMapKernel& kernel, FieldFunction Or, const SField& field, const unsigned char* src, int byteCount,
               int entrySize, unsigned char* dst, int planeDistance)
{
    constexpr int pieceSize = 4 * splitRoom; // source bytes
    unsigned char high[pieceSize / 2];
    unsigned char low[pieceSize / 2];
    for (int done = 0; done < byteCount; done += pieceSize)
    {
        const int count = std::min(pieceSize, byteCount - done);
        unsigned char* out = dst + done * entrySize;
        kernel.m_pPlanes_Split(src + done, count, high, low);
        Or(field, high, (count + 1) / 2, out, count * entrySize);
        Or(field, low, (count + 1) / 2, out + planeDistance, count * entrySize);
    }
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
    const bool bRows = plan.m_pStyle->m_target == Target_Rows;
    if (plan.m_frameByteCount > (bRows ? SMapPlan::rowBytesMax : SMapPlan::columnCountMax))
    {
        return Lines_OneByOne(plan, lines, lineCount, dst, dstByteCount);
    }
    switch (plan.m_pStyle->m_cut)
    {
    case Cut_Line:
        return bRows ? Lines_MapSo<Cut_Line, Target_Rows>(plan, lines, lineCount, dst, dstByteCount)
                     : Lines_MapSo<Cut_Line, Target_Columns>(plan, lines, lineCount, dst, dstByteCount);
    case Cut_Planes:
        return Lines_MapSo<Cut_Planes, Target_Rows>(plan, lines, lineCount, dst, dstByteCount);
    case Cut_Quads:
        return Lines_MapSo<Cut_Quads, Target_Rows>(plan, lines, lineCount, dst, dstByteCount);
    case Cut_Blocks:
        return bRows ? Lines_MapSo<Cut_Blocks, Target_Rows>(plan, lines, lineCount, dst, dstByteCount)
                     : Lines_MapSo<Cut_Blocks, Target_Columns>(plan, lines, lineCount, dst, dstByteCount);
    case Cut_Nibbles:
        return Lines_MapSo<Cut_Nibbles, Target_Columns>(plan, lines, lineCount, dst, dstByteCount);
    }
}

bool CMapEngine::Line_Map(const SMapPlan& plan, const SSrcBandDataParam& param, const unsigned char* src,
                          unsigned char* dst, int dstByteCount)
{
    if (!plan.IsThere() || !plan.HasUnit(param.m_unitIndex))
    {
        return false;
    }
    const SMapStyle& style = *plan.m_pStyle;
    const SMapKernel& kernel = MapKernel_Get();
    if (style.m_target == Target_Columns)
    {
        if (style.m_cut == Cut_Blocks)
        {
            Blocks_Store(kernel, plan, param, src, dst);
        }
        return style.m_cut == Cut_Blocks;
    }
    const int frameByteCount = plan.m_frameByteCount;
    const SFieldPattern* pattern =
        frameByteCount <= SFieldPatterns::frameByteCountMax ? style.m_pPatterns[frameByteCount] : nullptr;
    if (pattern == nullptr)
    {
        return false;
    }
    const int strip = plan.Strip(param.m_unitIndex);
    const int lowestBit = 8 - strip % 8 - style.m_stripCount;
    const SField field = {*pattern, style.ColumnsPerGroup() * (strip / 8), static_cast<unsigned>(lowestBit),
                          ((1U << style.m_stripCount) - 1) << lowestBit};
    const FieldFunction Or = kernel.m_pField_Or[style.m_fieldKind][pattern->m_groupSizeIndex];
    const int entrySize = style.m_frameCount * frameByteCount;
    if (style.m_cut == Cut_Blocks)
    {
        unsigned char columns[blockCount * blockRoom];
        kernel.m_pBlocks_Interleave(src, IsAscending(param), columns);
        Or(field, columns, sizeof(columns), dst, blockPixelCount * frameByteCount);
    }
    else if (style.m_cut == Cut_Quads)
    {
        Planes_Or(kernel, Or, field, src, param.m_lineBitCount / 8, entrySize, dst, dstByteCount / 2);
        plan.Tail_Or(param, src, dst, dstByteCount);
    }
    else
    {
        Or(field, src, (param.m_lineBitCount + 7) >> 3, dst,
           BoardBytes_Clipped(param.m_lineBitCount, entrySize, dstByteCount));
    }
    return true;
}
