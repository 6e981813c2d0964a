// Running schedules, and what all scenarios use.
#include "Scenario.h"

#include "Compiler/KelCompiler.h"
#include "LiveAllocations.h"
#include "PlainHook.h"
#include "StopStates.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <numeric>
#include <unistd.h>

namespace
{

// What a crash writes: made before, since little can be called when it happens.
std::array<char, 256> g_current{};

int g_raceCount = 0; // that ThreadSanitizer has reported

[[noreturn]] void Crash_Report(int signal)
{
    constexpr const char* before = "\nThis schedule crashed: ";
    static_cast<void>(!write(STDERR_FILENO, before, std::strlen(before)));
    static_cast<void>(!write(STDERR_FILENO, g_current.data(), std::strlen(g_current.data())));
    static_cast<void>(!write(STDERR_FILENO, "\n", 1));
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    std::_Exit(1);
}

SSimulationResult Schedule_Try(const SScenario& scenario, const SSimulationSetup& setup, std::int64_t& leftBlocks)
{
    SPlainHook::failingCreation = 0;
    SPlainHook::creationCount = 0;
    SPlainHook::startedCount = 0;
    g_raceCount = 0;
    const std::int64_t before = LiveAllocations_Count();
    SSimulationResult result = Simulation_Run(setup, scenario.run);
    const auto own =
        static_cast<std::int64_t>(!result.trace.empty()) + static_cast<std::int64_t>(!result.findings.empty());
    leftBlocks = LiveAllocations_Count() - before - own;
    if (g_raceCount > 0)
    {
        result.findings.emplace_back("ThreadSanitizer has reported a race, above");
    }
    return result;
}

} // namespace

#ifdef SIMULATION_TSAN
extern "C" KEL_EXPORT void __tsan_on_report(void* /*report*/) // NOLINT(bugprone-reserved-identifier)
{
    ++g_raceCount;
}
#endif

const std::vector<SScenario>& Scenarios_Get()
{
    static const auto scenarios = []
    {
        std::vector<SScenario> all;
        for (const auto& some : {KelScenarios_Get(), ConverterScenarios_Get(), StageScenarios_Get()})
        {
            all.insert(all.end(), some.begin(), some.end());
        }
        return all;
    }();
    return scenarios;
}

SSimulationResult Schedule_Run(const SScenario& scenario, const SSimulationSetup& setup)
{
    const std::string description = Schedule_Describe(scenario, setup).substr(0, g_current.size() - 1);
    std::copy_n(description.c_str(), description.size() + 1, g_current.begin());
    std::int64_t leftBlocks = 0;
    SSimulationResult result = Schedule_Try(scenario, setup, leftBlocks);
    if (result.findings.empty() && leftBlocks != 0)
    {
        // What somebody made for good at the first opportunity is not made again.
        result = Schedule_Try(scenario, setup, leftBlocks);
        if (result.findings.empty() && leftBlocks > 0)
        {
            result.findings.push_back("memory is left: blocks: " + std::to_string(leftBlocks));
        }
    }
    return result;
}

SSimulationSetup Schedule_Setup(std::uint64_t firstSeed, std::uint64_t number)
{
    SSimulationSetup setup;
    setup.seed = firstSeed + number;
    setup.policy = allPolicies[number % std::size(allPolicies)];
    return setup;
}

std::uint64_t Schedule_Count(const SScenario& scenario, std::uint64_t total)
{
    const auto& all = Scenarios_Get();
    const int shares =
        std::accumulate(all.begin(), all.end(), 0, [](int sum, const SScenario& each) { return sum + each.share; });
    return (total * static_cast<std::uint64_t>(scenario.share) + static_cast<std::uint64_t>(shares) - 1) /
           static_cast<std::uint64_t>(shares);
}

std::string Schedule_Describe(const SScenario& scenario, const SSimulationSetup& setup)
{
    return "--scenario " + scenario.name + " --policy " + Policy_Name(setup.policy) + " --seed " +
           std::to_string(setup.seed);
}

void CrashReport_Install()
{
    // A fiber that has used up its stack cannot take the signal on it.
    static std::array<char, 64 * 1024> room;
    stack_t stack{};
    stack.ss_sp = room.data();
    stack.ss_size = room.size();
    sigaltstack(&stack, nullptr);
    for (const int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL})
    {
        struct sigaction action = {};
        action.sa_handler = &Crash_Report;
        action.sa_flags = SA_ONSTACK;
        sigaction(signal, &action, nullptr);
    }
}

SStopStates& StopStates_Get()
{
    static SStopStates states;
    return states;
}

const char* Policy_Name(EPolicy policy)
{
    switch (policy)
    {
    case EPolicy::Bursts:
        return "bursts";
    case EPolicy::Priorities:
        return "priorities";
    default:
        return "random";
    }
}

void ExpectEqual(long long actual, long long expected, const char* what)
{
    if (actual != expected)
    {
        Simulation_Finding(std::string(what) + ": " + std::to_string(actual) + " instead of " +
                           std::to_string(expected));
    }
}

void Dawdle(std::uint64_t limit)
{
    const std::uint64_t count = Simulation_Random(Simulation_Random(limit) + 1);
    for (std::uint64_t i = 0; i < count; ++i)
    {
        Simulation_Point(EPoint::Scenario, nullptr);
    }
}

CScenarioThread::CScenarioThread(const std::string& name, const std::function<void()>& routine)
    : m_pThread(SimulatedThread_Create(name,
                                       [routine]
                                       {
                                           routine();
                                           return 0UL;
                                       }))
{
    Simulation_Point(EPoint::Create, nullptr);
}

void CScenarioThread::Join()
{
    if (m_pThread != nullptr)
    {
        SimulatedThread_Wait(*m_pThread, simulationWithoutLimit);
        SimulatedThread_Close(*m_pThread);
        m_pThread = nullptr;
    }
}
