// Vectors of 16 bytes, as the processor that is compiled for has them.
#pragma once

#include "DataMap/Kernel/CpuFeature.h"

#if defined(DATAMAPPING_ARM_KERNELS)
#include "DataMap/Kernel/Vector16Neon.h"
#else
#include "DataMap/Kernel/Vector16Ssse3.h"
#endif
