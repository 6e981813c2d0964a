// The factory's decision table.
#include "Host/Job/MapClass.h"

#include <array>
#include <cstddef>

namespace
{

constexpr SJobMap noMap = {};

// The map of styles 6 and 7 for data at the boards' own depth.
SJobMap PlainMap(EDataMapStyle style, int bits)
{
    return {style == EDataMapStyle::FramePerPixel ? EMapClass::Map_5 : EMapClass::Map_6, bits, bits};
}

SJobMap Map_ByPixel(const SDPOption& option, int bitsPerPixel)
{
    const bool bFramePerPixel = option.m_dataMapStyle == EDataMapStyle::FramePerPixel;
    switch (option.m_printerSupportBits)
    {
    case EPrinterSupportBits::OneBit:
        return bitsPerPixel == 1 ? PlainMap(option.m_dataMapStyle, 1) : noMap;
    case EPrinterSupportBits::TwoBit:
        return bitsPerPixel == 1 ? SJobMap{bFramePerPixel ? EMapClass::Map_2 : EMapClass::Map_7, 1, 2}
                                 : PlainMap(option.m_dataMapStyle, 2);
    case EPrinterSupportBits::Multiple:
        return {EMapClass::Map_5, bitsPerPixel, bitsPerPixel};
    }
    return noMap;
}

SJobMap Map_ByPushStyle(const SDPOption& option, int bitsPerPixel)
{
    switch (option.m_dataPushStyle)
    {
    case EDataPushStyle::ByUnit:
        return PlainMap(option.m_dataMapStyle, 1);
    case EDataPushStyle::ByPixel:
        return bitsPerPixel == 1 || bitsPerPixel == 2 ? Map_ByPixel(option, bitsPerPixel) : noMap;
    }
    return noMap;
}

} // namespace

SJobMap Job_MapClass(const SDPOption& option, int bitsPerPixel)
{
    switch (option.m_dataMapStyle)
    {
    case EDataMapStyle::Frame16:
        return {EMapClass::Map_1, 1, 1};
    case EDataMapStyle::Block:
        return {EMapClass::Map_03, 1, 1};
    case EDataMapStyle::Block13:
        return {EMapClass::Map_03_01, 1, 1};
    case EDataMapStyle::FramePerPixel:
    case EDataMapStyle::ByteInterleaved:
        return Map_ByPushStyle(option, bitsPerPixel);
    case EDataMapStyle::PlanePair:
        return {EMapClass::Map_8, 1, 1};
    }
    return noMap;
}

const char* MapClass_Name(EMapClass mapClass)
{
    static constexpr std::array names = {"none", "1", "2", "03", "03_01", "5", "6", "7", "8"};
    return names.at(static_cast<std::size_t>(mapClass));
}

bool MapClass_IsTableMap(EMapClass mapClass)
{
    return mapClass == EMapClass::Map_1 || mapClass == EMapClass::Map_2 || mapClass == EMapClass::Map_5;
}
