// How often the process has allocated with new: for tests that show that something allocates nothing.
//
// A test executable that compiles AllocationCount.cpp has its own operators new and delete, for itself and, where a
// program's symbols win over those of its libraries (ELF), for these too. Without AllocationCount.cpp there is no
// count; it is left out under the sanitizers, which bring their own.
#pragma once

#include <cstdint>

// Calls of any operator new but those for arrays that may fail, by all threads, since the process began.
std::int64_t Allocation_Count();
