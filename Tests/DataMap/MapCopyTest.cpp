// Copies of maps: member-wise, as they were published. A copy maps like its original and shares the original's table,
// so that one of the two has to give it up before it goes.
#include "Tests/DataMap/MapTestSupport.h"

namespace
{

using A = SMapTestAccess;

template<class TMap>
struct SCopyCase;
template<>
struct SCopyCase<CPrintUnitDataMap_1>
{
    static constexpr STwinStyle layout = {ETwinStyle::Style_1, 1, 16, 1};
};
template<>
struct SCopyCase<CPrintUnitDataMap_2>
{
    static constexpr STwinStyle layout = {ETwinStyle::Style_2, 1, 16, 3};
};
template<>
struct SCopyCase<CPrintUnitDataMap_5>
{
    static constexpr STwinStyle layout = {ETwinStyle::Style_5, 2, 16, 1};
};
template<>
struct SCopyCase<CPrintUnitDataMap_6>
{
    static constexpr STwinStyle layout = {ETwinStyle::Style_6, 1, 9, 1};
};
template<>
struct SCopyCase<CPrintUnitDataMap_7>
{
    static constexpr STwinStyle layout = {ETwinStyle::Style_7, 1, 9, 2};
};
template<>
struct SCopyCase<CPrintUnitDataMap_8>
{
    static constexpr STwinStyle layout = {ETwinStyle::Style_8, 1, 16, 1};
};
template<>
struct SCopyCase<CPrintUnitDataMap_03>
{
    static constexpr STwinStyle layout = {ETwinStyle::Style_03, 1, 64, 1};
};
template<>
struct SCopyCase<CPrintUnitDataMap_03_01>
{
    static constexpr STwinStyle layout = {ETwinStyle::Style_03_01, 1, 12, 1};
};

template<class TMap>
class CMapCopy : public testing::Test
{
protected:
    static constexpr STwinStyle layout = SCopyCase<TMap>::layout;

    // A line through the copy and through the twin.
    void ExpectMapsLikeTheTwin(const TMap& map)
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
    const TMap& m_original = static_cast<const TMap&>(*m_made);
};

using EveryMap =
    testing::Types<CPrintUnitDataMap_1, CPrintUnitDataMap_2, CPrintUnitDataMap_5, CPrintUnitDataMap_6,
                   CPrintUnitDataMap_7, CPrintUnitDataMap_8, CPrintUnitDataMap_03, CPrintUnitDataMap_03_01>;

} // namespace

TYPED_TEST_SUITE(CMapCopy, EveryMap);

TYPED_TEST(CMapCopy, MapsLikeItsOriginal)
{
    TypeParam copy(this->m_original);
    EXPECT_EQ(copy.AllMapData_Get(), this->m_original.AllMapData_Get());
    this->ExpectMapsLikeTheTwin(copy);
    A::MapData_Set(copy, nullptr); // one owner only
}

TYPED_TEST(CMapCopy, TakesOverAllThatIsAssignedToIt)
{
    TypeParam copy;
    EXPECT_EQ(&(copy = this->m_original), &copy);
    EXPECT_EQ(copy.AllMapData_Get(), this->m_original.AllMapData_Get());
    EXPECT_EQ(copy.DataFrameWidth(), this->m_original.DataFrameWidth());
    EXPECT_EQ(copy.MapDataSizeOfByte(), this->m_original.MapDataSizeOfByte());
    this->ExpectMapsLikeTheTwin(copy);
    A::MapData_Set(copy, nullptr); // one owner only
}
