// What a run of an opened page will be: its bands, passes, bytes and memory, from the job and its separations' headers
// alone. For who wants to know before anything runs. Pure functions; any thread.
#pragma once

#include "Host/Job/JobPage.h"

#include <cstdint>
#include <vector>

// The bands of one direction of the carriage.
struct SPassPlan
{
    bool m_bLeftToRight = true;
    std::int64_t m_bands = 0;
    std::int64_t m_lines = 0; // of a band

    // Scan positions of a band: the zone that the carriage meets first, the page's columns, the other zone, and the
    // largest offset of any unit.
    int m_positions = 0;
    int m_firstZone = 0;
    int m_columns = 0;
    int m_lastZone = 0;
    int m_maxOffset = 0;
};

// The memory that bands and rows take at most, in bytes; the program and the map's tables come on top.
struct SMemoryPlan
{
    std::int64_t m_unitBandBytes = 0;  // of a unit band
    std::int64_t m_unitBands = 0;      // in the pools and, for ink stripes, in hand
    std::int64_t m_boardBandBytes = 0; // of a board band
    std::int64_t m_boardBands = 0;     // queued, being mapped and being written
    std::int64_t m_rowBytes = 0;       // rows of the separations on their way into bands

    std::int64_t Bytes() const { return m_unitBandBytes * m_unitBands + m_boardBandBytes * m_boardBands + m_rowBytes; }
};

struct SJobPlan
{
    int m_pages = 1;
    std::int64_t m_bands = 0; // of all pages; at most, where blank swaths are left out
    int m_lastBandRows = 0;   // rows of a page in its last swath
    std::int64_t m_lines = 0;
    std::int64_t m_bytes = 0;        // of board data
    std::vector<SPassPlan> m_passes; // one, or both directions of a bidirectional job
    SMemoryPlan m_memory;
    int m_unitRoom = 0; // units that a frame has room for
    int m_frameBits = 0;
    int m_planes = 1;          // frames' planes of a line
    std::int64_t m_frames = 0; // of a line, in all planes
};

// The page must be whole.
SJobPlan Job_Plan(const CJobPage& page);
