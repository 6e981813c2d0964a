// Jobs for converters and stages, with the board bands that the checked twin places for them. Made once, before the
// first schedule.
#pragma once

#include "Tests/UnitData2BoardData/InkJob.h"

#include <memory>
#include <vector>

struct SSimulatedJob
{
    SInkJob job;
    std::vector<SBandImage> boards; // what every step must give

    // The same job as the base stage converts it: without stripes for rest units.
    std::vector<SBandImage> boardsWithoutStripes;
};

// One of the jobs, drawn from the running schedule's seed, and made the platform's configuration.
const SSimulatedJob& Job_Apply();

// What can be the matter with a map.
enum class EMapFault
{
    None,
    Refuses,       // MapData_Line returns false
    Throws,        // MapData_Line throws
    ScratchThrows, // CustomParam_Create throws
    Slow,          // some calls of MapData_Line take up to slowLineMs
};
constexpr unsigned slowLineMs = 300;

// The jobs' map, failing at one call, or slow at all of them. Not the library's own class: its lines come one by one.
std::unique_ptr<CPrintUnitDataMap_Base> FaultyMap_Make(EMapFault fault, int atCall);
