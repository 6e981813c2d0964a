// The simulated world itself: what it finds, and what time and exceptions are in it.
#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "Scenarios/Scenario.h"

#include "Platform/Thread/CustomCriticalSection.h"
#include "Platform/Thread/CustomManualResetEvent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace
{

constexpr EStrand allStrands[] = {EStrand::Fiber, EStrand::Thread};

std::vector<std::string> Findings_Of(void (*run)(), EStrand strand = EStrand::Fiber, std::uint64_t seed = 1)
{
    SSimulationSetup setup;
    setup.seed = seed;
    setup.strand = strand;
    return Schedule_Run({"test", "", 1, run}, setup).findings;
}

// Two threads take two locks in different orders.
void Locks_Cross()
{
    CCustomCriticalSection first;
    CCustomCriticalSection second;
    CScenarioThread other("other",
                          [&]
                          {
                              const CEnterLeaveCriticalSection outer(second);
                              const CEnterLeaveCriticalSection inner(first);
                          });
    {
        const CEnterLeaveCriticalSection outer(first);
        const CEnterLeaveCriticalSection inner(second);
    }
    other.Join();
}

} // namespace

TEST(Simulation, FindsADeadlockUnderEveryPolicyAndAgainWithTheSameSeed)
{
    const SScenario scenario{"test", "", 1, &Locks_Cross};
    for (const EPolicy policy : allPolicies)
    {
        SSimulationSetup setup;
        setup.policy = policy;
        SSimulationResult found;
        for (setup.seed = 1; setup.seed <= 1000 && found.findings.empty(); ++setup.seed)
        {
            found = Schedule_Run(scenario, setup);
        }
        --setup.seed;
        ASSERT_EQ(found.findings.size(), 1U) << Policy_Name(policy);
        EXPECT_THAT(found.findings[0], HasSubstr("deadlock"));
        EXPECT_THAT(found.findings[0], HasSubstr("other"));
        EXPECT_TRUE(found.bAbandoned);
        for (const EStrand strand : allStrands)
        {
            setup.strand = strand;
            const SSimulationResult again = Schedule_Run(scenario, setup);
            EXPECT_EQ(again.findings, found.findings);
            EXPECT_EQ(again.traceHash, found.traceHash);
        }
    }
}

TEST(Simulation, FindsThreadsAndMemoryThatAreLeft)
{
    EXPECT_THAT(Findings_Of([] { SimulatedThread_Create("left", [] { return 0UL; }); }),
                ElementsAre(HasSubstr("the scenario ends before its threads")));
    EXPECT_THAT(Findings_Of(
                    []
                    {
                        static std::vector<std::unique_ptr<int>> kept; // the leak checker is not to see it
                        kept.push_back(std::make_unique<int>());
                    }),
                ElementsAre(HasSubstr("memory is left")));
    EXPECT_THAT(Findings_Of([] { throw std::runtime_error("no"); }), ElementsAre(HasSubstr("an exception leaves")));
}

TEST(Simulation, FindsWorkersEventsAndLocksThatAreDestroyedInUse)
{
    EXPECT_THAT(Findings_Of(
                    []
                    {
                        auto* thread = SimulatedThread_Create("running", [] { return Sleep(10), 0UL; });
                        SimulatedThread_Close(*thread);
                    }),
                ElementsAre(HasSubstr("destroyed while its thread runs")));
    EXPECT_THAT(Findings_Of(
                    []
                    {
                        auto event = std::make_unique<CCustomManualResetEvent>(true);
                        const CScenarioThread waiting("waiting", [&event = *event] { event.Wait(1000, 0); });
                        Sleep(1);
                        event.reset();
                    }),
                ElementsAre(HasSubstr("while a thread waits on it")));
    EXPECT_THAT(Findings_Of(
                    []
                    {
                        auto lock = std::make_unique<CCustomCriticalSection>();
                        const CScenarioThread holding("holding",
                                                      [&lock = *lock]
                                                      {
                                                          const CEnterLeaveCriticalSection guard(lock);
                                                          Sleep(1000);
                                                      });
                        Sleep(1);
                        lock.reset();
                    }),
                ElementsAre(HasSubstr("while it is held")));
}

TEST(Simulation, TimePassesOnlyWhenNobodyCanRun)
{
    for (const EStrand strand : allStrands)
    {
        EXPECT_THAT(Findings_Of(
                        []
                        {
                            CCustomManualResetEvent event(true);
                            CScenarioThread sleeper("sleeper",
                                                    [&]
                                                    {
                                                        Sleep(3600000);
                                                        event.Set();
                                                    });
                            Expect(!event.Wait(100, 0), "the event is set too soon");
                            ExpectEqual(Simulation_NowMs(), 100, "ms after a wait in vain");
                            Expect(event.Wait(4000000, 0), "the event is not set");
                            ExpectEqual(Simulation_NowMs(), 3600000, "ms after the hour");
                            Dawdle(100000);
                            ExpectEqual(Simulation_NowMs(), 3600000, "ms after work");
                        },
                        strand),
                    IsEmpty());
    }
}

TEST(Simulation, TimePassesWhenThoseWhoCanRunOnlyLookAtWhatDoesNotChange)
{
    for (const EPolicy policy : allPolicies)
    {
        SSimulationSetup setup;
        setup.policy = policy;
        const auto result = Schedule_Run({"test", "", 1,
                                          []
                                          {
                                              CCustomManualResetEvent over(true);
                                              CScenarioThread sleeper("sleeper",
                                                                      [&]
                                                                      {
                                                                          Sleep(3600000);
                                                                          over.Set();
                                                                      });
                                              while (!over.Wait(0, 0))
                                              {
                                              }
                                              ExpectEqual(Simulation_NowMs(), 3600000, "ms");
                                          }},
                                         setup);
        EXPECT_THAT(result.findings, IsEmpty());
        EXPECT_LT(result.pointCount, 20000U);
    }
}

TEST(Simulation, ThreadsHaveTheirOwnExceptions)
{
    for (const EStrand strand : allStrands)
    {
        for (std::uint64_t seed = 1; seed <= 50; ++seed)
        {
            EXPECT_THAT(Findings_Of(
                            []
                            {
                                const auto Throw = [](int number)
                                {
                                    try
                                    {
                                        throw number;
                                    }
                                    catch (int)
                                    {
                                        Dawdle(20);
                                        try
                                        {
                                            throw; // the one that is handled
                                        }
                                        catch (int caught)
                                        {
                                            ExpectEqual(caught, number, "an exception");
                                        }
                                    }
                                };
                                const CScenarioThread other("other", [&] { Throw(2); });
                                Throw(1);
                            },
                            strand, seed),
                        IsEmpty());
        }
    }
}

TEST(Simulation, APauseLetsNobodyElseRun)
{
    for (std::uint64_t seed = 1; seed <= 50; ++seed)
    {
        EXPECT_THAT(Findings_Of(
                        []
                        {
                            bool bOtherRan = false;
                            const CScenarioThread other("other",
                                                        [&]
                                                        {
                                                            Dawdle(30);
                                                            bOtherRan = true;
                                                        });
                            Dawdle(20);
                            const CSimulationPause pause;
                            const bool bBefore = bOtherRan;
                            Dawdle(100);
                            Expect(bBefore == bOtherRan, "somebody else ran");
                        },
                        EStrand::Fiber, seed),
                    IsEmpty());
    }
}
