// The styles as data, and what an object must look like for its style's plan to hold.
//
// Nothing but the object itself is asked: it may have been initialised again, by its own Init or by the base's, or been
// assigned another map's content. A plan holds if it leaves the bytes that the look-ups leave on this very object.
#include "DataMap/Plan/MapPlan.h"

#include "DataMap/PrintUnitDataMap_03.h"
#include "DataMap/PrintUnitDataMap_03_01.h"
#include "DataMap/PrintUnitDataMap_1.h"
#include "DataMap/PrintUnitDataMap_2.h"
#include "DataMap/PrintUnitDataMap_5.h"
#include "DataMap/PrintUnitDataMap_6.h"
#include "DataMap/PrintUnitDataMap_7.h"
#include "DataMap/PrintUnitDataMap_8.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace
{
// A style that may be either of two has a row for each; the object's table tells which it is.
//  class, cut, target, first strip, step, strips, frames, entries, lines at once, field, its patterns, swapped
const SMapStyle mapStyles[] = {
    {typeid(CPrintUnitDataMap_5), Cut_Line, Target_Rows, 0, 1, 1, 8, 256, 5, Field_OneBit, fieldPatterns.m_oneBit},
    {typeid(CPrintUnitDataMap_5), Cut_Planes, Target_Rows, 0, 2, 2, 4, 256, 5, Field_TwoBit, fieldPatterns.m_twoBit},
    {typeid(CPrintUnitDataMap_1), Cut_Line, Target_Rows, 15, -1, 1, 8, 256, 5, Field_OneBit, fieldPatterns.m_swapped,
     true},
    {typeid(CPrintUnitDataMap_2), Cut_Line, Target_Rows, 1, 2, 1, 8, 256, 5, Field_OneBit, fieldPatterns.m_oneBit},
    {typeid(CPrintUnitDataMap_2), Cut_Line, Target_Rows, 0, 2, 1, 8, 256, 5, Field_OneBit, fieldPatterns.m_oneBit},
    {typeid(CPrintUnitDataMap_2), Cut_Line, Target_Rows, 0, 2, 2, 8, 256, 5, Field_Double, fieldPatterns.m_oneBit},
    {typeid(CPrintUnitDataMap_8), Cut_Quads, Target_Rows, 0, 2, 2, 2, 16, 3, Field_TwoBit, fieldPatterns.m_twoBit},
    {typeid(CPrintUnitDataMap_03), Cut_Blocks, Target_Rows, 0, 1, 1, 8, 256, 3, Field_Block, fieldPatterns.m_block},
    {typeid(CPrintUnitDataMap_03_01), Cut_Blocks, Target_Columns, 0, 4, 4, 1, 0, 3},
    {typeid(CPrintUnitDataMap_6), Cut_Line, Target_Columns, 0, 1, 1, 1, 0, 5},
    {typeid(CPrintUnitDataMap_7), Cut_Nibbles, Target_Columns, 0, 1, 1, 2, 0, 5},
};

// The byte that a frame has where the first strips of unit 0 are all set.
unsigned char FirstStrips_Set(const SMapStyle& style)
{
    const int behind = 8 - style.m_firstStrip % 8 - style.m_stripCount;
    return static_cast<unsigned char>(((1 << style.m_stripCount) - 1) << behind);
}
} // namespace

SMapPlan::SMapPlan(const CPrintUnitDataMap_Base& map) : m_pMap(&map)
{
    const std::type_info& mapClass = typeid(map);
    for (const SMapStyle& style : mapStyles)
    {
        if (&style.m_class == &mapClass && Style_Fits(style))
        {
            return;
        }
    }
}

SMapPlan::SMapPlan(const CPrintUnitDataMap_Base& map, const SMapStyle& style) : m_pMap(&map)
{
    if (typeid(map) == style.m_class)
    {
        Style_Fits(style);
    }
}

bool SMapPlan::Style_Fits(const SMapStyle& style)
{
    const bool bFits = style.m_target == Target_Rows ? Rows_Fit(style) : Columns_Fit(style);
    m_pStyle = bFits ? &style : nullptr;
    return bFits;
}

// Whether look-ups in the table would set the bits that the style says, for frames of whole bytes.
//
// Sizes of entries, units and table that agree with the geometry leave few tables that the object can have: of all that
// an Init builds, those of style 1, and those of style 5 for 1-bit pixels and for 2-bit pixels in frames twice as wide,
// or wider by one more bit. They differ in the first two frames of unit 0's last entry, and so do the drop sizes.
bool SMapPlan::Rows_Fit(const SMapStyle& style)
{
    const CPrintUnitDataMap_Base& map = *m_pMap;
    m_frameByteCount = (map.m_dataFrameWidth >> 3) * style.PlaneCount();
    m_unitCount = 8 * (m_frameByteCount / style.ColumnsPerGroup()) / std::abs(style.m_stripStep);
    const int entrySize = m_frameByteCount * style.m_frameCount;
    if (m_frameByteCount <= 0 || map.m_dataFrameWidth % 8 != 0 || map.m_mapDataSizeOfByte != entrySize ||
        map.m_unitMapDataSize != style.m_entryCount * entrySize ||
        map.m_mapDataSize * std::abs(style.m_stripStep) != 8 * m_frameByteCount * map.m_unitMapDataSize)
    {
        return false;
    }
    const unsigned char* last = map.m_mapData + map.m_unitMapDataSize - entrySize + style.m_firstStrip / 8;
    return last[0] == FirstStrips_Set(style) && last[m_frameByteCount] == FirstStrips_Set(style);
}

// Whether the style's own line, which has no look-ups, would do what the style says.
bool SMapPlan::Columns_Fit(const SMapStyle& style)
{
    const CPrintUnitDataMap_Base& map = *m_pMap;
    m_frameByteCount = map.m_unitCount;
    bool bFits = true;
    if (style.m_cut == Cut_Blocks)
    {
        m_frameByteCount = map.m_dataFrameWidth;
        bFits = static_cast<const CPrintUnitDataMap_03_01&>(map).m_bitMode == CPrintUnitDataMap_03_01::bitMode8;
    }
    else if (style.m_cut == Cut_Nibbles)
    {
        // One table of this size: the only other that can be, of style 2, is the same.
        bFits = map.m_mapDataSize == 512 && map.m_unitMapDataSize == 512;
        for (int nibble = 0; nibble < 16 && bFits; ++nibble)
        {
            m_nibbles[nibble] = map.m_mapData[2 * nibble + 1];
        }
    }
    m_unitCount = m_frameByteCount / style.m_stripStep;
    return bFits && m_frameByteCount > 0;
}

void SMapPlan::Tail_Or(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                       int dstByteCount) const
{
    const int planeByteCount = dstByteCount / 2;
    const int entrySize = m_frameByteCount * m_pStyle->m_frameCount;
    m_pMap->MapData_Tail(param, entrySize, src, dst, planeByteCount);
    m_pMap->MapData_Tail(param, entrySize, src, dst + planeByteCount, planeByteCount);
}

bool MapStyle_IsOwn(const CPrintUnitDataMap_Base& map)
{
    return std::any_of(std::begin(mapStyles), std::end(mapStyles),
                       [&](const SMapStyle& style) { return typeid(map) == style.m_class; });
}
