// The plain map with a byte column per unit: source bytes are stored as they are, one per group of columns.
#include "DataMap/PrintUnitDataMap_6.h"

#include "KelCommon/KelLog.h"
#include "Platform/Helper/StaticHelper.h"

CPrintUnitDataMap_6::CPrintUnitDataMap_6() = default;

CPrintUnitDataMap_6::CPrintUnitDataMap_6(const CPrintUnitDataMap_6& other) = default;

CPrintUnitDataMap_6& CPrintUnitDataMap_6::operator=(const CPrintUnitDataMap_6& other) = default;

CPrintUnitDataMap_6::~CPrintUnitDataMap_6() = default;

bool CPrintUnitDataMap_6::MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                                       int /*dstByteCount*/) const
{
    const int byteCount = CStaticHelper::AlignBytesByBits(1, param.m_lineBitCount);
    const int columnCount = m_unitCount; // the stores below might be to members, for all that the compiler knows
    unsigned char* out = dst + param.m_unitIndex;
    int i = 0;
    for (; byteCount - i >= 4; i += 4)
    {
        out[0] = src[i];
        out[columnCount] = src[i + 1];
        out[2 * columnCount] = src[i + 2];
        out[3 * columnCount] = src[i + 3];
        out += 4 * columnCount;
    }
    for (; i < byteCount; ++i)
    {
        *out = src[i];
        out += columnCount;
    }
    return true;
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
