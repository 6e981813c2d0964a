// Scenarios: what a simulated world is full of. Each is a function that runs as the world's first thread, draws what it
// does from the world's seed, and writes down what should not be. What it has made it takes down again before it
// returns: threads that are left, and memory, are findings too.
#pragma once

#include "Simulation.h"

#include <cstdint>
#include <string>
#include <vector>

struct SScenario
{
    std::string name;
    std::string title; // what happens in it
    int share = 1;     // of the schedules of a run over all scenarios
    void (*run)() = nullptr;
};

// All of them, in a fixed order.
const std::vector<SScenario>& Scenarios_Get();

std::vector<SScenario> KelScenarios_Get();
std::vector<SScenario> ConverterScenarios_Get();
std::vector<SScenario> StageScenarios_Get();

// Runs one schedule, memory and all. Findings name what was wrong, not how to run it again.
SSimulationResult Schedule_Run(const SScenario& scenario, const SSimulationSetup& setup);

// The setup of schedule `number` of a run: policies take turns.
SSimulationSetup Schedule_Setup(std::uint64_t firstSeed, std::uint64_t number);

// How many of `total` schedules over all scenarios are this one's.
std::uint64_t Schedule_Count(const SScenario& scenario, std::uint64_t total);

// The arguments with which SimulationRun does the same schedule again.
std::string Schedule_Describe(const SScenario& scenario, const SSimulationSetup& setup);

// From now on a crash, too, says which schedule it was.
void CrashReport_Install();

const char* Policy_Name(EPolicy policy);

// For scenarios.

// A finding unless `bHolds`.
inline void Expect(bool bHolds, const char* what)
{
    if (!bHolds)
    {
        Simulation_Finding(what);
    }
}

// The same for a value that is one of a kind.
void ExpectEqual(long long actual, long long expected, const char* what);

// Lets time pass for the calling thread.
inline void Sleep(unsigned long ms)
{
    if (ms > 0)
    {
        Simulation_Wait(EPoint::Scenario, nullptr, ms, [] { return false; });
    }
}

// Lets others run for up to `limit` points, most often for few.
void Dawdle(std::uint64_t limit);

// A thread of the scenario's own; joined at the end of its scope.
class CScenarioThread
{
public:
    CScenarioThread(const std::string& name, const std::function<void()>& routine);
    ~CScenarioThread() { Join(); }
    CScenarioThread(const CScenarioThread&) = delete;
    CScenarioThread& operator=(const CScenarioThread&) = delete;

    bool IsOver() const { return SimulatedThread_Wait(*m_pThread, 0); }
    void Join();

private:
    SSimulatedThread* m_pThread;
};
