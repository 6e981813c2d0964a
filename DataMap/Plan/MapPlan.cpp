// Which plan a map has.
#include "DataMap/Plan/MapPlan.h"

#include "DataMap/Plan/StylePlans.h"

#include <algorithm>
#include <iterator>

SMapPlan MapPlan_Get(const CPrintUnitDataMap_Base& map)
{
    for (const SStylePlan& style : stylePlans)
    {
        const SMapPlan plan = MapPlan_Get(map, style);
        if (plan.IsThere())
        {
            return plan;
        }
    }
    return {};
}

SMapPlan MapPlan_Get(const CPrintUnitDataMap_Base& map, const SStylePlan& style)
{
    return style.m_pIsOf(map) ? SMapReader::Plan_Get(map, &style) : SMapPlan{};
}

bool MapStyle_IsOwn(const CPrintUnitDataMap_Base& map)
{
    return std::any_of(std::begin(stylePlans), std::end(stylePlans),
                       [&](const SStylePlan& style) { return style.m_pIsOf(map); });
}
