// The map of style 1: its table, bit by bit and against the twin, and the widths that it refuses.
#include "Tests/DataMap/MapTestSupport.h"

using testing::ElementsAre;

namespace
{
using A = SMapTestAccess;
const STwinStyle layout = {ETwinStyle::Style_1, 1, 16, 1};
} // namespace

TEST(PrintUnitDataMap_1, InitSetsTheGeometryOfSixteenUnits)
{
    const CLogCapture log;
    CPrintUnitDataMap_1 map;
    ASSERT_TRUE(map.Init(16));
    EXPECT_EQ(map.SrcBitCount(), 1);
    EXPECT_EQ(A::SrcBitMask(map), 1);
    EXPECT_EQ(map.DstBitCount(), 1);
    EXPECT_EQ(map.DataFrameWidth(), 16);
    EXPECT_EQ(A::UnitCount(map), 16);
    EXPECT_EQ(map.MapDataSizeOfByte(), 16);
    EXPECT_EQ(A::UnitMapDataSize(map), 4096);
    EXPECT_EQ(A::MapDataSize(map), 65536);
    EXPECT_EQ(map.SrcPixelCount_2_BoardBitCount(10), 160);
    EXPECT_TRUE(log.Records().empty());
}

TEST(PrintUnitDataMap_1, TheWholeTableIsThatOfTheTwin)
{
    const auto map = Map_Make(layout);
    Table_ExpectTwin(*map, layout, 16);
}

TEST(PrintUnitDataMap_1, UnitZerosFirstPixelIsBitZeroOfByteThree)
{
    const auto map = Map_Make(layout);
    EXPECT_EQ(Entry_Get(*map, 0, 0x80), Bytes_With(16, {{3, 0x01}}));
}

TEST(PrintUnitDataMap_1, UnitNinesLastPixelIsBitOneOfByteTwelve)
{
    const auto map = Map_Make(layout);
    EXPECT_EQ(Entry_Get(*map, 9, 0x01), Bytes_With(16, {{12, 0x02}}));
}

TEST(PrintUnitDataMap_1, EveryPixelHasItsOwnByte)
{
    const auto map = Map_Make(layout);
    const std::vector<std::size_t> byteOfPixel = {3, 1, 7, 5, 11, 9, 15, 13};
    for (std::size_t pixel = 0; pixel < 8; ++pixel)
    {
        EXPECT_EQ(Entry_Get(*map, 2, 0x80 >> pixel), Bytes_With(16, {{byteOfPixel[pixel], 0x04}}));
        EXPECT_EQ(Entry_Get(*map, 10, 0x80 >> pixel), Bytes_With(16, {{byteOfPixel[pixel] - 1, 0x04}}));
    }
}

TEST(PrintUnitDataMap_1, UnitFifteensFullByteSetsBitSevenOfTheEvenBytes)
{
    const auto map = Map_Make(layout);
    Bytes expected(16);
    for (const std::size_t byte : {2U, 0U, 6U, 4U, 10U, 8U, 14U, 12U})
    {
        expected[byte] = 0x80;
    }
    EXPECT_EQ(Entry_Get(*map, 15, 0xFF), expected);
}

TEST(PrintUnitDataMap_1, EveryEntryOfValueZeroIsZero)
{
    const auto map = Map_Make(layout);
    for (int unit = 0; unit < 16; ++unit)
    {
        EXPECT_EQ(Entry_Get(*map, unit, 0), Bytes(16));
    }
}

TEST(PrintUnitDataMap_1, UnitsEightApartNeverTouchTheSameByte)
{
    const auto map = Map_Make(layout);
    for (int unit = 0; unit < 8; ++unit)
    {
        for (int value = 1; value < 256; ++value)
        {
            const Bytes low = Entry_Get(*map, unit, value);
            const Bytes high = Entry_Get(*map, unit + 8, value);
            for (std::size_t i = 0; i < 16; ++i)
            {
                ASSERT_TRUE(low[i] == 0 || high[i] == 0) << "unit " << unit << ", value " << value << ", byte " << i;
            }
        }
    }
}

TEST(PrintUnitDataMap_1, AnyOtherWidthIsReportedWithTheWidth)
{
    for (const int width : {32, 0, -16, 15, 17, 64})
    {
        const CLogCapture log;
        CPrintUnitDataMap_1 map;
        EXPECT_FALSE(map.Init(width));
        EXPECT_EQ(map.AllMapData_Get(), nullptr);
        EXPECT_THAT(log.Summary(), ElementsAre("2 DataFrameWidth = " + std::to_string(width) + " @PrintUnitDataMap_1"));
        EXPECT_THAT(Log_Functions(log), ElementsAre("CPrintUnitDataMap_1::Init"));
        EXPECT_EQ(map.DataFrameWidth(), width);
        EXPECT_EQ(A::UnitCount(map), width);
        EXPECT_EQ(map.MapDataSizeOfByte(), width);
    }
}

TEST(PrintUnitDataMap_1, TheBasesInitUsesTheStylesEntrySize)
{
    CPrintUnitDataMap_1 map;
    ASSERT_TRUE(map.Init(2, 2, 16)); // the base's own formula gives 8
    EXPECT_EQ(map.MapDataSizeOfByte(), 16);
}

TEST(PrintUnitDataMap_1, UsageLeavesNothingBehind)
{
    const CLogCapture log;
    CPrintUnitDataMap_1::Usage();
    EXPECT_TRUE(log.Records().empty());
}
