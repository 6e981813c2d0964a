// Lays the four blocks of a 400-pixel line over each other, each at its own bit position of the same frames.
#include "DataMap/PrintUnitDataMap_03.h"

#include "DataMap/OrKernel.h"
#include "DataMap/Plan/MapLine.h"
#include "KelCommon/KelLog.h"
#include "Platform/Helper/BitOperator.h"

namespace
{
// The frame position of one block: the byte of the group and block, and in it the bit of the unit.
int Block_Row(const SSrcBandDataParam& param, int block)
{
    const int group = param.m_unitIndex / 8;
    const int bit = param.m_unitIndex % 8;
    const int place = param.m_unitDirection == unitDirection_Ascending ? block : blockCount - 1 - block;
    return bit + 8 * (blockCount * group + place);
}
} // namespace

CPrintUnitDataMap_03::CPrintUnitDataMap_03() = default;

CPrintUnitDataMap_03::CPrintUnitDataMap_03(const CPrintUnitDataMap_03& other) = default;

CPrintUnitDataMap_03& CPrintUnitDataMap_03::operator=(const CPrintUnitDataMap_03& other) = default;

CPrintUnitDataMap_03::~CPrintUnitDataMap_03() = default;

bool CPrintUnitDataMap_03::MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                                        int dstByteCount) const
{
    if (CMapLine::Map<Cut_Blocks>(*this, param, src, dst, dstByteCount))
    {
        return true;
    }
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
