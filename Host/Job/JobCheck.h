// Whether a job can run: what its values mean together, and whether its separations fit it. The library maps without
// looking at unit indices, frame widths, depths and sizes; everything that it takes for granted is asked for here, so
// that no job file can reach it. Called on the main thread before a stage is made.
#pragma once

#include "Host/HostError.h"
#include "Host/Input/SeparationInfo.h"
#include "Host/Job/Job.h"

#include <optional>
#include <vector>

// Chooses the job's map (m_map) and checks the job against it, as far as its values are known. Adds every mistake.
void Job_Check(SJob& job, CMistakeList& mistakes);

// A separation of a unit, and what it says of itself.
struct SUnitSeparation
{
    const SJobUnit* m_pUnit = nullptr; // of the job
    int m_page = 0;                    // of the job, from 0
    SSeparationInfo m_info;
};

// Checks what the separations say of themselves, in the order of the job's units: their depth, one page size for all,
// bands that fit CBandData's 32 bits in every pass, and ink stripes that lie inside their bands. Of the pages of a unit
// that say the same one is enough. Opens the stripe colours that are TIFF files. Adds every mistake, and a warning for
// separations of different resolutions.
void Job_CheckSeparations(const SJob& job, const std::vector<SUnitSeparation>& separations, CMistakeList& mistakes);

// What is wrong with the separation of a unit on a page: names the line, the unit, the file, and the page if there are
// several.
SMistake Separation_Mistake(const SJob& job, const SJobUnit& unit, int page, std::string rule, const std::string& what,
                            std::string fix);

// The same for what the reader of the separation threw, whose text begins with the file's path.
SMistake Separation_Fault(const SJob& job, const SJobUnit& unit, int page, const CInputError& error);
