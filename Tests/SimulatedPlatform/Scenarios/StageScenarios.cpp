// The three stages, each fed by a producer and emptied by a consumer: to the end, stopped, failing, and side by side.
#include "KelCommon/KelWait.h"
#include "PlainHook.h"
#include "Scenario.h"
#include "SimulatedJob.h"
#include "StopStates.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <set>

namespace
{

constexpr int hourMs = 3600000;

// What a stage makes of a job, and whether steps may be skipped.
struct STask
{
    const SSimulatedJob& job;
    bool bStripes = false;
    bool bCheckInput = false;
    std::set<std::size_t> skipped; // steps, where the stage looks

    // The board bands that come out, in order.
    std::vector<SBandImage> Boards() const
    {
        const auto& all = bStripes ? job.boards : job.boardsWithoutStripes;
        std::vector<SBandImage> boards;
        for (std::size_t step = 0; step < all.size(); ++step)
        {
            if (!bCheckInput || skipped.count(step) == 0)
            {
                boards.push_back(all[step]);
                boards.back().header.BandNo_Set(static_cast<int>(boards.size()) - 1);
                boards.back().header.bSkip = skipped.count(step) != 0;
            }
        }
        return boards;
    }
};

// An input pool that knows which bands the stage has.
class CWatchedPool : public CTestPool
{
public:
    explicit CWatchedPool(int bandCount) : CTestPool("watched")
    {
        std::vector<CBandData*> bands;
        for (int i = 0; i < bandCount; ++i)
        {
            bands.push_back(Band_Make(0, 8, 1).release());
        }
        Create(bands.data(), bandCount);
    }

    bool Full_Out(CBandData*& band, unsigned long timeoutMs) override
    {
        if (!CTestPool::Full_Out(band, timeoutMs))
        {
            return false;
        }
        Expect(m_atStage.insert(band).second, "a stage takes a band that it has");
        return true;
    }

    bool Empty_In(CBandData* band, unsigned long timeoutMs) override
    {
        if (m_atStage.erase(band) == 0)
        {
            Simulation_Fatal("a stage gives a band back that it does not have");
        }
        return CTestPool::Empty_In(band, timeoutMs);
    }

private:
    std::set<CBandData*> m_atStage;
};

// The producers. Each makes a stage's input, puts step after step into it as the stage takes them, and ends it. False
// from Step_Push: `bOver` came to be set before there was room.

class CPoolFeed
{
public:
    explicit CPoolFeed(const STask& task) : m_task(task)
    {
        const int bandCount = 1 + static_cast<int>(Simulation_Random(2));
        for (std::size_t i = 0; i < task.job.job.steps.front().size(); ++i)
        {
            m_pools.push_back(std::make_unique<CWatchedPool>(bandCount));
        }
    }

    bool Create(CUnitData2BoardData_Base& stage)
    {
        std::vector<CBandDataFIFO*> inputs;
        std::transform(m_pools.begin(), m_pools.end(), std::back_inserter(inputs),
                       [](const auto& pool) { return pool.get(); });
        return stage.Create(m_task.bCheckInput, inputs);
    }

    bool Step_Push(std::size_t step, const std::atomic<bool>& bOver, std::size_t inputCount)
    {
        for (std::size_t i = 0; i < std::min(inputCount, m_pools.size()); ++i)
        {
            CBandData* band = nullptr;
            while (!m_pools[i]->Empty_Out(band, 100))
            {
                if (bOver)
                {
                    return false;
                }
            }
            {
                const CSimulationPause pause;
                Band_Fill(*band, m_task.job.job.steps[step][i], 1);
                band->m_bSkip = m_task.skipped.count(step) != 0;
            }
            Expect(m_pools[i]->Full_In(band, 0), "a pool is full of fewer bands than it has");
        }
        return true;
    }

    void End(const std::atomic<bool>& /*bOver*/)
    {
        for (const auto& pool : m_pools)
        {
            pool->SetCompletedFlag();
        }
    }

private:
    const STask& m_task;
    std::vector<std::unique_ptr<CWatchedPool>> m_pools;
};

class CSetFeed
{
public:
    explicit CSetFeed(const STask& task) : m_task(task), m_input(1 + static_cast<int>(Simulation_Random(2))) {}

    // The FIFO deletes what is left in it, but the bands of an element are nobody's.
    ~CSetFeed()
    {
        const CSimulationPause pause;
        SBufferData<CBandData*>* bandSet = nullptr;
        while (m_input.Out(bandSet))
        {
            for (int i = 0; bandSet != nullptr && i < bandSet->count; ++i)
            {
                delete bandSet->data[i];
            }
            delete bandSet;
        }
    }
    CSetFeed(const CSetFeed&) = delete;
    CSetFeed& operator=(const CSetFeed&) = delete;

    bool Create(CUnitData2BoardData_AllUnit_2& stage) { return stage.Create(m_input); }

    bool Step_Push(std::size_t step, const std::atomic<bool>& bOver, std::size_t /*inputCount*/)
    {
        if (!Room_Wait(bOver))
        {
            return false;
        }
        std::vector<std::unique_ptr<CBandData>> bands;
        {
            const CSimulationPause pause;
            for (const SBandImage& image : m_task.job.job.steps[step])
            {
                bands.push_back(Band_Of(image, 1));
                bands.back()->m_bSkip = m_task.skipped.count(step) != 0;
            }
        }
        auto* const bandSet = BandSet_Make(std::move(bands));
        Expect(m_input.In(bandSet), "the event says that there is room, and there is none");
        return true;
    }

    void End(const std::atomic<bool>& bOver)
    {
        if (Room_Wait(bOver))
        {
            m_input.In(nullptr);
        }
    }

private:
    // Waits for room in the input. False: the line is over.
    bool Room_Wait(const std::atomic<bool>& bOver)
    {
        while (!m_input.HasSpaceEvent().Wait(100, 0))
        {
            if (bOver)
            {
                return false;
            }
        }
        return true;
    }

    const STask& m_task;
    CBandSetFIFO m_input;
};

// The stages.

struct SBaseStage
{
    using CStage = CStageUnderTestOf<CUnitData2BoardData_Base>;
    using CFeed = CPoolFeed;
    static constexpr bool bStripes = false;
    static constexpr bool bSkips = true;
    static constexpr bool bConverts = false;
};

struct SInkStage
{
    using CStage = CInkStage;
    using CFeed = CPoolFeed;
    static constexpr bool bStripes = true;
    static constexpr bool bSkips = true;
    static constexpr bool bConverts = true;
};

struct SOneFIFOStage
{
    using CStage = COneFIFOStage;
    using CFeed = CSetFeed;
    static constexpr bool bStripes = true;
    static constexpr bool bSkips = false;
    static constexpr bool bConverts = true;
};

// A stage at work, with its producer and its consumer. What the scenario draws decides how fast they are.
template<class TKind>
class CLine
{
public:
    explicit CLine(const SSimulatedJob& job) : m_task{job, TKind::bStripes, false, {}}
    {
        if (TKind::bSkips && Simulation_Random(3) == 0)
        {
            m_task.bCheckInput = Simulation_Random(2) == 0;
            for (std::size_t step = 0; step < job.job.steps.size(); ++step)
            {
                if (Simulation_Random(2) == 0)
                {
                    m_task.skipped.insert(step);
                }
            }
        }
        m_boards = m_task.Boards();
        m_feed.emplace(m_task);
    }

    bool Create() { return m_feed->Create(m_stage); }

    // How long the producer rests before every step, and the consumer before every band, at most; in ms.
    void Rests_Set(unsigned producerMs, unsigned consumerMs)
    {
        m_producerRestMs = producerMs;
        m_consumerRestMs = consumerMs;
    }

    // The producer puts in this many steps, the last of them perhaps in part, and then ends the input or does not.
    void Produce(std::size_t stepCount, std::size_t lastInputCount, bool bEnd)
    {
        for (std::size_t step = 0; step < stepCount; ++step)
        {
            const unsigned rest =
                m_producerRestMs == 0 ? 0 : static_cast<unsigned>(Simulation_Random(m_producerRestMs));
            m_restedMs += rest;
            Sleep(rest);
            const bool bLast = step + 1 == stepCount;
            if (!m_feed->Step_Push(step, m_bOver, bLast ? lastInputCount : static_cast<std::size_t>(-1)))
            {
                return;
            }
        }
        if (bEnd)
        {
            m_feed->End(m_bOver);
        }
    }
    void Produce_All() { Produce(m_task.job.job.steps.size(), static_cast<std::size_t>(-1), true); }

    // Takes board bands until all are there, or until the line is over and none is left.
    void Consume()
    {
        while (m_takenCount < m_boards.size())
        {
            const unsigned rest =
                m_consumerRestMs == 0 ? 0 : static_cast<unsigned>(Simulation_Random(m_consumerRestMs));
            m_restedMs += rest;
            Sleep(rest);
            const bool bOver = m_bOver;
            if (!Board_Take(100) && bOver)
            {
                return;
            }
        }
        m_lastTakenMs = Simulation_NowMs();
    }

    // Takes a board band and looks at it. False if none comes.
    bool Board_Take(unsigned timeoutMs)
    {
        CBandData* raw = nullptr;
        if (!Output().Out(raw, timeoutMs))
        {
            return false;
        }
        const CSimulationPause pause;
        const std::unique_ptr<CBandData> board(raw);
        if (m_takenCount >= m_boards.size())
        {
            Simulation_Finding("a stage makes more board bands than there are steps");
            return true;
        }
        const SBandImage& expected = m_boards[m_takenCount];
        ExpectEqual(board->m_bandNo, static_cast<int>(m_takenCount), "a board band's number");
        Expect(Image_Of(*board) == expected, "a board band with wrong bytes, or of another step");
        ++m_takenCount;
        return true;
    }

    // Stops the stage and looks at how long that takes; takes what is in the output.
    void Stop()
    {
        State_Count();
        const std::int64_t before = Simulation_NowMs();
        m_stage.Stop();
        Expect(m_stage.WaitExit(kelWait_WithoutLimit), "a stage does not end");
        Expect(Simulation_NowMs() <= before + 100 * (2 + static_cast<int>(m_task.job.job.steps.front().size())),
               "stopping a stage takes longer than the waits of one step");
        m_bOver = true;
    }

    // After a run that ends by itself.
    void ExpectComplete()
    {
        Expect(m_stage.WaitExit(300), "a stage does not end by itself");
        Expect(m_stage.IsThreadSuccess(), "a stage that ended by itself did not succeed");
        ExpectEqual(static_cast<long long>(m_takenCount), static_cast<long long>(m_boards.size()), "board bands");
        Expect(Output().IsCompleted(), "the output of a stage that came to its end is not completed");
    }

    // After a failure. The output goes on for ever, as far as the next stage can tell.
    void ExpectFailure()
    {
        m_bOver = true;
        Expect(!m_stage.IsThreadSuccess(), "a stage that failed succeeded");
        while (Board_Take(0))
        {
        }
        Expect(!Output().IsCompleted(), "a stage that failed completes its output");
        Expect(m_takenCount < m_boards.size(), "a stage that failed made all board bands");
    }

    CTestOutputEnd Output() { return Output_Of(m_stage); }
    typename TKind::CStage& Stage() { return m_stage; }
    void Over_Set() { m_bOver = true; }
    std::size_t InputCount() const { return m_task.job.job.steps.front().size(); }
    std::size_t StepCount() const { return m_task.job.job.steps.size(); }
    std::size_t BoardCount() const { return m_boards.size(); }
    std::size_t TakenCount() const { return m_takenCount; }
    std::int64_t LastTakenMs() const { return m_lastTakenMs; }
    unsigned RestedMs() const { return m_restedMs; }

private:
    void State_Count()
    {
        const CSimulationPause pause;
        ++StopStates_Get().stage.at(static_cast<std::size_t>(m_stage.m_processState));
    }

    STask m_task;
    std::vector<SBandImage> m_boards;
    std::optional<typename TKind::CFeed> m_feed; // outlives the stage
    typename TKind::CStage m_stage;
    std::atomic<bool> m_bOver{false};
    std::size_t m_takenCount = 0;
    unsigned m_producerRestMs = 0;
    unsigned m_consumerRestMs = 0;
    std::atomic<unsigned> m_restedMs{0};
    std::int64_t m_lastTakenMs = 0;
};

// A whole job to its end. Nobody waits longer than the producer and the consumer rest.
template<class TKind>
void Line_Run(const SSimulatedJob& job, unsigned producerMs, unsigned consumerMs)
{
    CLine<TKind> line(job);
    line.Rests_Set(producerMs, consumerMs);
    const std::int64_t before = Simulation_NowMs();
    Expect(line.Create(), "a stage cannot be made");
    CScenarioThread producer("producer", [&line] { line.Produce_All(); });
    line.Consume();
    Expect(line.LastTakenMs() <= before + line.RestedMs(),
           "threads sat through a wait, though there was something to do");
    producer.Join();
    line.ExpectComplete();
}

template<class TKind>
void Scenario_Flow()
{
    Line_Run<TKind>(Job_Apply(), 0, 0);
}

template<class TKind>
void Scenario_Slow()
{
    const unsigned slow = 50 + static_cast<unsigned>(Simulation_Random(400));
    const bool bProducer = Simulation_Random(2) == 0;
    Line_Run<TKind>(Job_Apply(), bProducer ? slow : 0, bProducer ? 0 : slow);
}

// Stopped at some moment. What has come out until then is right and in order.
template<class TKind>
void Scenario_Stopped()
{
    CLine<TKind> line(Job_Apply());
    const unsigned rest = Simulation_Random(3) == 0 ? 150 : 0;
    line.Rests_Set(rest, rest);
    Expect(line.Create(), "a stage cannot be made");
    CScenarioThread producer("producer", [&line] { line.Produce_All(); });
    CScenarioThread consumer("consumer", [&line] { line.Consume(); });
    Dawdle(Simulation_Random(3) == 0 ? 10 : 800);
    Sleep(rest == 0 ? 0 : Simulation_Random(400));
    line.Stop();
    consumer.Join();
    producer.Join();
    while (line.Board_Take(0))
    {
    }
}

// Nobody reads the output. The stage fills it, waits, and takes no input whose result it could not pass on.
template<class TKind>
void Scenario_Unread()
{
    CLine<TKind> line(Job_Apply());
    Expect(line.Create(), "a stage cannot be made");
    CScenarioThread producer("producer", [&line] { line.Produce_All(); });
    Sleep(1000);
    line.Stop();
    producer.Join();
    const std::size_t room = static_cast<std::size_t>(TKind::bSkips ? 3 : 1);
    while (line.Board_Take(0))
    {
    }
    ExpectEqual(static_cast<long long>(line.TakenCount()), static_cast<long long>(std::min(room, line.BoardCount())),
                "board bands in a full output");
}

// The producer ends in the middle of a step and says nothing.
template<class TKind>
void Scenario_ProducerDies()
{
    CLine<TKind> line(Job_Apply());
    const auto steps = static_cast<std::size_t>(Simulation_Random(line.StepCount() + 1));
    const auto inputs = static_cast<std::size_t>(Simulation_Random(line.InputCount() + 1));
    Expect(line.Create(), "a stage cannot be made");
    CScenarioThread producer("producer", [&] { line.Produce(steps, inputs, false); });
    CScenarioThread consumer("consumer", [&] { line.Consume(); });
    producer.Join();
    Sleep(500 + Simulation_Random(500));
    line.Stop();
    consumer.Join();
    Expect(line.TakenCount() <= steps, "a board band of a step that never was");
}

// One of the threads cannot be started: the stage's own, or one of some step.
template<class TKind>
void Scenario_WithoutThread()
{
    const SSimulatedJob& job = Job_Apply();
    const auto perStep = static_cast<std::uint64_t>(TKind::bConverts ? job.job.lineGeneratorCount + 1 : 0);
    const std::uint64_t failing = 1 + Simulation_Random(1 + perStep * job.job.steps.size());
    SPlainHook::failingCreation = static_cast<int>(failing);
    CLine<TKind> line(job);
    if (!line.Create())
    {
        ExpectEqual(static_cast<long long>(failing), 1, "the thread without which a stage cannot be made");
        return;
    }
    CScenarioThread producer("producer", [&line] { line.Produce_All(); });
    CScenarioThread consumer("consumer", [&line] { line.Consume(); });
    if (failing > 1 + perStep * line.BoardCount()) // steps were skipped
    {
        consumer.Join();
        producer.Join();
        line.ExpectComplete();
        return;
    }
    Expect(line.Stage().WaitExit(1000), "a stage without a thread goes on");
    line.Over_Set();
    consumer.Join();
    producer.Join();
    line.ExpectFailure();
}

// A line generator fails: the hour passes, and the stage ends as failed.
template<class TKind>
void Scenario_Fails()
{
    const SSimulatedJob& job = Job_Apply();
    const auto fault = static_cast<EMapFault>(1 + Simulation_Random(2));
    CLine<TKind> line(job);
    Expect(line.Create(), "a stage cannot be made");
    line.Stage().Map_Replace(FaultyMap_Make(fault, 1 + static_cast<int>(Simulation_Random(60))));
    CScenarioThread producer("producer", [&line] { line.Produce_All(); });
    CScenarioThread consumer("consumer", [&line] { line.Consume(); });
    if (line.Stage().WaitExit(3 * hourMs) && line.Stage().IsThreadSuccess())
    {
        consumer.Join(); // the failing call never came
        producer.Join();
        line.ExpectComplete();
        return;
    }
    Expect(Simulation_NowMs() >= hourMs && Simulation_NowMs() <= hourMs + 200,
           "a stage does not give its converter an hour");
    line.Over_Set();
    consumer.Join();
    producer.Join();
    line.ExpectFailure();
}

// Several stages at work at the same time.
void Scenario_SideBySide()
{
    const SSimulatedJob& job = Job_Apply();
    CScenarioThread base("base line", [&job] { Line_Run<SBaseStage>(job, 0, 0); });
    CScenarioThread oneFIFO("one-FIFO line", [&job] { Line_Run<SOneFIFOStage>(job, 0, 0); });
    Line_Run<SInkStage>(job, 0, 0);
}

} // namespace

std::vector<SScenario> StageScenarios_Get()
{
    return {
        {"base", "The base stage converts a job", 3, &Scenario_Flow<SBaseStage>},
        {"ink", "The ink-stripe stage converts a job", 4, &Scenario_Flow<SInkStage>},
        {"one-fifo", "The one-FIFO stage converts a job", 4, &Scenario_Flow<SOneFIFOStage>},
        {"base-slow", "The base stage between a slow producer and a slow reader", 1, &Scenario_Slow<SBaseStage>},
        {"ink-slow", "The ink-stripe stage between a slow producer and a slow reader", 2, &Scenario_Slow<SInkStage>},
        {"one-fifo-slow", "The one-FIFO stage between a slow producer and a slow reader", 2,
         &Scenario_Slow<SOneFIFOStage>},
        {"base-stopped", "The base stage is stopped at some moment", 2, &Scenario_Stopped<SBaseStage>},
        {"ink-stopped", "The ink-stripe stage is stopped at some moment", 3, &Scenario_Stopped<SInkStage>},
        {"one-fifo-stopped", "The one-FIFO stage is stopped at some moment", 3, &Scenario_Stopped<SOneFIFOStage>},
        {"base-unread", "Nobody reads what the base stage makes", 1, &Scenario_Unread<SBaseStage>},
        {"ink-unread", "Nobody reads what the ink-stripe stage makes", 1, &Scenario_Unread<SInkStage>},
        {"one-fifo-unread", "Nobody reads what the one-FIFO stage makes", 1, &Scenario_Unread<SOneFIFOStage>},
        {"base-producer-dies", "The base stage's producer ends in the middle of a step", 1,
         &Scenario_ProducerDies<SBaseStage>},
        {"ink-producer-dies", "The ink-stripe stage's producer ends in the middle of a step", 1,
         &Scenario_ProducerDies<SInkStage>},
        {"one-fifo-producer-dies", "The one-FIFO stage's producer ends without the end marker", 1,
         &Scenario_ProducerDies<SOneFIFOStage>},
        {"base-without-thread", "The base stage's thread cannot be started", 1, &Scenario_WithoutThread<SBaseStage>},
        {"ink-without-thread", "Some thread of the ink-stripe stage cannot be started", 2,
         &Scenario_WithoutThread<SInkStage>},
        {"one-fifo-without-thread", "Some thread of the one-FIFO stage cannot be started", 2,
         &Scenario_WithoutThread<SOneFIFOStage>},
        {"ink-fails", "A line generator of the ink-stripe stage fails, and the hour passes", 1,
         &Scenario_Fails<SInkStage>},
        {"one-fifo-fails", "A line generator of the one-FIFO stage fails, and the hour passes", 1,
         &Scenario_Fails<SOneFIFOStage>},
        {"side-by-side", "Three stages convert the same job at once", 2, &Scenario_SideBySide},
    };
}
