// Whether a job can run: what its values mean together, and whether its separations fit it. The library maps without
// looking at unit indices, frame widths, depths and sizes; everything that it takes for granted is asked for here, so
// that no job file can reach it. Called on the main thread before a stage is made.
#pragma once

#include "Host/Input/SeparationInfo.h"
#include "Host/Job/Job.h"

#include <vector>

// Chooses the job's map (m_map) and checks the job against it. Throws CInputError for the first problem.
void Job_Check(SJob& job);

// Checks what the separations say of themselves, one entry per unit that has one, in the job's order: their depth, one
// page size for all, bands that fit CBandData's 32 bits in every pass, and ink stripes that lie inside their bands.
// Opens the stripe colours that are TIFF files. Throws CInputError.
void Job_CheckSeparations(const SJob& job, const std::vector<SSeparationInfo>& separations);
