// Several source lines at once against one after the other through the look-ups, for every style and kernel; single
// lines likewise; and the classes for which no road but the look-ups is allowed.
#include "Tests/DataMap/KernelSupport.h"
#include "Tests/Support/GuardedMemory.h"

#include <rapidcheck.h>

#include <algorithm>

namespace
{
int Draw(int first, int last)
{
    return *rc::gen::inRange(first, last + 1);
}

template<class TMap, class... TArguments>
std::unique_ptr<CPrintUnitDataMap_Base> LookUpMap_Init(TArguments... arguments)
{
    return Map_Init<CLookUpMap<TMap>>(arguments...);
}

std::unique_ptr<CPrintUnitDataMap_Base> LookUpMap_Make(const STwinStyle& style)
{
    const EDotSizeMode mode = DotSizeMode_From(style.dotSizeMode);
    switch (style.style)
    {
    case ETwinStyle::Style_1:
        return LookUpMap_Init<CPrintUnitDataMap_1>(style.frameWidth);
    case ETwinStyle::Style_2:
        return LookUpMap_Init<CPrintUnitDataMap_2>(mode, style.frameWidth);
    case ETwinStyle::Style_5:
        return LookUpMap_Init<CPrintUnitDataMap_5>(style.srcBitCount, style.frameWidth);
    case ETwinStyle::Style_6:
        return LookUpMap_Init<CPrintUnitDataMap_6>(style.srcBitCount, style.frameWidth);
    case ETwinStyle::Style_7:
        return LookUpMap_Init<CPrintUnitDataMap_7>(mode, style.frameWidth);
    case ETwinStyle::Style_8:
        return LookUpMap_Init<CPrintUnitDataMap_8>(style.frameWidth);
    case ETwinStyle::Style_03:
        return LookUpMap_Init<CPrintUnitDataMap_03>(1, style.frameWidth);
    case ETwinStyle::Style_03_01:
        return LookUpMap_Init<CPrintUnitDataMap_03_01>(1, style.frameWidth);
    }
    throw std::invalid_argument("no such style");
}

bool IsBlockStyle(ETwinStyle style)
{
    return style == ETwinStyle::Style_03 || style == ETwinStyle::Style_03_01;
}

// A layout of the style, also with frames that no kernel has a way for.
STwinStyle Style_Draw(ETwinStyle style)
{
    STwinStyle layout = {style, Draw(1, 2), 16, Draw(1, 3)};
    const int widths[] = {16, 16, 32, 64, 128, 8, 24, 40, 2 * Draw(1, 40), 256, 264};
    switch (style)
    {
    case ETwinStyle::Style_1:
        break;
    case ETwinStyle::Style_8:
        layout.frameWidth = Draw(1, 17) * 8;
        break;
    case ETwinStyle::Style_03:
        layout.frameWidth = Draw(0, 1) == 0 ? 32 << Draw(0, 3) : Draw(16, 50) * 2;
        break;
    case ETwinStyle::Style_03_01:
        layout.frameWidth = Draw(4, 40);
        break;
    default:
        layout.frameWidth = widths[Draw(0, 10)];
        break;
    }
    return layout;
}

struct SSource
{
    SSrcBandDataParam param;
    std::unique_ptr<CExactBytes> bytes;
};

struct SLineSet
{
    STwinStyle style;
    std::vector<SSource> sources;
    int dstByteCount = 0;
    Bytes before;
    std::size_t misalignment = 0;
};

int LineBits_Draw(const STwinStyle& layout)
{
    if (IsBlockStyle(layout.style))
    {
        return 400;
    }
    switch (Draw(0, 3))
    {
    case 0:
        return 8 * Draw(0, 40);
    case 1:
        return Draw(1000, 2300);
    default:
        return Draw(-40, 420);
    }
}

SSource Source_Draw(std::mt19937& random, const STwinStyle& layout, int unit, int lineBitCount)
{
    SSource source;
    source.param = Param_Make(unit, lineBitCount, 1 + static_cast<int>(random() % 2));
    const int byteCount = IsBlockStyle(layout.style) ? 50 : (std::max(0, lineBitCount) + 7) / 8;
    Bytes bytes = Bytes_Random(random, static_cast<std::size_t>(byteCount));
    if (layout.style == ETwinStyle::Style_8 && byteCount > 0 && random() % 2 == 0)
    {
        bytes.back() = static_cast<unsigned char>(
            bytes.back() & (random() % 2 == 0 ? 0xAA : 0x55)); // a last byte with an entry of its own
    }
    source.bytes = std::make_unique<CExactBytes>(bytes, random() % 16);
    return source;
}

// All units in any order, some of them missing, some twice, and now and then lines of another length.
SLineSet LineSet_Draw(const STwinStyle& layout)
{
    std::mt19937 random(static_cast<unsigned>(Draw(0, 1 << 20)));
    SLineSet set;
    set.style = layout;
    std::vector<int> units(static_cast<std::size_t>(layout.UnitCount()));
    for (std::size_t i = 0; i < units.size(); ++i)
    {
        units[i] = static_cast<int>(i);
    }
    if (Draw(0, 2) != 0)
    {
        std::shuffle(units.begin(), units.end(), random);
        units.resize(static_cast<std::size_t>(Draw(0, static_cast<int>(units.size()))));
    }
    for (int extra = Draw(-6, 3); extra > 0 && !units.empty(); --extra)
    {
        units.insert(units.begin() + static_cast<std::ptrdiff_t>(random() % units.size()),
                     units[random() % units.size()]);
    }
    const int usual = LineBits_Draw(layout);
    const int other = LineBits_Draw(layout);
    const bool bOthers = Draw(0, 4) == 0;
    int needed = 0;
    set.dstByteCount =
        Draw(layout.style == ETwinStyle::Style_8 ? 0 : -2, 2 * DstSize_Needed(layout, usual, 0) + layout.frameWidth);
    for (const int unit : units)
    {
        const int bits = bOthers && random() % 3 == 0 ? other : usual;
        set.sources.push_back(Source_Draw(random, layout, unit, bits));
        needed = std::max(needed, DstSize_Needed(layout, bits, set.dstByteCount));
    }
    set.before = Draw(0, 1) == 0 ? Bytes(static_cast<std::size_t>(needed))
                                 : Bytes_Random(random, static_cast<std::size_t>(needed));
    set.misalignment = random() % 64;
    return set;
}

std::vector<SSrcBandLine> Lines_Make(const SLineSet& set, void* scratch)
{
    std::vector<SSrcBandLine> lines;
    for (const SSource& source : set.sources)
    {
        SSrcBandLine line;
        line.m_param = source.param;
        line.m_param.m_customParam = scratch;
        line.m_pLine = source.bytes->Get();
        lines.push_back(line);
    }
    return lines;
}

Bytes Set_OneByOne(const CPrintUnitDataMap_Base& map, const SLineSet& set)
{
    const CMapScratch scratch(map);
    const CFencedBytes dst(set.before, set.misalignment);
    for (const SSrcBandLine& line : Lines_Make(set, scratch.Get()))
    {
        EXPECT_TRUE(map.MapData_Line(line.m_param, line.m_pLine, dst.Get(), set.dstByteCount));
    }
    EXPECT_TRUE(dst.FenceHolds());
    return dst.Content();
}

Bytes Set_AtOnce(const CPrintUnitDataMap_Base& map, const SLineSet& set)
{
    const CMapScratch scratch(map);
    const CFencedBytes dst(set.before, set.misalignment);
    const auto lines = Lines_Make(set, scratch.Get());
    Lines_Map(map, lines, dst.Get(), set.dstByteCount);
    EXPECT_TRUE(dst.FenceHolds());
    return dst.Content();
}

const std::vector<ETwinStyle> everyStyle = {ETwinStyle::Style_1,  ETwinStyle::Style_2,    ETwinStyle::Style_5,
                                            ETwinStyle::Style_6,  ETwinStyle::Style_7,    ETwinStyle::Style_8,
                                            ETwinStyle::Style_03, ETwinStyle::Style_03_01};

class CMapEngineTest : public testing::TestWithParam<ETwinStyle>
{
};
} // namespace

INSTANTIATE_TEST_SUITE_P(EveryStyle, CMapEngineTest, testing::ValuesIn(everyStyle));

TEST_P(CMapEngineTest, EveryKernelMapsAnySetOfLinesAtOnceLikeTheLookUpsOneByOne)
{
    EXPECT_TRUE(rc::check(
        [style = GetParam()]
        {
            const STwinStyle layout = Style_Draw(style);
            const auto map = Map_Make(layout);
            const auto lookUps = LookUpMap_Make(layout);
            const SLineSet set = LineSet_Draw(layout);
            const Bytes expected = Set_OneByOne(*lookUps, set);
            for (const std::string& name : KernelNames_Available())
            {
                const CKernelGuard guard(name);
                RC_ASSERT(Set_AtOnce(*map, set) == expected);
                RC_ASSERT(Set_OneByOne(*map, set) == expected);
            }
            RC_ASSERT(Set_AtOnce(*lookUps, set) == expected);
        }));
}

namespace
{
// Lines of every unit, each in memory of its own that ends, or begins, at a forbidden page; and a board line likewise.
class CGuardedSet
{
public:
    static constexpr std::size_t lineByteMax = 75;

    explicit CGuardedSet(const STwinStyle& layout) : m_layout(layout), m_dst(std::size_t{64} << 10)
    {
        for (int unit = 0; unit < layout.UnitCount(); ++unit)
        {
            m_sources.push_back(std::make_unique<CGuardedMemory>(lineByteMax));
        }
    }

    // New pixels for lines of `lineBitCount` bits, and a board line of which the maps are told that it has
    // `dstByteCount` bytes. In style 8 the second plane of a line of negative length lies in front of it.
    void Prepare(std::mt19937& random, int lineBitCount, int dstByteCount, bool bAtEnd)
    {
        const int front = m_layout.style == ETwinStyle::Style_8 ? std::max(0, -(dstByteCount / 2)) : 0;
        m_dstByteCount = dstByteCount;
        m_before = Bytes_Random(random, static_cast<std::size_t>(
                                            front + std::max(0, DstSize_Needed(m_layout, lineBitCount, dstByteCount))));
        m_front = static_cast<std::size_t>(front);
        m_bAtEnd = bAtEnd;
        m_lines.clear();
        for (int unit = 0; unit < m_layout.UnitCount(); ++unit)
        {
            const int byteCount = IsBlockStyle(m_layout.style) ? 50 : (lineBitCount + 7) / 8;
            const Bytes bytes = Bytes_Random(random, static_cast<std::size_t>(byteCount));
            unsigned char* line = m_sources[static_cast<std::size_t>(unit)]->Place(bytes.size(), bAtEnd);
            std::copy(bytes.begin(), bytes.end(), line);
            m_lines.push_back({Param_Make(unit, lineBitCount, 1 + static_cast<int>(random() % 2)), line});
        }
        std::shuffle(m_lines.begin(), m_lines.end(), random);
    }

    Bytes OneByOne(const CPrintUnitDataMap_Base& map) const
    {
        return After(map,
                     [&](const std::vector<SSrcBandLine>& lines, unsigned char* dst)
                     {
                         for (const SSrcBandLine& line : lines)
                         {
                             EXPECT_TRUE(map.MapData_Line(line.m_param, line.m_pLine, dst, m_dstByteCount));
                         }
                     });
    }
    Bytes AtOnce(const CPrintUnitDataMap_Base& map) const
    {
        return After(map, [&](const std::vector<SSrcBandLine>& lines, unsigned char* dst)
                     { Lines_Map(map, lines, dst, m_dstByteCount); });
    }

private:
    template<class TMapping>
    Bytes After(const CPrintUnitDataMap_Base& map, const TMapping& mapping) const
    {
        const CMapScratch scratch(map);
        std::vector<SSrcBandLine> lines = m_lines;
        for (SSrcBandLine& line : lines)
        {
            line.m_param.m_customParam = scratch.Get();
        }
        unsigned char* region = m_dst.Place(m_before.size(), m_bAtEnd);
        std::copy(m_before.begin(), m_before.end(), region);
        mapping(lines, region + m_front);
        return Bytes(region, region + m_before.size());
    }

    STwinStyle m_layout;
    std::vector<std::unique_ptr<CGuardedMemory>> m_sources;
    CGuardedMemory m_dst;
    std::vector<SSrcBandLine> m_lines;
    Bytes m_before;
    std::size_t m_front = 0;
    int m_dstByteCount = 0;
    bool m_bAtEnd = false;
};

// A board line as long as it should be, shorter, without a byte, and with less than none.
int DstByteCount_Choose(std::mt19937& random, const STwinStyle& layout, int lineBitCount)
{
    const int exact = DstSize_Needed(layout, lineBitCount, 0) + layout.frameWidth;
    const int sizes[] = {exact, static_cast<int>(random() % static_cast<unsigned>(exact)), 0,
                         -static_cast<int>(random() % 100) - 1};
    return sizes[random() % 4];
}
} // namespace

TEST_P(CMapEngineTest, EveryKernelMapsLinesOfEveryLengthAndTouchesNothingElse)
{
    const ETwinStyle style = GetParam();
    std::mt19937 random(11);
    const STwinStyle layouts[] = {
        {style, 1, 16, 3}, {style, 2, 32, 1}, {style, 2, 16, 2}, {style, 1, 128, 1}, {style, 1, 24, 3}};
    for (const STwinStyle& layout : layouts)
    {
        if (layout.UnitCount() == 0 || (style == ETwinStyle::Style_1 && layout.frameWidth != 16))
        {
            continue; // no room for a unit of style 03, or no such map
        }
        const auto map = Map_Make(layout);
        const auto lookUps = LookUpMap_Make(layout);
        CGuardedSet set(layout);
        for (int bits = 0; bits <= 600; bits += layout.UnitCount() > 16 || IsBlockStyle(style) ? 7 : 1)
        {
            set.Prepare(random, bits, DstByteCount_Choose(random, layout, bits), random() % 2 == 0);
            const Bytes expected = set.OneByOne(*lookUps);
            for (const std::string& name : KernelNames_Available())
            {
                const CKernelGuard guard(name);
                ASSERT_EQ(set.OneByOne(*map), expected) << name << ", " << layout.frameWidth << " wide, " << bits;
                ASSERT_EQ(set.AtOnce(*map), expected) << name << ", " << layout.frameWidth << " wide, " << bits;
            }
        }
    }
}

namespace
{
// Its look-up turns the table round: byte value v has the entry of 255 - v.
template<class TMap>
class CTurnedMap : public TMap
{
public:
    const unsigned char* ByteMapData_Buffer(int unitIndex, int byteValue) const override
    {
        return TMap::ByteMapData_Buffer(unitIndex, 255 - byteValue);
    }
};

Bytes Bytes_Inverted(Bytes bytes)
{
    for (unsigned char& value : bytes)
    {
        value = static_cast<unsigned char>(~value);
    }
    return bytes;
}

// The overriding class must map `src` as the style itself maps the inverted bytes; one line, and six at once.
template<class TMap, class... TArguments>
void LookUp_ExpectUsed(TArguments... arguments)
{
    const auto style = Map_Init<TMap>(arguments...);
    const auto turned = Map_Init<CTurnedMap<TMap>>(arguments...);
    std::mt19937 random(2);
    Bytes expected(6400);
    Bytes one(6400);
    std::vector<Bytes> sources;
    std::vector<SSrcBandLine> lines;
    for (int unit = 0; unit < 6; ++unit)
    {
        sources.push_back(Bytes_Random(random, 50));
        Line_Map(*style, Param_Make(unit, 400), Bytes_Inverted(sources.back()), expected);
        Line_Map(*turned, Param_Make(unit, 400), sources.back(), one);
    }
    for (int unit = 0; unit < 6; ++unit)
    {
        lines.push_back({Param_Make(unit, 400), sources[static_cast<std::size_t>(unit)].data()});
    }
    Bytes all(6400);
    Lines_Map(*turned, lines, all.data(), 6400);
    EXPECT_EQ(one, expected);
    EXPECT_EQ(all, expected);
}
} // namespace

TEST(OverriddenLookUp, IsAskedForEverySourceByteWhateverTheKernel)
{
    for (const std::string& name : KernelNames_Available())
    {
        SCOPED_TRACE(name);
        const CKernelGuard guard(name);
        LookUp_ExpectUsed<CPrintUnitDataMap_1>(16);
        LookUp_ExpectUsed<CPrintUnitDataMap_2>(SDotSize::Big, 32);
        LookUp_ExpectUsed<CPrintUnitDataMap_5>(1, 16);
        LookUp_ExpectUsed<CPrintUnitDataMap_5>(2, 32);
        LookUp_ExpectUsed<CPrintUnitDataMap_03>(1, 64);
    }
}

// Style 8 has only 16 entries per unit: the override asks for another unit's.
TEST(OverriddenLookUp, IsAskedInStyle8Too)
{
    class CShiftedMap : public CPrintUnitDataMap_8
    {
    public:
        const unsigned char* ByteMapData_Buffer(int unitIndex, int byteValue) const override
        {
            return CPrintUnitDataMap_8::ByteMapData_Buffer(unitIndex + 1, byteValue);
        }
    };
    const auto style = Map_Init<CPrintUnitDataMap_8>(16);
    const auto shifted = Map_Init<CShiftedMap>(16);
    std::mt19937 random(2);
    const Bytes src = Bytes_Random(random, 50);
    std::vector<SSrcBandLine> lines;
    Bytes expected(800);
    for (int unit = 0; unit < 6; ++unit)
    {
        lines.push_back({Param_Make(unit, 400), src.data()});
        Line_Map(*style, Param_Make(unit + 1, 400), src, expected);
    }
    Bytes one(800);
    for (const SSrcBandLine& line : lines)
    {
        Line_Map(*shifted, line.m_param, src, one);
    }
    Bytes all(800);
    Lines_Map(*shifted, lines, all.data(), 800);
    EXPECT_EQ(one, expected);
    EXPECT_EQ(all, expected);
}

// A copy that is sliced out of a style, table and all, still is of a class with a look-up of its own.
TEST(OverriddenLookUp, IsAskedOfACopyThatTookOverAStylesTable)
{
    class CCopiedMap : public CTurnedMap<CPrintUnitDataMap_5>
    {
    public:
        explicit CCopiedMap(const CPrintUnitDataMap_5& other) { CPrintUnitDataMap_5::operator=(other); }
    };
    CPrintUnitDataMap_5 style;
    ASSERT_TRUE(style.Init(1, 16));
    CCopiedMap copy(style);
    Bytes dst(16);
    Line_Map(copy, Param_Make(0, 8), {0xFF}, dst); // 0xFF has the entry of 0
    EXPECT_EQ(dst, Bytes(16));
    SMapTestAccess::MapData_Set(copy, nullptr); // one owner only
}

TEST(MapEngine, NoLineAtAllIsTrueAndTouchesNothing)
{
    for (const ETwinStyle style : everyStyle)
    {
        const auto map = Map_Make({style, 1, style == ETwinStyle::Style_03 ? 32 : 16, 1});
        Bytes dst(64, 0x11);
        Lines_Map(*map, {}, dst.data(), 64);
        EXPECT_EQ(dst, Bytes(64, 0x11));
    }
}

namespace
{
// A map of eight units, given one before the first and one behind the last: those columns are another frame's, where
// the line's bytes go all the same.
template<class TMap, class... TArguments>
void Columns_ExpectBesideTheFrame(TArguments... arguments)
{
    constexpr int bits = 400;
    constexpr std::size_t margin = 64;
    const auto map = Map_Init<TMap>(arguments...);
    const auto lookUps = LookUpMap_Init<TMap>(arguments...);
    ASSERT_TRUE(MapPlan_Get(*map).IsThere());
    std::mt19937 random(7);
    const Bytes pixels = Bytes_Random(random, 400);
    for (const std::vector<int>& order :
         {std::vector<int>{-1, 0, 1, 2, 3, 4, 5, 6, 7}, {0, 1, 2, 3, 4, 5, 6, 7, 8}, {7, 8, 6, 5, 4, -1, 3, 2, 1, 0}})
    {
        std::vector<SSrcBandLine> lines;
        for (const int unit : order)
        {
            lines.push_back({Param_Make(unit, bits), pixels.data() + 10 * (unit + 1)});
        }
        const CMapScratch scratch(*lookUps);
        for (SSrcBandLine& line : lines)
        {
            line.m_param.m_customParam = scratch.Get();
        }
        Bytes expected(4096);
        for (const SSrcBandLine& line : lines)
        {
            lookUps->MapData_Line(line.m_param, line.m_pLine, expected.data() + margin, 4000);
        }
        for (const std::string& name : KernelNames_Available())
        {
            const CKernelGuard guard(name);
            Bytes board(4096);
            Lines_Map(*map, lines, board.data() + margin, 4000);
            EXPECT_EQ(board, expected) << name << ", first unit " << order.front();
        }
    }
}
} // namespace

TEST(MapEngine, UnitsBesideTheFrameGoWhereTheStylesOwnLinePutsThem)
{
    Columns_ExpectBesideTheFrame<CPrintUnitDataMap_6>(1, 8);
    Columns_ExpectBesideTheFrame<CPrintUnitDataMap_7>(static_cast<EDotSizeMode>(3), 8);
    Columns_ExpectBesideTheFrame<CPrintUnitDataMap_03_01>(1, 32);
}
