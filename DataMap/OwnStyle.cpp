// The classes of the library's own maps.
#include "DataMap/OwnStyle.h"

#include "DataMap/PrintUnitDataMap_03.h"
#include "DataMap/PrintUnitDataMap_03_01.h"
#include "DataMap/PrintUnitDataMap_1.h"
#include "DataMap/PrintUnitDataMap_2.h"
#include "DataMap/PrintUnitDataMap_5.h"
#include "DataMap/PrintUnitDataMap_6.h"
#include "DataMap/PrintUnitDataMap_7.h"
#include "DataMap/PrintUnitDataMap_8.h"

#include <typeinfo>

namespace
{

template<class... Styles>
bool IsOneOf(const std::type_info& type)
{
    return ((type == typeid(Styles)) || ...);
}

} // namespace

bool MapStyle_IsOwn(const CPrintUnitDataMap_Base& map)
{
    return IsOneOf<CPrintUnitDataMap_1, CPrintUnitDataMap_2, CPrintUnitDataMap_03, CPrintUnitDataMap_03_01,
                   CPrintUnitDataMap_5, CPrintUnitDataMap_6, CPrintUnitDataMap_7, CPrintUnitDataMap_8>(typeid(map));
}
