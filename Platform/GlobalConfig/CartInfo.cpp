// Reads and replaces the carriage under one lock.
#include "Platform/GlobalConfig/CartInfo.h"

#include <algorithm>

void CSerialize_CartUnit::Set(const SCartInfo& info)
{
    const std::lock_guard guard(m_lock);
    m_info = info;
}

SCartUnitInfo CSerialize_CartUnit::CartUnitInfo_Get(int unitId) const
{
    const std::lock_guard guard(m_lock);
    const auto found = std::find_if(m_info.m_units.begin(), m_info.m_units.end(),
                                    [unitId](const SCartUnitInfo& unit) { return unit.m_unitId == unitId; });
    return found == m_info.m_units.end() ? SCartUnitInfo{unitId, 0, 0, 0} : *found;
}

std::vector<SCartUnitInfo> CSerialize_CartUnit::CartUnitInfo_GetAll() const
{
    const std::lock_guard guard(m_lock);
    return m_info.m_units;
}

SCartHeadBaseInfo CSerialize_CartUnit::CartHeadBaseInfo_Get() const
{
    const std::lock_guard guard(m_lock);
    return m_info.m_headBaseInfo;
}

CSerialize_CartUnit* GC_CartInfo()
{
    static CSerialize_CartUnit cart;
    return &cart;
}
