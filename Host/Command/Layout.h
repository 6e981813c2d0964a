// Where each unit, nozzle and bit of a pixel stands in a board line, found by asking the data map itself: each bit of a
// unit's line is set alone, mapped, and looked for. The answer of boardmap layout, as a table
// and JSON; LayoutPicture draws it. The
// probing reads no configuration; any thread.
#pragma once

#include "Host/Board/BoardInfo.h"
#include "Host/Job/Job.h"

#include <cstdint>
#include <string>
#include <vector>

// What one bit of a unit's line becomes.
struct SLayoutBit
{
    int m_unitId = 0;
    int m_nozzle = 0;
    int m_bit = 0;                      // of the nozzle's bits in a line, 0 = the more significant
    std::vector<std::int64_t> m_places; // bits of the board line; empty: the layout has no place for it

    bool operator==(const SLayoutBit&) const = default;
};

struct SLayout
{
    SBoardInfo m_info; // page and separations are left out
    int m_bitsPerNozzle = 1;
    std::vector<SLayoutBit> m_bits; // by unit as in the job, nozzle and bit
};

// Throws CRunError if the map refuses the job's options, or a line.
SLayout Layout_Probe(const SJob& job);

// A line for each nozzle, a column for each unit: "byte.bit" of every bit.
std::string Layout_Text(const SLayout& layout);

// One object in ASCII, with a line end.
std::string Layout_Json(const SLayout& layout);
