// The row that the example style would have in the table of DataMap/Plan/StylePlans.h.
#pragma once

#include "DataMap/Plan/StylePlans.h"
#include "Tests/DataMap/ExampleStyle/PrintUnitDataMap_Nibble.h"

inline constexpr SStylePlan nibblePlan =
    //  class, cut, first strip, step, strips, frames, entries, lines at once, field, its patterns
    {&Map_IsOf<CPrintUnitDataMap_Nibble>, Cut_Row, 3, 4, 1, 8, 256, 5, Field_OneBit, fieldPatterns.m_oneBit};
