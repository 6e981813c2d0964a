// Marks what the data-mapping library exports: its public classes, whole. Everything without the mark stays inside.
#pragma once

#include "Compiler/KelCompiler.h"

#if defined(DATAMAPPING_STATIC)
#define DATAMAPPING_API
#elif defined(DATAMAPPING_BUILD)
#define DATAMAPPING_API KEL_EXPORT
#else
#define DATAMAPPING_API KEL_IMPORT
#endif
