// The twin against lines worked out by hand, and whole bands through map and twin.
#include "Tests/DataMap/MapTestSupport.h"

namespace
{
// What the twin makes of one source line of 1-bit pixels in a zeroed board line of `size` bytes.
Bytes Twin_Line(const STwinStyle& style, int unitIndex, int lineBitCount, const Bytes& src, std::size_t size)
{
    Bytes dst(size);
    CBoardTwin(style).Line_Map({unitIndex, 1, lineBitCount, src}, dst, static_cast<int>(size));
    return dst;
}

// A band of random pixels with two spare bytes per line.
struct SBand
{
    int unitIndex;
    int unitDirection;
    int width;
    int bitsPerPixel;
    int height;
    int bytesPerLine;
    Bytes data;
};

SBand Band_Random(std::mt19937& random, int unitIndex, int width, int bitsPerPixel, int height)
{
    const int bytesPerLine = (width * bitsPerPixel + 7) / 8 + 2;
    return {unitIndex,
            1 + unitIndex % 2,
            width,
            bitsPerPixel,
            height,
            bytesPerLine,
            Bytes_Random(random, static_cast<std::size_t>(bytesPerLine * height))};
}

// The bands through the map, line by line into a zeroed board band.
Bytes Bands_ThroughMap(const CPrintUnitDataMap_Base& map, const std::vector<SBand>& bands)
{
    const int bytesPerLine = (map.SrcPixelCount_2_BoardBitCount(bands[0].width) + 7) / 8;
    Bytes board(static_cast<std::size_t>(bytesPerLine * bands[0].height));
    const CMapScratch scratch(map);
    for (int y = 0; y < bands[0].height; ++y)
    {
        for (const SBand& band : bands)
        {
            if (y < band.height)
            {
                SSrcBandDataParam param =
                    Param_Make(band.unitIndex, band.width * band.bitsPerPixel, band.unitDirection);
                param.m_customParam = scratch.Get();
                map.MapData_Line(param, band.data.data() + y * band.bytesPerLine, board.data() + y * bytesPerLine,
                                 bytesPerLine);
            }
        }
    }
    return board;
}

std::vector<STwinBand> Bands_ForTwin(const std::vector<SBand>& bands)
{
    std::vector<STwinBand> result;
    for (const SBand& band : bands)
    {
        result.push_back({band.unitIndex, band.unitDirection, band.width, band.bitsPerPixel, band.height,
                          band.bytesPerLine, band.data});
    }
    return result;
}
} // namespace

TEST(BoardTwin, PlacesTheLinesThatWereWorkedOutByHand)
{
    EXPECT_EQ(Twin_Line({ETwinStyle::Style_1, 1, 16, 1}, 9, 8, {0x01}, 16), Bytes_With(16, {{12, 0x02}}));
    EXPECT_EQ(Twin_Line({ETwinStyle::Style_2, 1, 16, 1}, 0, 8, {0x80}, 16), Bytes_With(16, {{0, 0x40}}));
    EXPECT_EQ(Twin_Line({ETwinStyle::Style_5, 2, 16, 1}, 3, 8, {0xC0}, 8), Bytes_With(8, {{0, 0x03}}));
    EXPECT_EQ(Twin_Line({ETwinStyle::Style_6, 1, 16, 1}, 3, 16, {0xAB, 0xCD}, 32),
              Bytes_With(32, {{3, 0xAB}, {19, 0xCD}}));
    EXPECT_EQ(Twin_Line({ETwinStyle::Style_7, 1, 1, 3}, 0, 8, {0xA5}, 2), (Bytes{0xCC, 0x33}));
    EXPECT_EQ(Twin_Line({ETwinStyle::Style_8, 2, 8, 1}, 3, 8, {0xC0}, 8), Bytes_With(8, {{0, 0x02}, {4, 0x02}}));
    EXPECT_EQ(Twin_Line({ETwinStyle::Style_03, 1, 32, 1}, 0, 400, Bytes_WithBit(50, 399), 400),
              Bytes_With(400, {{99 * 4, 0x80}}));
    EXPECT_EQ(Twin_Line({ETwinStyle::Style_03_01, 1, 4, 1}, 0, 400, Bytes_WithBit(50, 101), 52),
              Bytes_With(52, {{2, 0x40}, {3 + 12 * 4, 0x04}})); // chunk 1, and behind chunk 0
}

TEST(BoardTwin, RefusesToReadOrWriteOutsideTheMemoryOfALine)
{
    const Bytes src = {0xFF};
    Bytes dst(15);
    const CBoardTwin twin({ETwinStyle::Style_5, 1, 16, 1});
    EXPECT_THROW(twin.Line_Map({15, 1, 8, src}, dst, 16), std::out_of_range);
    EXPECT_THROW(twin.Line_Map({0, 1, 9, src}, dst, 0), std::out_of_range);
}

TEST(BoardTwin, ABandWithoutBandsIsEmpty)
{
    const STwinBoardBand board = CBoardTwin({ETwinStyle::Style_5, 1, 16, 1}).Band_Map({});
    EXPECT_EQ(board.height, 0);
    EXPECT_TRUE(board.data.empty());
}

TEST(BoardTwin, WholeBandsComeOutOfEveryMapAsOutOfTheTwin)
{
    struct SCase
    {
        STwinStyle style;
        int width;
        int bitsPerPixel;
        std::vector<int> units;
    };
    const std::vector<SCase> cases = {
        {{ETwinStyle::Style_1, 1, 16, 1}, 53, 1, {0, 7, 8, 15}},
        {{ETwinStyle::Style_2, 1, 16, 3}, 53, 1, {0, 3, 7}},
        {{ETwinStyle::Style_5, 1, 24, 1}, 53, 1, {0, 11, 23}},
        {{ETwinStyle::Style_5, 2, 24, 1}, 27, 2, {0, 5, 11}},
        {{ETwinStyle::Style_6, 2, 5, 1}, 27, 2, {0, 2, 4}},
        {{ETwinStyle::Style_7, 1, 5, 2}, 27, 1, {0, 2, 4}},
        {{ETwinStyle::Style_8, 1, 16, 1}, 48, 1, {0, 3, 15}},
        {{ETwinStyle::Style_03, 1, 64, 1}, 400, 1, {0, 7, 15}},
        {{ETwinStyle::Style_03_01, 1, 12, 1}, 400, 1, {0, 1, 2}},
    };
    std::mt19937 random(6);
    for (const SCase& one : cases)
    {
        SCOPED_TRACE(testing::Message() << "style " << static_cast<int>(one.style.style));
        const auto map = Map_Make(one.style);
        std::vector<SBand> bands;
        for (const int unit : one.units)
        {
            const int height = bands.empty() ? 5 : 4; // the first band sets the height, the others end earlier
            bands.push_back(Band_Random(random, unit, one.width, one.bitsPerPixel, height));
        }
        const STwinBoardBand board = CBoardTwin(one.style).Band_Map(Bands_ForTwin(bands));
        EXPECT_EQ(board.width, map->SrcPixelCount_2_BoardBitCount(one.width));
        EXPECT_EQ(board.height, 5);
        EXPECT_EQ(board.data, Bands_ThroughMap(*map, bands));
    }
}
