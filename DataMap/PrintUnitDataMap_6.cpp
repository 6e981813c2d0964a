// The plain map with a byte column per unit: source bytes are stored as they are, one per group of columns.
#include "DataMap/PrintUnitDataMap_6.h"

#include "KelCommon/KelLog.h"
#include "Platform/Helper/StaticHelper.h"

bool CPrintUnitDataMap_6::MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                                       int /*dstByteCount*/) const
{
    const int byteCount = CStaticHelper::AlignBytesByBits(1, param.m_lineBitCount);
    unsigned char* column = dst + param.m_unitIndex;
    for (int i = 0; i < byteCount; ++i)
    {
        column[i * m_unitCount] = src[i];
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
        KEL_LOG(ESeverityLevel::Error, "failure");
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
