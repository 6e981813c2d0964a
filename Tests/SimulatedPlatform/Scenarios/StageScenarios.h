// How often stages were stopped in each of their states, in all schedules so far: what says whether every stop in every
// state has been tried.
#pragma once

#include <array>

std::array<int, 6>& StopStates_Get();
