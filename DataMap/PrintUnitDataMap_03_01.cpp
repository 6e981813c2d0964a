// Deals a 400-bit line to four board units of a byte-interleaved board line, and the three bit modes beside that.
#include "DataMap/PrintUnitDataMap_03_01.h"

#include "DataMap/BlockLine.h"
#include "DataMap/ColumnPass.h"
#include "DataMap/LineRuns.h"
#include "KelCommon/KelLog.h"
#include "Platform/Helper/BitOperator.h"

#include <algorithm>
#include <cstring>
#include <typeinfo>

namespace
{
// The head geometry of this style.
constexpr int chunkCount = SBlockLine::blockCount;
constexpr int chunkBitCount = SBlockLine::blockPixelCount;
constexpr int chunkByteCount = SBlockLine::blockByteCount;
constexpr int nibbleBitCount = 4;

// Values of m_bitMode.
constexpr int bitMode4 = 1;
constexpr int bitMode8 = 2;
constexpr int bitMode200 = 3;
constexpr int bitMode400 = 4;

int Chunk_BoardUnit(const SSrcBandDataParam& param, int chunk)
{
    const int place = param.m_unitDirection == unitDirection_Ascending ? chunk : chunkCount - 1 - chunk;
    return param.m_unitIndex * chunkCount + place;
}

// The lines of one run: four columns each, cut out beforehand.
class CLinePass
{
public:
    static constexpr int lineRunMin = 3;

    explicit CLinePass(int columnCount) : m_kernel(MapKernel_Get()), m_columnCount(columnCount), m_columns(columnCount)
    {
    }

    void Begin(const SSrcBandLine& /*line*/)
    {
        m_columns.Clear();
        m_lineCount = 0;
    }

    bool Line_Add(const SSrcBandLine& line)
    {
        const SSrcBandDataParam& param = line.m_param;
        if (param.m_unitIndex < 0 || chunkCount * (param.m_unitIndex + 1) > m_columnCount ||
            m_columns.HasColumn(chunkCount * param.m_unitIndex))
        {
            return false;
        }
        SBlockLine& blocks = m_lines[m_lineCount];
        blocks.Cut(m_kernel, line.m_pLine, param.m_unitDirection == unitDirection_Ascending);
        for (int place = 0; place < chunkCount; ++place)
        {
            m_columns.Column_Set(chunkCount * param.m_unitIndex + place, blocks.m_blocks[place]);
        }
        ++m_lineCount;
        return true;
    }

    void Run_Map(const SSrcBandLine* /*lines*/, int /*lineCount*/, unsigned char* dst, int /*dstByteCount*/) const
    {
        if (chunkCount * m_lineCount != m_columnCount)
        {
            m_columns.Columns_Store(chunkByteCount, dst);
            return;
        }
        unsigned char frames[SBlockLine::room * CColumnPass::columnCountMax];
        m_columns.Columns_Store(SBlockLine::room, frames); // the kernels prefer whole vectors
        std::memcpy(dst, frames, chunkByteCount * static_cast<std::size_t>(m_columnCount));
    }

private:
    const SMapKernel& m_kernel;
    int m_columnCount;
    int m_lineCount = 0;
    CColumnPass m_columns;
    SBlockLine m_lines[CColumnPass::columnCountMax / chunkCount];
};
} // namespace

CPrintUnitDataMap_03_01::CPrintUnitDataMap_03_01() = default;

CPrintUnitDataMap_03_01::CPrintUnitDataMap_03_01(const CPrintUnitDataMap_03_01& other) = default;

CPrintUnitDataMap_03_01& CPrintUnitDataMap_03_01::operator=(const CPrintUnitDataMap_03_01& other) = default;

CPrintUnitDataMap_03_01::~CPrintUnitDataMap_03_01() = default;

bool CPrintUnitDataMap_03_01::MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                                           int dstByteCount) const
{
    switch (m_bitMode)
    {
    case bitMode200:
        MapData_Line_Bit_200(param, src, dst, dstByteCount);
        break;
    case bitMode400:
        MapData_Line_Bit_400(param, src, dst, dstByteCount);
        break;
    case bitMode8:
        MapData_Line_Bit_8(param, src, dst);
        break;
    default:
        MapData_Line_Normal(param, src, dst, dstByteCount);
        break;
    }
    return true;
}

bool CPrintUnitDataMap_03_01::MapData_Line_AllInput(const SSrcBandLine* lines, int lineCount, unsigned char* dst,
                                                    int dstByteCount) const
{
    if (typeid(*this) != typeid(CPrintUnitDataMap_03_01) || m_bitMode != bitMode8 || m_dataFrameWidth < 0 ||
        m_dataFrameWidth > CColumnPass::columnCountMax)
    {
        return MapData_Line_OneByOne(lines, lineCount, dst, dstByteCount);
    }
    CLinePass pass(m_dataFrameWidth);
    return LineRuns_Map(pass, *this, lines, lineCount, dst, dstByteCount);
}

int CPrintUnitDataMap_03_01::SrcPixelCount_2_BoardBitCount(int /*srcPixelCount*/) const
{
    switch (m_bitMode)
    {
    case bitMode4:
        return m_dataFrameWidth * chunkBitCount;
    case bitMode8:
        return m_dataFrameWidth * chunkByteCount * 8;
    case bitMode200:
        return (m_dataFrameWidth / 2) * 200;
    case bitMode400:
        return (m_dataFrameWidth / 4) * 400;
    default:
        return 0;
    }
}

void* CPrintUnitDataMap_03_01::CustomParam_Create() const
{
    return new unsigned char[chunkByteCount];
}

void CPrintUnitDataMap_03_01::CustomParam_Release(void* customParam) const
{
    delete[] static_cast<unsigned char*>(customParam);
}

bool CPrintUnitDataMap_03_01::Init(int srcBitCount, int dataFrameWidth)
{
    if (!CPrintUnitDataMap_5::Init(srcBitCount, dataFrameWidth))
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CPrintUnitDataMap_03_01::MapBandData_Buffer(int unitIndex, const unsigned char* src, int srcBitOffset,
                                                 int bitCount, unsigned char* dst, int dstByteCount,
                                                 void* customParam) const
{
    switch (m_bitMode)
    {
    case bitMode4:
        return MapBandData_Buffer_Bit_4(unitIndex, src, srcBitOffset, bitCount, dst, dstByteCount);
    case bitMode8:
        return MapBandData_Buffer_Bit_8(unitIndex, src, srcBitOffset, bitCount, dst, dstByteCount, customParam);
    default:
        return false;
    }
}

bool CPrintUnitDataMap_03_01::MapBandData_Buffer_Bit_4(int unitIndex, const unsigned char* src, int srcBitOffset,
                                                       int /*bitCount*/, unsigned char* dst, int dstByteCount) const
{
    int dstBit = unitIndex * nibbleBitCount;
    for (int bit = 0; bit < chunkBitCount; bit += nibbleBitCount)
    {
        CBitOperator::BitCopy(src, srcBitOffset + bit, dst, dstBit, nibbleBitCount, dstByteCount);
        dstBit += m_dataFrameWidth * nibbleBitCount;
    }
    return true;
}

bool CPrintUnitDataMap_03_01::MapBandData_Buffer_Bit_8(int unitIndex, const unsigned char* src, int srcBitOffset,
                                                       int bitCount, unsigned char* dst, int /*dstByteCount*/,
                                                       void* customParam) const
{
    const unsigned char* chunk = nullptr;
    if (srcBitOffset % 8 == 0)
    {
        chunk = src + srcBitOffset / 8;
    }
    else
    {
        auto* gathered = static_cast<unsigned char*>(customParam);
        std::fill_n(gathered, chunkByteCount, static_cast<unsigned char>(0));
        if (!CBitOperator::BitCopy(src, srcBitOffset, gathered, 0, bitCount, chunkByteCount))
        {
            KEL_LOG(kelSeverity_Failure, "failure");
            return false;
        }
        chunk = gathered;
    }
    for (int k = 0; k < chunkByteCount; ++k)
    {
        dst[unitIndex + k * m_dataFrameWidth] = chunk[k];
    }
    return true;
}

bool CPrintUnitDataMap_03_01::MapData_Line_Normal(const SSrcBandDataParam& param, const unsigned char* src,
                                                  unsigned char* dst, int dstByteCount) const
{
    for (int chunk = 0; chunk < chunkCount; ++chunk)
    {
        if (!MapBandData_Buffer(Chunk_BoardUnit(param, chunk), src, chunk * chunkBitCount, chunkBitCount, dst,
                                dstByteCount, param.m_customParam))
        {
            KEL_LOG(kelSeverity_Failure, "failure");
            return false;
        }
    }
    return true;
}

// What MapData_Line_Normal does in this mode, four neighbouring board bytes at a time.
void CPrintUnitDataMap_03_01::MapData_Line_Bit_8(const SSrcBandDataParam& param, const unsigned char* src,
                                                 unsigned char* dst) const
{
    SBlockColumns side;
    side.Cut(MapKernel_Get(), src, param.m_unitDirection == unitDirection_Ascending);
    unsigned char* out = dst + chunkCount * param.m_unitIndex;
    const int frameByteCount = m_dataFrameWidth;
    for (int k = 0; k < chunkByteCount; ++k)
    {
        std::memcpy(out + k * frameByteCount, side.m_bytes + chunkCount * k, chunkCount);
    }
}

// Both halves go to the same place, in either direction: the second half of the source line is what stays.
bool CPrintUnitDataMap_03_01::MapData_Line_Bit_200(const SSrcBandDataParam& param, const unsigned char* src,
                                                   unsigned char* dst, int /*dstByteCount*/) const
{
    const int halfBitCount = param.m_lineBitCount / 2;
    const int halfByteCount = halfBitCount / 8;
    for (int half = 0; half < 2; ++half)
    {
        std::copy_n(src + half * halfBitCount / 8, halfByteCount, dst + param.m_unitIndex * halfByteCount);
    }
    return true;
}

bool CPrintUnitDataMap_03_01::MapData_Line_Bit_400(const SSrcBandDataParam& param, const unsigned char* src,
                                                   unsigned char* dst, int /*dstByteCount*/) const
{
    const int byteCount = param.m_lineBitCount / 8;
    std::copy_n(src, byteCount, dst + param.m_unitIndex * byteCount);
    return true;
}
