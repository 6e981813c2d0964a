// The dot-size map with a frame per pixel: its tables and the drop sizes that it refuses.
#include "Tests/DataMap/MapTestSupport.h"

using testing::ElementsAre;

namespace
{
using A = SMapTestAccess;

STwinStyle Layout(int dotSizeMode, int frameWidth)
{
    return {ETwinStyle::Style_2, 1, frameWidth, dotSizeMode};
}
} // namespace

TEST(PrintUnitDataMap_2, InitSetsTheGeometryOfTwoBitsPerUnit)
{
    const CLogCapture log;
    CPrintUnitDataMap_2 map;
    EXPECT_EQ(A::DotSizeMode(map), SDotSize::None);
    ASSERT_TRUE(map.Init(SDotSize::Middle, 48));
    EXPECT_EQ(map.SrcBitCount(), 1);
    EXPECT_EQ(A::SrcBitMask(map), 1);
    EXPECT_EQ(map.DstBitCount(), 2);
    EXPECT_EQ(map.DataFrameWidth(), 48);
    EXPECT_EQ(A::UnitCount(map), 24);
    EXPECT_EQ(map.MapDataSizeOfByte(), 48);
    EXPECT_EQ(A::UnitMapDataSize(map), 256 * 48);
    EXPECT_EQ(A::MapDataSize(map), 24 * 256 * 48);
    EXPECT_EQ(A::DotSizeMode(map), SDotSize::Middle);
    EXPECT_EQ(map.SrcPixelCount_2_BoardBitCount(10), 480);
    EXPECT_TRUE(log.Records().empty());
}

TEST(PrintUnitDataMap_2, TheWholeTableOfEveryDropSizeIsThatOfTheTwin)
{
    for (const int mode : {1, 2, 3})
    {
        for (const int width : {2, 8, 13, 16, 40})
        {
            const auto map = Map_Make(Layout(mode, width));
            Table_ExpectTwin(*map, Layout(mode, width), width / 2);
        }
    }
}

TEST(PrintUnitDataMap_2, TheFirstPixelOfUnitZeroHasTheCodeInTheFirstTwoBits)
{
    EXPECT_EQ(Entry_Get(*Map_Make(Layout(1, 16)), 0, 0x80), Bytes_With(16, {{0, 0x40}}));
    EXPECT_EQ(Entry_Get(*Map_Make(Layout(2, 16)), 0, 0x80), Bytes_With(16, {{0, 0x80}}));
    EXPECT_EQ(Entry_Get(*Map_Make(Layout(3, 16)), 0, 0x80), Bytes_With(16, {{0, 0xC0}}));
}

TEST(PrintUnitDataMap_2, TheLastPixelOfTheLastUnitHasTheCodeInTheLastTwoBits)
{
    EXPECT_EQ(Entry_Get(*Map_Make(Layout(1, 16)), 7, 0x01), Bytes_With(16, {{15, 0x01}}));
    EXPECT_EQ(Entry_Get(*Map_Make(Layout(2, 16)), 7, 0x01), Bytes_With(16, {{15, 0x02}}));
    EXPECT_EQ(Entry_Get(*Map_Make(Layout(3, 16)), 7, 0x01), Bytes_With(16, {{15, 0x03}}));
}

TEST(PrintUnitDataMap_2, LinesGoThroughTheGenericMapping)
{
    const auto map = Map_Make(Layout(3, 8));
    Bytes dst(16, 0x80);
    EXPECT_TRUE(Line_Map(*map, Param_Make(3, 9), {0x81, 0x80}, dst, 9));
    EXPECT_EQ(dst,
              (Bytes{0x83, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x83, 0x83, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80}));
}

TEST(PrintUnitDataMap_2, AnUnknownDropSizeFailsWithOneRecordAndKeepsTheEmptyTable)
{
    for (const int mode : {0, 4, -1, 257})
    {
        const CLogCapture log;
        CPrintUnitDataMap_2 map;
        EXPECT_FALSE(map.Init(DotSizeMode_From(mode), 16)) << mode;
        EXPECT_THAT(log.Summary(), ElementsAre("2 failure @PrintUnitDataMap_2"));
        EXPECT_THAT(Log_Functions(log), ElementsAre("CPrintUnitDataMap_2::Init"));
        EXPECT_EQ(A::DotSizeMode(map), DotSizeMode_From(mode));
        EXPECT_EQ(A::MapDataSize(map), 8 * 256 * 16);
        ASSERT_NE(map.AllMapData_Get(), nullptr);
        EXPECT_EQ(Bytes(map.AllMapData_Get(), map.AllMapData_Get() + A::MapDataSize(map)), Bytes(8 * 256 * 16));
    }
}

TEST(PrintUnitDataMap_2, ACopyHasTheDropSizeToo)
{
    CPrintUnitDataMap_2 map;
    ASSERT_TRUE(map.Init(SDotSize::Big, 16));
    CPrintUnitDataMap_2 copy(map);
    EXPECT_EQ(A::DotSizeMode(copy), SDotSize::Big);
    EXPECT_EQ(copy.AllMapData_Get(), map.AllMapData_Get());
    A::MapData_Set(copy, nullptr); // one owner only
}
