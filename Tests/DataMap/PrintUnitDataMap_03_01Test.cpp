// The map of four chunks: the 13-byte mode that every map has, and the three modes beside it.
#include "Tests/DataMap/MapTestSupport.h"

#include <numeric>

using testing::ElementsAre;

namespace
{
using A = SMapTestAccess;

// A map with frames of `frameWidth` board units in one of its bit modes.
std::unique_ptr<CPrintUnitDataMap_03_01> Map_OfMode(int bitMode, int frameWidth)
{
    auto map = std::make_unique<CPrintUnitDataMap_03_01>();
    EXPECT_TRUE(map->Init(1, frameWidth));
    A::BitMode_Set(*map, bitMode);
    return map;
}

// 50 bytes 0x00, 0x01, ... with the given bytes replaced.
Bytes Source_Make(const std::vector<std::pair<std::size_t, int>>& values = {})
{
    Bytes src(50);
    std::iota(src.begin(), src.end(), static_cast<unsigned char>(0));
    for (const auto& [index, value] : values)
    {
        src.at(index) = static_cast<unsigned char>(value);
    }
    return src;
}

int Bit_Of(const Bytes& bytes, int position)
{
    return (bytes.at(static_cast<std::size_t>(position / 8)) >> (7 - position % 8)) & 1;
}
} // namespace

TEST(PrintUnitDataMap_03_01, StartsInTheThirteenByteModeAndInitKeepsIt)
{
    CPrintUnitDataMap_03_01 map;
    EXPECT_EQ(A::BitMode(map), 2);
    ASSERT_TRUE(map.Init(1, 8));
    EXPECT_EQ(A::BitMode(map), 2);
    EXPECT_EQ(map.SrcBitCount(), 1);
    EXPECT_EQ(map.DstBitCount(), 1);
    EXPECT_EQ(map.DataFrameWidth(), 8);
    EXPECT_EQ(A::UnitCount(map), 8);
    Table_ExpectTwin(map, {ETwinStyle::Style_5, 1, 8, 1}, 8);
}

TEST(PrintUnitDataMap_03_01, AFailedInitIsLoggedOnEveryLevel)
{
    const CLogCapture log;
    CPrintUnitDataMap_03_01 map;
    EXPECT_FALSE(map.Init(3, 8));
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @PrintUnitDataMap_Base", "2 failure @PrintUnitDataMap_5",
                                           "2 failure @PrintUnitDataMap_03_01"));
    EXPECT_THAT(Log_Functions(log), ElementsAre("CPrintUnitDataMap_Base::Init", "CPrintUnitDataMap_5::Init",
                                                "CPrintUnitDataMap_03_01::Init"));
}

TEST(PrintUnitDataMap_03_01, InitTakesThePlaceOfTheOneOfStyle5)
{
    const CLogCapture log;
    CPrintUnitDataMap_03_01 map;
    CPrintUnitDataMap_5& base = map;
    EXPECT_FALSE(base.Init(3, 8));
    EXPECT_EQ(log.Records().size(), 3U);
}

TEST(PrintUnitDataMap_03_01, DirectionTwoFillsTheFourBoardUnitsInOrder)
{
    const auto map = Map_OfMode(2, 8);
    Bytes dst(104, 0x77);
    // First bytes of the chunks: 0; bits 100.. of 0xCA 0xB0 = 0xAB; byte 25; bits 300.. of 0xEC 0xD0 = 0xCD.
    const Bytes src = Source_Make({{0, 0x5A}, {12, 0xCA}, {13, 0xB0}, {25, 0x5B}, {37, 0xEC}, {38, 0xD0}});
    EXPECT_TRUE(Line_Map(*map, Param_Make(1, 400, 2), src, dst));
    EXPECT_EQ(Bytes(dst.begin(), dst.begin() + 8), (Bytes{0x77, 0x77, 0x77, 0x77, 0x5A, 0xAB, 0x5B, 0xCD}));
}

TEST(PrintUnitDataMap_03_01, AnyOtherDirectionFillsThemInReverse)
{
    const auto map = Map_OfMode(2, 8);
    const Bytes src = Source_Make({{0, 0x5A}, {12, 0xCA}, {13, 0xB0}, {25, 0x5B}, {37, 0xEC}, {38, 0xD0}});
    for (const int direction : {-2, 0, 1, 3, 258})
    {
        Bytes dst(104, 0x77);
        EXPECT_TRUE(Line_Map(*map, Param_Make(1, 400, direction), src, dst));
        EXPECT_EQ(Bytes(dst.begin(), dst.begin() + 8), (Bytes{0x77, 0x77, 0x77, 0x77, 0xCD, 0x5B, 0xAB, 0x5A}));
    }
}

TEST(PrintUnitDataMap_03_01, TheThirteenthByteOfAnAlignedChunkCarriesTheNextFourBits)
{
    const auto map = Map_OfMode(2, 8);
    Bytes dst(104, 0x77);
    EXPECT_TRUE(Line_Map(*map, Param_Make(0, 400, 2), Bytes(50, 0xFF), dst));
    EXPECT_EQ(dst[0 + 12 * 8], 0xFF) << "chunk 0, aligned: source bits 100 to 103 follow";
    EXPECT_EQ(dst[1 + 12 * 8], 0xF0) << "chunk 1, gathered: zeros follow";
    EXPECT_EQ(dst[2 + 12 * 8], 0xFF);
    EXPECT_EQ(dst[3 + 12 * 8], 0xF0);
    EXPECT_TRUE(Line_Map(*map, Param_Make(0, 400, 2), Source_Make({{12, 0xA6}}), dst));
    EXPECT_EQ(dst[0 + 12 * 8], 0xA6);
}

TEST(PrintUnitDataMap_03_01, BytesAreStoredOverWhatIsThere)
{
    const auto map = Map_OfMode(2, 4);
    Bytes dst(52, 0xFF);
    EXPECT_TRUE(Line_Map(*map, Param_Make(0, 400), Bytes(50), dst));
    EXPECT_EQ(dst, Bytes(52));
}

TEST(PrintUnitDataMap_03_01, NeitherTheBitCountNorTheDestinationSizeIsLookedAt)
{
    const auto map = Map_OfMode(2, 4);
    Bytes expected(52);
    EXPECT_TRUE(Line_Map(*map, Param_Make(0, 400), Source_Make(), expected, 52));
    for (const int number : {0, -1, 13, 10000})
    {
        Bytes dst(52);
        EXPECT_TRUE(Line_Map(*map, Param_Make(0, number), Source_Make(), dst, number));
        EXPECT_EQ(dst, expected) << number;
    }
}

TEST(PrintUnitDataMap_03_01, AlignedChunksNeverTouchTheScratchBlock)
{
    const auto map = Map_OfMode(2, 4);
    Bytes scratch(13, 0x77);
    Bytes dst(52);
    EXPECT_TRUE(map->MapBandData_Buffer_Bit_8(0, Source_Make().data(), 200, 100, dst.data(), 52, scratch.data()));
    EXPECT_EQ(scratch, Bytes(13, 0x77));
    EXPECT_TRUE(map->MapBandData_Buffer_Bit_8(0, Source_Make().data(), 200, 100, dst.data(), 52, nullptr));
    EXPECT_TRUE(map->MapBandData_Buffer_Bit_8(1, Source_Make().data(), 100, 100, dst.data(), 52, scratch.data()));
    EXPECT_NE(scratch, Bytes(13, 0x77));
}

TEST(PrintUnitDataMap_03_01, AScratchBlockIsCleanedBeforeEveryGather)
{
    const auto map = Map_OfMode(2, 1);
    Bytes scratch(13, 0xFF);
    Bytes dst(13);
    EXPECT_TRUE(map->MapBandData_Buffer_Bit_8(0, Bytes(50).data(), 4, 20, dst.data(), 13, scratch.data()));
    EXPECT_EQ(dst, Bytes(13));
}

TEST(PrintUnitDataMap_03_01, AGatherOfMoreBitsThanTheBlockHoldsFailsWithOneRecord)
{
    const auto map = Map_OfMode(2, 4);
    const CLogCapture log;
    const CMapScratch scratch(*map);
    Bytes dst(52, 0x77);
    EXPECT_TRUE(map->MapBandData_Buffer_Bit_8(0, Source_Make().data(), 4, 104, dst.data(), 52, scratch.Get()));
    EXPECT_TRUE(log.Records().empty());
    dst.assign(52, 0x77);
    EXPECT_FALSE(map->MapBandData_Buffer_Bit_8(0, Source_Make().data(), 4, 105, dst.data(), 52, scratch.Get()));
    EXPECT_EQ(dst, Bytes(52, 0x77));
    EXPECT_THAT(log.Summary(), ElementsAre("2 failure @PrintUnitDataMap_03_01"));
    EXPECT_THAT(Log_Functions(log), ElementsAre("CPrintUnitDataMap_03_01::MapBandData_Buffer_Bit_8"));
}

TEST(PrintUnitDataMap_03_01, TheScratchBlockHasThirteenBytesOfItsOwn)
{
    const auto map = Map_OfMode(2, 8);
    auto* first = static_cast<unsigned char*>(map->CustomParam_Create());
    auto* second = static_cast<unsigned char*>(map->CustomParam_Create());
    ASSERT_NE(first, nullptr);
    EXPECT_NE(first, second);
    std::fill_n(first, 13, static_cast<unsigned char>(0x11)); // the address checker sees a block that is shorter
    std::fill_n(second, 13, static_cast<unsigned char>(0x22));
    EXPECT_EQ(Bytes(first, first + 13), Bytes(13, 0x11));
    map->CustomParam_Release(first);
    map->CustomParam_Release(second);
}

TEST(PrintUnitDataMap_03_01, ReleasingANullScratchBlockDoesNothing)
{
    const CLogCapture log;
    const auto map = Map_OfMode(2, 8);
    map->CustomParam_Release(nullptr);
    EXPECT_TRUE(log.Records().empty());
}

TEST(PrintUnitDataMap_03_01, TheBoardLineDependsOnTheFrameWidthAlone)
{
    const auto map = Map_OfMode(2, 8);
    for (const int pixels : {-1, 0, 1, 400, 100000})
    {
        EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(pixels), 832) << pixels;
    }
}

TEST(PrintUnitDataMap_03_01, EveryModeHasItsBoardLine)
{
    EXPECT_EQ(Map_OfMode(1, 9)->SrcPixelCount_2_BoardBitCount(400), 900);
    EXPECT_EQ(Map_OfMode(2, 9)->SrcPixelCount_2_BoardBitCount(400), 936);
    EXPECT_EQ(Map_OfMode(3, 9)->SrcPixelCount_2_BoardBitCount(400), 800);
    EXPECT_EQ(Map_OfMode(4, 9)->SrcPixelCount_2_BoardBitCount(400), 800);
    EXPECT_EQ(Map_OfMode(4, 7)->SrcPixelCount_2_BoardBitCount(400), 400);
    for (const int mode : {0, 5, -1})
    {
        EXPECT_EQ(Map_OfMode(mode, 9)->SrcPixelCount_2_BoardBitCount(400), 0);
    }
}

TEST(PrintUnitDataMap_03_01, AnUnknownModeIsLoggedOnceAndNotPassedOn)
{
    for (const int mode : {0, 5, -1})
    {
        const auto map = Map_OfMode(mode, 8);
        const CLogCapture log;
        Bytes dst(104, 0x77);
        EXPECT_TRUE(Line_Map(*map, Param_Make(0, 400), Source_Make(), dst));
        EXPECT_EQ(dst, Bytes(104, 0x77));
        EXPECT_THAT(log.Summary(), ElementsAre("2 failure @PrintUnitDataMap_03_01"));
        EXPECT_THAT(Log_Functions(log), ElementsAre("CPrintUnitDataMap_03_01::MapData_Line_Normal"));
        EXPECT_FALSE(A::MapData_Line_Normal(*map, Param_Make(0, 400), Source_Make().data(), dst.data(), 104));
        EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(400), 0);
    }
}

TEST(PrintUnitDataMap_03_01, AChunkInAnUnknownModeFailsWithoutARecord)
{
    for (const int mode : {0, 3, 4, 5})
    {
        const auto map = Map_OfMode(mode, 8);
        const CLogCapture log;
        Bytes dst(104, 0x77);
        EXPECT_FALSE(map->MapBandData_Buffer(0, Source_Make().data(), 0, 100, dst.data(), 104, nullptr));
        EXPECT_EQ(dst, Bytes(104, 0x77));
        EXPECT_TRUE(log.Records().empty());
    }
}

TEST(PrintUnitDataMap_03_01, AChunkInAKnownModeGoesToThatModesInterleave)
{
    std::mt19937 random(4);
    const Bytes src = Bytes_Random(random, 50);
    const auto nibbles = Map_OfMode(1, 4);
    Bytes expected(50);
    Bytes dst(50);
    EXPECT_TRUE(nibbles->MapBandData_Buffer_Bit_4(2, src.data(), 100, 100, expected.data(), 50));
    EXPECT_TRUE(nibbles->MapBandData_Buffer(2, src.data(), 100, 100, dst.data(), 50, nullptr));
    EXPECT_EQ(dst, expected);
    EXPECT_NE(dst, Bytes(50));

    const auto bytes = Map_OfMode(2, 4);
    const CMapScratch scratch(*bytes);
    expected.assign(52, 0);
    dst.assign(52, 0);
    EXPECT_TRUE(bytes->MapBandData_Buffer_Bit_8(2, src.data(), 100, 100, expected.data(), 52, scratch.Get()));
    EXPECT_TRUE(bytes->MapBandData_Buffer(2, src.data(), 100, 100, dst.data(), 52, scratch.Get()));
    EXPECT_EQ(dst, expected);
    EXPECT_NE(dst, Bytes(52));
}

TEST(PrintUnitDataMap_03_01, TheFourBitModeDealsNibblesToTheBoardUnits)
{
    std::mt19937 random(5);
    for (const int direction : {1, 2})
    {
        const auto map = Map_OfMode(1, 8);
        const Bytes src = Bytes_Random(random, 50);
        Bytes dst(100, 0xFF);
        EXPECT_TRUE(Line_Map(*map, Param_Make(1, 400, direction), src, dst));
        for (int frame = 0; frame < 25; ++frame)
        {
            for (int boardUnit = 0; boardUnit < 8; ++boardUnit)
            {
                for (int bit = 0; bit < 4; ++bit)
                {
                    const int chunk = direction == 2 ? boardUnit - 4 : 7 - boardUnit;
                    const int expected = boardUnit < 4 ? 1 : Bit_Of(src, chunk * 100 + frame * 4 + bit);
                    ASSERT_EQ(Bit_Of(dst, frame * 32 + boardUnit * 4 + bit), expected)
                        << "frame " << frame << ", board unit " << boardUnit << ", bit " << bit;
                }
            }
        }
    }
}

TEST(PrintUnitDataMap_03_01, TheFourBitModeLeavesOutWhatLiesBeyondTheDestinationAndSaysNothing)
{
    const auto map = Map_OfMode(1, 8);
    const CLogCapture log;
    Bytes dst(100);
    EXPECT_TRUE(map->MapBandData_Buffer_Bit_4(0, Bytes(50, 0xFF).data(), 0, 4, dst.data(), 8));
    EXPECT_EQ(dst, Bytes_With(100, {{0, 0xF0}, {4, 0xF0}}));
    EXPECT_TRUE(log.Records().empty());
}

TEST(PrintUnitDataMap_03_01, TheFourBitModeMapsAHundredBitsWhateverTheBitCountSays)
{
    const auto map = Map_OfMode(1, 2);
    Bytes dst(26);
    EXPECT_TRUE(map->MapBandData_Buffer_Bit_4(1, Bytes(50, 0xFF).data(), 0, 4, dst.data(), 26));
    Bytes expected(26, 0x0F);
    expected[25] = 0x00;
    EXPECT_EQ(dst, expected);
}

TEST(PrintUnitDataMap_03_01, TheHalvesModeLeavesTheSecondHalf)
{
    for (const int direction : {1, 2})
    {
        const auto map = Map_OfMode(3, 8);
        Bytes dst(100, 0x77);
        EXPECT_TRUE(Line_Map(*map, Param_Make(2, 400, direction), Source_Make(), dst, 0));
        Bytes expected(100, 0x77);
        std::iota(expected.begin() + 50, expected.begin() + 75, static_cast<unsigned char>(25));
        EXPECT_EQ(dst, expected);
    }
}

TEST(PrintUnitDataMap_03_01, TheHalvesModeRoundsEveryLengthDown)
{
    const auto map = Map_OfMode(3, 8);
    Bytes dst(12, 0x77);
    EXPECT_TRUE(Line_Map(*map, Param_Make(1, 55), Source_Make(), dst)); // halves of 27 bits: 3 bytes, the second from 3
    EXPECT_EQ(dst, (Bytes{0x77, 0x77, 0x77, 3, 4, 5, 0x77, 0x77, 0x77, 0x77, 0x77, 0x77}));
}

TEST(PrintUnitDataMap_03_01, TheBlockModeCopiesTheLineToTheUnitsPlace)
{
    const auto map = Map_OfMode(4, 8);
    for (const bool bDirect : {false, true})
    {
        Bytes dst(150, 0x77);
        const Bytes src = Source_Make();
        EXPECT_TRUE(bDirect ? A::MapData_Line_Bit_400(*map, Param_Make(1, 407), src.data(), dst.data(), 0)
                            : Line_Map(*map, Param_Make(1, 407), src, dst, 0));
        Bytes expected(150, 0x77);
        std::copy(src.begin(), src.end(), expected.begin() + 50);
        EXPECT_EQ(dst, expected);
    }
}

TEST(PrintUnitDataMap_03_01, ALineOfNegativeLengthCopiesNothing)
{
    for (const int mode : {3, 4})
    {
        const auto map = Map_OfMode(mode, 8);
        Bytes dst(8, 0x77);
        EXPECT_TRUE(Line_Map(*map, Param_Make(0, -64), Source_Make(), dst));
        EXPECT_EQ(dst, Bytes(8, 0x77));
    }
}

TEST(PrintUnitDataMap_03_01, ACopyHasTheBitModeToo)
{
    const auto map = Map_OfMode(3, 8);
    CPrintUnitDataMap_03_01 copy(*map);
    EXPECT_EQ(A::BitMode(copy), 3);
    EXPECT_EQ(copy.AllMapData_Get(), map->AllMapData_Get());
    A::MapData_Set(copy, nullptr); // one owner only
}
