// The host's choice of a data map, compared with the library's factory over the whole decision table.
#include "Host/Job/MapClass.h"

#include "DataMap/PrintUnitDataMap_03.h"
#include "DataMap/PrintUnitDataMap_03_01.h"
#include "DataMap/PrintUnitDataMap_1.h"
#include "DataMap/PrintUnitDataMap_2.h"
#include "DataMap/PrintUnitDataMap_5.h"
#include "DataMap/PrintUnitDataMap_6.h"
#include "DataMap/PrintUnitDataMap_7.h"
#include "DataMap/PrintUnitDataMap_8.h"
#include "DataMap/PrintUnitMap_Factory.h"
#include "Tests/Support/ConfigGuard.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <typeinfo>
#include <vector>

// NOLINTNEXTLINE(readability-identifier-naming): the test framework looks for this name.
static void PrintTo(const SJobMap& map, std::ostream* pStream)
{
    *pStream << MapClass_Name(map.m_class) << ", " << map.m_srcBitCount << " -> " << map.m_dstBitCount << " bits";
}

namespace
{

template<class TMap>
bool IsExactly(const CPrintUnitDataMap_Base& map)
{
    return typeid(map) == typeid(TMap);
}

EMapClass Class_Of(const CPrintUnitDataMap_Base& map)
{
    return IsExactly<CPrintUnitDataMap_1>(map)       ? EMapClass::Map_1
           : IsExactly<CPrintUnitDataMap_2>(map)     ? EMapClass::Map_2
           : IsExactly<CPrintUnitDataMap_03>(map)    ? EMapClass::Map_03
           : IsExactly<CPrintUnitDataMap_03_01>(map) ? EMapClass::Map_03_01
           : IsExactly<CPrintUnitDataMap_5>(map)     ? EMapClass::Map_5
           : IsExactly<CPrintUnitDataMap_6>(map)     ? EMapClass::Map_6
           : IsExactly<CPrintUnitDataMap_7>(map)     ? EMapClass::Map_7
           : IsExactly<CPrintUnitDataMap_8>(map)     ? EMapClass::Map_8
                                                     : EMapClass::None;
}

SJobMap Factory_Map(const SDPOption& option, int bitsPerPixel, EDotSizeMode dotSizeMode)
{
    const CConfigGuard config;
    GC_DPOption()->Set(option);
    const std::unique_ptr<CPrintUnitDataMap_Base> map(CPrintUnitMap_Factory::Init_DataMap(bitsPerPixel, dotSizeMode));
    return map == nullptr ? SJobMap{} : SJobMap{Class_Of(*map), map->SrcBitCount(), map->DstBitCount()};
}

} // namespace

TEST(MapClass, IsWhatTheFactoryBuildsForEveryCombination)
{
    constexpr int frameWidth = 16; // the one that every class works with
    int mapCount = 0;
    for (int style = -1; style <= 10; ++style)
    {
        for (int push = 0; push <= 3; ++push)
        {
            for (int support = 0; support <= 6; ++support)
            {
                for (int bitsPerPixel = 0; bitsPerPixel <= 4; ++bitsPerPixel)
                {
                    const SDPOption option = {static_cast<EDataMapStyle>(style), static_cast<EDataPushStyle>(push),
                                              static_cast<EPrinterSupportBits>(support), frameWidth};
                    const SJobMap map = Job_MapClass(option, bitsPerPixel);
                    EXPECT_EQ(map, Factory_Map(option, bitsPerPixel, EDotSizeMode::Middle))
                        << "style " << style << ", push " << push << ", support " << support << ", " << bitsPerPixel
                        << " bits";
                    mapCount += map.m_class == EMapClass::None ? 0 : 1;
                }
            }
        }
    }
    // Four styles whatever the rest is, two by unit, and by pixel: one, two and two depths for each of the two.
    EXPECT_EQ(mapCount, 4 * 4 * 7 * 5 + 2 * 7 * 5 + 2 * (1 + 2 + 2));
}

TEST(MapClass, DotSizeDoesNotChangeTheClass)
{
    for (const EDotSizeMode mode : {EDotSizeMode::Small, EDotSizeMode::Middle, EDotSizeMode::Big})
    {
        SDPOption option;
        option.m_printerSupportBits = EPrinterSupportBits::TwoBit;
        EXPECT_EQ(Factory_Map(option, 1, mode), (SJobMap{EMapClass::Map_2, 1, 2}));
        EXPECT_EQ(Job_MapClass(option, 1), (SJobMap{EMapClass::Map_2, 1, 2}));
    }
}

TEST(MapClass, TableMapsAreThoseThatKeepTheGenericLineMapping)
{
    for (const EMapClass tableMap : {EMapClass::Map_1, EMapClass::Map_2, EMapClass::Map_5})
    {
        EXPECT_TRUE(MapClass_Get(tableMap).m_bTableMap) << MapClass_Name(tableMap);
    }
    for (const EMapClass other : {EMapClass::None, EMapClass::Map_03, EMapClass::Map_03_01, EMapClass::Map_6,
                                  EMapClass::Map_7, EMapClass::Map_8})
    {
        EXPECT_FALSE(MapClass_Get(other).m_bTableMap) << MapClass_Name(other);
    }
}

TEST(MapClass, NamesAreTheStyles)
{
    EXPECT_STREQ(MapClass_Name(EMapClass::Map_1), "1");
    EXPECT_STREQ(MapClass_Name(EMapClass::Map_2), "2");
    EXPECT_STREQ(MapClass_Name(EMapClass::Map_03), "03");
    EXPECT_STREQ(MapClass_Name(EMapClass::Map_03_01), "03_01");
    EXPECT_STREQ(MapClass_Name(EMapClass::Map_5), "5");
    EXPECT_STREQ(MapClass_Name(EMapClass::Map_6), "6");
    EXPECT_STREQ(MapClass_Name(EMapClass::Map_7), "7");
    EXPECT_STREQ(MapClass_Name(EMapClass::Map_8), "8");
}

TEST(MapClass, EveryRowStandsUnderItsOwnClass)
{
    EXPECT_EQ(MapClasses().size(), 8U);
    for (const SMapClass& row : MapClasses())
    {
        EXPECT_EQ(&MapClass_Get(row.m_class), &row);
    }
}

TEST(MapClass, LineWidthsAreThoseOfTheLibrarysMaps)
{
    struct SCase
    {
        SDPOption m_option;
        int m_bitsPerPixel;
    };
    using enum EDataMapStyle;
    const auto option = [](EDataMapStyle style, int width, EPrinterSupportBits support) {
        return SDPOption{style, EDataPushStyle::ByPixel, support, width};
    };
    const std::vector<SCase> cases = {{option(Frame16, 16, EPrinterSupportBits::OneBit), 1},
                                      {option(Block, 64, EPrinterSupportBits::OneBit), 1},
                                      {option(Block13, 24, EPrinterSupportBits::OneBit), 1},
                                      {option(FramePerPixel, 24, EPrinterSupportBits::TwoBit), 1},
                                      {option(FramePerPixel, 24, EPrinterSupportBits::Multiple), 2},
                                      {option(ByteInterleaved, 5, EPrinterSupportBits::TwoBit), 1},
                                      {option(ByteInterleaved, 5, EPrinterSupportBits::TwoBit), 2},
                                      {option(PlanePair, 24, EPrinterSupportBits::OneBit), 2}};
    for (const SCase& one : cases)
    {
        CConfigGuard config;
        config.m_option = {one.m_option.m_dataMapStyle, one.m_option.m_dataPushStyle, one.m_option.m_printerSupportBits,
                           one.m_option.m_printerDataWidth};
        config.Apply();
        const SJobMap map = Job_MapClass(one.m_option, one.m_bitsPerPixel);
        const std::unique_ptr<CPrintUnitDataMap_Base> library(
            CPrintUnitMap_Factory::Init_DataMap(one.m_bitsPerPixel, EDotSizeMode::Small));
        ASSERT_NE(library, nullptr) << MapClass_Name(map.m_class);
        for (const int unitWidth : {400, 800})
        {
            EXPECT_EQ(MapClass_FrameBits(map.m_class, one.m_option.m_printerDataWidth) *
                          MapClass_FrameCount(map, unitWidth),
                      library->SrcPixelCount_2_BoardBitCount(unitWidth))
                << MapClass_Name(map.m_class) << ", " << unitWidth << " pixels";
        }
    }
}
