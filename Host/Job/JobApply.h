// Carries a checked job into the process's configuration, from which the library's stages and maps read it. Called on
// the main thread, before the stage is made and never while one runs.
#pragma once

#include "Host/Job/Job.h"

// Sets GC_DPOption(), DPD_PrintParam(), GC_CartInfo(), GC_ColorGroup() and GC_DPConfig() for a page of `pageWidth`
// columns and `pageHeight` rows. Everything that the job does not name gets its default. Reads the stripe colours that
// are TIFF files; throws CInputError, with nothing set, if one cannot be read.
void Job_Apply(const SJob& job, int pageWidth, int pageHeight);
