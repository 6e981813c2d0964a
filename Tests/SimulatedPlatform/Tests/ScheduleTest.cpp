// Ten thousand schedules of the library in all, spread over the scenarios; and that the same seed is the same run.
//
// SIMULATION_SEED and SIMULATION_SCHEDULES in the environment choose other schedules and another number of them.
#include "Scenarios/Scenario.h"
#include "Scenarios/StopStates.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ostream>

// What GoogleTest prints of a parameter.
static void PrintTo(const SScenario& scenario, std::ostream* out)
{
    *out << scenario.title;
}

namespace
{

std::uint64_t Environment_Get(const char* name, std::uint64_t otherwise)
{
    const char* const text = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody else runs yet
    return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

std::string Findings_Text(const SScenario& scenario, const SSimulationSetup& setup, const SSimulationResult& result)
{
    std::string text;
    for (const std::string& finding : result.findings)
    {
        text += finding + '\n';
    }
    return text + "again: SimulationRun " + Schedule_Describe(scenario, setup);
}

std::string Case_Name(const testing::TestParamInfo<SScenario>& info)
{
    std::string name = info.param.name;
    name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
    return name;
}

class Schedule : public testing::TestWithParam<SScenario>
{
protected:
    static void SetUpTestSuite() { CrashReport_Install(); }
};

} // namespace

TEST_P(Schedule, ShowsNothingThatShouldNotBe)
{
    const std::uint64_t seed = Environment_Get("SIMULATION_SEED", 1);
    const std::uint64_t count = Schedule_Count(GetParam(), Environment_Get("SIMULATION_SCHEDULES", 10000));
    for (std::uint64_t number = 0; number < count; ++number)
    {
        const SSimulationSetup setup = Schedule_Setup(seed, number);
        const SSimulationResult result = Schedule_Run(GetParam(), setup);
        ASSERT_TRUE(result.findings.empty()) << Findings_Text(GetParam(), setup, result);
    }
}

TEST_P(Schedule, IsTheSameAgainAndOnSystemThreads)
{
    for (std::uint64_t number = 0; number < 6; ++number)
    {
        SSimulationSetup setup = Schedule_Setup(1000, number);
        setup.bKeepTrace = true;
        const SSimulationResult first = Schedule_Run(GetParam(), setup);
        const SSimulationResult again = Schedule_Run(GetParam(), setup);
        EXPECT_EQ(first.traceHash, again.traceHash);
        EXPECT_TRUE(first.trace == again.trace);
        EXPECT_EQ(first.trace.size(), first.pointCount);
        if (first.pointCount < 20000) // a switch of system threads takes microseconds
        {
            setup.strand = EStrand::Thread;
            const SSimulationResult onThreads = Schedule_Run(GetParam(), setup);
            EXPECT_TRUE(first.trace == onThreads.trace) << Schedule_Describe(GetParam(), setup);
            EXPECT_EQ(first.clockMs, onThreads.clockMs);
        }
        setup.strand = EStrand::Fiber;
        setup.seed += 1'000'000;
        EXPECT_NE(Schedule_Run(GetParam(), setup).traceHash, first.traceHash);
    }
}

INSTANTIATE_TEST_SUITE_P(Scenarios, Schedule, testing::ValuesIn(Scenarios_Get()), &Case_Name);

TEST(Schedules, StopStagesAndConvertersInEveryState)
{
    StopStates_Get() = {};
    for (const SScenario& scenario : Scenarios_Get())
    {
        for (std::uint64_t number = 0; scenario.name.ends_with("-stopped") && number < 200; ++number)
        {
            EXPECT_TRUE(Schedule_Run(scenario, Schedule_Setup(1, number)).findings.empty());
        }
    }
    EXPECT_THAT(StopStates_Get().stage, testing::Each(testing::Gt(0)));
    EXPECT_THAT(StopStates_Get().converter, testing::Each(testing::Gt(0)));
}
