// The band: sizes, memory, header.
#include "Platform/BandData/BandData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#if defined(__linux__)
#include <sys/resource.h>
#endif

namespace
{

constexpr int largest = std::numeric_limits<int>::max();

bool IsEmpty(const CBandData& band)
{
    return band.m_pData == nullptr && band.m_width == 0 && band.m_height == 0 && band.m_bitsPerPixel == 0 &&
           band.m_bytesPerLine == 0 && band.m_dataSize == 0;
}

bool IsAligned(const CBandData& band)
{
    return reinterpret_cast<std::uintptr_t>(band.m_pData) % CBandData::dataAlignment == 0;
}

struct SSize
{
    int width, height, bitsPerPixel, alignBytes;
};

} // namespace

static_assert(CBandData::dataAlignment == 64, "the widest vector register has 512 bits");
static_assert(!std::is_copy_constructible_v<CBandData>);

TEST(BandData, StartsEmptyWithAHeaderOfZeros)
{
    const CBandData band;
    EXPECT_TRUE(IsEmpty(band));
    EXPECT_EQ(band.m_bandNo, 0);
    EXPECT_EQ(band.m_unitIndex, 0);
    EXPECT_FALSE(band.m_bSkip);
}

TEST(BandData, TheHeaderIsThirteenWordsAndABool)
{
    EXPECT_EQ(offsetof(SBandHeader, m_bandNo), 0U);
    EXPECT_EQ(offsetof(SBandHeader, m_bandAttr), 4U);
    EXPECT_EQ(offsetof(SBandHeader, m_unitIndex), 16U);
    EXPECT_EQ(offsetof(SBandHeader, m_unitDirection), 20U);
    EXPECT_EQ(offsetof(SBandHeader, m_bSkip), 52U);
    EXPECT_EQ(sizeof(SBandHeader), 56U);
}

TEST(BandData, TheHeaderIsCopiedAsOneBlockAndTheDataStays)
{
    CBandData source;
    source.m_bandNo = 1;
    source.m_bandAttr = 2;
    source.m_unitIndex = 5;
    source.m_reserved_13 = 13;
    source.m_bSkip = true;
    CBandData target;
    ASSERT_TRUE(target.Create(16, 2, 1, 1));
    const auto* data = target.m_pData;
    static_cast<SBandHeader&>(target) = source;
    EXPECT_EQ(target.m_bandNo, 1);
    EXPECT_EQ(target.m_bandAttr, 2);
    EXPECT_EQ(target.m_unitIndex, 5);
    EXPECT_EQ(target.m_reserved_13, 13);
    EXPECT_TRUE(target.m_bSkip);
    EXPECT_EQ(target.m_pData, data);
    EXPECT_EQ(target.m_dataSize, 4);
}

TEST(BandData, ALineHasTheBytesThatItsBitsNeedRoundedUpToTheAlignment)
{
    struct SCase
    {
        SSize size;
        int bytesPerLine;
    };
    constexpr SCase cases[] = {
        {{8, 1, 1, 1}, 1},     {{9, 1, 1, 1}, 2},   {{1, 1, 1, 1}, 1},      {{400, 3, 1, 1}, 50}, {{400, 3, 2, 1}, 100},
        {{401, 3, 2, 1}, 101}, {{8, 2, 1, 4}, 4},   {{33, 2, 1, 4}, 8},     {{32, 2, 1, 4}, 4},   {{24, 2, 1, 3}, 3},
        {{25, 2, 1, 3}, 6},    {{1, 5, 2, 64}, 64}, {{300, 5, 2, 64}, 128}, {{3, 1, 3, 1}, 2},
    };
    for (const auto& [size, bytesPerLine] : cases)
    {
        CBandData band;
        ASSERT_TRUE(band.Create(size.width, size.height, size.bitsPerPixel, size.alignBytes));
        EXPECT_EQ(band.m_width, size.width);
        EXPECT_EQ(band.m_height, size.height);
        EXPECT_EQ(band.m_bitsPerPixel, size.bitsPerPixel);
        EXPECT_EQ(band.m_bytesPerLine, bytesPerLine) << size.width << " x " << size.bitsPerPixel;
        EXPECT_EQ(band.m_dataSize, bytesPerLine * size.height);
        EXPECT_TRUE(IsAligned(band));
    }
}

TEST(BandData, EveryByteIsZeroAlsoWhenTheMemoryWasUsedBefore)
{
    for (int round = 0; round < 50; ++round)
    {
        CBandData band;
        ASSERT_TRUE(band.Create(800, 37 + round % 3, 1, 1));
        EXPECT_EQ(std::count(band.m_pData, band.m_pData + band.m_dataSize, 0), band.m_dataSize);
        std::memset(band.m_pData, 0xFF, static_cast<std::size_t>(band.m_dataSize)); // the next round's memory
    }
}

TEST(BandData, ABandOfNoLinesOrNoPixelsIsValid)
{
    for (const auto& size : {SSize{0, 5, 1, 1}, SSize{5, 0, 1, 1}, SSize{0, 0, 2, 64}, SSize{0, largest, 1, 1}})
    {
        CBandData band;
        EXPECT_TRUE(band.Create(size.width, size.height, size.bitsPerPixel, size.alignBytes));
        EXPECT_EQ(band.m_width, size.width);
        EXPECT_EQ(band.m_height, size.height);
        EXPECT_EQ(band.m_dataSize, 0);
        EXPECT_NE(band.m_pData, nullptr);
    }
}

TEST(BandData, ASizeThatDoesNotFit32BitsOrIsNegativeIsRefused)
{
    constexpr SSize refused[] = {
        {-1, 1, 1, 1},
        {1, -1, 1, 1},
        {1, 1, 0, 1},
        {1, 1, -1, 1},
        {1, 1, 1, 0},
        {1, 1, 1, -4},
        {1 << 30, 1, 2, 1},
        {largest, 1, 2, 1},
        {largest, 1, largest, 1},
        {1 << 20, 1 << 14, 1, 1},
        {8, largest, 2, 1},
        {1, 2, 1, 1 << 30},
        {1, largest, 1, largest},
        {largest, largest, largest, largest},
    };
    for (const auto& size : refused)
    {
        CBandData band;
        EXPECT_FALSE(band.Create(size.width, size.height, size.bitsPerPixel, size.alignBytes))
            << size.width << ' ' << size.height << ' ' << size.bitsPerPixel << ' ' << size.alignBytes;
        EXPECT_TRUE(IsEmpty(band));
    }
}

TEST(BandData, TheLargestLineThatFitsIsNotRefused)
{
    CBandData band;
    ASSERT_TRUE(band.Create(largest, 1, 1, 1));
    EXPECT_EQ(band.m_bytesPerLine, 1 << 28);
    EXPECT_EQ(band.m_dataSize, 1 << 28);
}

TEST(BandData, CreatingAgainReplacesTheDataAndKeepsTheHeader)
{
    CBandData band;
    band.m_unitIndex = 3;
    ASSERT_TRUE(band.Create(64, 8, 1, 1));
    band.m_pData[0] = 0xAA;
    ASSERT_TRUE(band.Create(16, 4, 2, 1));
    EXPECT_EQ(band.m_bytesPerLine, 4);
    EXPECT_EQ(band.m_dataSize, 16);
    EXPECT_EQ(std::count(band.m_pData, band.m_pData + 16, 0), 16);
    EXPECT_EQ(band.m_unitIndex, 3);
}

TEST(BandData, CreatingAgainInVainLeavesTheBandEmpty)
{
    CBandData band;
    band.m_unitIndex = 3;
    ASSERT_TRUE(band.Create(64, 8, 1, 1));
    EXPECT_FALSE(band.Create(-1, 8, 1, 1));
    EXPECT_TRUE(IsEmpty(band));
    EXPECT_EQ(band.m_unitIndex, 3);
    EXPECT_TRUE(band.Create(64, 8, 1, 1));
}

// In a child process, whose memory can be bounded. A sanitizer needs more of it than any bound would leave.
#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(BandDataDeathTest, NoMemoryIsAFalseAndAnEmptyBand)
{
    const auto createInVain = []
    {
        const rlimit limit{std::size_t{1} << 29, std::size_t{1} << 29};
        CBandData band;
        const bool bOk = setrlimit(RLIMIT_AS, &limit) == 0 && !band.Create(1 << 17, 1 << 16, 1, 1) && IsEmpty(band) &&
                         band.Create(64, 8, 1, 1);
        std::exit(bOk ? 0 : 1);
    };
    EXPECT_EXIT(createInVain(), testing::ExitedWithCode(0), "");
}
#endif

TEST(BandData, ABandMayBeMadeLowerAndHigherAgainWithinItsRoom)
{
    CBandData band;
    ASSERT_TRUE(band.Create(8, 5, 1, 1));
    band.m_pData[4] = 0xAB;
    EXPECT_TRUE(band.Height_Set(2));
    EXPECT_EQ(band.m_height, 2);
    EXPECT_EQ(band.m_dataSize, 2);
    EXPECT_FALSE(band.Height_Set(6));
    EXPECT_FALSE(band.Height_Set(-1));
    EXPECT_EQ(band.m_height, 2);
    EXPECT_TRUE(band.Height_Set(5));
    EXPECT_EQ(band.m_dataSize, 5);
    EXPECT_EQ(band.m_pData[4], 0xAB);
    ASSERT_TRUE(band.Create(8, 1, 1, 1));
    EXPECT_FALSE(band.Height_Set(5)); // the room is the last Create's
}
