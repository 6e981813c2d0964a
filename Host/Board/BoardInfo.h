// What a board file says of itself, so that a reader can go from any of its bits to the page without the job: how its
// bands were mapped and how the carriage went, for the file; and the header and the pass of each band. The writers put
// it into their files, the readers take it out again. Docs/board-stream.md defines every word. Pure functions; any
// thread.
#pragma once

#include "Platform/BandData/BandData.h"

#include <cstdint>
#include <string>
#include <vector>

// The version that is written, and what version 1 left out reads as.
inline constexpr int g_boardVersion = 2;

// How separations name the pages' files.
inline constexpr const char* g_pageNames_Pattern = "pattern"; // with the place of the page's number
inline constexpr const char* g_pageNames_List = "list";       // the first name of a list stands for all

// One print unit of the job.
struct SBoardUnitInfo
{
    int m_unitId = 0;    // its place in a board data frame
    int m_direction = 0; // the orientation of the unit's bands
    std::string m_name;  // the job's label, UTF-8; may be empty

    // From here on since version 2.
    std::string m_separation;  // as the job names it, UTF-8; empty: the unit does not print the page
    int m_unitPosition = 0;    // in the colour group, from 0
    int m_horizon_1 = 0;       // offset in the right-to-left pass, scan positions
    int m_horizon_2 = 0;       // offset in the left-to-right pass, scan positions
    std::string m_stripeColor; // what its ink stripes hold, as the job says it; empty: it has no stripes
    int m_stripeLength = 0;    // scan positions of its stripes

    bool operator==(const SBoardUnitInfo&) const = default;
};

// Enumerations by their names in the job file.
struct SBoardInfo
{
    int m_version = g_boardVersion; // 1: everything that says "since version 2" is not known

    std::string m_dataMapStyle;
    std::string m_dataPushStyle;
    std::string m_printerSupportBits;
    std::string m_map;          // the style of the data map: "1", "2", "5"
    int m_printerDataWidth = 0; // the option's value
    int m_bitsPerUnit = 0;      // bits that a pixel of one unit has in a frame
    int m_nozzles = 0;          // of a unit: rows of a swath
    int m_bitsPerPixel = 0;     // of the separations
    std::vector<SBoardUnitInfo> m_units;

    // From here on since version 2.
    std::string m_generator;            // the program that wrote the file, and its version
    std::string m_stage;                // "ink-stripe", "base", "one-fifo"
    std::string m_dotSizeMode;          // of maps that print one drop size, else empty
    std::string m_printerDataWidthUnit; // "bits", or "byte columns": a frame is that many bytes
    int m_frameBits = 0;                // bits of a frame
    int m_planes = 1;                   // 2: the line is two planes of frames, one for each bit of a pixel
    std::int64_t m_lineBits = 0;        // of a board line: frames without gaps
    int m_linesPerPosition = 1;         // lines of a scan position; 2: the high bits, then the low bits
    bool m_bBidirectional = false;      // every other swath runs from right to left
    bool m_bSkipBlank = false;          // swaths without ink on any unit have no band
    int m_pageWidth = 0;                // columns
    int m_pageHeight = 0;               // rows
    double m_xResolution = 0;           // of the separations, pixels per inch; 0: not known
    double m_yResolution = 0;

    // The pages of the job, all of one size; said only by jobs that name several, or one by its number.
    int m_pageCount = 1;
    std::string m_pageNames; // g_pageNames_Pattern, g_pageNames_List; empty: one page, the separations are files
    int m_firstPage = 0;     // of a pattern: the number of the first page in the separations' names

    // Of the output of a part of a job: its swaths, counted over all pages and blank ones too; -1: all of them.
    std::int64_t m_partFirst = -1;
    std::int64_t m_partLast = -1;

    bool IsPart() const { return m_partFirst >= 0; }
    std::int64_t SwathCount() const
    {
        return m_nozzles < 1 ? 0 : (std::int64_t{m_pageHeight} - 1) / m_nozzles + 1;
    }                                                                     // of a page
    std::int64_t StepCount() const { return SwathCount() * m_pageCount; } // swaths of all pages
    std::int64_t FirstStep() const { return IsPart() ? m_partFirst : 0; }
    std::int64_t LastStep() const { return IsPart() ? m_partLast : StepCount() - 1; }

    int m_leftZone = 0;          // scan positions left of the page, for ink stripes
    int m_rightZone = 0;         // right of it
    int m_unitPitch = 0;         // from the stripe of one unit position to the next, scan positions
    int m_unitPositionCount = 0; // in a zone
    int m_maxOffset_1 = 0;       // the largest horizontal offset of any unit, right to left
    int m_maxOffset_2 = 0;       // left to right

    bool operator==(const SBoardInfo&) const = default;
};

// How a band's lines lie on the page, since version 2. Scan position p is p * m_columnStep columns from the first; for
// a unit with the offset o in this pass it stands at the page's column m_firstLineColumn + (p - o) * m_columnStep,
// which is outside of 0 to width - 1 where it is no column of the page.
struct SBoardPass
{
    bool m_bLeftToRight = true;
    std::int32_t m_positions = 0;       // scan positions of the band
    std::int32_t m_firstLineColumn = 0; // where the first line stands, for a unit without offset
    std::int32_t m_columnStep = 1;      // 1 from left to right, else -1
    std::int32_t m_firstZone = 0;       // scan positions of the zone that the carriage meets first
    std::int32_t m_lastZone = 0;        // and of the other one
    std::int32_t m_maxOffset = 0;       // the largest offset of any unit in this pass
    bool m_bBlank = false;              // not a bit of the band is set

    bool operator==(const SBoardPass&) const = default;
};

// The pass of a band with this header, but for m_bBlank.
SBoardPass BoardPass_Of(const SBoardInfo& info, const SBandHeader& header);

// Whether no bit of the band is set.
bool Band_IsBlank(const CBandData& band);

// {"Version": 2, ..., "Units": [...]}, ASCII, one line.
std::string BoardInfo_Json(const SBoardInfo& info);

// The inverse, for `version` 1 or 2. Throws std::runtime_error, which says what is wrong, if the text is no such JSON.
SBoardInfo BoardInfo_Parse(const std::string& json, int version);

// {"Format": "boardmap-band", "Version": 2, "Header": {...}, "Pass": {...}, "Board": {...}}, ASCII, one line: the
// thirteen header words and the skip flag under their names, the pass, and the board info.
std::string BandHeader_Json(const SBandHeader& header, const SBoardPass& pass, const SBoardInfo& info);

// What such a text says, of either version.
struct SBandDescription
{
    SBandHeader m_header;
    SBoardPass m_pass;
    SBoardInfo m_info;
};

// Throws std::runtime_error, which says what is wrong.
SBandDescription BandHeader_Parse(const std::string& json);

// The file that the unit prints on this page, from 0, as far as the info says it: of a list it is the first name, with
// "the list that begins with " before it.
std::string BoardUnit_Separation(const SBoardInfo& info, const SBoardUnitInfo& unit, int page);

// "unit 3 (Cyan)".
std::string BoardUnit_Text(const SBoardUnitInfo& unit);
