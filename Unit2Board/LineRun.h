// How many lines of a band one travelling index stands for.
//
// Handing an index from thread to thread costs as much as mapping many lines. So an index may stand for the run of
// lines that begins there; the last run of a band ends with the band. The converter and its generators must agree on
// the length, which the converter decides once for each band.
#pragma once

class CBandData;
class CPrintUnitDataMap_Base;

// Lines per index for this destination band: for a map that is the library's own, whose lines all cost the same and
// never fail, as many as are worth a hand-over, but so few that every generator gets several runs; 1 for any other map,
// and for short bands.
int LineRun_Get(const CBandData& dstBand, const CPrintUnitDataMap_Base& dataMap, int lineGeneratorCount);
