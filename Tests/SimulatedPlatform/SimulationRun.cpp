// Runs schedules: many, to look for findings, or a single one again. SimulationRun --help says how.
#include "Scenarios/Scenario.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace
{

constexpr const char* usage =
    "usage: SimulationRun [--schedules N] [--seed S] [--scenario NAME] [--policy POLICY] [--strands KIND] [--trace]\n"
    "                     [--first]\n"
    "\n"
    "Runs the library in simulated worlds, each scenario until a schedule shows something that should not be.\n"
    "\n"
    "  --schedules N    how many, over all chosen scenarios; 10000. With --policy and without this: 1\n"
    "  --seed S         the first one's; the others' follow. 1\n"
    "  --scenario NAME  one of those that --list shows, or all\n"
    "  --policy POLICY  random, bursts, priorities; or all, in turns\n"
    "  --strands KIND   what threads are made of: fibers, or threads (slow; for debuggers)\n"
    "  --trace          prints every step of the last schedule\n"
    "  --first          ends with the first finding, whatever scenarios are left\n"
    "  --list           prints the scenarios\n"
    "\n"
    "Exit status: 0 nothing was found, 1 something was, 2 the arguments are wrong.\n";

struct SArguments
{
    std::optional<std::uint64_t> schedules;
    std::uint64_t seed = 1;
    std::string scenario = "all";
    std::string policy = "all";
    EStrand strand = EStrand::Fiber;
    bool bTrace = false;
    bool bFirst = false;
    bool bList = false;
};

[[noreturn]] void Usage_Exit(const std::string& reason)
{
    std::fprintf(stderr, "SimulationRun: %s\n%s", reason.c_str(), usage);
    std::exit(2);
}

std::uint64_t Number_Read(const char* text)
{
    char* end = nullptr;
    const unsigned long long number = std::strtoull(text, &end, 10);
    if (*text < '0' || *text > '9' || *end != '\0')
    {
        Usage_Exit(std::string("not a number: ") + text);
    }
    return number;
}

SArguments Arguments_Read(int count, char** arguments)
{
    SArguments read;
    for (int i = 1; i < count; ++i)
    {
        const std::string name = arguments[i];
        const auto Value = [&]
        {
            if (++i >= count)
            {
                Usage_Exit(name + " needs a value");
            }
            return arguments[i];
        };
        if (name == "--schedules")
        {
            read.schedules = Number_Read(Value());
        }
        else if (name == "--seed")
        {
            read.seed = Number_Read(Value());
        }
        else if (name == "--scenario")
        {
            read.scenario = Value();
        }
        else if (name == "--policy")
        {
            read.policy = Value();
        }
        else if (name == "--strands")
        {
            const std::string kind = Value();
            if (kind != "fibers" && kind != "threads")
            {
                Usage_Exit("no such strands: " + kind);
            }
            read.strand = kind == "threads" ? EStrand::Thread : EStrand::Fiber;
        }
        else if (name == "--trace")
        {
            read.bTrace = true;
        }
        else if (name == "--first")
        {
            read.bFirst = true;
        }
        else if (name == "--list")
        {
            read.bList = true;
        }
        else if (name == "--help")
        {
            std::fputs(usage, stdout);
            std::exit(0);
        }
        else
        {
            Usage_Exit("no such option: " + name);
        }
    }
    return read;
}

std::optional<EPolicy> Policy_Find(const std::string& name)
{
    for (const EPolicy policy : allPolicies)
    {
        if (name == Policy_Name(policy))
        {
            return policy;
        }
    }
    if (name != "all")
    {
        Usage_Exit("no such policy: " + name);
    }
    return std::nullopt;
}

class CRun
{
public:
    explicit CRun(const SArguments& arguments)
        : m_arguments(arguments),
          m_policy(Policy_Find(arguments.policy)),
          m_total(arguments.schedules.value_or(m_policy ? 1 : 10000))
    {
    }

    // False: something was found. Scenarios take turns, so that a long run is a little of everything at any time.
    bool Go()
    {
        const auto begin = std::chrono::steady_clock::now();
        for (const SScenario& scenario : Scenarios_Get())
        {
            const bool bAll = m_arguments.scenario == "all";
            if (bAll || scenario.name == m_arguments.scenario)
            {
                m_turns.push_back({&scenario, bAll ? Schedule_Count(scenario, m_total) : m_total});
            }
        }
        if (m_turns.empty())
        {
            Usage_Exit("no such scenario: " + m_arguments.scenario);
        }
        for (std::uint64_t number = 0; number < m_total && !(m_bFound && m_arguments.bFirst); ++number)
        {
            for (STurn& turn : m_turns)
            {
                if (number < turn.count && !(m_bFound && m_arguments.bFirst))
                {
                    Schedule_Go(turn, number);
                }
            }
        }
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        std::printf("%llu schedules of %llu points, %.1f s: %s\n", static_cast<unsigned long long>(m_runCount),
                    static_cast<unsigned long long>(m_pointCount), time.count(),
                    m_bFound ? "something is wrong" : "nothing was found");
        return !m_bFound;
    }

private:
    struct STurn
    {
        const SScenario* scenario;
        std::uint64_t count; // schedules; none any more after a finding
    };

    void Schedule_Go(STurn& turn, std::uint64_t number)
    {
        SSimulationSetup setup = Schedule_Setup(m_arguments.seed, number);
        setup.policy = m_policy.value_or(setup.policy);
        setup.strand = m_arguments.strand;
        setup.bKeepTrace = m_arguments.bTrace && number + 1 == turn.count;
        const SSimulationResult result = Schedule_Run(*turn.scenario, setup);
        ++m_runCount;
        m_pointCount += result.pointCount;
        for (const SStep& step : result.trace)
        {
            std::printf("thread %d %s\n", step.thread, Point_Name(step.point));
        }
        if (!result.findings.empty())
        {
            m_bFound = true;
            turn.count = 0;
            std::printf("%s, after %llu schedules:\n", turn.scenario->name.c_str(),
                        static_cast<unsigned long long>(m_runCount));
            for (const std::string& finding : result.findings)
            {
                std::printf("  %s\n", finding.c_str());
            }
            std::printf("  again: SimulationRun %s\n", Schedule_Describe(*turn.scenario, setup).c_str());
            std::fflush(stdout);
        }
    }

    const SArguments& m_arguments;
    std::optional<EPolicy> m_policy;
    std::uint64_t m_total;
    std::vector<STurn> m_turns;
    bool m_bFound = false;
    std::uint64_t m_runCount = 0;
    std::uint64_t m_pointCount = 0;
};

} // namespace

int main(int count, char** arguments)
{
    const SArguments read = Arguments_Read(count, arguments);
    if (read.bList)
    {
        for (const SScenario& scenario : Scenarios_Get())
        {
            std::printf("%-24s %s\n", scenario.name.c_str(), scenario.title.c_str());
        }
        return 0;
    }
    CrashReport_Install();
    const bool bClean = CRun(read).Go();
    std::fflush(stdout);
    std::_Exit(bClean ? 0 : 1); // threads that were left behind cannot be joined
}
