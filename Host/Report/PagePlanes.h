// A page's dots as planes for the report, one for each unit, and what its job has there: compressed row after row while
// the page goes by swath after swath. Memory is a swath, and what the compressed planes take. The main thread.
#pragma once

#include "Host/Command/Preview.h"
#include "Host/Job/JobPage.h"

#include <cstdint>
#include <string>
#include <vector>

// A dot that is not as the job has it.
struct SPlaneDifference
{
    int m_unitId = 0;
    std::int64_t m_row = 0; // of the page, like the column
    std::int64_t m_column = 0;
};

struct SUnitPlanes
{
    std::string m_output; // CDeflatedText: values of the output, m_pixelBits for each dot, rows of whole bytes
    std::string m_job;    // the same of the job's; empty: Job_FromOutput says it for every dot
};

struct SPagePlanes
{
    int m_pixelBits = 1;
    SPreviewArea m_area;
    std::int64_t m_rowBytes = 0;
    std::vector<SUnitPlanes> m_units;          // in the info's order
    std::vector<std::int64_t> m_bands;         // of each swath the running number in the output; -1: it has none
    std::int64_t m_differenceCount = 0;        // of dots
    std::vector<SPlaneDifference> m_different; // the first of them
};

// The drop size of a layout that prints one: 1 small, 2 middle, 3 big; 0 of the others.
int DropSize_Of(const SBoardInfo& info);

// What the job has where the output has this, if the output is as it should be and its separation has one bit.
int Job_FromOutput(int value, const SBoardInfo& info);

// `output` goes through this page of the job, from which it must have been made. Throws CInputError for damage of
// either.
SPagePlanes Planes_Make(CPreviewPage& output, const CJobPage& job, int page, const OnSwath& onSwath);
