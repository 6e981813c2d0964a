// The stage's own line mapping: four chunks of 100 pixels, dealt by the cart unit's direction.
#include "Tests/UnitData2BoardData/InkSupport.h"

#include "DataMap/PrintUnitDataMap_03.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <random>

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

using SAccess = SStageTestAccess;

namespace
{

// A map whose entries are the test's: it writes down every look-up and gives entry byte j of (unit, value) as
// 16 x (number of the look-up) + j, modulo 256.
class CNumberingMap : public CPrintUnitDataMap_5
{
public:
    const unsigned char* ByteMapData_Buffer(int unitIndex, int byteValue) const override
    {
        m_units.push_back(unitIndex);
        m_values.push_back(byteValue);
        for (std::size_t j = 0; j < m_entry.size(); ++j)
        {
            m_entry[j] = static_cast<unsigned char>(16 * m_units.size() + j);
        }
        return m_entry.data();
    }

    mutable std::vector<int> m_units;
    mutable std::vector<int> m_values;

private:
    mutable std::array<unsigned char, 64> m_entry{};
};

class InkStageLine : public testing::Test
{
protected:
    // A stage with a numbering map of `srcBitCount` and `frameWidth`, and board lines of `boardBytes`.
    void Stage_Prepare(int srcBitCount, int frameWidth, int boardBytes)
    {
        auto map = std::make_unique<CNumberingMap>();
        ASSERT_TRUE(map->Init(srcBitCount, frameWidth));
        m_pMap = map.get();
        m_stage.Map_Replace(std::move(map));
        delete m_stage.m_pOutputBand;
        m_stage.m_pOutputBand = Band_Make(0, 8 * boardBytes, 3).release();
        for (int unit = 0; unit < 20; ++unit)
        {
            m_config.m_cart.m_units.push_back({unit, 7, 7, 1});
        }
        m_config.Apply();
    }

    void Direction_Set(int unit, int direction)
    {
        m_config.m_cart.m_units[static_cast<std::size_t>(unit)].m_direction = direction;
        m_config.Apply();
    }

    // The board units that one line of this unit's goes to, in the order of the chunks.
    std::vector<int> BoardUnits(int unit)
    {
        m_pMap->m_units.clear();
        const auto band = Band_Make(unit, 400, 1);
        EXPECT_TRUE(m_stage.MapBandData_Line_OneInput(0, *band));
        std::vector<int> units = m_pMap->m_units;
        units.erase(std::unique(units.begin(), units.end()), units.end());
        return units;
    }

    CConfigGuard m_config;
    CInkStage m_stage;
    CNumberingMap* m_pMap = nullptr; // the stage's
};

} // namespace

TEST_F(InkStageLine, UnitNineGoesToTheSecondGroupsSlotOneUpOrDown)
{
    Stage_Prepare(1, 8, 200);
    Direction_Set(9, 2);
    EXPECT_THAT(BoardUnits(9), ElementsAre(33, 41, 49, 57));
    for (const int direction : {0, 1, 3, -2})
    {
        Direction_Set(9, direction);
        EXPECT_THAT(BoardUnits(9), ElementsAre(57, 49, 41, 33));
    }
}

TEST_F(InkStageLine, UnitZeroGoesToTheFirstSlotOfFourGroups)
{
    Stage_Prepare(1, 8, 200);
    Direction_Set(0, 2);
    EXPECT_THAT(BoardUnits(0), ElementsAre(0, 8, 16, 24));
    Direction_Set(0, 1);
    EXPECT_THAT(BoardUnits(0), ElementsAre(24, 16, 8, 0));
}

TEST_F(InkStageLine, TheBandsOwnDirectionDoesNotMatter)
{
    Stage_Prepare(1, 8, 200);
    Direction_Set(3, 2);
    const auto band = Band_Make(3, 400, 1);
    band->m_unitDirection = 1;
    EXPECT_TRUE(m_stage.MapBandData_Line_OneInput(0, *band));
    EXPECT_EQ(m_pMap->m_units.front(), 3);
    EXPECT_EQ(m_pMap->m_units.back(), 27);
}

TEST_F(InkStageLine, ALineBehindTheBandsEndWritesNothing)
{
    Stage_Prepare(1, 8, 100);
    const auto band = Band_Make(0, 400, 2);
    std::fill_n(band->m_pData, band->m_dataSize, static_cast<unsigned char>(0xFF));
    for (const int line : {2, 3})
    {
        EXPECT_TRUE(m_stage.MapBandData_Line_OneInput(line, *band));
    }
    EXPECT_THAT(m_pMap->m_units, IsEmpty());
    EXPECT_THAT(Data_Of(*m_stage.m_pOutputBand), Each(0));
    EXPECT_TRUE(m_stage.MapBandData_Line_OneInput(1, *band)); // the last one counts
    EXPECT_EQ(m_stage.m_pOutputBand->m_pData[0], 0);
    EXPECT_NE(m_stage.m_pOutputBand->m_pData[100], 0);
    EXPECT_EQ(m_stage.m_pOutputBand->m_pData[200], 0);
}

TEST_F(InkStageLine, EveryChunkLooksItsBytesUpFromHeadToTail)
{
    Stage_Prepare(1, 8, 100);
    Direction_Set(0, 2);
    const auto band = Band_Make(0, 400, 1);
    for (int i = 0; i < 50; ++i)
    {
        band->m_pData[i] = static_cast<unsigned char>(i);
    }
    EXPECT_TRUE(m_stage.MapBandData_Line_OneInput(0, *band));
    std::vector<int> expected;
    for (const int first : {0, 12, 25, 37}) // 12 whole bytes and half a one, four times; bytes 12 and 37 serve twice
    {
        for (int i = 0; i < 13; ++i)
        {
            expected.push_back(first + i);
        }
    }
    EXPECT_EQ(m_pMap->m_values, expected);
    std::vector<int> units(52);
    for (std::size_t i = 0; i < units.size(); ++i)
    {
        units[i] = static_cast<int>(i) / 13 * 8;
    }
    EXPECT_EQ(m_pMap->m_units, units);
}

TEST_F(InkStageLine, ChunkOneBeginsWithTheSecondHalfOfAnEntryAndGivesAHundredBytes)
{
    Stage_Prepare(1, 8, 104);
    std::vector<unsigned char> src(50);
    src[12] = 0x5A;
    std::vector<unsigned char> dst(104);
    EXPECT_TRUE(SAccess::MapBandData_Buffer(m_stage, 8, src.data(), 100, 100, dst.data(), 104));
    EXPECT_EQ(m_pMap->m_values.front(), 0x5A);
    EXPECT_EQ(m_pMap->m_values.size(), 13U);
    std::vector<unsigned char> expected;
    for (int j = 4; j < 8; ++j)
    {
        expected.push_back(static_cast<unsigned char>(16 + j));
    }
    for (int entry = 2; entry <= 13; ++entry)
    {
        for (int j = 0; j < 8; ++j)
        {
            expected.push_back(static_cast<unsigned char>(16 * entry + j));
        }
    }
    expected.resize(104);
    EXPECT_EQ(dst, expected);
}

TEST_F(InkStageLine, ChunkZeroEndsWithTheFirstHalfOfAnEntry)
{
    Stage_Prepare(1, 8, 104);
    const std::vector<unsigned char> src(50);
    std::vector<unsigned char> dst(104);
    EXPECT_TRUE(SAccess::MapBandData_Buffer(m_stage, 0, src.data(), 0, 100, dst.data(), 104));
    EXPECT_EQ(m_pMap->m_values.size(), 13U);
    EXPECT_THAT(std::vector<int>(dst.begin() + 96, dst.end()), ElementsAre(208, 209, 210, 211, 0, 0, 0, 0));
}

// 2-bit pixels: an entry of 8 bytes where the head still reckons a frame of two bytes per bit.
TEST_F(InkStageLine, TheHeadCountsByTheFrameWidthBodyAndTailByTheEntry)
{
    Stage_Prepare(2, 16, 200);
    ASSERT_EQ(m_pMap->MapDataSizeOfByte(), 8);
    const std::vector<unsigned char> src(8);
    std::vector<unsigned char> dst(40);
    EXPECT_TRUE(SAccess::MapBandData_Buffer(m_stage, 0, src.data(), 3, 5 + 8 + 3, dst.data(), 40));
    std::vector<unsigned char> expected;
    for (int j = 6; j < 16; ++j) // 16 x 3 / 8 = 6, 16 x 5 / 8 = 10 bytes
    {
        expected.push_back(static_cast<unsigned char>(16 + j));
    }
    for (int j = 0; j < 8; ++j)
    {
        expected.push_back(static_cast<unsigned char>(32 + j));
    }
    for (int j = 0; j < 3; ++j) // 8 x 3 / 8
    {
        expected.push_back(static_cast<unsigned char>(48 + j));
    }
    expected.resize(40);
    EXPECT_EQ(dst, expected);
}

TEST_F(InkStageLine, TheDestinationsSizeIsNotLookedAt)
{
    Stage_Prepare(1, 8, 100);
    const std::vector<unsigned char> src(50);
    std::vector<unsigned char> dst(100);
    EXPECT_TRUE(SAccess::MapBandData_Buffer(m_stage, 0, src.data(), 0, 100, dst.data(), 0));
    EXPECT_EQ(dst[0], 16);
    EXPECT_EQ(dst[99], 211);
}

TEST_F(InkStageLine, EveryInputIsORedIntoTheLine)
{
    auto map = std::make_unique<CPrintUnitDataMap_03>();
    ASSERT_TRUE(map->Init(1, 32));
    m_stage.Map_Replace(std::move(map));
    m_stage.m_pOutputBand = Band_Make(0, 3200, 1).release();
    std::fill_n(m_stage.m_pOutputBand->m_pData, 400, static_cast<unsigned char>(0x01)); // as if of unit 7
    for (const int unit : {0, 3})
    {
        m_stage.m_pInputElements->push_back({Band_Make(unit, 400, 1).release(), nullptr});
        std::fill_n(m_stage.m_pInputElements->back().band->m_pData, 50, static_cast<unsigned char>(0xFF));
    }
    ASSERT_TRUE(m_stage.MapBandData_Line_AllInput(0));
    EXPECT_THAT(Data_Of(*m_stage.m_pOutputBand), Each(0x80 | 0x10 | 0x01));
}

RC_GTEST_PROP(InkStageLineModel, ItAgreesWithTheBlockMapWhenTheDirectionsAgree, ())
{
    CConfigGuard config;
    const int groups = *rc::gen::inRange(1, 4);
    const int unit = *rc::gen::inRange(0, 8 * groups);
    const int direction = *rc::gen::inRange(0, 4);
    const int frameWidth = 32 * groups + 2 * *rc::gen::inRange(0, 9);
    config.m_cart.m_units = {{unit, 0, 0, direction}};
    config.Apply();
    CInkStage stage;
    auto map = std::make_unique<CPrintUnitDataMap_03>();
    RC_ASSERT(map->Init(1, frameWidth));
    stage.Map_Replace(std::move(map));

    std::mt19937 random(*rc::gen::arbitrary<unsigned>());
    const auto band = Band_Make(unit, 400, 2);
    std::generate_n(band->m_pData, band->m_dataSize, [&] { return static_cast<unsigned char>(random()); });
    stage.m_pOutputBand = Band_Make(0, 100 * frameWidth, 2).release();
    CBandData& board = *stage.m_pOutputBand;
    std::generate_n(board.m_pData, board.m_dataSize, [&] { return static_cast<unsigned char>(random()); });
    std::vector<unsigned char> expected = Data_Of(board);
    SSrcBandDataParam param;
    param.m_unitIndex = unit;
    param.m_unitDirection = direction;
    param.m_lineBitCount = 400;
    RC_ASSERT(stage.m_pDataMap->MapData_Line(param, band->m_pData + band->m_bytesPerLine,
                                             expected.data() + board.m_bytesPerLine, board.m_bytesPerLine));
    RC_ASSERT(stage.MapBandData_Line_OneInput(1, *band));
    RC_ASSERT(Data_Of(board) == expected);
}

// With F / 8 bytes per pixel in frame and entry alike, a chunk is its pixels' bytes one after the other.
RC_GTEST_PROP(InkStageLineModel, AnyChunkIsItsPixelsInOrder, ())
{
    CConfigGuard config;
    CInkStage stage;
    auto map = std::make_unique<CPrintUnitDataMap_5>();
    const int bytesPerPixel = *rc::gen::inRange(1, 9);
    RC_ASSERT(map->Init(1, 8 * bytesPerPixel));
    stage.Map_Replace(std::move(map));
    const int unit = *rc::gen::inRange(0, 8 * bytesPerPixel);
    const int first = *rc::gen::inRange(0, 40);
    // At least to the end of the first byte, which is taken whole.
    const int count = (first % 8 > 0 ? 8 - first % 8 : 0) + *rc::gen::inRange(0, 60);
    std::mt19937 random(*rc::gen::arbitrary<unsigned>());
    std::vector<unsigned char> src(static_cast<std::size_t>((first + count + 7) / 8));
    std::generate(src.begin(), src.end(), [&] { return static_cast<unsigned char>(random()); });
    std::vector<unsigned char> dst(static_cast<std::size_t>(count * bytesPerPixel));
    std::vector<unsigned char> expected(dst.size());
    for (int pixel = 0; pixel < count; ++pixel)
    {
        const int bit = first + pixel;
        if ((src[static_cast<std::size_t>(bit / 8)] >> (7 - bit % 8) & 1) == 1)
        {
            expected[static_cast<std::size_t>(pixel * bytesPerPixel + unit / 8)] =
                static_cast<unsigned char>(0x80 >> unit % 8);
        }
    }
    RC_ASSERT(SAccess::MapBandData_Buffer(stage, unit, src.data(), first, count, dst.data(), 0));
    RC_ASSERT(dst == expected);
}
