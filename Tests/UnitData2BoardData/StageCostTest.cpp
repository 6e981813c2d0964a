// What a step of the ink-stripe stage costs that does not depend on the machine: allocations, and system calls.
//
// Counted on whole steps, from unit bands to the board band, once everything that is made once is there. Linux only,
// and not under the sanitizers, whose allocators and run-time make calls of their own.
#include "Tests/Support/AllocationCount.h"
#include "Tests/Support/SystemCallBan.h"
#include "Tests/UnitData2BoardData/InkSupport.h"

namespace
{

// A stage with four units that print and two that get stripes.
class CRunningStage
{
public:
    CRunningStage(int generatorCount, int jobWidth)
    {
        constexpr int nozzles = 400;
        constexpr int printingUnits = 4;
        constexpr int bandAttr = 1;
        SModelJob job;
        job.bandWidth = nozzles;
        job.jobWidth = jobWidth;
        job.leftStripeWidth = 8;
        job.rightStripeWidth = 12;
        job.unitPitch = 2;
        job.unitPositionCount = 4;
        for (int id = 0; id < printingUnits + 2; ++id)
        {
            job.units.push_back({id, id, 0, 0, 0, true, std::vector<unsigned char>(4, 0x55)});
        }
        m_config.m_config.m_lineGeneratorCount_Of_DataMap = generatorCount;
        Job_Configure(m_config, job);
        std::vector<CBandDataFIFO*> inputs;
        for (int unit = 0; unit < printingUnits; ++unit)
        {
            m_fifos.push_back(Pool_Make(unit, 2, nozzles, CStripeModel(job).LineCount(bandAttr)));
            inputs.push_back(m_fifos.back().get());
        }
        EXPECT_TRUE(m_stage.Create(false, inputs));
    }
    ~CRunningStage()
    {
        m_stage.Stop();
        m_stage.WaitExit(withoutLimit);
    }
    CRunningStage(const CRunningStage&) = delete;
    CRunningStage& operator=(const CRunningStage&) = delete;

    bool Step_Run()
    {
        for (auto& fifo : m_fifos)
        {
            CBandData* band = nullptr;
            if (!fifo->Empty_Out(band, testPatienceMs))
            {
                return false;
            }
            band->m_bandAttr = 1;
            fifo->Full_In(band, testPatienceMs);
        }
        CTestOutputEnd output = Output_Of(m_stage);
        CBandData* board = nullptr;
        while (!output.Out(board, 100))
        {
            if (m_stage.WaitExit(0))
            {
                return false;
            }
        }
        delete board;
        return true;
    }

    bool Steps_Run(int count)
    {
        bool bOk = true;
        for (int i = 0; i < count; ++i)
        {
            bOk = bOk && Step_Run();
        }
        return bOk;
    }

    // Of one step, in the steady state.
    std::int64_t Allocations_Count()
    {
        constexpr int stepCount = 20;
        EXPECT_TRUE(Steps_Run(stepCount));
        const std::int64_t before = Allocation_Count();
        EXPECT_TRUE(Steps_Run(stepCount));
        const std::int64_t count = Allocation_Count() - before;
        EXPECT_EQ(count % stepCount, 0) << "every step is like the others";
        return count / stepCount;
    }

private:
    CConfigGuard m_config;
    std::vector<std::unique_ptr<CTestPool>> m_fifos;
    CUnitData2BoardData_S_AllUnit m_stage;
};

} // namespace

// Bands of both sizes live in memory that is kept.
TEST(StageCost, ALineAllocatesNothing)
{
    const std::int64_t few = CRunningStage(2, 1500).Allocations_Count();
    const std::int64_t many = CRunningStage(2, 6000).Allocations_Count();
    EXPECT_EQ(few, many);
}

TEST(StageCost, AStepAllocatesWhatItAlwaysDoes)
{
    constexpr std::int64_t stage = 20;     // the board band, two stripe bands, and the lists of bands and units
    constexpr std::int64_t converter = 41; // its line buffer with twenty elements, its arrays, its thread
    constexpr std::int64_t generator = 3;  // itself, its name, its thread
    for (const int generatorCount : {1, 2, 4})
    {
        EXPECT_EQ(CRunningStage(generatorCount, 2000).Allocations_Count(),
                  stage + converter + generatorCount * generator);
    }
}

TEST(StageCostDeathTest, AWarmStepMakesNoSystemCallButToSleepToWakeAndToReadThreadAttributes)
{
    const auto stepUnderTheBan = []
    {
        Allocator_Share();
        CRunningStage stage(2, 2000);
        bool bOk = stage.Steps_Run(40);
        bOk = SystemCalls_Forbid(SystemCalls_OfAWarmBand()) && bOk;
        bOk = stage.Steps_Run(40) && bOk;
        Process_End(bOk ? 0 : 1);
    };
    EXPECT_EXIT(stepUnderTheBan(), testing::ExitedWithCode(0), "");
}
