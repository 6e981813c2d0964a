// The map of four blocks over 100 frames: where single pixels land, and which table entries are asked for.
#include "Tests/DataMap/MapTestSupport.h"

using testing::ElementsAre;

namespace
{
using A = SMapTestAccess;
constexpr std::size_t srcByteCount = 50; // 400 pixels

STwinStyle Layout(int frameWidth)
{
    return {ETwinStyle::Style_03, 1, frameWidth, 1};
}

// The board line of one set source pixel.
Bytes Line_OfPixel(int frameWidth, int unitIndex, int unitDirection, int pixel)
{
    const auto map = Map_Make(Layout(frameWidth));
    Bytes dst(static_cast<std::size_t>(frameWidth / 8 * 100));
    EXPECT_TRUE(Line_Map(*map, Param_Make(unitIndex, 400, unitDirection), Bytes_WithBit(srcByteCount, pixel), dst));
    return dst;
}

Bytes Line_OfBoardBit(int frameWidth, int frame, int byteInFrame, int mask)
{
    const auto lineSize = static_cast<std::size_t>(frameWidth / 8 * 100);
    return Bytes_With(lineSize, {{static_cast<std::size_t>(frame * frameWidth / 8 + byteInFrame), mask}});
}

// Records the rows that a line asks for.
class CRowProbe : public CPrintUnitDataMap_03
{
public:
    const unsigned char* ByteMapData_Buffer(int unitIndex, int byteValue) const override
    {
        m_rows.push_back(unitIndex);
        m_values.push_back(byteValue);
        return CPrintUnitDataMap_03::ByteMapData_Buffer(unitIndex, byteValue);
    }
    mutable std::vector<int> m_rows;
    mutable std::vector<int> m_values;
};

// Reports an entry of no bytes: whole bytes and tails, which go by the reported size, then map nothing.
class CSizeProbe : public CPrintUnitDataMap_03
{
public:
    int MapDataSizeOfByte() const override { return 0; }
};
} // namespace

TEST(PrintUnitDataMap_03, InitIsThatOfStyle5)
{
    CPrintUnitDataMap_03 map;
    ASSERT_TRUE(map.Init(1, 32));
    EXPECT_EQ(A::UnitCount(map), 32);
    EXPECT_EQ(map.MapDataSizeOfByte(), 32);
    Table_ExpectTwin(map, {ETwinStyle::Style_5, 1, 32, 1}, 32);
    const CLogCapture log;
    EXPECT_FALSE(map.Init(3, 32));
    EXPECT_THAT(Log_Functions(log), ElementsAre("CPrintUnitDataMap_Base::Init", "CPrintUnitDataMap_5::Init"));
}

TEST(PrintUnitDataMap_03, DescendingBlocksPutTheFirstBlockIntoTheLastByte)
{
    EXPECT_EQ(Line_OfPixel(32, 0, 1, 0), Line_OfBoardBit(32, 0, 3, 0x80));
    EXPECT_EQ(Line_OfPixel(32, 0, 1, 100), Line_OfBoardBit(32, 0, 2, 0x80));
    EXPECT_EQ(Line_OfPixel(32, 0, 1, 399), Line_OfBoardBit(32, 99, 0, 0x80));
}

TEST(PrintUnitDataMap_03, AscendingBlocksPutTheFirstBlockIntoTheFirstByte)
{
    EXPECT_EQ(Line_OfPixel(32, 0, 2, 0), Line_OfBoardBit(32, 0, 0, 0x80));
    EXPECT_EQ(Line_OfPixel(32, 0, 2, 100), Line_OfBoardBit(32, 0, 1, 0x80));
    EXPECT_EQ(Line_OfPixel(32, 0, 2, 399), Line_OfBoardBit(32, 99, 3, 0x80));
}

TEST(PrintUnitDataMap_03, EveryDirectionButTwoIsDescending)
{
    for (const int direction : {-2, 0, 1, 3, 258})
    {
        EXPECT_EQ(Line_OfPixel(32, 5, direction, 0), Line_OfBoardBit(32, 0, 3, 0x04)) << direction;
    }
}

TEST(PrintUnitDataMap_03, BlocksThatBeginInsideAByteLoseAndDoubleNoPixel)
{
    for (const int pixel : {99, 100, 103, 104, 199, 200, 299, 300, 303, 304})
    {
        EXPECT_EQ(Line_OfPixel(32, 7, 2, pixel), Line_OfBoardBit(32, pixel % 100, pixel / 100, 0x01)) << pixel;
    }
}

TEST(PrintUnitDataMap_03, UnitNineUsesTheSecondGroupOfFourBytes)
{
    EXPECT_EQ(Line_OfPixel(64, 9, 1, 0), Line_OfBoardBit(64, 0, 7, 0x40));
    EXPECT_EQ(Line_OfPixel(64, 9, 1, 399), Line_OfBoardBit(64, 99, 4, 0x40));
    EXPECT_EQ(Line_OfPixel(64, 9, 2, 250), Line_OfBoardBit(64, 50, 6, 0x40));
}

TEST(PrintUnitDataMap_03, UnitNineAsksForRowsThatAFrameOf32BitsDoesNotHave)
{
    CRowProbe map;
    ASSERT_TRUE(map.Init(1, 64));
    Bytes dst(800);
    EXPECT_TRUE(Line_Map(map, Param_Make(9, 400), Bytes(srcByteCount), dst));
    std::vector<int> expected;
    for (const int row : {57, 49, 41, 33})
    {
        expected.insert(expected.end(), 13, row); // each block lies in 13 source bytes
    }
    EXPECT_EQ(map.m_rows, expected);
}

TEST(PrintUnitDataMap_03, EveryBlockAsksForItsOwnSourceBytesThroughTheVirtualTable)
{
    CRowProbe map;
    ASSERT_TRUE(map.Init(1, 32));
    Bytes src(srcByteCount);
    for (std::size_t i = 0; i < src.size(); ++i)
    {
        src[i] = static_cast<unsigned char>(i);
    }
    Bytes dst(400);
    EXPECT_TRUE(Line_Map(map, Param_Make(0, 400), src, dst));
    std::vector<int> expected;
    for (const int first : {0, 12, 25, 37})
    {
        for (int i = 0; i < 13; ++i)
        {
            expected.push_back(first + i);
        }
    }
    EXPECT_EQ(map.m_values, expected);
}

TEST(PrintUnitDataMap_03, WholeBytesAndTailsGoByTheReportedEntrySize)
{
    CSizeProbe map;
    ASSERT_TRUE(map.Init(1, 32));
    Bytes dst(400);
    EXPECT_TRUE(Line_Map(map, Param_Make(0, 400), Bytes(srcByteCount, 0xFF), dst));
    Bytes expected(400);
    for (std::size_t frame = 0; frame < 4; ++frame)
    {
        expected[frame * 4 + 2] = 0x80; // blocks 1 and 3: only their first four pixels go by the frame width
        expected[frame * 4] = 0x80;
    }
    EXPECT_EQ(dst, expected);
}

TEST(PrintUnitDataMap_03, ALineIsOredWhateverItsBitCountAndTheDestinationSizeSay)
{
    const auto map = Map_Make(Layout(32));
    for (const int lineBitCount : {0, -1, 7, 400, 9999})
    {
        Bytes dst(400, 0x02);
        EXPECT_TRUE(Line_Map(*map, Param_Make(0, lineBitCount), Bytes(srcByteCount, 0xFF), dst, lineBitCount));
        EXPECT_EQ(dst, Bytes(400, 0x82)) << lineBitCount;
    }
}

TEST(PrintUnitDataMap_03, FourPixelsShareAFrame)
{
    const auto map = Map_Make(Layout(32));
    EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(400), 3200);
    EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(403), 3200);
    EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(404), 3232);
    EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(3), 0);
}

TEST(PrintUnitDataMap_03, AnyBlockOfPixelsLandsFrameByFrameFromTheDestinationsStart)
{
    CPrintUnitDataMap_03 map;
    ASSERT_TRUE(map.Init(1, 8));
    std::mt19937 random(3);
    for (int start = 0; start < 24; ++start)
    {
        for (const int count : {8, 9, 15, 16, 31}) // a block is never shorter than the rest of its first byte
        {
            const Bytes src = Bytes_Random(random, 8);
            Bytes dst(static_cast<std::size_t>(count));
            EXPECT_TRUE(A::MapBandData_Buffer(map, 2, src.data(), start, count, dst.data(), 0));
            for (int i = 0; i < count; ++i)
            {
                const int pixel = start + i;
                const bool bSet = ((src[static_cast<std::size_t>(pixel / 8)] >> (7 - pixel % 8)) & 1) == 1;
                ASSERT_EQ(dst[static_cast<std::size_t>(i)], bSet ? 0x20 : 0) << start << '+' << i << " of " << count;
            }
        }
    }
}

TEST(PrintUnitDataMap_03, TheFourBitVariantCopiesBitsSixtyFourApart)
{
    CPrintUnitDataMap_03 map;
    ASSERT_TRUE(map.Init(1, 32));
    const CLogCapture log;
    const Bytes src = {0x00, 0x50};
    Bytes dst(33, 0xFF);
    EXPECT_TRUE(A::MapBandData_Buffer_4Bit(map, 3, src.data(), 9, 4, dst.data(), 33));
    Bytes expected(33, 0xFF);
    expected[8] = 0xEF; // source bits 9 to 12 are 1 0 1 0
    expected[24] = 0xEF;
    EXPECT_EQ(dst, expected);
    EXPECT_TRUE(log.Records().empty());
}

TEST(PrintUnitDataMap_03, TheFourBitVariantFailsAtTheDestinationsEnd)
{
    CPrintUnitDataMap_03 map;
    ASSERT_TRUE(map.Init(1, 32));
    const CLogCapture log;
    const Bytes src = {0xFF};
    Bytes dst(24);
    EXPECT_FALSE(A::MapBandData_Buffer_4Bit(map, 0, src.data(), 0, 4, dst.data(), 16));
    EXPECT_EQ(dst, Bytes_With(24, {{0, 0x80}, {8, 0x80}}));
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @PrintUnitDataMap_03"));
    EXPECT_THAT(Log_Functions(log), ElementsAre("CPrintUnitDataMap_03::MapBandData_Buffer_4Bit"));
}
