// The converter from outside, with real threads: order, lines in flight, scratch objects, stopping, and the time that a
// band costs.
#include "Tests/Unit2Board/ConverterSupport.h"

#include <map>
#include <set>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

using namespace std::chrono_literals;

// The units of each line's calls, in the order of the calls; checks that one thread did the whole line.
std::map<int, std::vector<int>> Units_OfLines(const std::vector<SLineCall>& calls)
{
    std::map<int, std::vector<int>> units;
    std::map<int, std::thread::id> threads;
    for (const SLineCall& call : calls)
    {
        units[call.line].push_back(call.param.m_unitIndex);
        EXPECT_EQ(threads.emplace(call.line, call.thread).first->second, call.thread);
    }
    return units;
}

} // namespace

TEST(ConverterThread, MapsEveryLineOnceFromAllSourceBandsInArrayOrder)
{
    for (const int generatorCount : {1, 2, 3, 16})
    {
        const CLogCapture log;
        SBandJob job(3, 100);
        std::swap(job.pointers[0], job.pointers[1]); // units 11, 10, 12
        CWatchedConverter converter;
        ASSERT_TRUE(job.Create(converter, generatorCount));
        ASSERT_TRUE(converter.WaitExit(testPatienceMs));
        EXPECT_TRUE(converter.IsThreadSuccess());
        EXPECT_EQ(converter.m_stopCount, 1);

        const auto units = Units_OfLines(job.map.Calls());
        ASSERT_EQ(units.size(), 100U);
        EXPECT_EQ(units.begin()->first, 0);
        EXPECT_EQ(units.rbegin()->first, 99);
        for (const auto& [line, order] : units)
        {
            EXPECT_THAT(order, ElementsAre(11, 10, 12)) << "line " << line;
        }
        EXPECT_EQ(job.map.ScratchCount() + static_cast<std::size_t>(job.map.NullReleaseCount()),
                  static_cast<std::size_t>(generatorCount));
        job.map.Scratches_Expect();
        EXPECT_THAT(log.Summary(), IsEmpty());
    }
}

TEST(ConverterThread, NeverHasMoreThanTwentyLinesInFlightAndHandsOutTheNextAsOneComesBack)
{
    SBandJob job(1, 100);
    CTurnstile turnstile;
    job.map.m_script = [&](const SLineCall&) { return turnstile.Pass(); };
    CWatchedConverter converter;
    ASSERT_TRUE(job.Create(converter, 32)); // more generators than lines in flight
    for (int entered = 20; entered < 24; ++entered)
    {
        ASSERT_TRUE(turnstile.WaitEntered(entered));
        std::this_thread::sleep_for(20ms);
        EXPECT_EQ(turnstile.EnteredCount(), entered);
        turnstile.Admit(1);
    }
    turnstile.Admit(100);
    EXPECT_TRUE(converter.WaitExit(testPatienceMs));
    EXPECT_EQ(job.map.CallCount(), 100U);
}

TEST(ConverterThread, OneGeneratorDoesOneLineAfterTheOtherInTheirOrder)
{
    SBandJob job(2, 60);
    std::atomic<int> insideCount{0};
    std::atomic<bool> bOverlap{false};
    job.map.m_script = [&](const SLineCall&)
    {
        bOverlap = bOverlap || ++insideCount != 1;
        std::this_thread::yield();
        --insideCount;
        return true;
    };
    CWatchedConverter converter;
    ASSERT_TRUE(job.Create(converter, 1));
    ASSERT_TRUE(converter.WaitExit(testPatienceMs));
    EXPECT_FALSE(bOverlap);
    const auto calls = job.map.Calls();
    ASSERT_EQ(calls.size(), 120U);
    for (std::size_t i = 0; i < calls.size(); ++i)
    {
        EXPECT_EQ(calls[i].line, static_cast<int>(i / 2));
        EXPECT_EQ(calls[i].thread, calls[0].thread);
    }
}

TEST(ConverterThread, OneGeneratorHasTheOtherNineteenLinesQueued)
{
    SBandJob job(1, 40);
    CTurnstile turnstile;
    job.map.m_script = [&](const SLineCall&) { return turnstile.Pass(); };
    CWatchedConverter converter;
    ASSERT_TRUE(job.Create(converter, 1));
    ASSERT_TRUE(turnstile.WaitEntered(1));
    EXPECT_TRUE(Eventually([&] { return !SAccess::LineBuffer(converter)->EmptyFIFO()->HasDataEvent().Wait(0, 0); }));
    EXPECT_EQ(turnstile.EnteredCount(), 1);
    turnstile.Admit(40);
    EXPECT_TRUE(converter.WaitExit(testPatienceMs));
    EXPECT_EQ(job.map.CallCount(), 40U);
}

TEST(ConverterThread, EveryGeneratorMakesAScratchObjectOfItsOwn)
{
    SBandJob job(1, 8);
    CTurnstile turnstile;
    job.map.m_script = [&](const SLineCall&) { return turnstile.Pass(); };
    CWatchedConverter converter;
    ASSERT_TRUE(job.Create(converter, 4));
    ASSERT_TRUE(turnstile.WaitEntered(4)); // each of the four holds a line
    turnstile.Admit(8);
    ASSERT_TRUE(converter.WaitExit(testPatienceMs));
    std::set<const void*> scratches;
    std::set<std::thread::id> threads;
    for (const SLineCall& call : job.map.Calls())
    {
        scratches.insert(call.param.m_customParam);
        threads.insert(call.thread);
    }
    EXPECT_EQ(scratches.size(), 4U);
    EXPECT_EQ(threads.size(), 4U);
    EXPECT_EQ(job.map.ScratchCount(), 4U);
    job.map.Scratches_Expect();
}

TEST(ConverterThread, KeepsACopyOfTheCallersArray)
{
    SBandJob job(2, 30);
    CTurnstile turnstile;
    job.map.m_script = [&](const SLineCall&) { return turnstile.Pass(); };
    CWatchedConverter converter;
    ASSERT_TRUE(job.Create(converter, 2));
    job.pointers.assign(2, nullptr);
    turnstile.Admit(60);
    EXPECT_TRUE(converter.WaitExit(testPatienceMs));
    EXPECT_EQ(job.map.CallCount(), 60U);
}

TEST(ConverterThread, WithoutSourceBandsTheBandIsFinishedUntouched)
{
    SBandJob job(0, 50);
    CWatchedConverter converter;
    ASSERT_TRUE(converter.Create(3, nullptr, 0, job.dst, job.map));
    EXPECT_TRUE(converter.WaitExit(testPatienceMs));
    EXPECT_TRUE(converter.IsThreadSuccess());
    EXPECT_EQ(job.map.CallCount(), 0U);
    EXPECT_EQ(SAccess::FinishedCount(converter), 50);
}

TEST(ConverterThread, LinesBeyondTheEndOfAShortSourceBandAreSkippedWithARecordEach)
{
    const CLogCapture log;
    SBandJob job(2, 30);
    ASSERT_TRUE(job.sources[0]->Create(24, 25, 1, 1));
    CWatchedConverter converter;
    ASSERT_TRUE(job.Create(converter, 4));
    EXPECT_TRUE(converter.WaitExit(testPatienceMs));
    EXPECT_TRUE(converter.IsThreadSuccess());
    EXPECT_EQ(job.map.CallCount(), 55U);
    EXPECT_THAT(Records_Text(log), ElementsAre("2 failure @Unit2Board_Line:144 MapBandData_Line_OneInput",
                                               "2 failure @Unit2Board_Line:144 MapBandData_Line_OneInput",
                                               "2 failure @Unit2Board_Line:144 MapBandData_Line_OneInput",
                                               "2 failure @Unit2Board_Line:144 MapBandData_Line_OneInput",
                                               "2 failure @Unit2Board_Line:144 MapBandData_Line_OneInput"));
}

TEST(ConverterThread, ABandWithoutLinesIsFinishedAtOnce)
{
    const CLogCapture log;
    for (const int generatorCount : {0, 1, 4})
    {
        SBandJob job(1, 0);
        CWatchedConverter converter;
        ASSERT_TRUE(job.Create(converter, generatorCount));
        EXPECT_TRUE(converter.WaitExit(testPatienceMs));
        EXPECT_TRUE(converter.IsThreadSuccess());
        EXPECT_EQ(converter.m_loopCount, 3);
        EXPECT_EQ(job.map.CallCount(), 0U);
    }
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST(ConverterThread, WithoutGeneratorsABandWithLinesIsNeverFinished)
{
    const CLogCapture log;
    for (const int height : {5, 30}) // with free elements left, and without
    {
        SBandJob job(1, height);
        CWatchedConverter converter;
        ASSERT_TRUE(job.Create(converter, 0));
        EXPECT_FALSE(converter.WaitExit(150));
        converter.Stop();
        EXPECT_TRUE(converter.WaitExit(withoutLimit));
        EXPECT_TRUE(converter.IsThreadSuccess());
        EXPECT_EQ(job.map.CallCount(), 0U);
    }
    EXPECT_THAT(Records_Text(log),
                ElementsAre("2 failure @Unit2Board:227 WaitExit", "2 failure @Unit2Board:227 WaitExit"));
}

TEST(ConverterThread, TheOwnersStopInTheMiddleOfABandEndsItThere)
{
    const CLogCapture log;
    for (int i = 0; i < 20; ++i)
    {
        SBandJob job(2, 1000);
        CTurnstile turnstile;
        job.map.m_script = [&](const SLineCall&) { return turnstile.Pass(); };
        CWatchedConverter converter;
        ASSERT_TRUE(job.Create(converter, 3));
        ASSERT_TRUE(turnstile.WaitEntered(3));
        turnstile.Admit(100 + i); // half of them stop between the two sources of a line
        ASSERT_TRUE(turnstile.WaitEntered(100 + i + 3));
        // One call after the other, so that a stop that comes late still comes in the middle.
        std::atomic<bool> bStopped = false;
        std::thread release(
            [&]
            {
                while (!bStopped)
                {
                    std::this_thread::sleep_for(1ms);
                    turnstile.Admit(1);
                }
            });
        converter.Stop();
        const auto callCount = job.map.CallCount();
        EXPECT_TRUE(converter.WaitExit(withoutLimit));
        bStopped = true;
        release.join();
        EXPECT_TRUE(converter.IsThreadSuccess());
        EXPECT_EQ(job.map.CallCount(), callCount); // the generators had ended when Stop returned
        EXPECT_LT(callCount, 2000U);
        for (const auto& [line, units] : Units_OfLines(job.map.Calls()))
        {
            EXPECT_THAT(units, ElementsAre(10, 11)) << "line " << line; // a line that was begun was finished
        }
        job.map.Scratches_Expect();
    }
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST(ConverterThread, TheOwnerAndTheConverterMayStopItAtTheSameTime)
{
    const CLogCapture log;
    for (int i = 0; i < 200; ++i)
    {
        const int height = 20 + i % 5;
        SBandJob job(1, height);
        CWatchedConverter converter;
        ASSERT_TRUE(job.Create(converter, 1 + i % 4));
        while (job.map.CallCount() + static_cast<std::size_t>(i % 3) < static_cast<std::size_t>(height))
        {
            std::this_thread::yield();
        }
        converter.Stop();
        EXPECT_TRUE(converter.WaitExit(withoutLimit));
        EXPECT_TRUE(converter.IsThreadSuccess());
        job.map.Scratches_Expect();
    }
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST(ConverterThread, SeveralThreadsMayStopItAtTheSameTime)
{
    for (int i = 0; i < 20; ++i)
    {
        SBandJob job(1, 100'000);
        CWatchedConverter converter;
        ASSERT_TRUE(job.Create(converter, 2));
        std::vector<std::thread> stoppers;
        for (int t = 0; t < 4; ++t)
        {
            stoppers.emplace_back([&] { converter.Stop(); });
        }
        for (auto& stopper : stoppers)
        {
            stopper.join();
        }
        EXPECT_TRUE(converter.WaitExit(withoutLimit));
        EXPECT_LT(job.map.CallCount(), 100'000U);
    }
}

TEST(ConverterThread, AStopBeforeCreateDoesNotCount)
{
    SBandJob job(1, 30);
    CWatchedConverter converter;
    converter.Stop();
    EXPECT_TRUE(converter.WaitExit(0));
    ASSERT_TRUE(job.Create(converter, 2));
    EXPECT_TRUE(converter.WaitExit(testPatienceMs));
    EXPECT_EQ(job.map.CallCount(), 30U);
}

TEST(ConverterThread, AStopAfterTheEndAndAnotherOneChangeNothing)
{
    const CLogCapture log;
    SBandJob job(1, 30);
    CUnit2Board converter;
    ASSERT_TRUE(job.Create(converter, 2));
    EXPECT_TRUE(converter.WaitExit(testPatienceMs));
    converter.Stop();
    converter.Stop();
    EXPECT_TRUE(converter.WaitExit(0));
    EXPECT_TRUE(converter.IsThreadSuccess());
    EXPECT_EQ(job.map.CallCount(), 30U);
    EXPECT_THAT(log.Summary(), IsEmpty());
}

TEST(ConverterThread, CanBeDestroyedAsSoonAsWaitExitReturns)
{
    SBandJob job(1, 25);
    for (int i = 0; i < 200; ++i)
    {
        auto converter = std::make_unique<CUnit2Board>();
        ASSERT_TRUE(job.Create(*converter, 1 + i % 4));
        ASSERT_TRUE(converter->WaitExit(testPatienceMs));
        converter.reset();
    }
    EXPECT_EQ(job.map.CallCount(), 5000U);
}

// Sitting through one wait would show as 100 ms in each of these bands.
TEST(ConverterThread, BandsOfOneLineDoNotSitThroughAnyWait)
{
    SBandJob job(1, 1);
    constexpr int bandCount = 200;
    const auto median = MedianRound_Get(bandCount,
                                        [&](int /*round*/)
                                        {
                                            const CStopWatch watch;
                                            CUnit2Board converter;
                                            EXPECT_TRUE(job.Create(converter, 4)); // three generators without a line
                                            EXPECT_TRUE(converter.WaitExit(testPatienceMs));
                                            return watch.Elapsed();
                                        });
    EXPECT_LT(median, 40ms);
    EXPECT_EQ(job.map.CallCount(), static_cast<std::size_t>(bandCount));
}

TEST(ConverterThread, AStopDoesNotSitThroughTheConvertersWait)
{
    const auto median = MedianRound_Get(stopRounds,
                                        [](int /*round*/)
                                        {
                                            SBandJob job(1, 30);
                                            CWatchedConverter converter;
                                            EXPECT_TRUE(job.Create(converter, 0));
                                            std::this_thread::sleep_for(
                                                3ms); // it has handed out 20 lines and waits for one to come back
                                            const CStopWatch watch;
                                            converter.Stop();
                                            EXPECT_TRUE(converter.WaitExit(withoutLimit));
                                            return watch.Elapsed();
                                        });
    EXPECT_LT(median, stopBound);
}
