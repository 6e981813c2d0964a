// Looks up and changes the colour groups under one lock.
#include "Platform/GlobalConfig/ColorGroup.h"

const std::string& CColorGroupInfo::Key_Pattern_Layout()
{
    static const std::string key = "Pattern_Layout";
    return key;
}

SColorGroupUnitInfo CColorGroupInfo::UnitInfo_Get(int unitId) const
{
    const auto found = m_units.find(unitId);
    return found == m_units.end() ? SColorGroupUnitInfo{0, unitId} : found->second;
}

void CSerialize_ColorGroupInfo::Set(const std::map<std::string, CColorGroupInfo>& groups)
{
    const std::lock_guard guard(m_lock);
    for (auto& [key, group] : m_groups)
    {
        group = {};
    }
    for (const auto& [key, info] : groups)
    {
        m_groups[key] = {info, true};
    }
}

const CColorGroupInfo* CSerialize_ColorGroupInfo::ColorGroupInfo_By_Key(const std::string& key) const
{
    const std::lock_guard guard(m_lock);
    const auto found = m_groups.find(key);
    return found == m_groups.end() || !found->second.bSet ? nullptr : &found->second.info;
}

CSerialize_ColorGroupInfo* GC_ColorGroup()
{
    static CSerialize_ColorGroupInfo groups;
    return &groups;
}
