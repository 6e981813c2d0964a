// The geometry of a data map and the generic line mapping: one table look-up and one OR per source byte.
#include "DataMap/PrintUnitDataMap_Base.h"

#include "DataMap/OrKernel.h"
#include "DataMap/Plan/MapLine.h"
#include "KelCommon/KelLog.h"

#include <algorithm>
#include <cstddef>

CPrintUnitDataMap_Base::~CPrintUnitDataMap_Base()
{
    delete[] m_mapData;
    m_mapData = nullptr;
}

CPrintUnitDataMap_Base::CPrintUnitDataMap_Base() = default;

CPrintUnitDataMap_Base::CPrintUnitDataMap_Base(const CPrintUnitDataMap_Base& other) = default;

CPrintUnitDataMap_Base& CPrintUnitDataMap_Base::operator=(const CPrintUnitDataMap_Base& other) = default;

bool CPrintUnitDataMap_Base::Init(int srcBitCount, int dstBitCount, int dataFrameWidth)
{
    m_srcBitCount = srcBitCount;
    if (!Init_SrcBitMask())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    m_dstBitCount = dstBitCount;
    m_dataFrameWidth = dataFrameWidth;
    m_unitCount = dataFrameWidth / dstBitCount;
    Init_MapDataSizeOfByte();
    return true;
}

int CPrintUnitDataMap_Base::MapDataSizeOfByte() const
{
    return m_mapDataSizeOfByte;
}

const unsigned char* CPrintUnitDataMap_Base::ByteMapData_Buffer(int unitIndex, int byteValue) const
{
    return m_mapData + unitIndex * m_unitMapDataSize + byteValue * m_mapDataSizeOfByte;
}

bool CPrintUnitDataMap_Base::MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                                          int dstByteCount) const
{
    if (!CMapLine::Map<Cut_Row>(*this, param, src, dst, dstByteCount) &&
        !CMapLine::Map<Cut_Planes>(*this, param, src, dst, dstByteCount))
    {
        MapData_Line_Table(param, src, dst, dstByteCount);
    }
    return true;
}

void CPrintUnitDataMap_Base::MapData_Line_Table(const SSrcBandDataParam& param, const unsigned char* src,
                                                unsigned char* dst, int dstByteCount) const
{
    const int fullByteCount = param.m_lineBitCount / 8;
    for (int i = 0; i < fullByteCount; ++i)
    {
        const unsigned char* entry = ByteMapData_Buffer(param.m_unitIndex, src[i]);
        COrKernel::Or_Bytes(dst + i * m_mapDataSizeOfByte, entry, m_mapDataSizeOfByte);
    }
    MapData_Tail(param, m_mapDataSizeOfByte, src, dst, dstByteCount);
}

void CPrintUnitDataMap_Base::MapData_Tail(const SSrcBandDataParam& param, int entrySize, const unsigned char* src,
                                          unsigned char* dst, int dstByteCount) const
{
    if (param.m_lineBitCount % 8 < 1)
    {
        return;
    }
    const int fullByteCount = param.m_lineBitCount / 8;
    const unsigned char* entry = ByteMapData_Buffer(param.m_unitIndex, src[fullByteCount]);
    if (entry + entrySize == m_mapData)
    {
        return; // before the table: style 8 has such an answer, of which nothing is defined
    }
    const int offset = fullByteCount * entrySize;
    COrKernel::Or_Bytes(dst + offset, entry, std::min(dstByteCount - offset, entrySize));
}

int CPrintUnitDataMap_Base::SrcPixelCount_2_BoardBitCount(int srcPixelCount) const
{
    return m_dataFrameWidth * srcPixelCount;
}

void* CPrintUnitDataMap_Base::CustomParam_Create() const
{
    return nullptr;
}

void CPrintUnitDataMap_Base::CustomParam_Release(void* /*customParam*/) const {}

void CPrintUnitDataMap_Base::Init_MapDataSizeOfByte()
{
    m_mapDataSizeOfByte = ((8 / m_srcBitCount) * m_dataFrameWidth) / 8;
}

bool CPrintUnitDataMap_Base::Init_SrcBitMask()
{
    m_srcBitMask = 0;
    if (m_srcBitCount == 1)
    {
        m_srcBitMask = 1;
    }
    else if (m_srcBitCount == 2)
    {
        m_srcBitMask = 3;
    }
    return m_srcBitMask != 0;
}

void CPrintUnitDataMap_Base::Geometry_Set(int dstBitCount, int dataFrameWidth, int unitCount)
{
    m_srcBitCount = 1;
    m_srcBitMask = 1;
    m_dstBitCount = dstBitCount;
    m_dataFrameWidth = dataFrameWidth;
    m_unitCount = unitCount;
}

void CPrintUnitDataMap_Base::MapData_Allocate(int unitCount, int entryCount)
{
    m_unitMapDataSize = entryCount * m_mapDataSizeOfByte;
    m_mapDataSize = unitCount * m_unitMapDataSize;
    delete[] m_mapData;
    // One byte more: where entries are no whole bytes, because a frame is not, the last one reaches into it.
    m_mapData = new unsigned char[static_cast<std::size_t>(m_mapDataSize) + 1]();
}

unsigned char* CPrintUnitDataMap_Base::MapData_Entry(int unitIndex, int entryIndex)
{
    return m_mapData + unitIndex * m_unitMapDataSize + entryIndex * m_mapDataSizeOfByte;
}

int CPrintUnitDataMap_Base::SrcBitCount() const
{
    return m_srcBitCount;
}

int CPrintUnitDataMap_Base::DstBitCount() const
{
    return m_dstBitCount;
}

int CPrintUnitDataMap_Base::DataFrameWidth() const
{
    return m_dataFrameWidth;
}

const unsigned char* CPrintUnitDataMap_Base::AllMapData_Get() const
{
    return m_mapData;
}

void CPrintUnitDataMap_Base::SrcBitCount_Set(int srcBitCount)
{
    m_srcBitCount = srcBitCount;
}

int CPrintUnitDataMap_Base::UnitCount() const
{
    return m_unitCount;
}

int CPrintUnitDataMap_Base::SrcBitMask_Get() const
{
    return m_srcBitMask;
}

int CPrintUnitDataMap_Base::DstBitMask_Get() const
{
    return m_dstBitCount;
}
