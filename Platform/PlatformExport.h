// Marks what the controller platform's shared library exports.
#pragma once

#include "Compiler/KelCompiler.h"

#if defined(CONTROLLERPLATFORM_STATIC)
#define PLATFORM_API
#elif defined(CONTROLLERPLATFORM_BUILD)
#define PLATFORM_API KEL_EXPORT
#else
#define PLATFORM_API KEL_IMPORT
#endif
