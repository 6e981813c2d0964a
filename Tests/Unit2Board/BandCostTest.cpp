// What a band costs that does not depend on the machine: allocations, and system calls.
//
// Counted on bands through a whole converter, once everything that is made once is there. Not under the sanitizers, whose
// allocators and run-time make their own.
#include "Tests/Unit2Board/ConverterSupport.h"

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

#include "DataMap/PrintUnitDataMap_5.h"
#include "Tests/Support/SystemCallBan.h"

#include <csignal>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<std::int64_t> g_allocationCount{0};

} // namespace

// Counted, for the whole executable and the libraries that it loads.
void* operator new(std::size_t size)
{
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    ++g_allocationCount;
    return block;
}

void* operator new(std::size_t size, std::align_val_t alignment)
{
    const auto unit = static_cast<std::size_t>(alignment);
    void* block = std::aligned_alloc(unit, (size + unit - 1) / unit * unit);
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    ++g_allocationCount;
    return block;
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::align_val_t /*alignment*/) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    std::free(block);
}

namespace
{

// A band with a real map, to be converted again and again.
class CRealBand
{
public:
    explicit CRealBand(int lineCount)
    {
        EXPECT_TRUE(m_map.Init(1, 16));
        EXPECT_TRUE(m_source.Create(400, lineCount, 1, 1));
        EXPECT_TRUE(m_board.Create(m_map.SrcPixelCount_2_BoardBitCount(400), lineCount, 1, 1));
    }

    bool Convert(int generatorCount)
    {
        CBandData* sources[] = {&m_source};
        CUnit2Board converter;
        return converter.Create(generatorCount, sources, 1, m_board, m_map) && converter.WaitExit(withoutLimit);
    }

    std::int64_t Allocations(int generatorCount)
    {
        const std::int64_t before = g_allocationCount;
        EXPECT_TRUE(Convert(generatorCount));
        return g_allocationCount - before;
    }

private:
    CPrintUnitDataMap_5 m_map;
    CBandData m_source;
    CBandData m_board;
};

} // namespace

TEST(BandCost, ALineAllocatesNothing)
{
    for (const int generatorCount : {1, 2, 4})
    {
        CRealBand single(1);
        CRealBand many(3000);
        for (int round = 0; round < 5; ++round) // system threads and log sinks come to be
        {
            many.Convert(generatorCount);
        }
        EXPECT_EQ(many.Allocations(generatorCount), single.Allocations(generatorCount));
    }
}

TEST(BandCost, ABandAllocatesItsThreadsAndItsElementsAndNothingElse)
{
    // Per thread: the worker or its place in the array, and the thread's record. Per band: the source array, the line
    // buffer with its name, table and three FIFOs (each with its ring and its flag), 20 elements and their array.
    constexpr std::int64_t perBand = 20 + 1 + 1 + 1 + 2 + 3 * 3;
    CRealBand band(100);
    for (const int generatorCount : {1, 2, 4})
    {
        for (int round = 0; round < 5; ++round)
        {
            band.Convert(generatorCount);
        }
        EXPECT_EQ(band.Allocations(generatorCount), perBand + 2 * generatorCount + 2);
    }
}

TEST(BandCostDeathTest, AWarmBandMakesNoSystemCallButToSleepAndToWake)
{
    const auto convertUnderTheBan = []
    {
        CRealBand band(500);
        bool bOk = true;
        for (int i = 0; i < 20; ++i)
        {
            bOk = band.Convert(3) && bOk;
        }
        bOk = SystemCalls_Forbid({SYS_futex}) && bOk;
        for (int i = 0; i < 20; ++i)
        {
            bOk = band.Convert(3) && bOk;
        }
        Process_End(bOk ? 0 : 1);
    };
    EXPECT_EXIT(convertUnderTheBan(), testing::ExitedWithCode(0), "");
}

TEST(BandCostDeathTest, TheHarnessCatchesAThreadThatIsNotAsleepYet)
{
    const auto startUnderTheBan = []
    {
        CRealBand band(1);
        SleepingThreads_End();
        SystemCalls_Forbid({SYS_futex});
        band.Convert(1); // has to make system threads
        Process_End(0);
    };
    EXPECT_EXIT(startUnderTheBan(), testing::KilledBySignal(SIGSYS), "");
}

#endif
