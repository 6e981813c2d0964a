// The carriage: its print units and the geometry of its heads. Set by the host, read from any thread.
#pragma once

#include "Platform/PlatformExport.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

// One print unit on the carriage; all words 32-bit, in this order.
struct SCartUnitInfo
{
    std::int32_t m_unitId = 0;
    std::int32_t m_colorIndex = 0; // which ink, for display
    std::int32_t m_headIndex = 0;  // which head, for display
    std::int32_t m_direction = 0;  // the orientation of its bands
};
static_assert(offsetof(SCartUnitInfo, m_unitId) == 0 * 4);
static_assert(offsetof(SCartUnitInfo, m_direction) == 3 * 4);

// What all heads have in common.
struct SCartHeadBaseInfo
{
    std::int32_t m_headCount = 0;
    std::int32_t m_bandWidth = 0; // pixels across a unit band: the nozzles of a head
};
static_assert(offsetof(SCartHeadBaseInfo, m_bandWidth) == 1 * 4);

struct SCartInfo
{
    std::vector<SCartUnitInfo> m_units;
    SCartHeadBaseInfo m_headBaseInfo;
};

class PLATFORM_API CSerialize_CartUnit
{
public:
    // Replaces the whole carriage.
    void Set(const SCartInfo& info);

    // The unit with this id; an all-zero record with the id in it if there is none.
    SCartUnitInfo CartUnitInfo_Get(int unitId) const;
    std::vector<SCartUnitInfo> CartUnitInfo_GetAll() const;
    SCartHeadBaseInfo CartHeadBaseInfo_Get() const;

private:
    mutable std::mutex m_lock;
    SCartInfo m_info;
};

// The process's carriage; never null, never deleted.
PLATFORM_API CSerialize_CartUnit* GC_CartInfo();
