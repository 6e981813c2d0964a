// How many blocks are allocated with new and not deleted: for schedules that should leave nothing behind. Always 0 in
// a program without LiveAllocations.cpp's operators, as one with a sanitizer is.
#pragma once

#include <cstdint>

std::int64_t LiveAllocations_Count();
