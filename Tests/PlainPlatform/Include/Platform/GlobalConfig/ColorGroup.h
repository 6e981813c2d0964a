// The colour groups: at which position of its group each print unit stands.
#pragma once

#include <cstdint>

// One unit's place in its group. The first word is the position.
struct SColorGroupUnitInfo
{
    std::int32_t w1 = 0;
};

class CColorGroupInfo
{
public:
    // Names the group of the current pattern layout. Its type is this edition's; it is only handed on.
    static int Key_Pattern_Layout();

    SColorGroupUnitInfo UnitInfo_Get(int unitId) const; // position 0 for a unit that is not in the group
};

class CSerialize_ColorGroupInfo
{
public:
    const CColorGroupInfo* ColorGroupInfo_By_Key(int key) const; // null if there is none
};

CSerialize_ColorGroupInfo* GC_ColorGroup();
