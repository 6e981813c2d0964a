// Copies of maps: member-wise, as they were published. A copy maps like its original and shares the original's table,
// so that one of the two has to give it up before it goes.
#include "Tests/DataMap/MapTestSupport.h"

namespace
{

using A = SMapTestAccess;

// A map, and the layout that the twin calls so.
template<class TMap, ETwinStyle style, int srcBitCount, int frameWidth, int dotSizeMode>
struct SCopyCase
{
    using CMap = TMap;
    static constexpr STwinStyle layout = {style, srcBitCount, frameWidth, dotSizeMode};
};

template<class TCase>
class CMapCopy : public testing::Test
{
protected:
    using CMap = typename TCase::CMap;
    static constexpr STwinStyle layout = TCase::layout;

    // A line through the copy and through the twin.
    void ExpectMapsLikeTheTwin(const CMap& map)
    {
        std::mt19937 random(8);
        const Bytes src = Bytes_Random(random, 50);
        const auto size = static_cast<std::size_t>(DstSize_Needed(layout, 400, 6400));
        Bytes dst(size);
        Bytes expected(size);
        ASSERT_TRUE(Line_Map(map, Param_Make(1, 400), src, dst, 6400));
        CBoardTwin(layout).Line_Map({1, 1, 400, src}, expected, 6400);
        EXPECT_EQ(dst, expected);
    }

    std::unique_ptr<CPrintUnitDataMap_Base> m_made = Map_Make(layout);
    const CMap& m_original = static_cast<const CMap&>(*m_made);
};

using EveryMap = testing::Types<SCopyCase<CPrintUnitDataMap_1, ETwinStyle::Style_1, 1, 16, 1>,
                                SCopyCase<CPrintUnitDataMap_2, ETwinStyle::Style_2, 1, 16, 3>,
                                SCopyCase<CPrintUnitDataMap_5, ETwinStyle::Style_5, 2, 16, 1>,
                                SCopyCase<CPrintUnitDataMap_6, ETwinStyle::Style_6, 1, 9, 1>,
                                SCopyCase<CPrintUnitDataMap_7, ETwinStyle::Style_7, 1, 9, 2>,
                                SCopyCase<CPrintUnitDataMap_8, ETwinStyle::Style_8, 1, 16, 1>,
                                SCopyCase<CPrintUnitDataMap_03, ETwinStyle::Style_03, 1, 64, 1>,
                                SCopyCase<CPrintUnitDataMap_03_01, ETwinStyle::Style_03_01, 1, 12, 1>>;

} // namespace

TYPED_TEST_SUITE(CMapCopy, EveryMap);

TYPED_TEST(CMapCopy, MapsLikeItsOriginal)
{
    typename TypeParam::CMap copy(this->m_original);
    EXPECT_EQ(copy.AllMapData_Get(), this->m_original.AllMapData_Get());
    this->ExpectMapsLikeTheTwin(copy);
    A::MapData_Set(copy, nullptr); // one owner only
}

TYPED_TEST(CMapCopy, TakesOverAllThatIsAssignedToIt)
{
    typename TypeParam::CMap copy;
    EXPECT_EQ(&(copy = this->m_original), &copy);
    EXPECT_EQ(copy.AllMapData_Get(), this->m_original.AllMapData_Get());
    EXPECT_EQ(copy.DataFrameWidth(), this->m_original.DataFrameWidth());
    EXPECT_EQ(copy.MapDataSizeOfByte(), this->m_original.MapDataSizeOfByte());
    this->ExpectMapsLikeTheTwin(copy);
    A::MapData_Set(copy, nullptr); // one owner only
}
