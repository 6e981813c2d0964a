// The kernel that the maps use now.
//
// Every map asks here when it maps a line, on any thread; DataMapKernel.cpp chooses and sets it. Apart from MapKernel.h
// because the files of the kernels must not see anything inline that other code shares.
#pragma once

#include "DataMap/Kernel/MapKernel.h"

#include <atomic>

// The kernel in use, null before the first choice; and the first choice.
extern std::atomic<const SMapKernel*> mapKernelInUse;
const SMapKernel& MapKernel_Choose();

// The kernel in use; chosen at the first call if nobody has set one. Any thread.
inline const SMapKernel& MapKernel_Get()
{
    const SMapKernel* kernel = mapKernelInUse.load(std::memory_order_relaxed);
    return kernel != nullptr ? *kernel : MapKernel_Choose();
}
