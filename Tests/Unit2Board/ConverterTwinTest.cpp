// Whole bands of every map style through the converter, against the board bands that the checked twin places bit by
// bit: the same bytes for every number of generators.
#include "Tests/DataMap/MapTestSupport.h"
#include "Tests/Unit2Board/ConverterSupport.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <random>

namespace
{

constexpr ETwinStyle allStyles[] = {ETwinStyle::Style_1,  ETwinStyle::Style_2,    ETwinStyle::Style_5,
                                    ETwinStyle::Style_6,  ETwinStyle::Style_7,    ETwinStyle::Style_8,
                                    ETwinStyle::Style_03, ETwinStyle::Style_03_01};

// What a converter is given, and the layout that it must give.
struct STwinJob
{
    STwinStyle layout;
    int bitsPerPixel = 1;
    std::vector<std::unique_ptr<CBandData>> sources;
    STwinBoardBand expected;
};

// The nearest band width that a style can have: blocks of 400 pixels, or pairs of bits.
int Width_For(ETwinStyle style, int width)
{
    if (style == ETwinStyle::Style_03 || style == ETwinStyle::Style_03_01)
    {
        return 400;
    }
    return style == ETwinStyle::Style_8 ? width * 2 : width;
}

// A band of random pixels. Bits beyond the width are zero: a producer's promise.
std::unique_ptr<CBandData> Band_Random(std::mt19937& random, int width, int height, int bits, int align)
{
    auto band = std::make_unique<CBandData>();
    EXPECT_TRUE(band->Create(width, height, bits, align));
    for (int line = 0; line < height; ++line)
    {
        for (int bit = 0; bit < width * bits; ++bit)
        {
            const auto value = static_cast<unsigned char>((random() & 1U) << (7 - bit % 8));
            band->m_pData[line * band->m_bytesPerLine + bit / 8] |= value;
        }
    }
    return band;
}

void Source_Add(STwinJob& job, std::unique_ptr<CBandData> band, int unit, int direction)
{
    band->m_unitIndex = unit;
    band->m_unitDirection = direction;
    job.sources.push_back(std::move(band));
}

void Expected_Place(STwinJob& job)
{
    std::vector<STwinBand> bands;
    for (const auto& band : job.sources)
    {
        bands.push_back({band->m_unitIndex,
                         band->m_unitDirection,
                         band->m_width,
                         band->m_bitsPerPixel,
                         band->m_height,
                         band->m_bytesPerLine,
                         {band->m_pData, static_cast<std::size_t>(band->m_dataSize)}});
    }
    job.expected = CBoardTwin(job.layout).Band_Map(bands);
}

// The board band of the job by a converter with `generatorCount` generators.
Bytes Board_Convert(const STwinJob& job, int generatorCount)
{
    const auto map = Map_Make(job.layout);
    CBandData board;
    EXPECT_EQ(map->SrcPixelCount_2_BoardBitCount(job.sources[0]->m_width), job.expected.width);
    EXPECT_TRUE(board.Create(job.expected.width, job.expected.height, 1, 1));
    EXPECT_EQ(board.m_bytesPerLine, job.expected.bytesPerLine);
    std::vector<CBandData*> pointers;
    for (const auto& band : job.sources)
    {
        pointers.push_back(band.get());
    }
    CUnit2Board converter;
    EXPECT_TRUE(converter.Create(generatorCount, pointers.data(), static_cast<int>(pointers.size()), board, *map));
    EXPECT_TRUE(converter.WaitExit(withoutLimit));
    EXPECT_TRUE(converter.IsThreadSuccess());
    return Bytes(board.m_pData, board.m_pData + board.m_dataSize);
}

int Draw(int first, int last)
{
    return *rc::gen::inRange(first, last + 1);
}

STwinStyle Layout_Draw()
{
    STwinStyle layout = {*rc::gen::elementOf(std::vector<ETwinStyle>(std::begin(allStyles), std::end(allStyles))),
                         Draw(1, 2), 16, Draw(1, 3)};
    switch (layout.style)
    {
    case ETwinStyle::Style_1:
        break;
    case ETwinStyle::Style_8:
        layout.frameWidth = Draw(1, 5) * 8;
        break;
    case ETwinStyle::Style_03:
        layout.frameWidth = Draw(1, 3) * 32;
        break;
    case ETwinStyle::Style_03_01:
        layout.frameWidth = Draw(4, 20);
        break;
    default:
        layout.frameWidth = Draw(1, 20) * 2;
        break;
    }
    return layout;
}

int BitsPerPixel_Of(const STwinStyle& layout)
{
    const bool bAnyDepth = layout.style == ETwinStyle::Style_5 || layout.style == ETwinStyle::Style_6;
    return bAnyDepth ? layout.srcBitCount : 1;
}

// A random job: some units of a random board, bands of 0 to 50 lines, of which later ones may be shorter or longer.
STwinJob Job_Draw()
{
    STwinJob job;
    job.layout = Layout_Draw();
    const int unitLimit = job.layout.UnitCount();
    const auto unitCount = static_cast<std::size_t>(Draw(1, std::min(unitLimit, 6)));
    const auto units = *rc::gen::unique<std::vector<int>>(unitCount, rc::gen::inRange(0, unitLimit));
    const int width = Width_For(job.layout.style, Draw(1, 60));
    const int height = Draw(0, 50);
    std::mt19937 random(static_cast<unsigned>(Draw(0, 1 << 20)));
    for (const int unit : units)
    {
        const int shift = job.sources.empty() ? 0 : Draw(-3, 3);
        Source_Add(job,
                   Band_Random(random, width, std::max(0, height + shift), BitsPerPixel_Of(job.layout),
                               *rc::gen::element(1, 2, 8)),
                   unit, Draw(0, 3));
    }
    Expected_Place(job);
    return job;
}

} // namespace

RC_GTEST_PROP(ConverterTwin, EveryBandOfARandomJobIsTheOneThatTheTwinPlaces, ())
{
    const STwinJob job = Job_Draw();
    const int generatorCount = Draw(1, 16);
    RC_ASSERT(Board_Convert(job, generatorCount) == job.expected.data);
}

TEST(ConverterTwin, EveryNumberOfGeneratorsGivesTheSameBytesInEveryStyle)
{
    for (const ETwinStyle style : allStyles)
    {
        STwinJob job;
        job.layout = {style, 1, style == ETwinStyle::Style_03 ? 32 : 16, 2};
        std::mt19937 random(static_cast<unsigned>(style) + 1);
        for (const int unit : {2, 0, 3})
        {
            Source_Add(job, Band_Random(random, Width_For(style, 61), 64, 1, 1), unit, unit);
        }
        Expected_Place(job);
        ASSERT_NE(std::count(job.expected.data.begin(), job.expected.data.end(), 0),
                  static_cast<std::ptrdiff_t>(job.expected.data.size()));
        for (int generatorCount = 1; generatorCount <= 16; ++generatorCount)
        {
            EXPECT_EQ(Board_Convert(job, generatorCount), job.expected.data)
                << "style " << static_cast<int>(style) << ", " << generatorCount << " generators";
        }
    }
}
