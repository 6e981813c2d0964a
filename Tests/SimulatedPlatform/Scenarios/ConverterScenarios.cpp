// The band converter and its line generators, without a stage around them.
#include "KelCommon/KelWait.h"
#include "PlainHook.h"
#include "Scenario.h"
#include "SimulatedJob.h"
#include "StopStates.h"

#include "DataMap/PrintUnitDataMap_5.h"
#include "Unit2Board/Unit2Board.h"

#include <algorithm>
#include <memory>
#include <optional>

// The way to what a converter keeps private.
struct SConverterTestAccess
{
    static int State(const CUnit2Board& converter) { return converter.m_processState; }
};

namespace
{

constexpr unsigned hourMs = 3600000;

// One step of a job as a converter is given it: all its bands, those of rest units left out.
class CBandWork
{
public:
    CBandWork() : m_job(Job_Apply())
    {
        const CSimulationPause pause;
        m_step = Simulation_Random(m_job.job.steps.size());
        for (const SBandImage& image : m_job.job.steps[m_step])
        {
            m_sources.push_back(Band_Of(image, 1));
            m_pointers.push_back(m_sources.back().get());
        }
        const SBandImage& board = m_job.boardsWithoutStripes[m_step];
        m_dst.Create(board.width, board.height, 1, 1);
    }

    bool Create(CUnit2Board& converter, const CPrintUnitDataMap_Base& map)
    {
        return converter.Create(GeneratorCount(), m_pointers.data(), static_cast<int>(m_pointers.size()), m_dst, map);
    }

    int GeneratorCount() const { return m_job.job.lineGeneratorCount; }
    int LineCount() const { return m_dst.m_height * static_cast<int>(m_pointers.size()); }

    void ExpectBytes() const
    {
        const CSimulationPause pause;
        Expect(Data_Of(m_dst) == m_job.boardsWithoutStripes[m_step].data, "wrong bytes");
    }

private:
    const SSimulatedJob& m_job;
    std::size_t m_step = 0;
    std::vector<std::unique_ptr<CBandData>> m_sources;
    std::vector<CBandData*> m_pointers;
    CBandData m_dst;
};

// The library's own map, whose lines come in runs; or one of the host's, whose lines come one by one, at once or
// slowly.
std::unique_ptr<CPrintUnitDataMap_Base> Map_Draw(bool& bSlow)
{
    const std::uint64_t kind = Simulation_Random(5);
    bSlow = kind == 0;
    if (kind <= 2)
    {
        return FaultyMap_Make(bSlow ? EMapFault::Slow : EMapFault::None, 0);
    }
    auto map = std::make_unique<CPrintUnitDataMap_5>();
    map->Init(1, 16);
    return map;
}

// Converts; nobody sits through a wait, since somebody always has something to do.
void Scenario_Convert()
{
    CBandWork work;
    bool bSlow = false;
    const auto map = Map_Draw(bSlow);
    CUnit2Board converter;
    Expect(work.Create(converter, *map), "a converter cannot be made");
    Expect(converter.WaitExit(hourMs), "a converter does not end");
    if (!bSlow)
    {
        ExpectEqual(Simulation_NowMs(), 0, "ms that a conversion sat through");
    }
    work.ExpectBytes();
}

// Somebody stops it, most often while it works; some do so twice.
void Scenario_ConvertStopped()
{
    CBandWork work;
    bool bSlow = false;
    const auto map = Map_Draw(bSlow);
    CUnit2Board converter;
    Expect(work.Create(converter, *map), "a converter cannot be made");
    const auto Stop = [&]
    {
        Dawdle(400);
        Sleep(bSlow ? Simulation_Random(2 * slowLineMs) : 0);
        {
            const CSimulationPause pause;
            ++StopStates_Get().converter.at(static_cast<std::size_t>(SConverterTestAccess::State(converter)));
        }
        converter.Stop();
    };
    std::optional<CScenarioThread> other;
    if (Simulation_Random(2) == 0)
    {
        other.emplace("somebody else", Stop);
    }
    Stop();
    other.reset();
    Expect(converter.WaitExit(kelWait_WithoutLimit), "a converter does not end");
    Expect(bSlow || Simulation_NowMs() <= 200, "stopping a converter takes longer than two waits");
}

// One of its threads cannot be started: none is left, and nobody waits for a line that never comes.
void Scenario_ConvertWithoutThread()
{
    CBandWork work;
    bool bSlow = false;
    const auto map = Map_Draw(bSlow);
    SPlainHook::failingCreation =
        1 + static_cast<int>(Simulation_Random(static_cast<unsigned>(work.GeneratorCount() + 1)));
    {
        CUnit2Board converter;
        Expect(!work.Create(converter, *map), "a converter is made without one of its threads");
    }
    ExpectEqual(Simulation_NowMs(), 0, "ms that a failed start took");
}

// A generator fails at some line, or cannot begin: the converter never ends, and the owner gives up.
void Scenario_ConvertFails()
{
    CBandWork work;
    const auto fault = static_cast<EMapFault>(1 + Simulation_Random(3));
    const int calls = fault == EMapFault::ScratchThrows ? work.GeneratorCount() : std::max(work.LineCount(), 1);
    const auto map = FaultyMap_Make(fault, 1 + static_cast<int>(Simulation_Random(static_cast<unsigned>(calls))));
    const unsigned patience = Simulation_Random(4) == 0 ? hourMs : 1000;
    CUnit2Board converter;
    Expect(work.Create(converter, *map), "a converter cannot be made");
    if (converter.WaitExit(patience))
    {
        // Without a line to map nothing fails, and one generator does for another.
        Expect(fault == EMapFault::ScratchThrows || work.LineCount() == 0, "a line that failed is counted");
        Expect(Simulation_NowMs() <= 100, "a conversion without one generator sat through waits");
        work.ExpectBytes();
        return;
    }
    Expect(Simulation_NowMs() >= patience, "a wait ends before its time");
    const std::int64_t before = Simulation_NowMs();
    converter.Stop();
    Expect(converter.WaitExit(kelWait_WithoutLimit), "a converter does not end");
    Expect(Simulation_NowMs() <= before + 200, "stopping a failed converter takes longer than two waits");
}

} // namespace

std::vector<SScenario> ConverterScenarios_Get()
{
    return {
        {"convert", "A converter maps a band", 6, &Scenario_Convert},
        {"convert-stopped", "A converter is stopped at some moment, by one or two", 4, &Scenario_ConvertStopped},
        {"convert-without-thread", "A thread of a converter cannot be started", 2, &Scenario_ConvertWithoutThread},
        {"convert-fails", "A line generator fails or throws, and the converter's owner gives up", 3,
         &Scenario_ConvertFails},
    };
}
