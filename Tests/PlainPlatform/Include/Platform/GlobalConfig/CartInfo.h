// The carriage: its print units and the geometry of its heads.
#pragma once

#include <cstdint>
#include <list>

// One print unit: four words. The first is its id, the fourth its direction (2 = ascending block order).
struct SCartUnitInfo
{
    std::int32_t w1 = 0;
    std::int32_t w2 = 0;
    std::int32_t w3 = 0;
    std::int32_t w4 = 0;
};

// What all heads have in common. The second word is the width of a unit band in pixels.
struct SCartHeads
{
    std::int32_t w1 = 0;
    std::int32_t w2 = 0;
};

class CSerialize_CartUnit
{
public:
    const SCartUnitInfo& CartUnitInfo_Get(int unitId) const; // zeros behind the id if there is no such unit
    const std::list<SCartUnitInfo>& CartUnitInfo_GetAll() const;
    const SCartHeads& CartHeadBaseInfo_Get() const;
};

CSerialize_CartUnit* GC_CartInfo();
