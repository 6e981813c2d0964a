// The plain map with a byte column per unit.
#include "Tests/DataMap/MapTestSupport.h"

using testing::ElementsAre;

namespace
{
using A = SMapTestAccess;
} // namespace

TEST(PrintUnitDataMap_6, InitSetsTheGeometryOfByteColumnsAndBuildsNoTable)
{
    for (const int bits : {1, 2})
    {
        const CLogCapture log;
        CPrintUnitDataMap_6 map;
        ASSERT_TRUE(map.Init(bits, 24));
        EXPECT_EQ(map.SrcBitCount(), bits);
        EXPECT_EQ(map.DstBitCount(), bits);
        EXPECT_EQ(A::SrcBitMask(map), bits == 1 ? 1 : 3);
        EXPECT_EQ(map.DataFrameWidth(), 24);
        EXPECT_EQ(A::UnitCount(map), 24) << "byte columns, not bits";
        EXPECT_EQ(map.MapDataSizeOfByte(), 1);
        EXPECT_EQ(map.AllMapData_Get(), nullptr);
        EXPECT_EQ(A::MapDataSize(map), 0);
        EXPECT_TRUE(log.Records().empty());
    }
}

TEST(PrintUnitDataMap_6, UnitThreeStoresItsBytesSixteenApart)
{
    const auto map = Map_Init<CPrintUnitDataMap_6>(1, 16);
    Bytes dst(32, 0x77);
    EXPECT_TRUE(Line_Map(*map, Param_Make(3, 16), {0xAB, 0xCD}, dst));
    Bytes expected(32, 0x77);
    expected[3] = 0xAB;
    expected[19] = 0xCD;
    EXPECT_EQ(dst, expected);
}

TEST(PrintUnitDataMap_6, FiveTwoBitPixelsAreTwoBytes)
{
    const auto map = Map_Init<CPrintUnitDataMap_6>(2, 16);
    Bytes dst(48, 0x77);
    EXPECT_TRUE(Line_Map(*map, Param_Make(0, 10), {0x12, 0x34, 0x56}, dst));
    Bytes expected(48, 0x77);
    expected[0] = 0x12;
    expected[16] = 0x34;
    EXPECT_EQ(dst, expected);
    EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(5), 256);
}

TEST(PrintUnitDataMap_6, ALineIsStoredOverWhatIsThere)
{
    const auto map = Map_Init<CPrintUnitDataMap_6>(1, 2);
    Bytes dst(4, 0xFF);
    EXPECT_TRUE(Line_Map(*map, Param_Make(1, 16), {0x01, 0x00}, dst));
    EXPECT_EQ(dst, (Bytes{0xFF, 0x01, 0xFF, 0x00}));
}

TEST(PrintUnitDataMap_6, TheDestinationSizeIsNotLookedAt)
{
    const auto map = Map_Init<CPrintUnitDataMap_6>(1, 2);
    for (const int dstByteCount : {-1, 0, 1, 3, 10000})
    {
        Bytes dst(4);
        EXPECT_TRUE(Line_Map(*map, Param_Make(0, 15), {0x81, 0x82}, dst, dstByteCount));
        EXPECT_EQ(dst, (Bytes{0x81, 0x00, 0x82, 0x00})) << dstByteCount;
    }
}

TEST(PrintUnitDataMap_6, ABoardLineHasWholeColumnsAtTheSourcesDepth)
{
    const auto oneBit = Map_Init<CPrintUnitDataMap_6>(1, 16);
    EXPECT_EQ(oneBit->SrcPixelCount_2_BoardBitCount(0), 0);
    EXPECT_EQ(oneBit->SrcPixelCount_2_BoardBitCount(8), 1 * 16 * 8);
    EXPECT_EQ(oneBit->SrcPixelCount_2_BoardBitCount(9), 2 * 16 * 8);
    const auto twoBit = Map_Init<CPrintUnitDataMap_6>(2, 16);
    EXPECT_EQ(twoBit->SrcPixelCount_2_BoardBitCount(9), 3 * 16 * 8);
}

TEST(PrintUnitDataMap_6, InitRefusesEverySourceBitCountButOneAndTwo)
{
    for (const int bits : {3, 0, -1, 4, 8})
    {
        const CLogCapture log;
        CPrintUnitDataMap_6 map;
        EXPECT_FALSE(map.Init(bits, 16)) << bits;
        EXPECT_EQ(map.SrcBitCount(), bits);
        EXPECT_EQ(A::SrcBitMask(map), 0);
        EXPECT_EQ(map.DataFrameWidth(), 0);
        EXPECT_THAT(log.Summary(), ElementsAre("2 failure @PrintUnitDataMap_6"));
        EXPECT_THAT(Log_Functions(log), ElementsAre("CPrintUnitDataMap_6::Init"));
    }
}

TEST(PrintUnitDataMap_6, TheBasesInitUsesTheStylesEntrySize)
{
    CPrintUnitDataMap_6 map;
    ASSERT_TRUE(map.CPrintUnitDataMap_Base::Init(1, 1, 16));
    EXPECT_EQ(map.MapDataSizeOfByte(), 1);
}

TEST(PrintUnitDataMap_6, BuildsNothingAndSaysSo)
{
    CPrintUnitDataMap_6 map;
    EXPECT_TRUE(A::Init_MapDataBuffer(map));
    EXPECT_EQ(map.AllMapData_Get(), nullptr);
}

TEST(PrintUnitDataMap_6, TheInheritedLookUpHasNoTableToPointAt)
{
    const auto map = Map_Init<CPrintUnitDataMap_6>(1, 16);
    EXPECT_EQ(map->ByteMapData_Buffer(0, 0), nullptr);
}
