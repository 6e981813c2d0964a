// Runs plans: the way of all lines of a board line at once.
//
// The line generators map all source bands of a line here, on any thread. Beside the engine only MapLine.h, the way of
// a line that is alone, calls the kernels. Everything lives on the stack; nothing is allocated, locked or logged.
#pragma once

#include "DataMap/Plan/MapPlan.h"
#include "DataMap/SrcBandDataParam.h"

// One of the source lines that go into the same board line.
struct SSrcBandLine
{
    SSrcBandDataParam m_param;
    const unsigned char* m_pLine = nullptr; // the line's bytes, the last one whole; the source band's
};

class CMapEngine
{
public:
    // Maps `lineCount` source lines into one board line that nobody else touches meanwhile: leaves the bytes that the
    // map's MapData_Line leaves, called for one line after the other. `plan` is there. The lines must not overlap
    // `dst`.
    static void Lines_Map(const SMapPlan& plan, const SSrcBandLine* lines, int lineCount, unsigned char* dst,
                          int dstByteCount);
};
