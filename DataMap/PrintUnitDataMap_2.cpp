// Builds the table of the dot-size map with a frame per pixel: each set pixel becomes a 2-bit drop-size code.
#include "DataMap/PrintUnitDataMap_2.h"

#include "DataMap/BitPosition.h"
#include "DataMap/FrameLayout.h"
#include "DataMap/FramePass.h"
#include "DataMap/PlatformWord.h"
#include "KelCommon/KelLog.h"

#include <typeinfo>

namespace
{
// Drop-size codes, most significant bit first.
constexpr int codeSmall = 0b01;
constexpr int codeMiddle = 0b10;
constexpr int codeBig = 0b11;

// 0 if there is no such drop size.
constexpr int Code_Get(int mode)
{
    switch (mode)
    {
    case DotSize_Small:
        return codeSmall;
    case DotSize_Middle:
        return codeMiddle;
    case DotSize_Big:
        return codeBig;
    default:
        return 0;
    }
}

void Code_Set(unsigned char* entry, int position, int code)
{
    if ((code & 0b10) != 0)
    {
        BitPosition_Set(entry, position);
    }
    if ((code & 0b01) != 0)
    {
        BitPosition_Set(entry, position + 1);
    }
}
} // namespace

CPrintUnitDataMap_2::CPrintUnitDataMap_2() = default;

CPrintUnitDataMap_2::CPrintUnitDataMap_2(const CPrintUnitDataMap_2& other) = default;

CPrintUnitDataMap_2& CPrintUnitDataMap_2::operator=(const CPrintUnitDataMap_2& other) = default;

CPrintUnitDataMap_2::~CPrintUnitDataMap_2() = default;

bool CPrintUnitDataMap_2::Init(EDotSizeMode dotSizeMode, int dataFrameWidth)
{
    m_srcBitCount = 1;
    m_srcBitMask = 1;
    m_dstBitCount = 2;
    m_dataFrameWidth = dataFrameWidth;
    m_unitCount = dataFrameWidth / 2;
    Init_MapDataSizeOfByte();
    m_dotSizeMode = static_cast<std::int32_t>(dotSizeMode);
    m_mapDataSizeOfByte = (8 / m_srcBitCount) * m_dataFrameWidth / 8;
    m_unitMapDataSize = 256 * m_mapDataSizeOfByte;
    m_mapDataSize = m_unitCount * m_unitMapDataSize;
    MapData_Allocate();
    if (!MapData())
    {
        KEL_LOG(kelSeverity_Failure, "failure");
        return false;
    }
    return true;
}

bool CPrintUnitDataMap_2::FrameLayout_Get(SFrameLayout& layout) const
{
    const int frameByteCount = m_dataFrameWidth >> 3;
    // The size stands for all that Init has set: calling the base's Init on top of it leaves a table that is not meant.
    if (typeid(*this) != typeid(CPrintUnitDataMap_2) || m_srcBitCount != 1 || m_dstBitCount != 2 ||
        m_unitMapDataSize <= 0 || m_unitMapDataSize != 2048 * frameByteCount)
    {
        return false;
    }
    layout = {frameByteCount, m_unitCount, 1, 2, Code_Get(m_dotSizeMode), false};
    return layout.m_fieldBits != 0;
}

bool CPrintUnitDataMap_2::MapData_Line_AllInput(const SSrcBandLine* lines, int lineCount, unsigned char* dst,
                                                int dstByteCount) const
{
    SFrameLayout layout;
    if (FrameLayout_Get(layout) && layout.m_frameByteCount <= CFramePass::frameByteCountMax)
    {
        return CFramePass::Lines_Map(*this, layout, lines, lineCount, dst, dstByteCount);
    }
    return MapData_Line_OneByOne(lines, lineCount, dst, dstByteCount);
}

bool CPrintUnitDataMap_2::MapData_Line_Direct(const SSrcBandDataParam& param, const unsigned char* src,
                                              unsigned char* dst, int dstByteCount) const
{
    SFrameLayout layout;
    return FrameLayout_Get(layout) && layout.Line_Map(param, src, dst, dstByteCount);
}

bool CPrintUnitDataMap_2::MapData()
{
    switch (m_dotSizeMode)
    {
    case DotSize_Small:
        return MapData_Small();
    case DotSize_Middle:
        return MapData_Middle();
    case DotSize_Big:
        return MapData_Big();
    default:
        return false;
    }
}

bool CPrintUnitDataMap_2::MapData_Small()
{
    MapData_Fill(codeSmall);
    return true;
}

bool CPrintUnitDataMap_2::MapData_Middle()
{
    MapData_Fill(codeMiddle);
    return true;
}

bool CPrintUnitDataMap_2::MapData_Big()
{
    MapData_Fill(codeBig);
    return true;
}

void CPrintUnitDataMap_2::MapData_Fill(int code)
{
    for (int unit = 0; unit < m_unitCount; ++unit)
    {
        for (int value = 0; value < 256; ++value)
        {
            unsigned char* entry = MapData_Entry(unit, value);
            for (int pixel = 0; pixel < 8; ++pixel)
            {
                if ((value & BitPosition_Mask(pixel)) != 0)
                {
                    Code_Set(entry, pixel * m_dataFrameWidth + 2 * unit, code);
                }
            }
        }
    }
}
