// The map that always refuses.
#include "Tests/DataMap/MapTestSupport.h"

#include <type_traits>

using testing::ElementsAre;

namespace
{
using A = SMapTestAccess;

struct SMap_4_Delete
{
    void operator()(CPrintUnitDataMap_4* map) const { A::Map_4_Delete(map); }
};
using Map_4_Ptr = std::unique_ptr<CPrintUnitDataMap_4, SMap_4_Delete>;
} // namespace

TEST(PrintUnitDataMap_4, InitFailsForEveryWidthAfterSettingTheGeometry)
{
    for (const int width : {-8, 0, 1, 8, 16, 17, 32, 64})
    {
        const Map_4_Ptr map(A::Map_4_New());
        const CLogCapture log;
        EXPECT_FALSE(map->Init(width)) << width;
        EXPECT_THAT(log.Summary(), ElementsAre("2 failure @PrintUnitDataMap_4"));
        EXPECT_THAT(Log_Functions(log), ElementsAre("CPrintUnitDataMap_4::Init"));
        EXPECT_EQ(map->SrcBitCount(), 1);
        EXPECT_EQ(A::SrcBitMask(*map), 1);
        EXPECT_EQ(map->DstBitCount(), 1);
        EXPECT_EQ(map->DataFrameWidth(), width);
        EXPECT_EQ(A::UnitCount(*map), width);
        EXPECT_EQ(map->MapDataSizeOfByte(), width);
        EXPECT_EQ(map->AllMapData_Get(), nullptr);
    }
}

TEST(PrintUnitDataMap_4, NobodyElseCanMakeOrDestroyOne)
{
    EXPECT_FALSE(std::is_default_constructible_v<CPrintUnitDataMap_4>);
    EXPECT_FALSE(std::is_destructible_v<CPrintUnitDataMap_4>);
}

TEST(PrintUnitDataMap_4, ACopyHasTheSameGeometry)
{
    const Map_4_Ptr map(A::Map_4_New());
    EXPECT_FALSE(map->Init(24));
    const Map_4_Ptr copy(new CPrintUnitDataMap_4(*map));
    EXPECT_EQ(copy->DataFrameWidth(), 24);
}

TEST(PrintUnitDataMap_4, UsageWritesTheOneRecordOfInit)
{
    const CLogCapture log;
    CPrintUnitDataMap_4::Usage();
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @PrintUnitDataMap_4"));
}
