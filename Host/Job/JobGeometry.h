// The sizes of a job's bands on a page, so that they are worked out in one place: job validation, the band producer and
// the writers ask here. Pure functions; any thread.
#pragma once

#include "Host/Job/Job.h"

#include <cstdint>
#include <optional>

struct SJobGeometry
{
    std::int64_t m_swathCount = 0;        // steps that the page takes
    int m_linesPerScanPosition = 1;       // 2 when the two bits of a pixel are pushed as two lines
    int m_unitWidth = 0;                  // pixels per line of a unit band
    int m_unitBitsPerPixel = 1;           // of a unit band
    std::int64_t m_unitBytesPerLine = 0;  // with its alignment
    std::int64_t m_boardWidth = 0;        // bits per line of a board band
    std::int64_t m_boardBytesPerLine = 0; // not aligned

    // Lines of a unit band and of its board band in each pass, and the most that a pass of this job has.
    std::int64_t m_lineCount_Left2Right = 0;
    std::int64_t m_lineCount_Right2Left = 0;
    std::int64_t m_lineCount = 0;
};

// The bands of this job on a page of `pageWidth` columns and `pageHeight` rows. Sizes that pass 32 bits are given as
// they are; Job_CheckSeparations refuses them.
SJobGeometry Job_Geometry(const SJob& job, int pageWidth, int pageHeight);

// Lines of a band for each scan position of the job, the pixels of such a line, and the bits of a pixel. The bands of
// style 8 are described bit by bit: two pixels of 1 bit for each nozzle.
int Job_LinesPerScanPosition(const SJob& job);
int Job_UnitWidth(const SJob& job);
int Job_UnitBitsPerPixel(const SJob& job);

// Bits per line of a board band, as the map counts them for a unit band's pixels.
std::int64_t Job_BoardWidth(const SJob& job);

// Scan positions of a band: the largest offset of the pass, the page's columns, and both stripe zones.
int Job_PassPositions(const SJob& job, int pageWidth, bool bLeftToRight);

// The scan position of a unit's band at which the first column that the pass meets stands: behind the zone that the
// carriage meets first (the left one from left to right, else the right one) and the unit's offset.
int Job_ImagePosition(const SJob& job, const SJobUnit& unit, bool bLeftToRight);

// The largest offset of any unit in this pass, in scan positions.
int Job_MaxOffset(const SJob& job, bool bLeftToRight);

// Whether the stage makes a stripe band for this unit in every step; for any unit of the job.
bool Job_HasStripes(const SJob& job, const SJobUnit& unit);
bool Job_HasStripes(const SJob& job);

// One ink stripe of a unit in its stripe band, in scan positions; the end is that of its first position beyond.
struct SJobStripe
{
    std::int64_t m_begin = 0;
    std::int64_t m_end = 0;
};

// Where the stage writes the unit's left or right stripe of `length` scan positions. Nothing if the job has no zone on
// that side. Not checked against the band: positions may be negative or beyond its end.
std::optional<SJobStripe> Job_Stripe(const SJob& job, const SJobUnit& unit, int pageWidth, bool bLeftToRight,
                                     bool bLeftStripe, int length);
