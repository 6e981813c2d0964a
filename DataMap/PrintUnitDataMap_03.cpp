// Lays the four blocks of a 400-pixel line over each other, each at its own bit position of the same frames.
#include "DataMap/PrintUnitDataMap_03.h"

#include "DataMap/BlockLine.h"
#include "DataMap/FramePass.h"
#include "DataMap/LineRuns.h"
#include "DataMap/MapKernelInUse.h"
#include "DataMap/OrKernel.h"
#include "KelCommon/KelLog.h"
#include "Platform/Helper/BitOperator.h"

#include <algorithm>
#include <typeinfo>

namespace
{
// The head geometry of this style.
constexpr int blockCount = SBlockLine::blockCount;
constexpr int blockPixelCount = SBlockLine::blockPixelCount;

// The frame position of one block: the byte of the group and block, and in it the bit of the unit.
int Block_Row(const SSrcBandDataParam& param, int block)
{
    const int group = param.m_unitIndex / 8;
    const int bit = param.m_unitIndex % 8;
    const int place = param.m_unitDirection == unitDirection_Ascending ? block : blockCount - 1 - block;
    return bit + 8 * (blockCount * group + place);
}

// Whether all four rows of a unit lie in a frame of `frameByteCount` bytes.
bool Frame_HasUnit(int frameByteCount, int unitIndex)
{
    return unitIndex >= 0 && blockCount * (unitIndex / 8 + 1) <= frameByteCount;
}

bool IsAscending(const SSrcBandDataParam& param)
{
    return param.m_unitDirection == unitDirection_Ascending;
}

// The lines of one run. Eight units of a group are transposed at once, all four blocks of them: a block's frames are
// then one byte column of the board line.
class CLinePass
{
public:
    static constexpr int lineRunMin = 3;

    explicit CLinePass(int frameByteCount) : m_kernel(MapKernel_Get()), m_frameByteCount(frameByteCount) {}

    void Begin(const SSrcBandLine& /*line*/)
    {
        std::fill_n(m_rows, 8 * (m_frameByteCount / blockCount), nullptr);
        m_lineCount = 0;
    }

    bool Line_Add(const SSrcBandLine& line)
    {
        const SSrcBandDataParam& param = line.m_param;
        if (!Frame_HasUnit(m_frameByteCount, param.m_unitIndex) || m_rows[param.m_unitIndex] != nullptr)
        {
            return false;
        }
        SBlockLine& blocks = m_lines[m_lineCount];
        blocks.Cut(m_kernel, line.m_pLine, IsAscending(param));
        m_rows[param.m_unitIndex] = blocks.m_blocks[0];
        ++m_lineCount;
        return true;
    }

    void Run_Map(const SSrcBandLine* /*lines*/, int /*lineCount*/, unsigned char* dst, int /*dstByteCount*/) const
    {
        static_assert(sizeof(SBlockLine) == transposeByteCountMax);
        constexpr int blockFrameCount = 8 * SBlockLine::room;
        alignas(64) unsigned char tiles[CFramePass::frameByteCountMax / blockCount][transposeRoom];
        const unsigned char* columns[CFramePass::frameByteCountMax];
        for (int group = 0; group < m_frameByteCount / blockCount; ++group)
        {
            m_kernel.m_pRows_Transpose(m_rows + 8 * group, 0, transposeByteCountMax, false, tiles[group]);
            for (int place = 0; place < blockCount; ++place)
            {
                columns[blockCount * group + place] = tiles[group] + place * blockFrameCount;
            }
        }
        for (int column = m_frameByteCount / blockCount * blockCount; column < m_frameByteCount; ++column)
        {
            columns[column] = CFramePass::zeroColumn;
        }
        m_kernel.m_pColumns_Or(columns, m_frameByteCount, blockPixelCount, dst);
    }

private:
    const SMapKernel& m_kernel;
    int m_frameByteCount;
    int m_lineCount = 0;
    const unsigned char* m_rows[8 * CFramePass::frameByteCountMax / blockCount]; // by unit
    SBlockLine m_lines[8 * CFramePass::frameByteCountMax / blockCount];
};
} // namespace

CPrintUnitDataMap_03::CPrintUnitDataMap_03() = default;

CPrintUnitDataMap_03::CPrintUnitDataMap_03(const CPrintUnitDataMap_03& other) = default;

CPrintUnitDataMap_03& CPrintUnitDataMap_03::operator=(const CPrintUnitDataMap_03& other) = default;

CPrintUnitDataMap_03::~CPrintUnitDataMap_03() = default;

bool CPrintUnitDataMap_03::MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                                        int dstByteCount) const
{
    const SMapKernel& kernel = MapKernel_Get();
    const int frameByteCount = m_dataFrameWidth / 8;
    if (kernel.m_pField_Or != nullptr && HasOwnTable() && Frame_HasUnit(frameByteCount, param.m_unitIndex))
    {
        if (const SFieldPattern* pattern = CFieldPattern::Block_Get(frameByteCount))
        {
            SBlockColumns side;
            side.Cut(kernel, src, IsAscending(param));
            const unsigned bit = 7 - static_cast<unsigned>(param.m_unitIndex) % 8;
            kernel.m_pField_Or->m_functions[Field_Block][pattern->m_groupSizeIndex](
                pattern->Begin(blockCount * (param.m_unitIndex / 8)), bit, 1U << bit, side.m_bytes, sizeof(side), dst,
                blockPixelCount * frameByteCount);
            return true;
        }
    }
    return MapData_Line_Table(param, src, dst, dstByteCount);
}

bool CPrintUnitDataMap_03::MapData_Line_AllInput(const SSrcBandLine* lines, int lineCount, unsigned char* dst,
                                                 int dstByteCount) const
{
    const int frameByteCount = m_dataFrameWidth / 8;
    if (!HasOwnTable() || frameByteCount > CFramePass::frameByteCountMax)
    {
        return MapData_Line_OneByOne(lines, lineCount, dst, dstByteCount);
    }
    CLinePass pass(frameByteCount);
    return LineRuns_Map(pass, *this, lines, lineCount, dst, dstByteCount);
}

bool CPrintUnitDataMap_03::HasOwnTable() const
{
    return typeid(*this) == typeid(CPrintUnitDataMap_03) && m_srcBitCount == 1 && m_dstBitCount == 1 &&
           m_unitCount == m_dataFrameWidth && m_mapDataSizeOfByte == m_dataFrameWidth &&
           IsRegular(m_dataFrameWidth / 8, 256, m_unitCount);
}

bool CPrintUnitDataMap_03::MapData_Line_Table(const SSrcBandDataParam& param, const unsigned char* src,
                                              unsigned char* dst, int dstByteCount) const
{
    for (int block = 0; block < blockCount; ++block)
    {
        if (!MapBandData_Buffer(Block_Row(param, block), src, block * blockPixelCount, blockPixelCount, dst,
                                dstByteCount))
        {
            KEL_LOG(kelSeverity_Failure, "failure");
            return false;
        }
    }
    return true;
}

int CPrintUnitDataMap_03::SrcPixelCount_2_BoardBitCount(int srcPixelCount) const
{
    return (srcPixelCount / blockCount) * m_dataFrameWidth;
}

bool CPrintUnitDataMap_03::MapBandData_Buffer(int row, const unsigned char* src, int startPixel, int pixelCount,
                                              unsigned char* dst, int dstByteCount) const
{
    if (!MapBandData_Buffer_1Bit(row, src, startPixel, pixelCount, dst, dstByteCount))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CPrintUnitDataMap_03::MapBandData_Buffer_1Bit(int row, const unsigned char* src, int startPixel, int pixelCount,
                                                   unsigned char* dst, int /*dstByteCount*/) const
{
    int pixelsDone = 0;
    const int skipped = startPixel % 8;
    if (skipped >= 1)
    {
        // The block begins inside a source byte: leave out the frames of the pixels before it.
        const unsigned char* entry = ByteMapData_Buffer(row, src[startPixel / 8]);
        const int byteCount = m_dataFrameWidth * (8 - skipped) / 8;
        COrKernel::Or_Bytes(dst, entry + m_dataFrameWidth * skipped / 8, byteCount);
        dst += byteCount;
        pixelsDone = 8 - skipped;
    }
    const unsigned char* next = src + (startPixel + pixelsDone) / 8;
    const int remaining = pixelCount - pixelsDone;
    const int entrySize = MapDataSizeOfByte();
    for (int i = 0; i < remaining / 8; ++i)
    {
        COrKernel::Or_Bytes(dst, ByteMapData_Buffer(row, *next), entrySize);
        dst += entrySize;
        ++next;
    }
    const int tail = remaining % 8;
    if (tail >= 1)
    {
        COrKernel::Or_Bytes(dst, ByteMapData_Buffer(row, *next), entrySize * tail / 8);
    }
    return true;
}

bool CPrintUnitDataMap_03::MapBandData_Buffer_4Bit(int row, const unsigned char* src, int startPixel, int pixelCount,
                                                   unsigned char* dst, int dstByteCount) const
{
    for (int i = 0; i < pixelCount; ++i)
    {
        if (!CBitOperator::BitCopy(src, startPixel + i, dst, row + 64 * i, 1, dstByteCount))
        {
            KEL_LOG(kelSeverity_Failure, "failure");
            return false;
        }
    }
    return true;
}
