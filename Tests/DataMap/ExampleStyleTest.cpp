// The style that the design page adds as an example: its table, and its plan in every kernel against its look-ups.
#include "Tests/DataMap/ExampleStyle/NibblePlan.h"
#include "Tests/DataMap/KernelSupport.h"

#include <algorithm>

namespace
{
constexpr int lineBitCount = 397; // the last source byte is a partial one

std::vector<SSrcBandLine> Lines_Make(int unitCount, const Bytes& pixels)
{
    std::vector<SSrcBandLine> lines;
    for (int unit = 0; unit < unitCount; ++unit)
    {
        lines.push_back({Param_Make(unit, lineBitCount), pixels.data() + 50 * unit});
    }
    return lines;
}

Bytes Board_ByLookUp(const CPrintUnitDataMap_Base& map, const std::vector<SSrcBandLine>& lines, std::size_t byteCount)
{
    Bytes board(byteCount);
    for (const SSrcBandLine& line : lines)
    {
        map.MapData_Line(line.m_param, line.m_pLine, board.data(), static_cast<int>(byteCount));
    }
    return board;
}
} // namespace

TEST(ExampleStyle, SetsTheLastOfAUnitsFourBitsInEveryFrame)
{
    CPrintUnitDataMap_Nibble map;
    ASSERT_TRUE(map.Init(16));
    EXPECT_EQ(map.SrcPixelCount_2_BoardBitCount(8), 128);
    EXPECT_EQ(Entry_Get(map, 0, 0x80), Bytes_WithBit(16, 3));
    EXPECT_EQ(Entry_Get(map, 3, 0x80), Bytes_WithBit(16, 15));
    EXPECT_EQ(Entry_Get(map, 2, 0x01), Bytes_WithBit(16, 7 * 16 + 11));
}

TEST(ExampleStyle, RefusesAFrameThatItsUnitsDoNotFillWithARecord)
{
    const CLogCapture log;
    CPrintUnitDataMap_Nibble map;
    EXPECT_FALSE(map.Init(18));
    EXPECT_THAT(Log_Functions(log), testing::ElementsAre("CPrintUnitDataMap_Nibble::Init"));
}

TEST(ExampleStyle, LeavesTheBytesOfItsLookUpsInEveryKernelOnceItHasARow)
{
    std::mt19937 random(6);
    for (const int width : {8, 16, 32, 40, 64, 128, 256})
    {
        CPrintUnitDataMap_Nibble map;
        ASSERT_TRUE(map.Init(width));
        EXPECT_FALSE(MapPlan_Get(map).IsThere()) << "not among the library's own";
        const SMapPlan plan = MapPlan_Get(map, nibblePlan);
        ASSERT_TRUE(plan.IsThere());
        const Bytes pixels = Bytes_Random(random, static_cast<std::size_t>(50 * width));
        std::vector<SSrcBandLine> lines = Lines_Make(width / 4, pixels);
        std::shuffle(lines.begin(), lines.end(), random);
        const auto byteCount = static_cast<std::size_t>(map.SrcPixelCount_2_BoardBitCount(lineBitCount)) / 8;
        const Bytes expected = Board_ByLookUp(map, lines, byteCount);
        EXPECT_TRUE(std::any_of(expected.begin(), expected.end(), [](unsigned char value) { return value != 0; }));
        for (const std::string& name : KernelNames_Available())
        {
            const CKernelGuard guard(name);
            Bytes board(byteCount);
            CMapEngine::Lines_Map(plan, lines.data(), static_cast<int>(lines.size()), board.data(),
                                  static_cast<int>(byteCount));
            EXPECT_EQ(board, expected) << name << ", " << width << " wide";
        }
    }
}

TEST(ExampleStyle, HasNoPlanForTheContentOfAnotherInit)
{
    CPrintUnitDataMap_Nibble map;
    ASSERT_TRUE(map.Init(16));
    ASSERT_TRUE(map.CPrintUnitDataMap_Base::Init(1, 1, 32));
    EXPECT_FALSE(MapPlan_Get(map, nibblePlan).IsThere());
    CPrintUnitDataMap_5 other;
    ASSERT_TRUE(other.Init(1, 16));
    EXPECT_FALSE(MapPlan_Get(other, nibblePlan).IsThere());
}
