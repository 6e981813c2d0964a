// The general map with a frame per pixel: its tables and the bit counts that it refuses.
#include "Tests/DataMap/MapTestSupport.h"

using testing::ElementsAre;

namespace
{
using A = SMapTestAccess;

STwinStyle Layout(int srcBitCount, int frameWidth)
{
    return {ETwinStyle::Style_5, srcBitCount, frameWidth, 1};
}
} // namespace

TEST(PrintUnitDataMap_5, InitSetsTheGeometryOfOneBitPixels)
{
    const CLogCapture log;
    CPrintUnitDataMap_5 map;
    ASSERT_TRUE(map.Init(1, 16));
    EXPECT_EQ(map.SrcBitCount(), 1);
    EXPECT_EQ(map.DstBitCount(), 1);
    EXPECT_EQ(A::SrcBitMask(map), 1);
    EXPECT_EQ(map.DataFrameWidth(), 16);
    EXPECT_EQ(A::UnitCount(map), 16);
    EXPECT_EQ(map.MapDataSizeOfByte(), 16);
    EXPECT_EQ(A::UnitMapDataSize(map), 4096);
    EXPECT_EQ(A::MapDataSize(map), 65536);
    EXPECT_EQ(map.SrcPixelCount_2_BoardBitCount(10), 160);
    EXPECT_TRUE(log.Records().empty());
}

TEST(PrintUnitDataMap_5, InitSetsTheGeometryOfTwoBitPixels)
{
    CPrintUnitDataMap_5 map;
    ASSERT_TRUE(map.Init(2, 16));
    EXPECT_EQ(map.SrcBitCount(), 2);
    EXPECT_EQ(map.DstBitCount(), 2);
    EXPECT_EQ(A::SrcBitMask(map), 3);
    EXPECT_EQ(A::UnitCount(map), 8);
    EXPECT_EQ(map.MapDataSizeOfByte(), 8);
    EXPECT_EQ(A::UnitMapDataSize(map), 2048);
    EXPECT_EQ(A::MapDataSize(map), 16384);
}

TEST(PrintUnitDataMap_5, TheWholeTableIsThatOfTheTwin)
{
    for (const int width : {1, 7, 8, 16, 24, 33})
    {
        Table_ExpectTwin(*Map_Make(Layout(1, width)), Layout(1, width), width);
    }
    for (const int width : {2, 6, 8, 16, 24, 34})
    {
        Table_ExpectTwin(*Map_Make(Layout(2, width)), Layout(2, width), width / 2);
    }
}

TEST(PrintUnitDataMap_5, TheFirstTwoBitPixelOfUnitThreeIsAtPositionsSixAndSeven)
{
    const auto map = Map_Make(Layout(2, 16));
    EXPECT_EQ(Entry_Get(*map, 3, 0xC0), Bytes_With(8, {{0, 0x03}}));
    EXPECT_EQ(Entry_Get(*map, 3, 0x80), Bytes_With(8, {{0, 0x02}})) << "most significant bit first";
    EXPECT_EQ(Entry_Get(*map, 3, 0x40), Bytes_With(8, {{0, 0x01}}));
    EXPECT_EQ(Entry_Get(*map, 4, 0x01), Bytes_With(8, {{7, 0x40}})) << "the last pixel in the last frame";
}

TEST(PrintUnitDataMap_5, OneBitPixelsStandInPlainOrder)
{
    const auto map = Map_Make(Layout(1, 16));
    EXPECT_EQ(Entry_Get(*map, 0, 0x80), Bytes_With(16, {{0, 0x80}}));
    EXPECT_EQ(Entry_Get(*map, 0, 0x40), Bytes_With(16, {{2, 0x80}}));
    EXPECT_EQ(Entry_Get(*map, 15, 0x01), Bytes_With(16, {{15, 0x01}}));
}

TEST(PrintUnitDataMap_5, InitRefusesEveryBitCountButOneAndTwoWithARecordFromTheBaseAndOneOfItsOwn)
{
    for (const int bits : {0, 3, 4, -2})
    {
        const CLogCapture log;
        CPrintUnitDataMap_5 map;
        EXPECT_FALSE(map.Init(bits, 16)) << bits;
        EXPECT_EQ(map.AllMapData_Get(), nullptr);
        EXPECT_THAT(log.Summary(), ElementsAre("2 failure @PrintUnitDataMap_Base", "2 failure @PrintUnitDataMap_5"));
        EXPECT_THAT(Log_Functions(log), ElementsAre("CPrintUnitDataMap_Base::Init", "CPrintUnitDataMap_5::Init"));
    }
}

TEST(PrintUnitDataMap_5, ASecondInitReplacesTheTable)
{
    CPrintUnitDataMap_5 map;
    ASSERT_TRUE(map.Init(1, 32));
    ASSERT_TRUE(map.Init(2, 16));
    Table_ExpectTwin(map, Layout(2, 16), 8); // the leak checker sees a first table that stays
}
