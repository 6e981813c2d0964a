// The plain map with a byte column per unit: source bytes are stored as they are, one per group of columns.
#include "DataMap/PrintUnitDataMap_6.h"

#include "DataMap/ColumnPass.h"
#include "DataMap/LineRuns.h"
#include "KelCommon/KelLog.h"
#include "Platform/Helper/StaticHelper.h"

#include <typeinfo>

namespace
{
// The lines of one run: columns of the same length, no two of them the same.
class CLinePass
{
public:
    static constexpr int lineRunMin = 5;

    explicit CLinePass(int columnCount) : m_columnCount(columnCount), m_columns(columnCount) {}

    void Begin(const SSrcBandLine& line)
    {
        m_columns.Clear();
        m_lineBitCount = line.m_param.m_lineBitCount;
    }

    bool Line_Add(const SSrcBandLine& line)
    {
        const int column = line.m_param.m_unitIndex;
        if (static_cast<unsigned>(column) >= static_cast<unsigned>(m_columnCount) || m_columns.HasColumn(column) ||
            line.m_param.m_lineBitCount != m_lineBitCount)
        {
            return false;
        }
        m_columns.Column_Set(column, line.m_pLine);
        return true;
    }

    void Run_Map(const SSrcBandLine* /*lines*/, int /*lineCount*/, unsigned char* dst, int /*dstByteCount*/) const
    {
        m_columns.Columns_Store(CStaticHelper::AlignBytesByBits(1, m_lineBitCount), dst);
    }

private:
    int m_columnCount;
    int m_lineBitCount = 0;
    CColumnPass m_columns;
};
} // namespace

CPrintUnitDataMap_6::CPrintUnitDataMap_6() = default;

CPrintUnitDataMap_6::CPrintUnitDataMap_6(const CPrintUnitDataMap_6& other) = default;

CPrintUnitDataMap_6& CPrintUnitDataMap_6::operator=(const CPrintUnitDataMap_6& other) = default;

CPrintUnitDataMap_6::~CPrintUnitDataMap_6() = default;

bool CPrintUnitDataMap_6::MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                                       int /*dstByteCount*/) const
{
    const int byteCount = CStaticHelper::AlignBytesByBits(1, param.m_lineBitCount);
    CColumnPass::Column_Store(src, byteCount, dst + param.m_unitIndex, m_unitCount);
    return true;
}

bool CPrintUnitDataMap_6::MapData_Line_AllInput(const SSrcBandLine* lines, int lineCount, unsigned char* dst,
                                                int dstByteCount) const
{
    if (typeid(*this) != typeid(CPrintUnitDataMap_6) || m_unitCount < 0 || m_unitCount > CColumnPass::columnCountMax)
    {
        return MapData_Line_OneByOne(lines, lineCount, dst, dstByteCount);
    }
    CLinePass pass(m_unitCount);
    return LineRuns_Map(pass, *this, lines, lineCount, dst, dstByteCount);
}

int CPrintUnitDataMap_6::SrcPixelCount_2_BoardBitCount(int srcPixelCount) const
{
    return CStaticHelper::AlignBytesByBits(1, m_srcBitCount * srcPixelCount) * m_unitCount * 8;
}

bool CPrintUnitDataMap_6::Init(int srcBitCount, int dataFrameWidth)
{
    m_srcBitCount = srcBitCount;
    if (!Init_SrcBitMask())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    m_dstBitCount = srcBitCount;
    m_dataFrameWidth = dataFrameWidth;
    m_unitCount = dataFrameWidth; // byte columns, not bits
    Init_MapDataSizeOfByte();
    return Init_MapDataBuffer();
}

void CPrintUnitDataMap_6::Init_MapDataSizeOfByte()
{
    m_mapDataSizeOfByte = 1;
}

bool CPrintUnitDataMap_6::Init_MapDataBuffer()
{
    return true;
}
