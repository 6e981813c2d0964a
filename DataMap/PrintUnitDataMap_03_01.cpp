// Deals a 400-bit line to four board units of a byte-interleaved board line, and the three bit modes beside that.
#include "DataMap/PrintUnitDataMap_03_01.h"

#include "DataMap/Plan/MapLine.h"
#include "KelCommon/KelLog.h"
#include "Platform/Helper/BitOperator.h"

#include <algorithm>

namespace
{
constexpr int nibbleBitCount = 4;

int Chunk_BoardUnit(const SSrcBandDataParam& param, int chunk)
{
    const int place = param.m_unitDirection == unitDirection_Ascending ? chunk : blockCount - 1 - chunk;
    return param.m_unitIndex * blockCount + place;
}
} // namespace

CPrintUnitDataMap_03_01::CPrintUnitDataMap_03_01() = default;

CPrintUnitDataMap_03_01::CPrintUnitDataMap_03_01(const CPrintUnitDataMap_03_01& other) = default;

CPrintUnitDataMap_03_01& CPrintUnitDataMap_03_01::operator=(const CPrintUnitDataMap_03_01& other) = default;

CPrintUnitDataMap_03_01::~CPrintUnitDataMap_03_01() = default;

bool CPrintUnitDataMap_03_01::MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                                           int dstByteCount) const
{
    if (CMapLine::Map<Cut_BlockColumns>(*this, param, src, dst, dstByteCount))
    {
        return true;
    }
    switch (m_bitMode)
    {
    case bitMode200:
        MapData_Line_Bit_200(param, src, dst, dstByteCount);
        break;
    case bitMode400:
        MapData_Line_Bit_400(param, src, dst, dstByteCount);
        break;
    default:
        MapData_Line_Normal(param, src, dst, dstByteCount);
        break;
    }
    return true;
}

int CPrintUnitDataMap_03_01::SrcPixelCount_2_BoardBitCount(int /*srcPixelCount*/) const
{
    switch (m_bitMode)
    {
    case bitMode4:
        return m_dataFrameWidth * blockPixelCount;
    case bitMode8:
        return m_dataFrameWidth * blockByteCount * 8;
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
    return new unsigned char[blockByteCount];
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
    for (int bit = 0; bit < blockPixelCount; bit += nibbleBitCount)
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
        std::fill_n(gathered, blockByteCount, static_cast<unsigned char>(0));
        if (!CBitOperator::BitCopy(src, srcBitOffset, gathered, 0, bitCount, blockByteCount))
        {
            KEL_LOG(kelSeverity_Failure, "failure");
            return false;
        }
        chunk = gathered;
    }
    for (int k = 0; k < blockByteCount; ++k)
    {
        dst[unitIndex + k * m_dataFrameWidth] = chunk[k];
    }
    return true;
}

bool CPrintUnitDataMap_03_01::MapData_Line_Normal(const SSrcBandDataParam& param, const unsigned char* src,
                                                  unsigned char* dst, int dstByteCount) const
{
    for (int chunk = 0; chunk < blockCount; ++chunk)
    {
        if (!MapBandData_Buffer(Chunk_BoardUnit(param, chunk), src, chunk * blockPixelCount, blockPixelCount, dst,
                                dstByteCount, param.m_customParam))
        {
            KEL_LOG(kelSeverity_Failure, "failure");
            return false;
        }
    }
    return true;
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
