// Every style on random lines against the twin: lengths, units, directions, what the destination held before and how
// long the map was told that it is.
#include "Tests/DataMap/MapTestSupport.h"

#include <rapidcheck.h>

#include <algorithm>

namespace
{
// One line to map. The destination is exactly as long as the map may touch, so that the address checker sees more.
struct SLineCase
{
    STwinStyle style;
    SSrcBandDataParam param;
    Bytes src;
    Bytes dst;
    int dstByteCount = 0;
};

int Draw(int first, int last)
{
    return *rc::gen::inRange(first, last + 1);
}

template<class T>
T Draw_From(std::initializer_list<T> values)
{
    return *rc::gen::elementOf(std::vector<T>(values));
}

// Source bytes of one character: noise, all set, none set, single bits, 2-bit pixels of one plane.
Bytes Source_Draw(std::size_t count)
{
    std::mt19937 random(static_cast<unsigned>(Draw(0, 1 << 20)));
    const int character = Draw(0, 5);
    Bytes src = Bytes_Random(random, count);
    for (auto& value : src)
    {
        const int noise = value;
        const int values[] = {noise, 0xFF, 0x00, 1 << (noise % 8), noise & 0xAA, noise & 0x55};
        value = static_cast<unsigned char>(values[character]);
    }
    return src;
}

STwinStyle Style_Draw(ETwinStyle style)
{
    STwinStyle layout = {style, Draw(1, 2), 16, Draw(1, 3)};
    switch (style)
    {
    case ETwinStyle::Style_1:
        break;
    case ETwinStyle::Style_5:
        layout.frameWidth = Draw(1, 40) * layout.srcBitCount; // 2-bit pixels need an even frame
        break;
    case ETwinStyle::Style_8:
        layout.frameWidth = Draw(1, 5) * 8;
        break;
    case ETwinStyle::Style_03:
        layout.frameWidth = Draw(16, 50) * 2;
        break;
    case ETwinStyle::Style_03_01:
        layout.frameWidth = Draw(4, 20);
        break;
    default:
        layout.frameWidth = Draw(2, 40);
        break;
    }
    return layout;
}

SLineCase Line_Draw(const STwinStyle& layout, int unitIndex)
{
    SLineCase line;
    line.style = layout;
    const bool bColumns = layout.style == ETwinStyle::Style_6 || layout.style == ETwinStyle::Style_7;
    line.param = Param_Make(unitIndex, Draw(bColumns ? 0 : -9, 90), Draw_From({0, 1, 2, 3, -1}));
    const int srcBytes = (std::max(0, line.param.m_lineBitCount) + 7) / 8;
    const bool bBlocks = layout.style == ETwinStyle::Style_03 || layout.style == ETwinStyle::Style_03_01;
    line.src = Source_Draw(static_cast<std::size_t>(bBlocks ? 50 : srcBytes));
    const int lineBytes = DstSize_Needed(line.style, line.param.m_lineBitCount, 0) + layout.frameWidth;
    line.dstByteCount = Draw(layout.style == ETwinStyle::Style_8 ? 0 : -2, 2 * lineBytes);
    std::mt19937 random(static_cast<unsigned>(Draw(0, 1 << 20)));
    line.dst = Bytes_Random(random, static_cast<std::size_t>(std::max(
                                        0, DstSize_Needed(line.style, line.param.m_lineBitCount, line.dstByteCount))));
    if (Draw(0, 1) == 0)
    {
        std::fill(line.dst.begin(), line.dst.end(), static_cast<unsigned char>(0));
    }
    return line;
}

STwinLine Line_ForTwin(const SLineCase& line)
{
    return {line.param.m_unitIndex, line.param.m_unitDirection, line.param.m_lineBitCount, line.src};
}

void Style_ExpectTwinOnAnyLine(ETwinStyle style)
{
    EXPECT_TRUE(rc::check(
        [style]
        {
            const STwinStyle layout = Style_Draw(style);
            const auto map = Map_Make(layout);
            for (int round = 0; round < 8; ++round)
            {
                SLineCase line = Line_Draw(layout, Draw(0, layout.UnitCount() - 1));
                Bytes expected = line.dst;
                CBoardTwin(layout).Line_Map(Line_ForTwin(line), expected, line.dstByteCount);
                RC_ASSERT(Line_Map(*map, line.param, line.src, line.dst, line.dstByteCount));
                RC_ASSERT(line.dst == expected);
            }
        }));
}

// All units of one board line, mapped in two orders.
void Style_ExpectAnyOrderOfUnits(ETwinStyle style)
{
    EXPECT_TRUE(rc::check(
        [style]
        {
            const STwinStyle layout = Style_Draw(style);
            const auto map = Map_Make(layout);
            const bool bBlocks = style == ETwinStyle::Style_03 || style == ETwinStyle::Style_03_01;
            const int pixels = bBlocks ? 400 : Draw(1, 40) * 2; // whole planes for style 8
            const int bits = style == ETwinStyle::Style_5 || style == ETwinStyle::Style_6 ? layout.srcBitCount : 1;
            std::vector<SLineCase> lines;
            for (int unit = 0; unit < layout.UnitCount(); ++unit)
            {
                SLineCase line;
                line.param = Param_Make(unit, pixels * bits, Draw(1, 2));
                line.src = Source_Draw(static_cast<std::size_t>((pixels * bits + 7) / 8));
                lines.push_back(line);
            }
            const auto boardBytes = static_cast<std::size_t>((map->SrcPixelCount_2_BoardBitCount(pixels) + 7) / 8);
            Bytes inOrder(boardBytes);
            Bytes twinInOrder(boardBytes);
            for (const SLineCase& line : lines)
            {
                Line_Map(*map, line.param, line.src, inOrder);
                CBoardTwin(layout).Line_Map(Line_ForTwin(line), twinInOrder, static_cast<int>(boardBytes));
            }
            std::shuffle(lines.begin(), lines.end(), std::mt19937(static_cast<unsigned>(Draw(0, 1 << 20))));
            Bytes shuffled(boardBytes);
            for (const SLineCase& line : lines)
            {
                Line_Map(*map, line.param, line.src, shuffled);
            }
            RC_ASSERT(inOrder == twinInOrder);
            RC_ASSERT(shuffled == inOrder);
        }));
}
} // namespace

TEST(MapProperty, Style1MapsAnyLineLikeTheTwin)
{
    Style_ExpectTwinOnAnyLine(ETwinStyle::Style_1);
}

TEST(MapProperty, Style2MapsAnyLineLikeTheTwin)
{
    Style_ExpectTwinOnAnyLine(ETwinStyle::Style_2);
}

TEST(MapProperty, Style5MapsAnyLineLikeTheTwin)
{
    Style_ExpectTwinOnAnyLine(ETwinStyle::Style_5);
}

TEST(MapProperty, Style6MapsAnyLineLikeTheTwin)
{
    Style_ExpectTwinOnAnyLine(ETwinStyle::Style_6);
}

TEST(MapProperty, Style7MapsAnyLineLikeTheTwin)
{
    Style_ExpectTwinOnAnyLine(ETwinStyle::Style_7);
}

TEST(MapProperty, Style8MapsAnyLineLikeTheTwin)
{
    Style_ExpectTwinOnAnyLine(ETwinStyle::Style_8);
}

TEST(MapProperty, Style03MapsAnyLineLikeTheTwin)
{
    Style_ExpectTwinOnAnyLine(ETwinStyle::Style_03);
}

TEST(MapProperty, Style03_01MapsAnyLineLikeTheTwin)
{
    Style_ExpectTwinOnAnyLine(ETwinStyle::Style_03_01);
}

class CMapOrderTest : public testing::TestWithParam<ETwinStyle>
{
};

INSTANTIATE_TEST_SUITE_P(EveryStyle, CMapOrderTest,
                         testing::Values(ETwinStyle::Style_1, ETwinStyle::Style_2, ETwinStyle::Style_5,
                                         ETwinStyle::Style_6, ETwinStyle::Style_7, ETwinStyle::Style_8,
                                         ETwinStyle::Style_03, ETwinStyle::Style_03_01));

TEST_P(CMapOrderTest, UnitsGiveTheSameBoardLineInAnyOrder)
{
    Style_ExpectAnyOrderOfUnits(GetParam());
}
