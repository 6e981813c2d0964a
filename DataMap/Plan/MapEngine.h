// Runs plans: the one way from the lines of print units into a board line without look-ups.
//
// The line generators map all source bands of a line here, MapData_Line a line alone, on any thread. Nobody else calls
// the kernels. Everything lives on the stack; nothing is allocated, locked or logged.
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

    // Maps one line, for the MapData_Line that it stands for. False, with nothing done, if the map has no plan there,
    // or the plan has no way for this unit's line alone.
    template<EMapLine line>
    static bool Line_Map(const CPrintUnitDataMap_Base& map, const SSrcBandDataParam& param, const unsigned char* src,
                         unsigned char* dst, int dstByteCount);
};
