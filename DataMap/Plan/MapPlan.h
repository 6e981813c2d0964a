// What a data map does with a line, as data: which cut of the line goes where in the board line.
//
// A plan says the same as the look-ups in a map's table, in a form that can be run many pixels at a time. It is there
// for maps of exactly the library's own classes, and only while the object's content says so: MapPlan.cpp derives it
// from what the map is now, not from how it was initialised. A line generator makes one for a band, MapData_Line one
// for a line; MapEngine.h runs it. A map without a plan is mapped by its own MapData_Line.
#pragma once

#include "DataMap/Kernel/MapKernel.h"

class CPrintUnitDataMap_Base;

// How a line is cut into strips. A strip is what goes to one place in every board frame.
enum EMapCut
{
    // Rows: a strip is one bit of every frame, ORed.
    Cut_Row,    // the line itself, in one row or in two
    Cut_Planes, // 2-bit pixels: their high bits, their low bits
    Cut_Quads,  // pairs of 2-bit pixels: the first pixels, the second ones; of each the high bits, then the low bits
    Cut_Blocks, // 400 pixels: four blocks of 100, in ascending or descending order, one behind the other

    // Columns: a strip is one byte of every frame, stored.
    Cut_Column,       // the line itself
    Cut_BlockColumns, // 400 pixels: the four blocks side by side
    Cut_Nibbles,      // every four 1-bit pixels become a byte, by the map's table
};

constexpr bool Cut_IsRows(EMapCut cut)
{
    return cut <= Cut_Blocks;
}

// The strips that a cut makes of a line.
constexpr int Cut_StripCount(EMapCut cut)
{
    return cut == Cut_BlockColumns ? 4 : cut == Cut_Planes || cut == Cut_Quads ? 2 : 1;
}

// What tells one style from another. Rows are counted from the most significant bit of the frame's first byte, columns
// from its first byte. Columns of a unit lie side by side, and so do units, from the first byte on.
struct SStylePlan
{
    bool (*m_pIsOf)(const CPrintUnitDataMap_Base& map); // whether the map is of exactly the style's class
    EMapCut m_cut;
    int m_firstStrip; // the first of unit 0
    int m_stripStep;  // from a unit's first to the next unit's
    int m_stripCount; // of one unit, side by side
    int m_frameCount; // frames that a table entry holds, or that a source byte makes
    int m_entryCount; // table entries of a unit, the last of them with every pixel set; 0: the table does not matter
    int m_lineRunMin; // from so many lines on, all at once is faster than one after the other
    EFieldKind m_fieldKind = Field_OneBit;
    const SFieldPattern* const* m_pPatterns = nullptr; // for one line alone: by the bytes of a frame
    bool m_bSwapPairs = false;                         // pixel k goes to frame k ^ 1

    // Board planes, each half of the line: where there are two, the first half of a strip's bits is for the first.
    constexpr int PlaneCount() const { return m_cut == Cut_Quads ? 2 : 1; }
    // Columns of a frame into which eight rows go side by side.
    constexpr int ColumnsPerGroup() const { return m_cut == Cut_Blocks ? 4 : 1; }
};

// What one map does with any line: its style, and the sizes that the map has.
struct SMapPlan
{
    // The most of a frame for which all lines can be mapped at once.
    static constexpr int rowBytesMax = 32;
    static constexpr int columnCountMax = 256;
    static constexpr int stripCountMax = 256;

    bool IsThere() const { return m_pStyle != nullptr; }
    bool HasUnit(int unitIndex) const { return static_cast<unsigned>(unitIndex) < static_cast<unsigned>(m_unitCount); }
    // Bytes of board data, in each plane, that one source byte becomes.
    int EntrySize() const { return m_pStyle->m_frameCount * m_frameByteCount; }

    const SStylePlan* m_pStyle = nullptr; // null: the map has no plan
    const CPrintUnitDataMap_Base* m_pMap = nullptr;
    int m_frameByteCount = 0; // bytes of a frame; with two planes, of a frame in each
    int m_unitCount = 0;
};

// The plan of `map` as it is now: good for as long as the map lives and is not initialised again.
SMapPlan MapPlan_Get(const CPrintUnitDataMap_Base& map);
// The same for a style that need not be one of the library's; not there if the map is not of its class.
SMapPlan MapPlan_Get(const CPrintUnitDataMap_Base& map, const SStylePlan& style);

// True for a map of exactly one of the library's own styles: all its lines cost the same, and none of them fails. A
// client's class, one derived from a style too, may do anything in a line.
bool MapStyle_IsOwn(const CPrintUnitDataMap_Base& map);
