// The memory of bands: what is kept, what is given back, and that it is zero every time.
#include "Platform/BandData/BandMemory.h"
#include "Platform/BandData/BandData.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif

namespace
{

constexpr std::size_t blockSize = std::size_t{1} << 20;

// A block that is given back at the end.
class CBlock
{
public:
    explicit CBlock(std::size_t size) : m_size(size), m_pData(CBandMemory::Allocate(size)) {}
    ~CBlock() { CBandMemory::Release(m_pData, m_size); }
    CBlock(const CBlock&) = delete;
    CBlock& operator=(const CBlock&) = delete;

    unsigned char* Data() const { return m_pData; }
    // All bytes are equal to their neighbours, and the first one is 0: a library's work, quick in every build.
    bool IsZero() const
    {
        return m_size == 0 || (m_pData[0] == 0 && std::memcmp(m_pData, m_pData + 1, m_size - 1) == 0);
    }
    void Fill() { std::memset(m_pData, 0xFF, m_size); }

private:
    std::size_t m_size;
    unsigned char* m_pData;
};
using BlockPtr = std::unique_ptr<CBlock>;

std::vector<BlockPtr> Blocks_Make(int count, std::size_t size = blockSize)
{
    std::vector<BlockPtr> blocks;
    for (int i = 0; i < count; ++i)
    {
        blocks.push_back(std::make_unique<CBlock>(size));
    }
    return blocks;
}

// As many blocks given back as let a peak be forgotten.
void Rounds_Pass()
{
    for (int i = 0; i < 2 * CBandMemory::blocksPerRound; ++i)
    {
        const CBlock block(CBandMemory::smallestKept);
    }
}

class BandMemory : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(CBandMemory::Statistic_Get().m_inUseBytes, 0) << "a test before left a band behind";
        Rounds_Pass(); // whatever ran before in this process
        m_before = CBandMemory::Statistic_Get();
        ASSERT_EQ(m_before.m_keptBytes, 0);
    }
    void TearDown() override { CBandMemory::Reuse_Set(true); }

    std::int64_t Fresh() const { return CBandMemory::Statistic_Get().m_freshBlocks - m_before.m_freshBlocks; }
    std::int64_t Reused() const { return CBandMemory::Statistic_Get().m_reusedBlocks - m_before.m_reusedBlocks; }
    static std::int64_t Kept() { return CBandMemory::Statistic_Get().m_keptBytes; }
    static std::int64_t InUse() { return CBandMemory::Statistic_Get().m_inUseBytes; }

    SBandMemoryStatistic m_before;
};

} // namespace

TEST_F(BandMemory, ABlockThatComesBackIsTheNextOneAndZeroAgain)
{
    CBlock other(blockSize);
    auto first = std::make_unique<CBlock>(blockSize);
    first->Fill();
    first.reset();
    EXPECT_GE(Kept(), static_cast<std::int64_t>(blockSize));
    const CBlock second(blockSize);
    EXPECT_EQ(Fresh(), 2);
    EXPECT_EQ(Reused(), 1);
    EXPECT_EQ(Kept(), 0);
    EXPECT_TRUE(second.IsZero());
}

TEST_F(BandMemory, AStepsBandsTakeNoFreshMemoryAfterTheFirstStep)
{
    const CBlock pool(blockSize);
    for (int step = 0; step < 5 * CBandMemory::blocksPerRound; ++step)
    {
        auto bands = Blocks_Make(3);
        for (auto& band : bands)
        {
            ASSERT_TRUE(band->IsZero());
            band->Fill();
        }
    }
    EXPECT_EQ(Fresh(), 4);
}

TEST_F(BandMemory, WhatIsKeptAndWhatIsInUseAreNeverMoreThanThePeak)
{
    const CBlock pool(blockSize);
    for (int i = 0; i < 200; ++i)
    {
        const auto bands = Blocks_Make(1 + i * 7 % 11, blockSize * static_cast<std::size_t>(1 + i % 4));
        const SBandMemoryStatistic now = CBandMemory::Statistic_Get();
        ASSERT_LE(now.m_inUseBytes + now.m_keptBytes, now.m_peakBytes);
    }
}

TEST_F(BandMemory, AfterAPeakTheKeptBlocksGoAsRoundsPass)
{
    const CBlock pool(blockSize);
    Blocks_Make(20);
    EXPECT_GE(Kept(), static_cast<std::int64_t>(20 * blockSize));
    for (int i = 0; i < 2 * CBandMemory::blocksPerRound; ++i)
    {
        Blocks_Make(1);
    }
    EXPECT_LE(InUse() + Kept(), static_cast<std::int64_t>(2 * (blockSize + (blockSize >> 3))));
    EXPECT_GT(Kept(), 0) << "what every step needs stays";
}

TEST_F(BandMemory, NothingIsKeptWhenNoBlockIsInUse)
{
    Blocks_Make(5);
    EXPECT_EQ(InUse(), 0);
    EXPECT_EQ(Kept(), 0);
}

TEST_F(BandMemory, ABlockServesBandsThatAreALittleSmallerButNotMuchSmallerOnes)
{
    const CBlock pool(8 * blockSize);
    Blocks_Make(1, 6 * blockSize);
    {
        const CBlock little(5 * blockSize);
        EXPECT_EQ(Reused(), 1);
        EXPECT_TRUE(little.IsZero());
    }
    const CBlock much(2 * blockSize);
    EXPECT_EQ(Reused(), 1);
    EXPECT_EQ(Fresh(), 3);
}

TEST_F(BandMemory, SmallBlocksAreNeitherKeptNorCounted)
{
    const CBlock pool(blockSize);
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{63}, CBandMemory::smallestKept - 1})
    {
        CBlock small(size);
        EXPECT_TRUE(small.IsZero());
        small.Fill();
    }
    EXPECT_EQ(Fresh(), 1);
    EXPECT_EQ(Kept(), 0);
}

TEST_F(BandMemory, TrimGivesEverythingKeptBack)
{
    const CBlock pool(blockSize);
    Blocks_Make(3);
    const std::int64_t kept = Kept();
    EXPECT_GT(kept, 0);
    EXPECT_EQ(CBandMemory::Trim(), kept);
    EXPECT_EQ(Kept(), 0);
    EXPECT_EQ(CBandMemory::Trim(), 0);
}

TEST_F(BandMemory, NothingIsKeptWhileReuseIsOff)
{
    const CBlock pool(blockSize);
    Blocks_Make(1);
    EXPECT_GT(Kept(), 0);
    CBandMemory::Reuse_Set(false);
    EXPECT_EQ(Kept(), 0);
    Blocks_Make(2);
    EXPECT_EQ(Kept(), 0);
    CBandMemory::Reuse_Set(true);
    Blocks_Make(1);
    EXPECT_GT(Kept(), 0);
}

TEST_F(BandMemory, DataIsAlignedAndDoesNotAlwaysBeginAtTheSamePlaceOfAPage)
{
    std::set<std::uintptr_t> places;
    for (const auto& block : Blocks_Make(16))
    {
        const auto address = reinterpret_cast<std::uintptr_t>(block->Data());
        EXPECT_EQ(address % CBandMemory::alignment, 0U);
        places.insert(address % 4096);
    }
    EXPECT_EQ(places.size(), 16U); // the unit bands of a step
}

TEST_F(BandMemory, BandsOfAllSizesAreZeroWhateverTheMemoryHeldBefore)
{
    const CBlock pool(blockSize);
    for (int i = 0; i < 100; ++i)
    {
        CBandData band;
        ASSERT_TRUE(band.Create(800, 3500 - 97 * i % 3000, 1, 1));
        ASSERT_EQ(std::count(band.m_pData, band.m_pData + band.m_dataSize, 0), band.m_dataSize) << i;
        std::memset(band.m_pData, 0xFF, static_cast<std::size_t>(band.m_dataSize));
    }
    EXPECT_GT(Reused(), 0);
}

// Bands of every size and place that one block serves, each overwriting all that it may.
TEST_F(BandMemory, AKeptBlockIsZeroWhereverAndHoweverLargeTheBandsInItWere)
{
    const CBlock pool(blockSize);
    const std::size_t sizes[] = {blockSize, blockSize - 4093, blockSize - 1, blockSize - 8192, blockSize - 64};
    std::set<std::uintptr_t> places;
    for (int i = 0; i < 400; ++i)
    {
        CBlock block(sizes[i % std::size(sizes)]);
        places.insert(reinterpret_cast<std::uintptr_t>(block.Data()) % 4096);
        ASSERT_TRUE(block.IsZero()) << i;
        block.Fill();
    }
    EXPECT_EQ(Fresh(), 2); // the pool's, and the one for all
    EXPECT_EQ(places.size(), 63U);
}

TEST_F(BandMemory, ABandThatIsMadeAgainAndABandThatWasMadeLowerAreZero)
{
    const CBlock pool(blockSize);
    CBandData band;
    const auto expectZeroThenFill = [&](int height)
    {
        ASSERT_TRUE(band.Create(800, height, 1, 1));
        ASSERT_EQ(std::count(band.m_pData, band.m_pData + band.m_dataSize, 0), band.m_dataSize);
        std::memset(band.m_pData, 0xFF, static_cast<std::size_t>(band.m_dataSize));
    };
    for (const int height : {10'000, 9'000, 10'400, 8'000})
    {
        expectZeroThenFill(height);
        ASSERT_TRUE(band.Height_Set(10)); // what is beyond belongs to the band all the same
    }
    EXPECT_GT(Reused(), 0);
}

// Who takes a band does not wait until it is cleared.
TEST_F(BandMemory, ABlockIsClearedByTheThreadThatGivesItBack)
{
    const CBlock pool(blockSize);
    auto band = std::make_unique<CBlock>(blockSize);
    unsigned char* const data = band->Data();
    band->Fill();
    band.reset();
#if !defined(__SANITIZE_ADDRESS__)
    EXPECT_EQ(std::count(data, data + blockSize, 0), static_cast<std::ptrdiff_t>(blockSize));
#else
    EXPECT_NE(data, nullptr);
#endif
}

#if defined(__SANITIZE_ADDRESS__)

namespace
{

// Reads a byte that no compiler can see to be out of bounds.
void Byte_Read(const volatile unsigned char* byte)
{
    static_cast<void>(*byte);
}

constexpr auto forbidden = "AddressSanitizer";

} // namespace

// The last size below the kept ones, the first kept one, and sizes that end within a word.
TEST(BandMemoryDeathTest, EveryByteOutsideABandsDataIsForbidden)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{13}, std::size_t{4096},
                                   CBandMemory::smallestKept - 1, CBandMemory::smallestKept, blockSize + 3})
    {
        CBlock block(size);
        block.Fill();
        for (std::size_t distance = 0; distance < CBandMemory::alignment; ++distance)
        {
            ASSERT_TRUE(__asan_address_is_poisoned(block.Data() - 1 - distance)) << size << " - " << distance;
            ASSERT_TRUE(__asan_address_is_poisoned(block.Data() + size + distance)) << size << " + " << distance;
        }
    }
    for (const std::size_t size : {std::size_t{13}, blockSize + 3})
    {
        const CBlock block(size);
        EXPECT_DEATH(Byte_Read(block.Data() - 1), forbidden) << size;
        EXPECT_DEATH(Byte_Read(block.Data() + size), forbidden) << size;
    }
}

TEST(BandMemoryDeathTest, TheFirstLineOfABlockAndAllOfAKeptBlockAreForbidden)
{
    const CBlock pool(blockSize);
    auto block = std::make_unique<CBlock>(blockSize);
    unsigned char* const data = block->Data();
    unsigned char* const begin = data - reinterpret_cast<std::uintptr_t>(data) % 4096;
    EXPECT_DEATH(Byte_Read(begin), forbidden);
    EXPECT_DEATH(Byte_Read(begin + 63), forbidden);
    block.reset();
    for (unsigned char* byte : {begin, begin + 63, data, data + blockSize - 1, data + blockSize})
    {
        EXPECT_DEATH(Byte_Read(byte), forbidden);
    }
}

TEST(BandMemoryDeathTest, ASmallBandThatWasGivenBackIsForbidden)
{
    auto block = std::make_unique<CBlock>(100);
    unsigned char* const data = block->Data();
    block.reset();
    EXPECT_DEATH(Byte_Read(data), forbidden);
}

#endif

TEST_F(BandMemory, BandsThatOneThreadMakesAndAnotherDeletesTakeNoMoreMemoryThanThereAreAtOnce)
{
    constexpr int bandCount = CBandMemory::blocksPerRound - 1;
    constexpr int capacity = 1;
    const CBlock pool(blockSize);
    CBandDataFIFO_S fifo(capacity);
    std::thread maker(
        [&]
        {
            for (int i = 0; i < bandCount; ++i)
            {
                auto* band = new CBandData();
                EXPECT_TRUE(band->Create(800, 10'000, 1, 1));
                while (!fifo.WaitForIn(100))
                {
                }
                EXPECT_TRUE(fifo.In(band, 0));
            }
        });
    for (int i = 0; i < bandCount;)
    {
        CBandData* band = nullptr;
        if (fifo.Out(band, 100))
        {
            delete band;
            ++i;
        }
    }
    maker.join();
    EXPECT_LE(Fresh(), 1 + capacity + 2); // the pool, and a band in the FIFO and in each hand
    EXPECT_EQ(Fresh() + Reused(), 1 + bandCount);
}

TEST_F(BandMemory, ManyThreadsGetZeroBlocksOfTheirOwn)
{
    std::atomic<int> badCount{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
    {
        threads.emplace_back(
            [&badCount, thread]
            {
                for (int i = 0; i < 100; ++i)
                {
                    auto blocks = Blocks_Make(1 + (i + thread) % 3, CBandMemory::smallestKept << (i % 3));
                    for (auto& block : blocks)
                    {
                        badCount += block->IsZero() ? 0 : 1;
                        block->Fill();
                    }
                    if (i % 25 == thread)
                    {
                        CBandMemory::Trim();
                    }
                }
            });
    }
    for (auto& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(badCount, 0);
    EXPECT_EQ(InUse(), 0);
    EXPECT_EQ(Kept(), 0);
}
