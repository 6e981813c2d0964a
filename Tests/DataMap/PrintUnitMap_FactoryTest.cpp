// The map factory: its whole decision table, and every record of a refusal.
#include "Tests/DataMap/MapTestSupport.h"

#include <functional>
#include <optional>
#include <typeindex>
#include <typeinfo>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
using A = SMapTestAccess;
using MapPtr = std::unique_ptr<CPrintUnitDataMap_Base>;

// Sets the data-path options; puts the defaults back in the end.
class COptionScope
{
public:
    COptionScope() = default;
    COptionScope(int mapStyle, int pushStyle, int supportBits, int dataWidth)
    {
        Set(mapStyle, pushStyle, supportBits, dataWidth);
    }
    ~COptionScope() { Platform_Set(SOptionSetup{}); }
    COptionScope(const COptionScope&) = delete;
    COptionScope& operator=(const COptionScope&) = delete;

    static void Set(int mapStyle, int pushStyle, int supportBits, int dataWidth)
    {
        Platform_Set(SOptionSetup{static_cast<EDataMapStyle>(mapStyle), static_cast<EDataPushStyle>(pushStyle),
                                  static_cast<EPrinterSupportBits>(supportBits), dataWidth});
    }
};

// What a set of options should give: a class, or null with a number of records.
struct SDecision
{
    std::optional<std::type_index> mapClass;
    int srcBitCount = 1; // of the map
    int recordCount = 0;
};

template<class TMap>
SDecision Decision_Map(int srcBitCount = 1)
{
    return {std::type_index(typeid(TMap)), srcBitCount, 0};
}
const SDecision decisionRefused = {std::nullopt, 0, 1};
const SDecision decisionSilent = {std::nullopt, 0, 0};

// The decision table for map styles 6 and 7 of data pushed by pixel.
SDecision Decision_ByPixel(bool bColumns, int supportBits, int srcBitCount)
{
    const auto plain = [&](int bits)
    { return bColumns ? Decision_Map<CPrintUnitDataMap_6>(bits) : Decision_Map<CPrintUnitDataMap_5>(bits); };
    const bool bOneOrTwo = srcBitCount == 1 || srcBitCount == 2;
    if (supportBits == 1 && srcBitCount == 1)
    {
        return plain(1);
    }
    if (supportBits == 2 && srcBitCount == 1)
    {
        return bColumns ? Decision_Map<CPrintUnitDataMap_7>() : Decision_Map<CPrintUnitDataMap_2>();
    }
    if (supportBits == 2 && srcBitCount == 2)
    {
        return plain(2);
    }
    if (supportBits == 5 && bOneOrTwo)
    {
        return Decision_Map<CPrintUnitDataMap_5>(srcBitCount);
    }
    return decisionRefused;
}

SDecision Decision_Expected(int mapStyle, int pushStyle, int supportBits, int srcBitCount)
{
    switch (mapStyle)
    {
    case 1:
        return Decision_Map<CPrintUnitDataMap_1>();
    case 3:
        return Decision_Map<CPrintUnitDataMap_03>();
    case 4:
        return Decision_Map<CPrintUnitDataMap_03_01>();
    case 9:
        return Decision_Map<CPrintUnitDataMap_8>();
    case 6:
    case 7:
        break;
    default:
        return decisionRefused;
    }
    if (pushStyle == 1)
    {
        return mapStyle == 6 ? Decision_Map<CPrintUnitDataMap_5>() : Decision_Map<CPrintUnitDataMap_6>();
    }
    return pushStyle == 2 ? Decision_ByPixel(mapStyle == 7, supportBits, srcBitCount) : decisionSilent;
}

MapPtr Factory_Call(int srcBitCount, EDotSizeMode dotSizeMode = SDotSize::Middle)
{
    return MapPtr(CPrintUnitMap_Factory::Init_DataMap(srcBitCount, dotSizeMode));
}

std::type_index Class_Of(const CPrintUnitDataMap_Base& map)
{
    return typeid(map);
}

// The functions that logged a refusal under these options.
std::vector<std::string> Refusal_Functions(const std::function<CPrintUnitDataMap_Base*()>& call)
{
    const CLogCapture log;
    const MapPtr map(call());
    EXPECT_EQ(map, nullptr);
    for (const auto& record : log.Summary())
    {
        EXPECT_EQ(record, "2 failure @PrintUnitMap_Factory");
    }
    return Log_Functions(log);
}
} // namespace

TEST(PrintUnitMap_Factory, TheWholeDecisionTableGivesTheClassAndTheRecords)
{
    const COptionScope options;
    for (int mapStyle = 0; mapStyle <= 10; ++mapStyle)
    {
        for (int pushStyle = 0; pushStyle <= 3; ++pushStyle)
        {
            for (int supportBits = 0; supportBits <= 6; ++supportBits)
            {
                for (int srcBitCount = 0; srcBitCount <= 3; ++srcBitCount)
                {
                    SCOPED_TRACE(testing::Message() << "map style " << mapStyle << ", push style " << pushStyle
                                                    << ", support bits " << supportBits << ", bits " << srcBitCount);
                    COptionScope::Set(mapStyle, pushStyle, supportBits, 16);
                    const SDecision expected = Decision_Expected(mapStyle, pushStyle, supportBits, srcBitCount);
                    const CLogCapture log;
                    const MapPtr map = Factory_Call(srcBitCount);
                    ASSERT_EQ(map != nullptr, expected.mapClass.has_value());
                    ASSERT_EQ(log.Summary(), std::vector<std::string>(static_cast<std::size_t>(expected.recordCount),
                                                                      "2 failure @PrintUnitMap_Factory"));
                    if (map)
                    {
                        ASSERT_EQ(Class_Of(*map), *expected.mapClass);
                        ASSERT_EQ(map->SrcBitCount(), expected.srcBitCount);
                        ASSERT_EQ(map->DataFrameWidth(), 16);
                    }
                }
            }
        }
    }
}

TEST(PrintUnitMap_Factory, MapStylesTwoFiveAndEightAreRefusedWithOneRecord)
{
    for (const int mapStyle : {2, 5, 8})
    {
        const COptionScope options(mapStyle, 2, 1, 16);
        EXPECT_THAT(Refusal_Functions([] { return Factory_Call(1).release(); }),
                    ElementsAre("CPrintUnitMap_Factory::Init_DataMap"));
    }
}

TEST(PrintUnitMap_Factory, PushByUnitIgnoresTheJobsBitsAndDropSize)
{
    for (const int srcBitCount : {0, 1, 2, 3})
    {
        for (const int dotSizeMode : {0, 1, 4})
        {
            const COptionScope options(6, 1, 0, 16);
            const MapPtr frames = Factory_Call(srcBitCount, DotSizeMode_From(dotSizeMode));
            ASSERT_NE(frames, nullptr);
            EXPECT_EQ(Class_Of(*frames), typeid(CPrintUnitDataMap_5));
            EXPECT_EQ(frames->SrcBitCount(), 1);
            COptionScope::Set(7, 1, 0, 16);
            const MapPtr columns = Factory_Call(srcBitCount, DotSizeMode_From(dotSizeMode));
            ASSERT_NE(columns, nullptr);
            EXPECT_EQ(Class_Of(*columns), typeid(CPrintUnitDataMap_6));
            EXPECT_EQ(columns->SrcBitCount(), 1);
        }
    }
}

TEST(PrintUnitMap_Factory, APrinterOfSeveralDepthsGetsAMapOfClass5UnderStyle7Too)
{
    const COptionScope options(7, 2, 5, 16);
    const MapPtr map = Factory_Call(2);
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(Class_Of(*map), typeid(CPrintUnitDataMap_5));
    EXPECT_EQ(map->SrcBitCount(), 2);
}

TEST(PrintUnitMap_Factory, ATwoBitJobOnAOneBitPrinterIsRefused)
{
    const COptionScope options(6, 2, 1, 16);
    EXPECT_THAT(Refusal_Functions([] { return Factory_Call(2).release(); }),
                ElementsAre("CPrintUnitMap_Factory::Init_DataMap_ByPixel_SupportBits_1"));
}

TEST(PrintUnitMap_Factory, AnUnknownPushStyleIsRefusedWithoutARecord)
{
    for (const int mapStyle : {6, 7})
    {
        for (const int pushStyle : {0, 3, -1})
        {
            const COptionScope options(mapStyle, pushStyle, 1, 16);
            EXPECT_THAT(Refusal_Functions([] { return Factory_Call(1).release(); }), IsEmpty());
        }
    }
}

TEST(PrintUnitMap_Factory, TheFunctionThatRefusesWritesTheRecord)
{
    const COptionScope options(7, 2, 3, 16);
    EXPECT_THAT(Refusal_Functions([] { return Factory_Call(1).release(); }),
                ElementsAre("CPrintUnitMap_Factory::Init_DataMap_ByPixel"));
    COptionScope::Set(7, 2, 2, 16);
    EXPECT_THAT(Refusal_Functions([] { return Factory_Call(3).release(); }),
                ElementsAre("CPrintUnitMap_Factory::Init_DataMap_ByPixel_SupportBits_2"));
    COptionScope::Set(7, 2, 5, 16);
    EXPECT_THAT(Refusal_Functions([] { return Factory_Call(3).release(); }),
                ElementsAre("CPrintUnitMap_Factory::Init_DataMap_ByPixel_SupportBits_Multiple"));
}

TEST(PrintUnitMap_Factory, TheLeavesRefuseMapStylesThatAreNotTheirs)
{
    for (const int mapStyle : {0, 1, 3, 4, 5, 8, 9})
    {
        const COptionScope options(mapStyle, 2, 2, 16);
        EXPECT_THAT(Refusal_Functions([] { return A::Factory_ByUnit(); }),
                    ElementsAre("CPrintUnitMap_Factory::Init_DataMap_ByUnit"));
        EXPECT_THAT(Refusal_Functions([] { return A::Factory_SupportBits_1(1); }),
                    ElementsAre("CPrintUnitMap_Factory::Init_DataMap_ByPixel_SupportBits_1"));
        for (const int srcBitCount : {1, 2})
        {
            EXPECT_THAT(Refusal_Functions([&] { return A::Factory_SupportBits_2(srcBitCount, SDotSize::Big); }),
                        ElementsAre("CPrintUnitMap_Factory::Init_DataMap_ByPixel_SupportBits_2"));
        }
        const MapPtr map(A::Factory_SupportBits_Multiple(2));
        ASSERT_NE(map, nullptr) << "the one leaf that does not look at the map style";
        EXPECT_EQ(Class_Of(*map), typeid(CPrintUnitDataMap_5));
    }
}

TEST(PrintUnitMap_Factory, ByPixelItselfDoesNotLookAtTheMapStyle)
{
    const COptionScope options(1, 1, 5, 16);
    const MapPtr map(A::Factory_ByPixel(1, SDotSize::Big));
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(Class_Of(*map), typeid(CPrintUnitDataMap_5));
}

TEST(PrintUnitMap_Factory, TheConfiguredWidthAndTheDropSizeReachTheMap)
{
    for (const int dotSizeMode : {1, 2, 3})
    {
        const COptionScope options(6, 2, 2, 24);
        const MapPtr frames = Factory_Call(1, DotSizeMode_From(dotSizeMode));
        const auto* map_2 = dynamic_cast<CPrintUnitDataMap_2*>(frames.get());
        ASSERT_NE(map_2, nullptr);
        EXPECT_EQ(map_2->DataFrameWidth(), 24);
        EXPECT_EQ(A::DotSizeMode(*map_2), DotSizeMode_From(dotSizeMode));
        COptionScope::Set(7, 2, 2, 40);
        const MapPtr columns = Factory_Call(1, DotSizeMode_From(dotSizeMode));
        const auto* map_7 = dynamic_cast<CPrintUnitDataMap_7*>(columns.get());
        ASSERT_NE(map_7, nullptr);
        EXPECT_EQ(map_7->DataFrameWidth(), 40);
        EXPECT_EQ(A::DotSizeMode(*map_7), DotSizeMode_From(dotSizeMode));
    }
}

TEST(PrintUnitMap_Factory, TheMapOfStyle4IsInTheThirteenByteMode)
{
    const COptionScope options(4, 0, 0, 8);
    const MapPtr map = Factory_Call(0);
    const auto* map_03_01 = dynamic_cast<CPrintUnitDataMap_03_01*>(map.get());
    ASSERT_NE(map_03_01, nullptr);
    EXPECT_EQ(A::BitMode(*map_03_01), 2);
}

// The tests below abandon a half-initialised map each, as the builders are meant to.

TEST(PrintUnitMap_Factory, AFailedInitLeavesTheMapsRecordAndThenTheBuilders)
{
    const COptionScope options(1, 0, 0, 17);
    const CLogCapture log;
    EXPECT_EQ(Factory_Call(1), nullptr);
    EXPECT_THAT(log.Summary(),
                ElementsAre("2 DataFrameWidth = 17 @PrintUnitDataMap_1", "2 failure @PrintUnitMap_Factory"));
    EXPECT_THAT(Log_Functions(log),
                ElementsAre("CPrintUnitDataMap_1::Init", "CPrintUnitMap_Factory::Init_DataMap_Style_1"));
}

TEST(PrintUnitMap_Factory, AnUnknownDropSizeFailsInTheMapAndInTheBuilder)
{
    for (const int dotSizeMode : {0, 4})
    {
        const COptionScope options(6, 2, 2, 16);
        const CLogCapture framesLog;
        EXPECT_EQ(Factory_Call(1, DotSizeMode_From(dotSizeMode)), nullptr);
        EXPECT_THAT(framesLog.Summary(),
                    ElementsAre("2 failure @PrintUnitDataMap_2", "2 failure @PrintUnitMap_Factory"));
        EXPECT_THAT(Log_Functions(framesLog),
                    ElementsAre("CPrintUnitDataMap_2::Init", "CPrintUnitMap_Factory::Init_DataMap_Style_2"));
        COptionScope::Set(7, 2, 2, 16);
        const CLogCapture columnsLog;
        EXPECT_EQ(Factory_Call(1, DotSizeMode_From(dotSizeMode)), nullptr);
        EXPECT_THAT(columnsLog.Summary(),
                    ElementsAre("2 failure @PrintUnitDataMap_7", "2 failure @PrintUnitMap_Factory"));
        EXPECT_THAT(Log_Functions(columnsLog),
                    ElementsAre("CPrintUnitDataMap_7::Init", "CPrintUnitMap_Factory::Init_DataMap_Style_7"));
    }
}

TEST(PrintUnitMap_Factory, ABuilderOfAPlainMapFailsWithItsMap)
{
    const COptionScope options(6, 2, 2, 16);
    const CLogCapture framesLog;
    EXPECT_EQ(A::Factory_Style_5(3), nullptr);
    EXPECT_THAT(Log_Functions(framesLog), ElementsAre("CPrintUnitDataMap_Base::Init", "CPrintUnitDataMap_5::Init",
                                                      "CPrintUnitMap_Factory::Init_DataMap_Style_5"));
    const CLogCapture columnsLog;
    EXPECT_EQ(A::Factory_Style_6(3), nullptr);
    EXPECT_THAT(Log_Functions(columnsLog),
                ElementsAre("CPrintUnitDataMap_6::Init", "CPrintUnitMap_Factory::Init_DataMap_Style_6"));
}
