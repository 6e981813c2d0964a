// The sizes of a job's bands on a page, so that they are worked out in one place: job validation, the band producer and
// the writers ask here. Pure functions; any thread.
#pragma once

#include "Host/Job/Job.h"

#include <cstdint>

struct SJobGeometry
{
    std::int64_t m_swathCount = 0;        // steps that the page takes
    int m_linesPerScanPosition = 1;       // 2 when the two bits of a pixel are pushed as two lines
    int m_unitWidth = 0;                  // pixels per line of a unit band
    int m_unitBitsPerPixel = 1;           // of a unit band
    std::int64_t m_unitBytesPerLine = 0;  // with its alignment
    std::int64_t m_boardWidth = 0;        // bits per line of a board band
    std::int64_t m_boardBytesPerLine = 0; // not aligned
    std::int64_t m_lineCount = 0;         // of a unit band and of its board band
};

// The bands of this job on a page of `pageWidth` columns and `pageHeight` rows. Sizes that pass 32 bits are given as
// they are; Job_CheckSeparations refuses them.
SJobGeometry Job_Geometry(const SJob& job, int pageWidth, int pageHeight);

// Lines of a band for each scan position of the job, and the bits that each of a line's pixels then has.
int Job_LinesPerScanPosition(const SJob& job);
int Job_UnitBitsPerPixel(const SJob& job);
