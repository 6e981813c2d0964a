// The long run: both stages with a converter side by side, thousands of small steps, random stalls on both sides and
// another number of line generators again and again. Every band is accounted for and memory stays where it was.
#include "Tests/UnitData2BoardData/InkJob.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <new>
#include <thread>

namespace
{

constexpr int stepCount = INK_SOAK_STEPS;  // per stage
std::atomic<std::int64_t> g_liveBlocks{0}; // allocated with new and not deleted

} // namespace

#if INK_SOAK_CHECKS_MEMORY
// Counted allocation, for the whole executable. Peaks of the process's memory would not do: a process begins with that
// of its parent.
void* operator new(std::size_t size)
{
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    ++g_liveBlocks;
    return block;
}

void operator delete(void* block) noexcept
{
    if (block != nullptr)
    {
        --g_liveBlocks;
        std::free(block);
    }
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    operator delete(block);
}
#endif

namespace
{

// Mostly nothing, now and then a short rest, seldom a long one.
void Stall(std::mt19937& random)
{
    const auto chance = random() % 200;
    if (chance == 0)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(15));
    }
    else if (chance < 20)
    {
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
    }
}

// Three units of the cart's six have bands; the steps repeat a short cycle, so that what they must give is known.
SInkJob Job_Make()
{
    SInkJob job;
    job.option.m_dataMapStyle = SMapStyle::FramePerPixel;
    job.option.m_printerDataWidth = 16;
    job.twin = {ETwinStyle::Style_5, 1, 16, 1};
    job.stripes.bandWidth = 40;
    job.stripes.jobWidth = 25;
    job.stripes.xMaxOffset_Left2Right = 2;
    job.stripes.xMaxOffset_Right2Left = 3;
    job.stripes.leftStripeWidth = 6;
    job.stripes.rightStripeWidth = 6;
    job.stripes.unitPitch = 2;
    job.stripes.unitPositionCount = 3;
    std::mt19937 random(11);
    for (int id = 0; id < 6; ++id)
    {
        SModelUnit unit{id, id % 3, id % 3, id % 4, id % 3, true, std::vector<unsigned char>(10)};
        std::generate(unit.color.begin(), unit.color.end(), [&] { return static_cast<unsigned char>(random()); });
        job.stripes.units.push_back(unit);
    }
    for (int step = 0; step < 6; ++step)
    {
        SStepImage bands;
        for (int unit = 0; unit < 3; ++unit)
        {
            bands.push_back(Band_Noise(job, random, (step + unit * 2) % 6, step % 2));
            bands.back().header.bSkip = false;
        }
        job.steps.push_back(bands);
    }
    return job;
}

// What consumers count.
struct STally
{
    std::atomic<int> taken{0};
    std::atomic<int> wrong{0};
    std::atomic<std::int64_t> blocksAtOneThird{0};
    std::atomic<std::int64_t> blocksAtTheEnd{0};
};

void Consume(CTestOutputEnd output, const std::vector<SBandImage>& cycle, STally& tally, unsigned seed)
{
    std::mt19937 random(seed);
    while (tally.taken < stepCount)
    {
        Stall(random);
        CBandData* raw = nullptr;
        if (!output.Out(raw, 20000))
        {
            return;
        }
        const std::unique_ptr<CBandData> board(raw);
        SBandImage expected = cycle[static_cast<std::size_t>(tally.taken) % cycle.size()];
        expected.header.BandNo_Set(tally.taken);
        if (!(Image_Of(*board) == expected))
        {
            ++tally.wrong;
        }
        if (++tally.taken == stepCount / 3)
        {
            tally.blocksAtOneThird = g_liveBlocks.load();
        }
        else if (tally.taken == stepCount)
        {
            tally.blocksAtTheEnd = g_liveBlocks.load();
        }
    }
}

void ExpectAllAccountedFor(const STally& tally)
{
    EXPECT_EQ(tally.taken, stepCount);
    EXPECT_EQ(tally.wrong, 0);
    // What is under way at either moment differs by some hundreds. One lost block in every second step is above that.
    EXPECT_LT(tally.blocksAtTheEnd - tally.blocksAtOneThird, stepCount / 4);
}

} // namespace

TEST(InkStageSoak, ThousandsOfStepsWithStallsOnBothSidesLoseNothingAndKeepNothing)
{
    const SInkJob job = Job_Make();
    CConfigGuard config;
    Job_Configure(config, job);
    const CLogCapture log;
    std::vector<SBandImage> cycle;
    for (int step = 0; step < static_cast<int>(job.steps.size()); ++step)
    {
        cycle.push_back(Board_Expected(job, step));
    }

    std::array<std::unique_ptr<CTestPool>, 3> pools;
    std::vector<CBandDataFIFO*> inputs;
    for (auto& pool : pools)
    {
        pool = Pool_Make(0, 3, 8, 1);
        inputs.push_back(pool.get());
    }
    CBandSetFIFO sets(3);
    CUnitData2BoardData_S_AllUnit inkStripe;
    CUnitData2BoardData_AllUnit_2 oneFIFO;
    ASSERT_TRUE(inkStripe.Create(false, inputs));
    ASSERT_TRUE(oneFIFO.Create(sets));

    std::thread unitProducer(
        [&]
        {
            std::mt19937 random(1);
            for (int i = 0; i < stepCount; ++i)
            {
                const SStepImage& step = job.steps[static_cast<std::size_t>(i) % job.steps.size()];
                for (std::size_t unit = 0; unit < step.size(); ++unit)
                {
                    Stall(random);
                    CBandData* band = nullptr;
                    if (!pools[unit]->Empty_Out(band, 20000))
                    {
                        return;
                    }
                    Band_Fill(*band, step[unit], job.stripes.alignBytes);
                    EXPECT_TRUE(pools[unit]->Full_In(band, 0));
                }
            }
            for (auto& pool : pools)
            {
                pool->SetCompletedFlag();
            }
        });
    std::thread setProducer(
        [&]
        {
            std::mt19937 random(2);
            for (int i = 0; i < stepCount; ++i)
            {
                Stall(random);
                std::vector<std::unique_ptr<CBandData>> bands;
                for (const SBandImage& image : job.steps[static_cast<std::size_t>(i) % job.steps.size()])
                {
                    bands.push_back(Band_Of(image, job.stripes.alignBytes));
                }
                EXPECT_TRUE(BandSet_Push(sets, BandSet_Make(std::move(bands)), 20000));
            }
            EXPECT_TRUE(BandSet_Push(sets, nullptr, 20000));
        });
    STally inkTally;
    STally setTally;
    std::thread inkConsumer([&] { Consume(Output_Of(inkStripe), cycle, inkTally, 3); });
    std::thread setConsumer([&] { Consume(Output_Of(oneFIFO), cycle, setTally, 4); });
    std::atomic<bool> bDone{false};
    std::thread tuner(
        [&]
        {
            std::mt19937 random(5);
            while (!bDone)
            {
                Platform_Set(SConfigSetup{1 + static_cast<int>(random() % 6)});
                std::this_thread::sleep_for(std::chrono::milliseconds(3));
            }
        });
    inkConsumer.join();
    setConsumer.join();
    unitProducer.join();
    setProducer.join();
    EXPECT_TRUE(inkStripe.WaitExit(20000));
    EXPECT_TRUE(oneFIFO.WaitExit(20000));
    bDone = true;
    tuner.join();

    EXPECT_TRUE(inkStripe.IsThreadSuccess());
    EXPECT_TRUE(oneFIFO.IsThreadSuccess());
    EXPECT_TRUE(Output_Of(inkStripe).IsCompleted());
    EXPECT_TRUE(Output_Of(oneFIFO).IsCompleted());
    ExpectAllAccountedFor(inkTally);
    ExpectAllAccountedFor(setTally);
    for (auto& pool : pools) // every input band has come home
    {
        int count = 0;
        for (CBandData* band = nullptr; pool->Empty_Out(band, 0); ++count)
        {
            delete band;
        }
        EXPECT_EQ(count, 3);
    }
    EXPECT_EQ(log.Summary(),
              std::vector<std::string>{"1 Complete : CUnitData2BoardData_Base @UnitData2BoardData_Base"});
}
