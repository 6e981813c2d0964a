// The factory's decision table, and the table of the map classes.
#include "Host/Job/MapClass.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace
{

constexpr SJobMap noMap = {};
constexpr std::int64_t bitsPerByte = 8;

// By the numbers of EMapClass.
constexpr std::array mapClasses = {
    SMapClass{},
    SMapClass{
        .m_class = EMapClass::Map_1, .m_pName = "1", .m_bTableMap = true, .m_widthOnly = 16, .m_nozzlesPerGroup = 2},
    SMapClass{
        .m_class = EMapClass::Map_2, .m_pName = "2", .m_bTableMap = true, .m_widthMultiple = 8, .m_bDotSize = true},
    SMapClass{.m_class = EMapClass::Map_03,
              .m_pName = "03",
              .m_widthMultiple = 32,
              .m_nozzlesOnly = 400,
              .m_widthPerGroup = 32,
              .m_unitsPerGroup = 8,
              .m_frameRule = EFrameRule::PerBlock,
              .m_bDirected = true},
    SMapClass{.m_class = EMapClass::Map_03_01,
              .m_pName = "03_01",
              .m_frameUnit = EFrameUnit::ByteColumns,
              .m_widthLeast = 4,
              .m_nozzlesOnly = 400,
              .m_widthPerGroup = 4,
              .m_frameRule = EFrameRule::PerChunkByte,
              .m_bDirected = true},
    SMapClass{.m_class = EMapClass::Map_5, .m_pName = "5", .m_bTableMap = true, .m_widthMultiple = 8},
    SMapClass{.m_class = EMapClass::Map_6,
              .m_pName = "6",
              .m_frameUnit = EFrameUnit::ByteColumns,
              .m_widthPerGroup = 1,
              .m_frameRule = EFrameRule::PerByte},
    SMapClass{.m_class = EMapClass::Map_7,
              .m_pName = "7",
              .m_frameUnit = EFrameUnit::ByteColumns,
              .m_widthPerGroup = 1,
              .m_frameRule = EFrameRule::PerByte,
              .m_bDotSize = true},
    SMapClass{.m_class = EMapClass::Map_8,
              .m_pName = "8",
              .m_widthMultiple = 8,
              .m_nozzlesMultiple = 4,
              .m_pixelsPerNozzle = 2,
              .m_bPlanePair = true},
};
static_assert(mapClasses.size() == static_cast<std::size_t>(EMapClass::Map_8) + 1);

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

std::span<const SMapClass> MapClasses()
{
    return std::span(mapClasses).subspan(1);
}

const SMapClass& MapClass_Get(EMapClass mapClass)
{
    return mapClasses.at(static_cast<std::size_t>(mapClass));
}

const char* MapClass_Name(EMapClass mapClass)
{
    return MapClass_Get(mapClass).m_pName;
}

std::int64_t MapClass_FrameBits(EMapClass mapClass, int frameWidth)
{
    return std::int64_t{frameWidth} * (MapClass_Get(mapClass).m_frameUnit == EFrameUnit::Bits ? 1 : bitsPerByte);
}

std::int64_t MapClass_FrameCount(const SJobMap& map, std::int64_t unitWidth)
{
    constexpr std::int64_t blocksPerLine = 4;
    constexpr std::int64_t bytesPerChunk = 13;
    switch (MapClass_Get(map.m_class).m_frameRule)
    {
    case EFrameRule::PerPixel:
        break;
    case EFrameRule::PerBlock:
        return unitWidth / blocksPerLine;
    case EFrameRule::PerByte:
        return (unitWidth * map.m_dstBitCount + bitsPerByte - 1) / bitsPerByte;
    case EFrameRule::PerChunkByte:
        return bytesPerChunk;
    }
    return unitWidth;
}

int MapClass_UnitCount(const SJobMap& map, int frameWidth)
{
    const SMapClass& row = MapClass_Get(map.m_class);
    const int widthPerGroup = row.m_widthPerGroup > 0 ? row.m_widthPerGroup : std::max(map.m_dstBitCount, 1);
    return frameWidth / widthPerGroup * row.m_unitsPerGroup;
}
