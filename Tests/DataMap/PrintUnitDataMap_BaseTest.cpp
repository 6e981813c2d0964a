// The base of the maps: geometry, look-up, generic line mapping, what a style may override, copying.
#include "Tests/DataMap/MapTestSupport.h"

#include <array>
#include <cstddef>
#include <type_traits>

using testing::ElementsAre;

namespace
{
using A = SMapTestAccess;

// A map without a table: look-ups are answered by a rule and counted, so that a test sees who asked for what.
class CLookUpProbe : public CPrintUnitDataMap_Base
{
public:
    explicit CLookUpProbe(int entrySize) : m_entry(static_cast<std::size_t>(entrySize))
    {
        m_mapDataSizeOfByte = entrySize;
    }

    // Byte j of every entry is the source byte plus j.
    const unsigned char* ByteMapData_Buffer(int unitIndex, int byteValue) const override
    {
        m_lookUps.emplace_back(unitIndex, byteValue);
        for (std::size_t j = 0; j < m_entry.size(); ++j)
        {
            m_entry[j] = static_cast<unsigned char>(byteValue + static_cast<int>(j));
        }
        return m_entry.data();
    }
    int MapDataSizeOfByte() const override { return 1; }

    mutable std::vector<std::pair<int, int>> m_lookUps;

private:
    mutable Bytes m_entry;
};

// Overrides the size computation, as styles do.
class CSizeProbe : public CPrintUnitDataMap_Base
{
protected:
    void Init_MapDataSizeOfByte() override { m_mapDataSizeOfByte = 1000 + m_unitCount; }
};
} // namespace

TEST(SrcBandDataParam, ThePointerFollowsTheThirdIntegerDirectly)
{
    EXPECT_EQ(offsetof(SSrcBandDataParam, m_customParam), 12U);
    EXPECT_EQ(sizeof(SSrcBandDataParam), 12U + sizeof(void*));
    const std::array<SSrcBandDataParam, 2> params = {};
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&params[1]) - reinterpret_cast<std::uintptr_t>(&params[0]),
              12U + sizeof(void*));
}

TEST(PrintUnitDataMap_Base, StartsWithEveryMemberAtZero)
{
    const CPrintUnitDataMap_Base map;
    EXPECT_EQ(map.MapDataSizeOfByte(), 0);
    EXPECT_EQ(A::UnitMapDataSize(map), 0);
    EXPECT_EQ(map.AllMapData_Get(), nullptr);
    EXPECT_EQ(A::MapDataSize(map), 0);
    EXPECT_EQ(map.SrcBitCount(), 0);
    EXPECT_EQ(map.DstBitCount(), 0);
    EXPECT_EQ(A::SrcBitMask(map), 0);
    EXPECT_EQ(map.DataFrameWidth(), 0);
    EXPECT_EQ(A::UnitCount(map), 0);
}

TEST(PrintUnitDataMap_Base, IsFreedThroughABasePointerWithAndWithoutATable)
{
    std::unique_ptr<CPrintUnitDataMap_Base> withoutTable = std::make_unique<CPrintUnitDataMap_5>();
    EXPECT_EQ(withoutTable->AllMapData_Get(), nullptr);
    withoutTable.reset();
    std::unique_ptr<CPrintUnitDataMap_Base> withTable = Map_Init<CPrintUnitDataMap_5>(1, 16);
    EXPECT_NE(withTable->AllMapData_Get(), nullptr);
    withTable.reset(); // the leak checker sees a table that stays
    EXPECT_TRUE(std::has_virtual_destructor_v<CPrintUnitDataMap_Base>);
}

TEST(PrintUnitDataMap_Base, InitSetsTheGeometryAndBuildsNoTable)
{
    const CLogCapture log;
    CPrintUnitDataMap_Base map;
    ASSERT_TRUE(map.Init(1, 3, 16));
    EXPECT_EQ(map.SrcBitCount(), 1);
    EXPECT_EQ(A::SrcBitMask(map), 1);
    EXPECT_EQ(map.DstBitCount(), 3);
    EXPECT_EQ(map.DataFrameWidth(), 16);
    EXPECT_EQ(A::UnitCount(map), 5);
    EXPECT_EQ(map.MapDataSizeOfByte(), 16);
    EXPECT_EQ(map.AllMapData_Get(), nullptr);
    EXPECT_EQ(A::UnitMapDataSize(map), 0);
    EXPECT_EQ(A::MapDataSize(map), 0);
    EXPECT_TRUE(log.Records().empty());
}

TEST(PrintUnitDataMap_Base, TwoBitPixelsHalveTheEntryAndWidenTheMask)
{
    CPrintUnitDataMap_Base map;
    ASSERT_TRUE(map.Init(2, 2, 20));
    EXPECT_EQ(A::SrcBitMask(map), 3);
    EXPECT_EQ(A::UnitCount(map), 10);
    EXPECT_EQ(map.MapDataSizeOfByte(), 10); // four frames of 20 bits
}

TEST(PrintUnitDataMap_Base, InitWithThreeSourceBitsFailsAndLeavesTheMaskAtZero)
{
    CPrintUnitDataMap_Base map;
    ASSERT_TRUE(map.Init(2, 2, 16));
    const CLogCapture log;
    EXPECT_FALSE(map.Init(3, 4, 64));
    EXPECT_EQ(map.SrcBitCount(), 3);
    EXPECT_EQ(A::SrcBitMask(map), 0);
    EXPECT_EQ(map.DstBitCount(), 2) << "the other members stay as they were";
    EXPECT_EQ(map.DataFrameWidth(), 16);
    EXPECT_EQ(A::UnitCount(map), 8);
    EXPECT_EQ(map.MapDataSizeOfByte(), 8);
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @PrintUnitDataMap_Base"));
    EXPECT_THAT(Log_Functions(log), ElementsAre("CPrintUnitDataMap_Base::Init"));
}

TEST(PrintUnitDataMap_Base, InitRefusesEverySourceBitCountButOneAndTwo)
{
    for (const int bits : {-1, 0, 3, 4, 8, 257})
    {
        const CLogCapture log;
        CPrintUnitDataMap_Base map;
        EXPECT_FALSE(map.Init(bits, 1, 16)) << bits;
        EXPECT_EQ(log.Records().size(), 1U) << bits;
    }
}

TEST(PrintUnitDataMap_Base, InitRunsTheStylesOwnSizeComputationLast)
{
    CSizeProbe map;
    ASSERT_TRUE(map.Init(1, 2, 16));
    EXPECT_EQ(map.MapDataSizeOfByte(), 1008);
}

TEST(PrintUnitDataMap_Base, InitSrcBitMaskIsSilentAboutBadBitCounts)
{
    const CLogCapture log;
    CPrintUnitDataMap_Base map;
    A::SrcBitCount_Set(map, 1);
    EXPECT_TRUE(A::Init_SrcBitMask(map));
    EXPECT_EQ(A::SrcBitMask(map), 1);
    A::SrcBitCount_Set(map, 2);
    EXPECT_TRUE(A::Init_SrcBitMask(map));
    EXPECT_EQ(A::SrcBitMask(map), 3);
    A::SrcBitCount_Set(map, 4);
    EXPECT_FALSE(A::Init_SrcBitMask(map));
    EXPECT_EQ(A::SrcBitMask(map), 0);
    EXPECT_EQ(map.SrcBitCount(), 4);
    EXPECT_TRUE(log.Records().empty());
}

TEST(PrintUnitDataMap_Base, DstBitMaskIsTheDestinationBitCount)
{
    CPrintUnitDataMap_Base map;
    ASSERT_TRUE(map.Init(1, 5, 16));
    EXPECT_EQ(A::DstBitMask(map), 5);
    EXPECT_EQ(A::DstBitMask(map), map.DstBitCount());
}

TEST(PrintUnitDataMap_Base, ABoardLineIsOneFramePerPixel)
{
    CPrintUnitDataMap_Base map;
    ASSERT_TRUE(map.Init(2, 2, 24));
    EXPECT_EQ(map.SrcPixelCount_2_BoardBitCount(0), 0);
    EXPECT_EQ(map.SrcPixelCount_2_BoardBitCount(7), 168);
}

TEST(PrintUnitDataMap_Base, NeedsNoScratchObject)
{
    const CPrintUnitDataMap_Base map;
    EXPECT_EQ(map.CustomParam_Create(), nullptr);
    int something = 7;
    map.CustomParam_Release(&something);
    map.CustomParam_Release(nullptr);
    EXPECT_EQ(something, 7);
}

TEST(PrintUnitDataMap_Base, EntriesFollowEachOtherByValueAndThenByUnit)
{
    const auto map = Map_Init<CPrintUnitDataMap_5>(1, 24);
    const unsigned char* table = map->AllMapData_Get();
    EXPECT_EQ(map->ByteMapData_Buffer(0, 0), table);
    EXPECT_EQ(map->ByteMapData_Buffer(0, 1), table + 24);
    EXPECT_EQ(map->ByteMapData_Buffer(1, 0), table + 256 * 24);
    EXPECT_EQ(map->ByteMapData_Buffer(23, 255), table + A::MapDataSize(*map) - 24);
}

TEST(PrintUnitDataMap_Base, ALineOfNoBitsLeavesTheDestinationUntouched)
{
    const auto map = Map_Init<CPrintUnitDataMap_5>(1, 16);
    Bytes dst(32, 0x11);
    EXPECT_TRUE(Line_Map(*map, Param_Make(3, 0), {0xFF}, dst));
    EXPECT_EQ(dst, Bytes(32, 0x11));
    EXPECT_TRUE(Line_Map(*map, Param_Make(3, -12), {0xFF}, dst));
    EXPECT_EQ(dst, Bytes(32, 0x11));
}

TEST(PrintUnitDataMap_Base, WholeBytesAreMappedWhateverTheDestinationSizeSays)
{
    const auto map = Map_Init<CPrintUnitDataMap_5>(1, 8);
    for (const int dstByteCount : {-5, 0, 3, 8, 24, 1000})
    {
        Bytes dst(24);
        EXPECT_TRUE(Line_Map(*map, Param_Make(0, 16), {0xFF, 0xFF, 0xFF}, dst, dstByteCount));
        Bytes expected(24, 0x80);
        std::fill_n(expected.begin() + 16, 8, static_cast<unsigned char>(0));
        EXPECT_EQ(dst, expected) << "exactly two entries, with a destination size of " << dstByteCount;
    }
}

TEST(PrintUnitDataMap_Base, AStartedLastByteIsMappedWithAllItsBits)
{
    const auto map = Map_Init<CPrintUnitDataMap_5>(1, 8);
    for (int rest = 1; rest <= 7; ++rest)
    {
        Bytes dst(24);
        EXPECT_TRUE(Line_Map(*map, Param_Make(0, 8 + rest), {0x00, 0xFF, 0xFF}, dst));
        Bytes expected(24);
        std::fill_n(expected.begin() + 8, 8, static_cast<unsigned char>(0x80));
        EXPECT_EQ(dst, expected) << "rest " << rest;
    }
}

TEST(PrintUnitDataMap_Base, TheTailIsClippedToTheDestinationSize)
{
    const auto map = Map_Init<CPrintUnitDataMap_5>(1, 8);
    for (int dstByteCount = -3; dstByteCount <= 20; ++dstByteCount)
    {
        Bytes dst(24);
        EXPECT_TRUE(Line_Map(*map, Param_Make(0, 11), {0x00, 0xFF}, dst, dstByteCount));
        Bytes expected(24);
        for (int i = 8; i < std::min(dstByteCount, 16); ++i)
        {
            expected[static_cast<std::size_t>(i)] = 0x80;
        }
        EXPECT_EQ(dst, expected) << "destination size " << dstByteCount;
    }
}

TEST(PrintUnitDataMap_Base, NothingOfTheTailIsWrittenWhenTheWholeBytesFillTheLine)
{
    const auto map = Map_Init<CPrintUnitDataMap_5>(1, 8);
    for (const int dstByteCount : {16, 15, 0, -100})
    {
        Bytes dst(24);
        EXPECT_TRUE(Line_Map(*map, Param_Make(0, 17), {0x00, 0x00, 0xFF}, dst, dstByteCount));
        EXPECT_EQ(dst, Bytes(24)) << dstByteCount;
    }
}

TEST(PrintUnitDataMap_Base, ALineIsOredIntoWhatIsThere)
{
    const auto map = Map_Init<CPrintUnitDataMap_5>(1, 8);
    Bytes dst(12, 0x41);
    EXPECT_TRUE(Line_Map(*map, Param_Make(2, 12), {0xF0, 0xF0}, dst));
    EXPECT_EQ(dst, (Bytes{0x61, 0x61, 0x61, 0x61, 0x41, 0x41, 0x41, 0x41, 0x61, 0x61, 0x61, 0x61}));
}

TEST(PrintUnitDataMap_Base, TwoUnitsGiveTheSameBoardLineInEitherOrder)
{
    const auto map = Map_Init<CPrintUnitDataMap_5>(1, 16);
    const Bytes first = {0xA5, 0x0F};
    const Bytes second = {0xFF, 0x33};
    Bytes ascending(32);
    EXPECT_TRUE(Line_Map(*map, Param_Make(2, 16), first, ascending));
    EXPECT_TRUE(Line_Map(*map, Param_Make(9, 16), second, ascending));
    Bytes descending(32);
    EXPECT_TRUE(Line_Map(*map, Param_Make(9, 16), second, descending));
    EXPECT_TRUE(Line_Map(*map, Param_Make(2, 16), first, descending));
    EXPECT_EQ(ascending, descending);
    EXPECT_EQ(ascending[0], 0x20);
    EXPECT_EQ(ascending[1], 0x40);
}

TEST(PrintUnitDataMap_Base, LooksUpEverySourceByteThroughTheVirtualTable)
{
    const CLookUpProbe map(3);
    Bytes dst(9);
    EXPECT_TRUE(Line_Map(map, Param_Make(6, 20), {0x10, 0x20, 0x40}, dst));
    EXPECT_THAT(map.m_lookUps, ElementsAre(std::pair(6, 0x10), std::pair(6, 0x20), std::pair(6, 0x40)));
    EXPECT_EQ(dst, (Bytes{0x10, 0x11, 0x12, 0x20, 0x21, 0x22, 0x40, 0x41, 0x42}))
        << "the entry size is the member, whatever a style reports";
}

TEST(PrintUnitDataMap_Base, ACopySharesTheTable)
{
    CPrintUnitDataMap_5 map;
    ASSERT_TRUE(map.Init(2, 16));
    CPrintUnitDataMap_5 constructed(map);
    CPrintUnitDataMap_5 assigned;
    assigned = map;
    for (CPrintUnitDataMap_5* copy : {&constructed, &assigned})
    {
        EXPECT_EQ(copy->AllMapData_Get(), map.AllMapData_Get());
        EXPECT_EQ(copy->MapDataSizeOfByte(), 8);
        EXPECT_EQ(A::UnitMapDataSize(*copy), 2048);
        EXPECT_EQ(A::MapDataSize(*copy), 8 * 2048);
        EXPECT_EQ(copy->SrcBitCount(), 2);
        EXPECT_EQ(copy->DstBitCount(), 2);
        EXPECT_EQ(A::SrcBitMask(*copy), 3);
        EXPECT_EQ(copy->DataFrameWidth(), 16);
        EXPECT_EQ(A::UnitCount(*copy), 8);
        A::MapData_Set(*copy, nullptr); // one owner only
    }
}

TEST(PrintUnitDataMap_Base, EveryMapClassCanBeCopied)
{
    const auto copyable = []<class... TMap>()
    { return ((std::is_copy_constructible_v<TMap> && std::is_copy_assignable_v<TMap>)&&...); };
    EXPECT_TRUE((copyable.operator()<CPrintUnitDataMap_Base, CPrintUnitDataMap_1, CPrintUnitDataMap_2,
                                     CPrintUnitDataMap_03, CPrintUnitDataMap_03_01, CPrintUnitDataMap_5,
                                     CPrintUnitDataMap_6, CPrintUnitDataMap_7, CPrintUnitDataMap_8>()));
    EXPECT_TRUE(std::is_copy_assignable_v<CPrintUnitDataMap_4>);
}
