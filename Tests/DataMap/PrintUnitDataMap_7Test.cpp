// The dot-size map with a byte column per unit: its one table, its stores, and the drop sizes that it refuses.
#include "Tests/DataMap/MapTestSupport.h"

#include <array>

using testing::ElementsAre;

namespace
{
using A = SMapTestAccess;

STwinStyle Layout(int dotSizeMode, int frameWidth)
{
    return {ETwinStyle::Style_7, 1, frameWidth, dotSizeMode};
}

// What unit 1 of 4 gets in its column of a line whose other bytes are all 0x77, as the whole line.
Bytes Line_OfFourColumns(const std::vector<int>& column, std::size_t size)
{
    Bytes line(size, 0x77);
    for (std::size_t i = 0; i < column.size(); ++i)
    {
        line.at(1 + 4 * i) = static_cast<unsigned char>(column[i]);
    }
    return line;
}
} // namespace

TEST(PrintUnitDataMap_7, InitSetsTheGeometryOfByteColumns)
{
    const CLogCapture log;
    CPrintUnitDataMap_7 map;
    EXPECT_EQ(A::DotSizeMode(map), SDotSize::None);
    ASSERT_TRUE(map.Init(SDotSize::Small, 24));
    EXPECT_EQ(map.SrcBitCount(), 1);
    EXPECT_EQ(A::SrcBitMask(map), 1);
    EXPECT_EQ(map.DstBitCount(), 2);
    EXPECT_EQ(map.DataFrameWidth(), 24);
    EXPECT_EQ(A::UnitCount(map), 24) << "byte columns, not pairs of bits";
    EXPECT_EQ(map.MapDataSizeOfByte(), 2);
    EXPECT_EQ(A::UnitMapDataSize(map), 512);
    EXPECT_EQ(A::MapDataSize(map), 512);
    EXPECT_EQ(A::DotSizeMode(map), SDotSize::Small);
    EXPECT_TRUE(log.Records().empty());
}

TEST(PrintUnitDataMap_7, BigDropsOfA5AreCCAnd33)
{
    EXPECT_EQ(Entry_Get(*Map_Make(Layout(3, 16)), 0, 0xA5), (Bytes{0xCC, 0x33}));
    EXPECT_EQ(Entry_Get(*Map_Make(Layout(2, 16)), 0, 0xA5), (Bytes{0x88, 0x22}));
    EXPECT_EQ(Entry_Get(*Map_Make(Layout(1, 16)), 0, 0xA5), (Bytes{0x44, 0x11}));
}

TEST(PrintUnitDataMap_7, TheWholeTableOfEveryDropSizeIsThatOfTheTwin)
{
    for (const int mode : {1, 2, 3})
    {
        const auto map = Map_Make(Layout(mode, 16));
        const CBoardTwin twin(Layout(mode, 1)); // one column: the line is the entry
        for (int value = 0; value < 256; ++value)
        {
            const Bytes src = {static_cast<unsigned char>(value)};
            Bytes expected(2);
            twin.Line_Map({0, 1, 8, src}, expected, 2);
            EXPECT_EQ(Entry_Get(*map, 0, value), expected) << "mode " << mode << ", value " << value;
        }
    }
}

TEST(PrintUnitDataMap_7, TheInheritedLookUpStaysTheGeneralFormula)
{
    const auto map = Map_Make(Layout(3, 16));
    EXPECT_EQ(map->ByteMapData_Buffer(0, 255), map->AllMapData_Get() + 510);
    EXPECT_EQ(map->ByteMapData_Buffer(1, 0), map->AllMapData_Get() + 512);
}

TEST(PrintUnitDataMap_7, NinePixelsTakeTheThirdByteFromTheHighNibble)
{
    const auto map = Map_Make(Layout(3, 4));
    Bytes dst(16, 0x77);
    EXPECT_TRUE(Line_Map(*map, Param_Make(1, 9), {0xA5, 0x8F}, dst));
    EXPECT_EQ(dst, Line_OfFourColumns({0xCC, 0x33, 0xC0}, 16)) << "the low nibble of the second byte is not reached";
}

TEST(PrintUnitDataMap_7, PixelsBeyondTheLineEndInsideTheLastByteAreMapped)
{
    const auto map = Map_Make(Layout(2, 4));
    Bytes dst(16, 0x77);
    EXPECT_TRUE(Line_Map(*map, Param_Make(1, 1), {0xFF}, dst));
    EXPECT_EQ(dst, Line_OfFourColumns({0xAA}, 16));
}

TEST(PrintUnitDataMap_7, ALineIsStoredOverWhatIsThere)
{
    const auto map = Map_Make(Layout(1, 4));
    Bytes dst(16, 0x77);
    EXPECT_TRUE(Line_Map(*map, Param_Make(1, 16), {0x00, 0x00}, dst));
    EXPECT_EQ(dst, Line_OfFourColumns({0x00, 0x00, 0x00, 0x00}, 16));
}

TEST(PrintUnitDataMap_7, TheDestinationSizeIsNotLookedAt)
{
    const auto map = Map_Make(Layout(1, 4));
    for (const int dstByteCount : {-1, 0, 1, 8, 10000})
    {
        Bytes dst(16, 0x77);
        EXPECT_TRUE(Line_Map(*map, Param_Make(1, 16), {0xFF, 0x0F}, dst, dstByteCount));
        EXPECT_EQ(dst, Line_OfFourColumns({0x55, 0x55, 0x00, 0x55}, 16)) << dstByteCount;
    }
}

TEST(PrintUnitDataMap_7, ALineOfNoPixelsStoresNothing)
{
    const auto map = Map_Make(Layout(1, 4));
    Bytes dst(4, 0x77);
    EXPECT_TRUE(Line_Map(*map, Param_Make(1, 0), {0xFF}, dst));
    EXPECT_EQ(dst, Bytes(4, 0x77));
}

TEST(PrintUnitDataMap_7, ABoardLineHasWholeColumnsOfTwoBitsPerPixel)
{
    const auto map = Map_Make(Layout(1, 16));
    EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(0), 0);
    EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(1), 1 * 16 * 8);
    EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(4), 1 * 16 * 8);
    EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(9), 3 * 16 * 8);
}

TEST(PrintUnitDataMap_7, AnUnknownDropSizeFailsWithOneRecord)
{
    for (const int mode : {0, 4, -1, 257})
    {
        const CLogCapture log;
        CPrintUnitDataMap_7 map;
        EXPECT_FALSE(map.Init(DotSizeMode_From(mode), 16)) << mode;
        EXPECT_THAT(log.Summary(), ElementsAre("2 failure @PrintUnitDataMap_7"));
        EXPECT_THAT(Log_Functions(log), ElementsAre("CPrintUnitDataMap_7::Init"));
    }
}

TEST(PrintUnitDataMap_7, InitIsVirtual)
{
    class CProbe : public CPrintUnitDataMap_7
    {
    public:
        using CPrintUnitDataMap_7::Init;
        bool Init(EDotSizeMode /*dotSizeMode*/, int /*dataFrameWidth*/) override { return false; }
    };
    CProbe probe;
    CPrintUnitDataMap_7& map = probe;
    EXPECT_FALSE(map.Init(SDotSize::Big, 16));
}

TEST(PrintUnitDataMap_7, ACopyHasTheDropSizeToo)
{
    CPrintUnitDataMap_7 map;
    ASSERT_TRUE(map.Init(SDotSize::Big, 16));
    CPrintUnitDataMap_7 copy(map);
    EXPECT_EQ(A::DotSizeMode(copy), SDotSize::Big);
    EXPECT_EQ(copy.AllMapData_Get(), map.AllMapData_Get());
    A::MapData_Set(copy, nullptr); // one owner only
}

TEST(PrintUnitDataMap_7, ALineOfNegativeLengthTouchesNothing)
{
    const auto map = Map_Make({ETwinStyle::Style_7, 1, 16, 3});
    for (int lineBitCount = -40; lineBitCount <= 0; ++lineBitCount)
    {
        Bytes dst(64, 0x11);
        Line_Map(*map, Param_Make(2, lineBitCount), Bytes(1, 0xFF), dst);
        EXPECT_EQ(dst, Bytes(64, 0x11)) << lineBitCount;
    }
}
