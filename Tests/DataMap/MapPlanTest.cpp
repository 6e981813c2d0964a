// Which maps have a plan, and that a map which is initialised again, by any Init there is, leaves the bytes of its
// look-ups.
#include "Tests/DataMap/KernelSupport.h"

#include <rapidcheck.h>

#include <algorithm>
#include <functional>

namespace
{
int Draw(int first, int last)
{
    return *rc::gen::inRange(first, last + 1);
}

int Draw(std::initializer_list<int> values)
{
    return *(values.begin() + Draw(0, static_cast<int>(values.size()) - 1));
}

// Widths that make tables of one geometry look like those of another, and some that no kernel has a way for.
int Width_Draw()
{
    return Draw({16, 32, 8, 64, 33, 17, 24, 48, 128, 65});
}

// An Init that any map of class `TMap`, or derived from it, takes.
template<class TMap>
using InitCall = std::function<void(TMap&)>;

template<class TMap>
InitCall<TMap> BaseInit_Draw()
{
    const int srcBitCount = Draw({1, 2, 3});
    const int dstBitCount = Draw({1, 2});
    const int width = Width_Draw();
    return [=](TMap& map) { map.CPrintUnitDataMap_Base::Init(srcBitCount, dstBitCount, width); };
}

template<class TMap>
InitCall<TMap> OwnInit_Draw()
{
    const int width = Width_Draw();
    const int bits = Draw(1, 2);
    [[maybe_unused]] const auto dots = static_cast<EDotSizeMode>(Draw({1, 2, 3, 3, 9}));
    if constexpr (std::is_same_v<TMap, CPrintUnitDataMap_1>)
    {
        return [](TMap& map) { map.Init(16); };
    }
    else if constexpr (std::is_same_v<TMap, CPrintUnitDataMap_8>)
    {
        return [=](TMap& map) { map.Init(width / 8 * 8); };
    }
    else if constexpr (std::is_same_v<TMap, CPrintUnitDataMap_2> || std::is_same_v<TMap, CPrintUnitDataMap_7>)
    {
        return [=](TMap& map) { map.Init(dots, width); };
    }
    else
    {
        return [=](TMap& map) { map.Init(bits, width); };
    }
}

// The style's own Init, then any others.
template<class TMap>
std::vector<InitCall<TMap>> Inits_Draw()
{
    std::vector<InitCall<TMap>> calls = {OwnInit_Draw<TMap>()};
    for (int more = Draw(0, 3); more > 0; --more)
    {
        calls.push_back(Draw(0, 2) != 0 ? BaseInit_Draw<TMap>() : OwnInit_Draw<TMap>());
    }
    return calls;
}

// Whether the look-ups of a line of `unit` read nothing but the table. Style 03 may read a frame more than an entry.
bool LookUps_StayInside(const CPrintUnitDataMap_Base& map, int unit)
{
    using A = SMapTestAccess;
    const bool bPlanes = dynamic_cast<const CPrintUnitDataMap_8*>(&map) != nullptr;
    const bool bBlocks = dynamic_cast<const CPrintUnitDataMap_03*>(&map) != nullptr;
    const int row = bBlocks ? unit % 8 + 8 * (4 * (unit / 8) + 3) : unit;
    const int entryEnd = (bPlanes ? 16 : 256) * map.MapDataSizeOfByte() + (bBlocks ? map.DataFrameWidth() : 0);
    return row * A::UnitMapDataSize(map) + entryEnd <= A::MapDataSize(map) &&
           A::UnitMapDataSize(map) >= map.MapDataSizeOfByte();
}

bool HasLookUps(const CPrintUnitDataMap_Base& map)
{
    return dynamic_cast<const CPrintUnitDataMap_6*>(&map) == nullptr &&
           dynamic_cast<const CPrintUnitDataMap_7*>(&map) == nullptr &&
           dynamic_cast<const CPrintUnitDataMap_03_01*>(&map) == nullptr;
}

constexpr int lineBytes = 50;
constexpr std::size_t boardRoom = std::size_t{256} << 10;

std::vector<SSrcBandLine> Lines_Draw(const CPrintUnitDataMap_Base& map, std::mt19937& random, const Bytes& pixels)
{
    const int bits = dynamic_cast<const CPrintUnitDataMap_03*>(&map) != nullptr ? 400 : Draw(0, 8 * lineBytes);
    std::vector<SSrcBandLine> lines;
    for (int unit = 0; unit < 40; ++unit)
    {
        if (!HasLookUps(map) ? unit < std::min(40, map.DataFrameWidth() / 4) : LookUps_StayInside(map, unit))
        {
            lines.push_back({Param_Make(unit, bits, 1 + static_cast<int>(random() % 2)),
                             pixels.data() + random() % (pixels.size() - lineBytes)});
        }
    }
    std::shuffle(lines.begin(), lines.end(), random);
    return lines;
}

template<class TMapping>
Bytes Board_After(const CPrintUnitDataMap_Base& map, std::vector<SSrcBandLine> lines, const TMapping& mapping)
{
    const CMapScratch scratch(map);
    for (SSrcBandLine& line : lines)
    {
        line.m_param.m_customParam = scratch.Get();
    }
    Bytes board(boardRoom);
    mapping(lines, board.data());
    return board;
}

constexpr int dstByteCount = 40'000;

Bytes Board_OneByOne(const CPrintUnitDataMap_Base& map, const std::vector<SSrcBandLine>& lines)
{
    return Board_After(map, lines,
                       [&](const std::vector<SSrcBandLine>& all, unsigned char* dst)
                       {
                           for (const SSrcBandLine& line : all)
                           {
                               map.MapData_Line(line.m_param, line.m_pLine, dst, dstByteCount);
                           }
                       });
}

Bytes Board_AtOnce(const CPrintUnitDataMap_Base& map, const std::vector<SSrcBandLine>& lines)
{
    return Board_After(map, lines,
                       [&](const std::vector<SSrcBandLine>& all, unsigned char* dst)
                       { Lines_Map(map, all, dst, dstByteCount); });
}

// `map` in every kernel, a line alone and all at once, against `lookUps`, which has the same content and no plan.
void Maps_ExpectSame(const CPrintUnitDataMap_Base& map, const CPrintUnitDataMap_Base& lookUps)
{
    std::mt19937 random(static_cast<unsigned>(Draw(0, 1 << 20)));
    const Bytes pixels = Bytes_Random(random, 400);
    const std::vector<SSrcBandLine> lines = Lines_Draw(lookUps, random, pixels);
    const Bytes expected = Board_OneByOne(lookUps, lines);
    for (const std::string& name : KernelNames_Available())
    {
        const CKernelGuard guard(name);
        RC_ASSERT(Board_OneByOne(map, lines) == expected);
        RC_ASSERT(Board_AtOnce(map, lines) == expected);
    }
}

template<class TMap>
class MapPlan : public testing::Test
{
};
using Styles = testing::Types<CPrintUnitDataMap_1, CPrintUnitDataMap_2, CPrintUnitDataMap_03, CPrintUnitDataMap_03_01,
                              CPrintUnitDataMap_5, CPrintUnitDataMap_6, CPrintUnitDataMap_7, CPrintUnitDataMap_8>;
TYPED_TEST_SUITE(MapPlan, Styles);

template<class TMap>
void Usual_Init(TMap& map)
{
    constexpr auto bigDrops = static_cast<EDotSizeMode>(3);
    if constexpr (std::is_same_v<TMap, CPrintUnitDataMap_1> || std::is_same_v<TMap, CPrintUnitDataMap_8>)
    {
        ASSERT_TRUE(map.Init(16));
    }
    else if constexpr (std::is_same_v<TMap, CPrintUnitDataMap_2> || std::is_same_v<TMap, CPrintUnitDataMap_7>)
    {
        ASSERT_TRUE(map.Init(bigDrops, 16));
    }
    else
    {
        ASSERT_TRUE(map.Init(1, 64));
    }
}
} // namespace

TYPED_TEST(MapPlan, EveryKernelLeavesTheBytesOfTheLookUpsAfterAnySequenceOfInits)
{
    EXPECT_TRUE(rc::check(
        []
        {
            TypeParam map;
            CLookUpMap<TypeParam> lookUps;
            const CLogCapture log; // of the Inits that refuse
            for (const InitCall<TypeParam>& init : Inits_Draw<TypeParam>())
            {
                init(map);
                init(lookUps);
            }
            Maps_ExpectSame(map, lookUps);
        }));
}

TYPED_TEST(MapPlan, IsThereForAMapOfTheStyleAndForNoClassDerivedFromIt)
{
    TypeParam map;
    EXPECT_FALSE(MapPlan_Get(map).IsThere()) << "not initialised";
    Usual_Init<TypeParam>(map);
    EXPECT_TRUE(MapPlan_Get(map).IsThere());
    EXPECT_TRUE(MapStyle_IsOwn(map));

    CLookUpMap<TypeParam> derived;
    Usual_Init<TypeParam>(derived);
    EXPECT_FALSE(MapPlan_Get(derived).IsThere());
    EXPECT_FALSE(MapStyle_IsOwn(derived));
}

TEST(MapPlan_Get, KnowsNoUnitsWhoseColumnsLieApart)
{
    CPrintUnitDataMap_6 map;
    ASSERT_TRUE(map.Init(1, 64));
    const SStylePlan sideBySide{[](const CPrintUnitDataMap_Base&) { return true; }, Cut_Column, 0, 1, 1, 1, 0, 5};
    ASSERT_TRUE(MapPlan_Get(map, sideBySide).IsThere());
    SStylePlan apart = sideBySide;
    apart.m_stripStep = 2;
    EXPECT_FALSE(MapPlan_Get(map, apart).IsThere());
    SStylePlan later = sideBySide;
    later.m_firstStrip = 1;
    EXPECT_FALSE(MapPlan_Get(map, later).IsThere());
}

namespace
{
// While it lives, the map may have another one's table; after that it has none, also when a check has thrown.
class CTableLoan
{
public:
    explicit CTableLoan(CPrintUnitDataMap_Base& map) : m_map(map) {}
    ~CTableLoan() { SMapTestAccess::MapData_Set(m_map, nullptr); }
    CTableLoan(const CTableLoan&) = delete;
    CTableLoan& operator=(const CTableLoan&) = delete;

private:
    CPrintUnitDataMap_Base& m_map;
};
} // namespace

// The unwanted copy: a style's object that another style's content was assigned to as to a base.
TEST(MapPlan_Get, GoesByTheTableWhenAnotherStylesContentWasAssigned)
{
    EXPECT_TRUE(rc::check(
        []
        {
            CPrintUnitDataMap_1 one;
            CPrintUnitDataMap_2 two;
            CPrintUnitDataMap_5 five;
            CPrintUnitDataMap_8 eight;
            one.Init(16);
            two.Init(static_cast<EDotSizeMode>(Draw(1, 3)), Draw({16, 32}));
            five.Init(Draw(1, 2), Draw({16, 32, 33}));
            eight.Init(16);
            const CPrintUnitDataMap_Base* const givers[] = {&one, &two, &five, &eight};
            const CPrintUnitDataMap_Base& giver = *givers[Draw(0, 3)];
            const int dstBitCount = Draw(0, 2);
            const int width = Draw({16, 32});
            const auto Content_Take = [&](CPrintUnitDataMap_Base& taker)
            {
                taker = giver;
                if (dstBitCount > 0)
                {
                    taker.CPrintUnitDataMap_Base::Init(Draw(1, 1), dstBitCount, width);
                }
            };
            const auto Takers_Compare = [&](CPrintUnitDataMap_Base& map, CPrintUnitDataMap_Base& lookUps)
            {
                const CTableLoan mapLoan(map);
                const CTableLoan lookUpsLoan(lookUps);
                Content_Take(map);
                Content_Take(lookUps);
                Maps_ExpectSame(map, lookUps);
            };
            CPrintUnitDataMap_1 takerOne;
            CLookUpMap<CPrintUnitDataMap_1> lookUpsOne;
            Takers_Compare(takerOne, lookUpsOne);
            CPrintUnitDataMap_2 takerTwo;
            CLookUpMap<CPrintUnitDataMap_2> lookUpsTwo;
            Takers_Compare(takerTwo, lookUpsTwo);
            CPrintUnitDataMap_03 takerBlock;
            CLookUpMap<CPrintUnitDataMap_03> lookUpsBlock;
            Takers_Compare(takerBlock, lookUpsBlock);
            CPrintUnitDataMap_5 takerFive;
            CLookUpMap<CPrintUnitDataMap_5> lookUpsFive;
            Takers_Compare(takerFive, lookUpsFive);
            CPrintUnitDataMap_7 takerSeven;
            CLookUpMap<CPrintUnitDataMap_7> lookUpsSeven;
            Takers_Compare(takerSeven, lookUpsSeven);
            CPrintUnitDataMap_8 takerEight;
            CLookUpMap<CPrintUnitDataMap_8> lookUpsEight;
            Takers_Compare(takerEight, lookUpsEight);
        }));
}

TEST(MapPlan_Get, IsNotThereForTheBaseAStyleWithoutATableOrAnotherBitMode)
{
    CPrintUnitDataMap_Base base;
    ASSERT_TRUE(base.Init(1, 1, 16));
    EXPECT_FALSE(MapPlan_Get(base).IsThere());
    EXPECT_FALSE(MapStyle_IsOwn(base));

    CPrintUnitDataMap_03_01 chunks;
    ASSERT_TRUE(chunks.Init(1, 32));
    for (const int bitMode : {0, 1, 3, 4, 5})
    {
        SMapTestAccess::BitMode_Set(chunks, bitMode);
        EXPECT_FALSE(MapPlan_Get(chunks).IsThere());
    }
}

// The geometry that is meant agrees with the table's sizes, and the table is of another.
TEST(MapPlan_Get, IsNotThereForATableOfTwoBitPixelsUnderAGeometryOfOne)
{
    CPrintUnitDataMap_5 map;
    for (const int width : {32, 33})
    {
        ASSERT_TRUE(map.Init(2, width));
        EXPECT_EQ(MapPlan_Get(map).IsThere(), width == 32);
        ASSERT_TRUE(map.CPrintUnitDataMap_Base::Init(1, 1, 16));
        EXPECT_FALSE(MapPlan_Get(map).IsThere());
    }
    ASSERT_TRUE(map.Init(1, 16));
    ASSERT_TRUE(map.CPrintUnitDataMap_Base::Init(2, 2, 32));
    EXPECT_FALSE(MapPlan_Get(map).IsThere());
}

// Four frames that are one bit wider make entries of as many whole bytes; only from the second frame on do the pixels
// stand elsewhere.
TEST(MapPlan_Get, IsNotThereForATableOfFramesThatAreOneBitWider)
{
    for (const int width : {16, 32, 64})
    {
        CPrintUnitDataMap_5 map;
        ASSERT_TRUE(map.Init(2, width + 1));
        ASSERT_TRUE(map.CPrintUnitDataMap_Base::Init(2, 2, width));
        ASSERT_EQ(SMapTestAccess::UnitMapDataSize(map), 256 * map.MapDataSizeOfByte());
        ASSERT_EQ(SMapTestAccess::MapDataSize(map), width / 2 * 256 * map.MapDataSizeOfByte());
        EXPECT_FALSE(MapPlan_Get(map).IsThere());
    }
}
