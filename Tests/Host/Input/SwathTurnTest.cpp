// The swath turn against a model that moves single pixels.
#include "Host/Input/SwathTurn.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <vector>

namespace
{

using CBytes = std::vector<unsigned char>;

std::size_t Bytes_Get(int pixels, int bitsPerPixel)
{
    return (static_cast<std::size_t>(pixels) * static_cast<std::size_t>(bitsPerPixel) + 7) / 8;
}

unsigned Pixel_Get(const unsigned char* row, int index, int bitsPerPixel)
{
    unsigned value = 0;
    for (int bit = index * bitsPerPixel; bit < (index + 1) * bitsPerPixel; ++bit)
    {
        value = value * 2 + (row[bit / 8] >> (7 - bit % 8) & 1);
    }
    return value;
}

void Pixel_Set(unsigned char* line, int index, int bitsPerPixel, unsigned value)
{
    for (int i = 0; i < bitsPerPixel; ++i)
    {
        const int bit = index * bitsPerPixel + i;
        const unsigned set = value >> (bitsPerPixel - 1 - i) & 1;
        line[bit / 8] = static_cast<unsigned char>(line[bit / 8] | set << (7 - bit % 8));
    }
}

bool IsPlaned(const SSwathShape& shape)
{
    return shape.bUnitPlanes && shape.bitsPerPixel == 2;
}

std::size_t LineBytes_Get(const SSwathShape& shape)
{
    return Bytes_Get(shape.nozzles, IsPlaned(shape) ? 1 : shape.bitsPerPixel);
}

std::size_t LineCount_Get(const SSwathShape& shape)
{
    return static_cast<std::size_t>(shape.columnCount) * (IsPlaned(shape) ? 2 : 1);
}

CBytes Model_Turn(const CBytes& rows, const SSwathShape& shape)
{
    CBytes lines(LineCount_Get(shape) * shape.lineStride);
    for (int column = 0; column < shape.columnCount; ++column)
    {
        const auto position = static_cast<std::size_t>(shape.bReverse ? shape.columnCount - 1 - column : column);
        for (int nozzle = 0; nozzle < shape.rowCount; ++nozzle)
        {
            const unsigned char* row = rows.data() + static_cast<std::size_t>(nozzle) * shape.rowStride;
            const unsigned value = Pixel_Get(row, column, shape.bitsPerPixel);
            if (IsPlaned(shape))
            {
                Pixel_Set(lines.data() + 2 * position * shape.lineStride, nozzle, 1, value / 2);
                Pixel_Set(lines.data() + (2 * position + 1) * shape.lineStride, nozzle, 1, value % 2);
            }
            else
            {
                Pixel_Set(lines.data() + position * shape.lineStride, nozzle, shape.bitsPerPixel, value);
            }
        }
    }
    return lines;
}

// The turn into memory that held something else.
CBytes Turn(const CBytes& rows, const SSwathShape& shape)
{
    CBytes lines(LineCount_Get(shape) * shape.lineStride, 0xA5);
    Swath_Turn(rows.data(), lines.data(), shape);
    return lines;
}

SSwathShape Shape_Any(int bitsPerPixel, bool bUnitPlanes)
{
    SSwathShape shape;
    shape.bitsPerPixel = bitsPerPixel;
    shape.bUnitPlanes = bUnitPlanes;
    shape.nozzles = *rc::gen::inRange(1, 200);
    shape.rowCount = *rc::gen::inRange(0, shape.nozzles + 1);
    shape.columnCount = *rc::gen::inRange(1, 300);
    shape.bReverse = *rc::gen::arbitrary<bool>();
    shape.rowStride = Bytes_Get(shape.columnCount, bitsPerPixel) + *rc::gen::inRange<std::size_t>(0, 12);
    shape.lineStride = LineBytes_Get(shape) + *rc::gen::inRange<std::size_t>(0, 20);
    return shape;
}

// Random rows, exactly as long as they must be; their padding is random too.
CBytes Rows_Any(const SSwathShape& shape)
{
    const std::size_t size = shape.rowCount == 0 ? 0
                                                 : static_cast<std::size_t>(shape.rowCount - 1) * shape.rowStride +
                                                       Bytes_Get(shape.columnCount, shape.bitsPerPixel);
    return *rc::gen::container<CBytes>(size, rc::gen::arbitrary<unsigned char>());
}

} // namespace

RC_GTEST_PROP(SwathTurn, OneBitSwathsTurnAsTheModelTurnsThem, ())
{
    const SSwathShape shape = Shape_Any(1, *rc::gen::arbitrary<bool>());
    const CBytes rows = Rows_Any(shape);
    RC_ASSERT(Turn(rows, shape) == Model_Turn(rows, shape));
}

RC_GTEST_PROP(SwathTurn, TwoBitSwathsTurnAsTheModelTurnsThem, ())
{
    const SSwathShape shape = Shape_Any(2, false);
    const CBytes rows = Rows_Any(shape);
    RC_ASSERT(Turn(rows, shape) == Model_Turn(rows, shape));
}

RC_GTEST_PROP(SwathTurn, TwoBitSwathsPushedByUnitTurnAsTheModelTurnsThem, ())
{
    const SSwathShape shape = Shape_Any(2, true);
    const CBytes rows = Rows_Any(shape);
    RC_ASSERT(Turn(rows, shape) == Model_Turn(rows, shape));
}

TEST(SwathTurn, EverySizeAroundABlocksEdgeIsExact)
{
    for (const int bitsPerPixel : {1, 2})
    {
        for (const int nozzles : {1, 7, 8, 9, 31, 32, 33, 63, 64, 65, 127, 128, 129})
        {
            for (const int columns : {1, 7, 8, 9, 31, 32, 33, 63, 64, 65, 127, 128, 129})
            {
                for (const bool bUnitPlanes : {false, true})
                {
                    SSwathShape shape{nozzles, columns, nozzles, bitsPerPixel, false, bUnitPlanes, 0, 0};
                    shape.rowStride = Bytes_Get(columns, bitsPerPixel);
                    shape.lineStride = LineBytes_Get(shape);
                    CBytes rows(static_cast<std::size_t>(nozzles) * shape.rowStride);
                    std::generate(rows.begin(), rows.end(),
                                  [state = 1U]() mutable
                                  {
                                      state = state * 1664525U + 1013904223U;
                                      return static_cast<unsigned char>(state >> 24);
                                  });
                    ASSERT_EQ(Turn(rows, shape), Model_Turn(rows, shape))
                        << bitsPerPixel << " bits, " << nozzles << " x " << columns;
                }
            }
        }
    }
}

TEST(SwathTurn, TheFirstRowBecomesTheFirstPixelOfEveryLine)
{
    const SSwathShape shape{2, 8, 8, 1, false, false, 1, 1};
    EXPECT_EQ(Turn({0b11000000, 0b10000001}, shape), (CBytes{0xC0, 0x80, 0, 0, 0, 0, 0, 0x40}));
}

TEST(SwathTurn, RightToLeftTheLastColumnComesFirst)
{
    const SSwathShape shape{2, 8, 8, 1, true, false, 1, 1};
    EXPECT_EQ(Turn({0b11000000, 0b10000001}, shape), (CBytes{0x40, 0, 0, 0, 0, 0, 0x80, 0xC0}));
}

TEST(SwathTurn, TwoBitPixelsStayWhole)
{
    const SSwathShape shape{2, 4, 4, 2, false, false, 1, 1};
    EXPECT_EQ(Turn({0b00'01'10'11, 0b11'11'00'01}, shape),
              (CBytes{0b00'11'00'00, 0b01'11'00'00, 0b10'00'00'00, 0b11'01'00'00}));
}

TEST(SwathTurn, HighBitsComeBeforeLowBitsAlsoRightToLeft)
{
    SSwathShape shape{1, 3, 8, 2, false, true, 1, 1};
    EXPECT_EQ(Turn({0b01'10'11'00}, shape), (CBytes{0x00, 0x80, 0x80, 0x00, 0x80, 0x80}));
    shape.bReverse = true;
    EXPECT_EQ(Turn({0b01'10'11'00}, shape), (CBytes{0x80, 0x80, 0x80, 0x00, 0x00, 0x80}));
}

TEST(SwathTurn, ASwathWithoutRowsClearsItsLines)
{
    const SSwathShape shape{0, 70, 70, 1, false, false, 9, 16};
    EXPECT_EQ(Turn({}, shape), CBytes(70 * 16));
}

TEST(SwathTurn, OnlyTwoBitPixelsHaveTwoLinesPerPosition)
{
    EXPECT_EQ(SwathLinesPerPosition_Get(1, false), 1);
    EXPECT_EQ(SwathLinesPerPosition_Get(1, true), 1);
    EXPECT_EQ(SwathLinesPerPosition_Get(2, false), 1);
    EXPECT_EQ(SwathLinesPerPosition_Get(2, true), 2);
}

TEST(SwathTurn, RowsAreKeptAnOddNumberOfCacheLinesApart)
{
    EXPECT_EQ(SwathRowStride_Get(1), 64U);
    EXPECT_EQ(SwathRowStride_Get(64), 64U);
    EXPECT_EQ(SwathRowStride_Get(65), 192U);
    EXPECT_EQ(SwathRowStride_Get(4096), 4160U);
}
