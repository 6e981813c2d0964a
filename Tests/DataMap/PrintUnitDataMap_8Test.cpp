// The map of two planes: pattern indices, the 16-entry table, the planes of a line, and its unmasked tail.
#include "Tests/DataMap/MapTestSupport.h"

#include <array>

namespace
{
using A = SMapTestAccess;

STwinStyle Layout(int frameWidth)
{
    return {ETwinStyle::Style_8, 2, frameWidth, 1};
}

// Records every look-up.
class CLookUpProbe : public CPrintUnitDataMap_8
{
public:
    const unsigned char* ByteMapData_Buffer(int unitIndex, int byteValue) const override
    {
        m_lookUps.emplace_back(unitIndex, byteValue);
        return CPrintUnitDataMap_8::ByteMapData_Buffer(unitIndex, byteValue);
    }
    mutable std::vector<std::pair<int, int>> m_lookUps;
};

// Replaces a map's table by one that has set bits before and behind it; puts the map's own back in the end.
class CTableFence
{
public:
    explicit CTableFence(CPrintUnitDataMap_8& map) : m_map(map), m_pOwn(A::MapData(map))
    {
        const auto size = static_cast<std::size_t>(A::MapDataSize(map));
        m_fenced.assign(size + 2 * margin, 0xFF);
        std::copy_n(m_pOwn, size, m_fenced.begin() + margin);
        A::MapData_Set(map, m_fenced.data() + margin);
    }
    ~CTableFence() { A::MapData_Set(m_map, m_pOwn); }
    CTableFence(const CTableFence&) = delete;
    CTableFence& operator=(const CTableFence&) = delete;

private:
    static constexpr std::size_t margin = 64;
    CPrintUnitDataMap_8& m_map;
    unsigned char* m_pOwn; // the map's
    Bytes m_fenced;
};
} // namespace

TEST(PrintUnitDataMap_8, InitSetsTheGeometryOfSixteenEntriesPerUnit)
{
    const CLogCapture log;
    CPrintUnitDataMap_8 map;
    ASSERT_TRUE(map.Init(8));
    EXPECT_EQ(map.SrcBitCount(), 1);
    EXPECT_EQ(A::SrcBitMask(map), 1);
    EXPECT_EQ(map.DstBitCount(), 1);
    EXPECT_EQ(map.DataFrameWidth(), 8);
    EXPECT_EQ(A::UnitCount(map), 8);
    EXPECT_EQ(map.MapDataSizeOfByte(), 4);
    EXPECT_EQ(A::UnitMapDataSize(map), 64);
    EXPECT_EQ(A::MapDataSize(map), 512);
    EXPECT_EQ(map.SrcPixelCount_2_BoardBitCount(10), 80);
    EXPECT_TRUE(log.Records().empty());
}

TEST(PrintUnitDataMap_8, TheWholeTableIsThatOfTheTwin)
{
    for (const int width : {8, 16, 40})
    {
        const auto map = Map_Make(Layout(width));
        const CBoardTwin twin(Layout(width));
        const auto entrySize = static_cast<std::size_t>(map->MapDataSizeOfByte());
        for (int unit = 0; unit < width; ++unit)
        {
            for (int pattern = 0; pattern < 16; ++pattern)
            {
                const int high = (pattern & 8) << 4 | (pattern & 4) << 3 | (pattern & 2) << 2 | (pattern & 1) << 1;
                const Bytes src = {static_cast<unsigned char>(high)};
                Bytes planes(2 * entrySize);
                twin.Line_Map({unit, 1, 8, src}, planes, static_cast<int>(planes.size()));
                planes.resize(entrySize);
                const unsigned char* entry =
                    map->AllMapData_Get() + unit * A::UnitMapDataSize(*map) + pattern * map->MapDataSizeOfByte();
                ASSERT_EQ(Bytes(entry, entry + entrySize), planes) << "unit " << unit << ", pattern " << pattern;
                ASSERT_EQ(map->ByteMapData_Buffer(unit, high), entry);
                ASSERT_EQ(map->ByteMapData_Buffer(unit, high >> 1), entry) << "the low-bit plane shares the entry";
            }
        }
    }
}

TEST(PrintUnitDataMap_8, PatternIndicesNameTheValuesOfBothPlanes)
{
    CPrintUnitDataMap_8 map;
    const std::vector<std::array<int, 3>> rows = {{0, 0, 0}, {1, 2, 1}, {5, 34, 17}, {10, 136, 68}, {15, 170, 85}};
    for (const auto& [index, high, low] : rows)
    {
        EXPECT_EQ(A::Index_2_ByteValue(map, index), high);
        EXPECT_EQ(A::Index_2_ByteValue_Bit0246(map, index), high);
        EXPECT_EQ(A::Index_2_ByteValue(map, 16 + index), low);
        EXPECT_EQ(A::Index_2_ByteValue_Bit1357(map, 16 + index), low);
        EXPECT_EQ(A::ByteValue_2_Index_Bit0246(map, high), index);
        EXPECT_EQ(A::ByteValue_2_Index_Bit1357(map, low), index);
    }
}

TEST(PrintUnitDataMap_8, EveryIndexComesBackFromItsValue)
{
    CPrintUnitDataMap_8 map;
    for (int index = 0; index < 16; ++index)
    {
        EXPECT_EQ(A::ByteValue_2_Index_Bit0246(map, A::Index_2_ByteValue(map, index)), index);
        EXPECT_EQ(A::ByteValue_2_Index_Bit1357(map, A::Index_2_ByteValue(map, 16 + index)), index);
    }
}

TEST(PrintUnitDataMap_8, AnIndexOutsideItsPlaneGivesZero)
{
    CPrintUnitDataMap_8 map;
    EXPECT_EQ(A::Index_2_ByteValue_Bit1357(map, 3), 0);
    EXPECT_EQ(A::Index_2_ByteValue_Bit1357(map, 15), 0);
    EXPECT_EQ(A::Index_2_ByteValue_Bit1357(map, 32), 0);
    EXPECT_EQ(A::Index_2_ByteValue_Bit0246(map, 16), 0);
    EXPECT_EQ(A::Index_2_ByteValue_Bit0246(map, 31), 0);
    EXPECT_EQ(A::Index_2_ByteValue_Bit0246(map, -1), 0);
    EXPECT_EQ(A::Index_2_ByteValue(map, -1), 0);
    EXPECT_EQ(A::Index_2_ByteValue(map, 47), 0);
}

TEST(PrintUnitDataMap_8, AValueOutsideItsPlaneHasNoIndex)
{
    const CPrintUnitDataMap_8 map;
    EXPECT_EQ(A::ByteValue_2_Index_Bit0246(map, 0x03), -1);
    for (int value = 0; value < 256; ++value)
    {
        EXPECT_EQ(A::ByteValue_2_Index_Bit0246(map, value) == -1, (value & 0x55) != 0) << value;
        EXPECT_EQ(A::ByteValue_2_Index_Bit1357(map, value) == -1, (value & 0xAA) != 0) << value;
    }
}

TEST(PrintUnitDataMap_8, LookUpsUseTheLowEightBitsOnly)
{
    const auto map = Map_Make(Layout(8));
    EXPECT_EQ(map->ByteMapData_Buffer(2, 0x5500 + 0xA8), map->ByteMapData_Buffer(2, 0xA8));
    EXPECT_EQ(map->ByteMapData_Buffer(2, -256 + 0x15), map->ByteMapData_Buffer(2, 0x15));
}

TEST(PrintUnitDataMap_8, AValueOfBothPlanesPointsOneEntryBeforeTheUnit)
{
    const auto map = Map_Make(Layout(8));
    for (const int value : {0x03, 0xFF, 0xC0, 0x81})
    {
        EXPECT_EQ(map->ByteMapData_Buffer(3, value), map->AllMapData_Get() + 3 * 64 - 4) << value;
    }
}

TEST(PrintUnitDataMap_8, AFirstPixelOfThreeSetsTheSameBitInBothPlanes)
{
    const auto map = Map_Make(Layout(8));
    Bytes dst(8);
    EXPECT_TRUE(Line_Map(*map, Param_Make(3, 8), {0xC0}, dst));
    EXPECT_EQ(dst, Bytes_With(8, {{0, 0x02}, {4, 0x02}}));
}

TEST(PrintUnitDataMap_8, TheFourPixelsOfAByteStandInTwoFrames)
{
    const auto map = Map_Make(Layout(8));
    const std::vector<std::pair<int, Bytes>> rows = {
        {0x80, Bytes_With(8, {{0, 0x20}})}, {0x20, Bytes_With(8, {{0, 0x10}})}, {0x08, Bytes_With(8, {{2, 0x20}})},
        {0x02, Bytes_With(8, {{2, 0x10}})}, {0x40, Bytes_With(8, {{4, 0x20}})}, {0x10, Bytes_With(8, {{4, 0x10}})},
        {0x04, Bytes_With(8, {{6, 0x20}})}, {0x01, Bytes_With(8, {{6, 0x10}})}};
    for (const auto& [value, expected] : rows)
    {
        Bytes dst(8);
        EXPECT_TRUE(Line_Map(*map, Param_Make(1, 8), {static_cast<unsigned char>(value)}, dst));
        EXPECT_EQ(dst, expected) << value;
    }
}

TEST(PrintUnitDataMap_8, ASourceByteOfZeroChangesNothing)
{
    const auto map = Map_Make(Layout(8));
    EXPECT_EQ(map->ByteMapData_Buffer(5, 0), map->AllMapData_Get() + 5 * 64);
    EXPECT_EQ(Entry_Get(*map, 5, 0), Bytes(4));
    Bytes dst(8, 0x41);
    EXPECT_TRUE(Line_Map(*map, Param_Make(5, 8), {0x00}, dst));
    EXPECT_EQ(dst, Bytes(8, 0x41));
}

TEST(PrintUnitDataMap_8, ALineIsOredIntoWhatIsThere)
{
    const auto map = Map_Make(Layout(8));
    Bytes dst(8, 0x01);
    EXPECT_TRUE(Line_Map(*map, Param_Make(0, 8), {0xFF}, dst));
    EXPECT_EQ(dst, (Bytes{0xC1, 0x01, 0xC1, 0x01, 0xC1, 0x01, 0xC1, 0x01}));
}

TEST(PrintUnitDataMap_8, TwelveBitsMapOneMaskedByteAndThenTheTailUnmasked)
{
    CLookUpProbe map;
    ASSERT_TRUE(map.Init(8));
    Bytes dst(16);
    EXPECT_TRUE(Line_Map(map, Param_Make(3, 12), {0xFF, 0xF0}, dst));
    EXPECT_THAT(map.m_lookUps,
                testing::ElementsAre(std::pair(3, 0xAA), std::pair(3, 0xF0), std::pair(3, 0x55), std::pair(3, 0xF0)));
}

TEST(PrintUnitDataMap_8, ATailOfOnePlaneGoesToBothHalves)
{
    const auto map = Map_Make(Layout(8));
    for (const int tail : {0x80, 0x40})
    {
        Bytes dst(16);
        EXPECT_TRUE(Line_Map(*map, Param_Make(3, 12), {0x00, static_cast<unsigned char>(tail)}, dst));
        EXPECT_EQ(dst, Bytes_With(16, {{4, 0x02}, {12, 0x02}})) << tail;
    }
}

TEST(PrintUnitDataMap_8, ATailOfBothPlanesAddsAllPixelsOfTheUnitBefore)
{
    const auto map = Map_Make(Layout(8));
    Bytes dst(16);
    EXPECT_TRUE(Line_Map(*map, Param_Make(3, 12), {0x00, 0xC0}, dst));
    EXPECT_EQ(dst, Bytes_With(16, {{4, 0x0C}, {6, 0x0C}, {12, 0x0C}, {14, 0x0C}}));
}

TEST(PrintUnitDataMap_8, ATailOfBothPlanesAddsNothingForUnitZeroAndReadsNothingBeforeTheTable)
{
    CPrintUnitDataMap_8 map;
    ASSERT_TRUE(map.Init(8));
    const CTableFence fence(map);
    Bytes dst(16);
    EXPECT_TRUE(Line_Map(map, Param_Make(0, 12), {0x00, 0xC0}, dst));
    EXPECT_EQ(dst, Bytes(16));
    EXPECT_TRUE(Line_Map(map, Param_Make(0, 12), {0xC0, 0xFF}, dst));
    EXPECT_EQ(dst, Bytes_With(16, {{0, 0x80}, {8, 0x80}})) << "the whole bytes are mapped all the same";
    EXPECT_TRUE(Line_Map(map, Param_Make(0, 12), {0x00, 0x80}, dst));
    EXPECT_EQ(dst, Bytes_With(16, {{0, 0x80}, {8, 0x80}, {4, 0x80}, {12, 0x80}})) << "and so is a tail of one plane";
}

TEST(PrintUnitDataMap_8, TheTailIsClippedToItsHalfOfTheLine)
{
    const auto map = Map_Make(Layout(8));
    const auto tailBytes = [](int dstByteCount) { return std::max(0, std::min(dstByteCount / 2 - 4, 4)); };
    for (int dstByteCount = 8; dstByteCount <= 20; ++dstByteCount)
    {
        Bytes dst(24);
        EXPECT_TRUE(Line_Map(*map, Param_Make(0, 9), {0x00, 0xAA}, dst, dstByteCount));
        Bytes expected(24);
        for (int i = 0; i < tailBytes(dstByteCount); i += 2) // units 1 to 7 have no bits: every other byte is zero
        {
            expected[static_cast<std::size_t>(4 + i)] = 0xC0;
            expected[static_cast<std::size_t>(dstByteCount / 2 + 4 + i)] = 0xC0;
        }
        EXPECT_EQ(dst, expected) << dstByteCount;
    }
}

TEST(PrintUnitDataMap_8, WholeBytesAreMappedWhateverTheDestinationSizeSays)
{
    const auto map = Map_Make(Layout(8));
    Bytes dst(24);
    EXPECT_TRUE(Line_Map(*map, Param_Make(0, 16), {0xAA, 0xAA}, dst, 4)); // planes of 2 bytes, 8 are needed
    EXPECT_EQ(dst, (Bytes_With(24, {{0, 0xC0}, {2, 0xC0}, {4, 0xC0}, {6, 0xC0}})));
}

TEST(PrintUnitDataMap_8, AnOddDestinationSizeRoundsTheHalvesDown)
{
    const auto map = Map_Make(Layout(8));
    Bytes dst(9);
    EXPECT_TRUE(Line_Map(*map, Param_Make(0, 8), {0xC0}, dst, 9));
    EXPECT_EQ(dst, Bytes_With(9, {{0, 0x80}, {4, 0x80}}));
}

TEST(PrintUnitDataMap_8, ALineOfNoBitsChangesNothing)
{
    const auto map = Map_Make(Layout(8));
    for (const int lineBitCount : {0, -4, -12})
    {
        Bytes dst(8, 0x41);
        EXPECT_TRUE(Line_Map(*map, Param_Make(1, lineBitCount), {0xFF}, dst));
        EXPECT_EQ(dst, Bytes(8, 0x41));
    }
}

TEST(PrintUnitDataMap_8, AFrameOfNoBitsHasAnEmptyTable)
{
    CPrintUnitDataMap_8 map;
    ASSERT_TRUE(map.Init(0));
    EXPECT_EQ(map.MapDataSizeOfByte(), 0);
    EXPECT_EQ(A::MapDataSize(map), 0);
}

// What has no entry of the style's may have one of a derived class.
TEST(PrintUnitDataMap_8, ALookUpOfItsOwnIsAskedForTheTailOfUnit0)
{
    class CTailMap : public CPrintUnitDataMap_8
    {
    public:
        const unsigned char* ByteMapData_Buffer(int unitIndex, int byteValue) const override
        {
            return byteValue == 0xC0 ? m_entry.data() : CPrintUnitDataMap_8::ByteMapData_Buffer(unitIndex, byteValue);
        }
        Bytes m_entry = Bytes(8, 0x77);
    };
    CTailMap map;
    ASSERT_TRUE(map.Init(16));
    Bytes dst(32);
    Line_Map(map, Param_Make(0, 2), {0xC0}, dst); // a pixel of both planes, and no whole byte
    EXPECT_EQ(dst, Bytes_With(32, {{0, 0x77},
                                   {1, 0x77},
                                   {2, 0x77},
                                   {3, 0x77},
                                   {4, 0x77},
                                   {5, 0x77},
                                   {6, 0x77},
                                   {7, 0x77},
                                   {16, 0x77},
                                   {17, 0x77},
                                   {18, 0x77},
                                   {19, 0x77},
                                   {20, 0x77},
                                   {21, 0x77},
                                   {22, 0x77},
                                   {23, 0x77}}));
    dst.assign(32, 0);
    Line_Map(map, Param_Make(0, 2), {0x30}, dst); // before the table: nothing
    EXPECT_EQ(dst, Bytes(32));
}
