// How often stages and converters were stopped in each of their states, in all schedules so far: what says whether
// every stop in every state has been tried.
#pragma once

#include <array>

struct SStopStates
{
    std::array<int, 6> stage{};     // 0: before Prepare
    std::array<int, 4> converter{}; // the same
};

SStopStates& StopStates_Get();
