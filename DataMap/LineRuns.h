// Which source lines of a board line go through a pass together.
//
// The maps' MapData_Line_AllInput come through here, on any thread. Lines are taken in order. A pass is begun, given
// one line after the other until it refuses one, and then maps them all; so a line that shares its place with an
// earlier one, or differs in length, begins the next run, and the bytes are those of mapping one after the other.
#pragma once

#include "Compiler/KelCompiler.h"
#include "DataMap/PrintUnitDataMap_Base.h"

// How far ahead a run asks for what will be wanted soon. Bands lie line after line, but one line takes too little of
// too many of them for a processor to notice by itself.
constexpr int srcAhead = 512;          // bytes
constexpr int srcLineBitMax = 8 * 128; // longer lines are noticed
constexpr int dstLineByteMax = 4096;   // likewise

// `pass` offers:
//   static constexpr int lineRunMin;           from so many lines on it is faster than one line after the other
//   void Begin(const SSrcBandLine& line);      a new run whose first line this will be, nothing has been added yet
//   bool Line_Add(const SSrcBandLine& line);   false if the line cannot join those added so far, or no run at all
//   void Run_Map(const SSrcBandLine* lines, int lineCount, unsigned char* dst, int dstByteCount);   those added
// Lines that cannot be added and short runs go through the map's MapData_Line. False as soon as that is.
template<class TPass>
bool LineRuns_Map(TPass& pass, const CPrintUnitDataMap_Base& map, const SSrcBandLine* lines, int lineCount,
                  unsigned char* dst, int dstByteCount)
{
    // Not in a function of its own: GCC takes one that only fetches for one that does nothing.
    for (int offset = 0; offset < dstByteCount && dstByteCount <= dstLineByteMax; offset += 64)
    {
        KEL_PREFETCH(dst + 2 * dstByteCount + offset);
    }
    int next = 0;
    while (next < lineCount)
    {
        const int first = next;
        pass.Begin(lines[first]);
        while (next < lineCount && pass.Line_Add(lines[next]))
        {
            if (lines[next].m_param.m_lineBitCount <= srcLineBitMax)
            {
                KEL_PREFETCH(lines[next].m_pLine + srcAhead);
            }
            ++next;
        }
        if (next - first >= TPass::lineRunMin)
        {
            pass.Run_Map(lines + first, next - first, dst, dstByteCount);
            continue;
        }
        next = next == first ? first + 1 : next;
        for (int i = first; i < next; ++i)
        {
            if (!map.MapData_Line(lines[i].m_param, lines[i].m_pLine, dst, dstByteCount))
            {
                return false;
            }
        }
    }
    return true;
}
