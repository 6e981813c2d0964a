// The styles as data, and what an object must look like for its style's plan to hold.
//
// Nothing but the object itself is asked: it may have been initialised again, by its own Init or by the base's, or been
// assigned another map's content. A plan holds if it leaves the bytes that the look-ups leave on this very object.
// Everything is inline, so that for one line alone the compiler reckons with constants.
#pragma once

#include "DataMap/Plan/MapPlan.h"
#include "DataMap/PrintUnitDataMap_03.h"
#include "DataMap/PrintUnitDataMap_03_01.h"
#include "DataMap/PrintUnitDataMap_1.h"
#include "DataMap/PrintUnitDataMap_2.h"
#include "DataMap/PrintUnitDataMap_5.h"
#include "DataMap/PrintUnitDataMap_6.h"
#include "DataMap/PrintUnitDataMap_7.h"
#include "DataMap/PrintUnitDataMap_8.h"

#include <cstdlib>
#include <typeinfo>

// The block styles' geometry.
inline constexpr int blockCount = 4;
inline constexpr int blockPixelCount = 100;
inline constexpr int blockByteCount = 13;

// Compared by address: a class that had another record of itself elsewhere would lose the plan, not a byte.
template<class TMap>
bool Map_IsOf(const CPrintUnitDataMap_Base& map)
{
    return &typeid(map) == &typeid(TMap);
}

// A style that may be one of several has a row for each; the object's table tells which it is.
//  class, cut, first strip, step, strips, frames, entries, lines at once, field, its patterns, swapped
inline constexpr SStylePlan stylePlans[] = {
    {&Map_IsOf<CPrintUnitDataMap_5>, Cut_Row, 0, 1, 1, 8, 256, 5, Field_OneBit, fieldPatterns.m_oneBit},
    {&Map_IsOf<CPrintUnitDataMap_5>, Cut_Planes, 0, 2, 2, 4, 256, 5, Field_TwoBit, fieldPatterns.m_twoBit},
    {&Map_IsOf<CPrintUnitDataMap_2>, Cut_Row, 0, 2, 2, 8, 256, 5, Field_Double, fieldPatterns.m_oneBit},
    {&Map_IsOf<CPrintUnitDataMap_2>, Cut_Row, 0, 2, 1, 8, 256, 5, Field_OneBit, fieldPatterns.m_oneBit},
    {&Map_IsOf<CPrintUnitDataMap_2>, Cut_Row, 1, 2, 1, 8, 256, 5, Field_OneBit, fieldPatterns.m_oneBit},
    {&Map_IsOf<CPrintUnitDataMap_1>, Cut_Row, 15, -1, 1, 8, 256, 5, Field_OneBit, fieldPatterns.m_swapped, true},
    {&Map_IsOf<CPrintUnitDataMap_8>, Cut_Quads, 0, 2, 2, 2, 16, 3, Field_TwoBit, fieldPatterns.m_twoBit},
    {&Map_IsOf<CPrintUnitDataMap_03>, Cut_Blocks, 0, 1, 1, 8, 256, 3, Field_Block, fieldPatterns.m_block},
    {&Map_IsOf<CPrintUnitDataMap_03_01>, Cut_BlockColumns, 0, 4, 4, 1, 0, 3},
    {&Map_IsOf<CPrintUnitDataMap_6>, Cut_Column, 0, 1, 1, 1, 0, 5},
    {&Map_IsOf<CPrintUnitDataMap_7>, Cut_Nibbles, 0, 1, 1, 2, 0, 5},
};

// The byte that a frame has where the first strips of unit 0 are all set.
constexpr unsigned char FirstStrips_Set(const SStylePlan& style)
{
    const int behind = 8 - style.m_firstStrip % 8 - style.m_stripCount;
    return static_cast<unsigned char>(((1 << style.m_stripCount) - 1) << behind);
}

// Reads what a map keeps to itself. TStyle: a pointer to a style, or what stands for one that is known beforehand.
struct SMapReader
{
    // The plan of a map of the style's class; not there if it does not hold.
    template<class TStyle>
    static SMapPlan Plan_Get(const CPrintUnitDataMap_Base& map, TStyle style)
    {
        return Cut_IsRows(style->m_cut) ? RowPlan_Get(map, style) : ColumnPlan_Get(map, style);
    }

    // With two planes: what the line has behind its whole source bytes, by look-up, in both.
    static void Tail_Or(const SMapPlan& plan, const SSrcBandDataParam& param, const unsigned char* src,
                        unsigned char* dst, int dstByteCount)
    {
        const int planeByteCount = dstByteCount / 2;
        plan.m_pMap->MapData_Tail(param, plan.EntrySize(), src, dst, planeByteCount);
        plan.m_pMap->MapData_Tail(param, plan.EntrySize(), src, dst + planeByteCount, planeByteCount);
    }

private:
    // It holds if look-ups in the table would set the bits that the style says, for frames of whole bytes.
    //
    // Sizes of entries, units and table that agree with the geometry leave few tables that the object can have: of all
    // that an Init builds, those of style 1, and those of style 5 for 1-bit pixels and for 2-bit pixels in frames twice
    // as wide, or wider by one more bit. They differ in the first two frames of unit 0's last entry, and so do the drop
    // sizes.
    template<class TStyle>
    static SMapPlan RowPlan_Get(const CPrintUnitDataMap_Base& map, TStyle style)
    {
        const int frameByteCount = (map.m_dataFrameWidth >> 3) * style->PlaneCount();
        const int entrySize = frameByteCount * style->m_frameCount;
        if (frameByteCount <= 0 || map.m_dataFrameWidth % 8 != 0 || map.m_mapDataSizeOfByte != entrySize ||
            map.m_unitMapDataSize != style->m_entryCount * entrySize ||
            map.m_mapDataSize * std::abs(style->m_stripStep) != 8 * frameByteCount * map.m_unitMapDataSize)
        {
            return {};
        }
        const unsigned char* last = map.m_mapData + map.m_unitMapDataSize - entrySize + style->m_firstStrip / 8;
        if (last[0] != FirstStrips_Set(*style) || last[frameByteCount] != FirstStrips_Set(*style))
        {
            return {};
        }
        const int unitCount = 8 * (frameByteCount / style->ColumnsPerGroup()) / std::abs(style->m_stripStep);
        return {&*style, &map, frameByteCount, unitCount};
    }

    // It holds if the style's own line, which has no look-ups, would do what the style says.
    template<class TStyle>
    static SMapPlan ColumnPlan_Get(const CPrintUnitDataMap_Base& map, TStyle style)
    {
        int columnCount = map.m_unitCount;
        bool bHolds = style->m_firstStrip == 0 && style->m_stripStep == Cut_StripCount(style->m_cut);
        if (style->m_cut == Cut_BlockColumns)
        {
            columnCount = map.m_dataFrameWidth;
            bHolds = bHolds &&
                     static_cast<const CPrintUnitDataMap_03_01&>(map).m_bitMode == CPrintUnitDataMap_03_01::bitMode8;
        }
        else if (style->m_cut == Cut_Nibbles)
        {
            // The one other table of this size that can be, of style 2, is the same.
            bHolds = bHolds && map.m_mapDataSize == 512 && map.m_unitMapDataSize == 512;
        }
        return bHolds && columnCount > 0 ? SMapPlan{&*style, &map, columnCount, columnCount / style->m_stripStep}
                                         : SMapPlan{};
    }
};
