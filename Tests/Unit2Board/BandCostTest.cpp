// What a band costs that does not depend on the machine: allocations, and system calls.
//
// Counted on bands through a whole converter, once everything that is made once is there. Linux only, and not under the
// sanitizers, whose allocators and run-time make calls of their own.
#include "Tests/Unit2Board/ConverterSupport.h"

#include "DataMap/PrintUnitDataMap_5.h"
#include "Tests/Support/AllocationCount.h"
#include "Tests/Support/SystemCallBan.h"

#include <csignal>

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
        const std::int64_t before = Allocation_Count();
        EXPECT_TRUE(Convert(generatorCount));
        return Allocation_Count() - before;
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
    constexpr std::int64_t arrays = 4;     // source bands, generators, elements, the line buffer's table
    constexpr std::int64_t buffer = 1 + 3; // the line buffer and its name
    constexpr std::int64_t fifos = 3 * 4;  // each with its ring, its flag and its count
    constexpr std::int64_t elements = 20;
    constexpr std::int64_t thread = 2;             // its record, and what this executable's own CreateThread adds
    constexpr std::int64_t generator = 2 + thread; // itself and its name
    constexpr std::int64_t perBand = arrays + buffer + fifos + elements + thread;
    CRealBand band(100);
    for (const int generatorCount : {1, 2, 4})
    {
        for (int round = 0; round < 5; ++round)
        {
            band.Convert(generatorCount);
        }
        EXPECT_EQ(band.Allocations(generatorCount), perBand + generator * generatorCount);
    }
}

TEST(BandCostDeathTest, AWarmBandMakesNoSystemCallButToSleepToWakeAndToReadThreadAttributes)
{
    const auto convertUnderTheBan = []
    {
        Allocator_Share();
        CRealBand band(500);
        bool bOk = true;
        for (int i = 0; i < 20; ++i)
        {
            bOk = band.Convert(3) && bOk;
        }
        bOk = SystemCalls_Forbid(SystemCalls_OfAWarmBand()) && bOk;
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
        SystemCalls_Forbid(SystemCalls_OfAWarmBand());
        band.Convert(1); // has to make system threads
        Process_End(0);
    };
    EXPECT_EXIT(startUnderTheBan(), testing::KilledBySignal(SIGSYS), "");
}
