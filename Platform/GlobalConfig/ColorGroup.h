// The colour groups: which print units belong together, and at which position each stands.
//
// Set by the host, read from any thread. A group that was handed out stays valid memory for the life of the process: a
// stage keeps it and reads it during its steps. Set changes it in place, so the host calls Set while no step runs.
#pragma once

#include "Platform/PlatformExport.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

// One unit's place in its group; all words 32-bit, in this order.
struct SColorGroupUnitInfo
{
    std::int32_t m_unitPosition = 0; // the unit's position in the group, from 0
    std::int32_t m_unitId = 0;
};
static_assert(offsetof(SColorGroupUnitInfo, m_unitPosition) == 0 * 4);

class PLATFORM_API CColorGroupInfo
{
public:
    // The key of the group that the current pattern layout uses.
    static const std::string& Key_Pattern_Layout();

    // The unit's place; position 0 for a unit that is not in the group.
    SColorGroupUnitInfo UnitInfo_Get(int unitId) const;

    std::map<int, SColorGroupUnitInfo> m_units; // by unit id
};

class PLATFORM_API CSerialize_ColorGroupInfo
{
public:
    // Replaces all groups: one that was handed out under a key of `groups` has the new units from now on. One whose key
    // is not in `groups` stays behind without units, and is filled again when a later call has its key.
    void Set(const std::map<std::string, CColorGroupInfo>& groups);

    // The group under this key; null if there is none. Not the caller's.
    const CColorGroupInfo* ColorGroupInfo_By_Key(const std::string& key) const;

private:
    struct SGroup
    {
        CColorGroupInfo info;
        bool bSet = false; // by the last Set
    };

    mutable std::mutex m_lock;
    std::map<std::string, SGroup> m_groups; // by key; only ever grows, since groups are handed out
};

// The process's colour groups; never null, never deleted.
PLATFORM_API CSerialize_ColorGroupInfo* GC_ColorGroup();
