// What the host knows of the data maps: which one a job gets, which is the map factory's decision repeated so that a
// job is checked before a stage exists, and one row of a table for each, from which job validation, the geometry, the
// output's description and every report take their rules. Reads no configuration and makes no map; any thread.
#pragma once

#include "Platform/GlobalConfig/DPOption.h"

#include <cstdint>
#include <span>

// The map classes, by their style.
enum class EMapClass
{
    None, // the factory refuses
    Map_1,
    Map_2,
    Map_03,
    Map_03_01,
    Map_5,
    Map_6,
    Map_7,
    Map_8,
};

struct SJobMap
{
    EMapClass m_class = EMapClass::None;
    int m_srcBitCount = 0; // bits per source pixel that the map takes
    int m_dstBitCount = 0; // bits of one unit in a board data frame

    bool operator==(const SJobMap&) const = default;
};

// What PrinterDataWidth counts.
enum class EFrameUnit
{
    Bits,        // of a frame
    ByteColumns, // a frame is that many bytes, each of one unit
};

// How many frames a board line has.
enum class EFrameRule
{
    PerPixel,     // one for each pixel of a unit's line
    PerBlock,     // one for each pixel of a block, which is a quarter of the line
    PerByte,      // one for each byte of a unit's pixels, as many bits of a unit as the board prints
    PerChunkByte, // 13: a quarter of 400 pixels, in whole bytes
};

// One map class.
struct SMapClass
{
    EMapClass m_class = EMapClass::None;
    const char* m_pName = "none"; // "5", "03_01"

    // Only the byte table, which is all that the base stage runs.
    bool m_bTableMap = false;

    // PrinterDataWidth: what it counts; the only one there is, or a multiple of something, and at least something.
    EFrameUnit m_frameUnit = EFrameUnit::Bits;
    int m_widthOnly = 0; // 0: any
    int m_widthMultiple = 1;
    int m_widthLeast = 1;

    // Nozzles: the only number there is, or a multiple of something.
    int m_nozzlesOnly = 0; // 0: any
    int m_nozzlesMultiple = 1;

    // Nozzles are taken by whole groups of so many; a line has no place for those of a last group that is not whole.
    int m_nozzlesPerGroup = 1;

    // Units in a frame: so many for each so much of the width. 0: as much as a unit's bits.
    int m_widthPerGroup = 0;
    int m_unitsPerGroup = 1;

    // Pixels of a unit band's line for each nozzle: two where 2-bit pixels are described bit by bit.
    int m_pixelsPerNozzle = 1;
    EFrameRule m_frameRule = EFrameRule::PerPixel;

    // Prints 1-bit pixels with one drop size in two bits; needs DotSizeMode.
    bool m_bDotSize = false;

    // Takes the two bits of a pixel itself, as two planes: 2-bit jobs by pixel only.
    bool m_bPlanePair = false;

    // One direction of a unit reverses the order of its four blocks.
    bool m_bDirected = false;
};

// The map that the factory builds for these options and a job of `bitsPerPixel` bits; EMapClass::None if it builds
// none. The frame width and the dot size are left out: with a wrong one the class stays the same and its Init fails.
SJobMap Job_MapClass(const SDPOption& option, int bitsPerPixel);

// The rows of the table, without that of EMapClass::None.
std::span<const SMapClass> MapClasses();

// The row of this class; that of EMapClass::None has the defaults above.
const SMapClass& MapClass_Get(EMapClass mapClass);

// "5", "03_01"; "none".
const char* MapClass_Name(EMapClass mapClass);

// Bits of a frame, and frames of a board line for unit lines of `unitWidth` pixels.
std::int64_t MapClass_FrameBits(EMapClass mapClass, int frameWidth);
std::int64_t MapClass_FrameCount(const SJobMap& map, std::int64_t unitWidth);

// Units that a frame has room for.
int MapClass_UnitCount(const SJobMap& map, int frameWidth);
