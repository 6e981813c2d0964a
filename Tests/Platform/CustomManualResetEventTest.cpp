// The manual-reset event: signals, time-outs, and waits that a stop request ends early.
#include "Platform/Thread/CustomManualResetEvent.h"
#include "Tests/Platform/ScriptedWorker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace
{

using namespace std::chrono_literals;

// A wait that should end early gets this time-out; that it ended early shows against half of it.
constexpr unsigned long longWaitMs = 60'000;
constexpr std::chrono::milliseconds early{longWaitMs / 2};

// A wait that should last gets this time-out.
constexpr unsigned long shortWaitMs = 50;
constexpr std::chrono::milliseconds shortWait{shortWaitMs};

} // namespace

TEST(CustomManualResetEvent, StartsAsItsArgumentSays)
{
    EXPECT_TRUE(CCustomManualResetEvent(true).Wait(0, 0));
    EXPECT_FALSE(CCustomManualResetEvent(false).Wait(0, 0));
}

TEST(CustomManualResetEvent, StaysSetUntilItIsReset)
{
    CCustomManualResetEvent event(false);
    event.Set();
    EXPECT_TRUE(event.Wait(0, 0));
    EXPECT_TRUE(event.Wait(0, 0));
    EXPECT_TRUE(event.Wait(10, 0));
    event.Set();
    event.Reset();
    EXPECT_FALSE(event.Wait(0, 0));
    event.Reset();
    EXPECT_FALSE(event.Wait(0, 0));
}

TEST(CustomManualResetEvent, AWaitLastsAtLeastItsTimeOutWhenNothingHappens)
{
    CCustomManualResetEvent event(false);
    for (const unsigned long timeoutMs : {1UL, 20UL, 60UL})
    {
        const CStopWatch watch;
        EXPECT_FALSE(event.Wait(timeoutMs, 0));
        EXPECT_GE(watch.Elapsed(), std::chrono::milliseconds(timeoutMs));
    }
}

TEST(CustomManualResetEvent, AWaitOnASetEventReturnsAtOnce)
{
    CCustomManualResetEvent event(true);
    const CStopWatch watch;
    EXPECT_TRUE(event.Wait(longWaitMs, 0));
    EXPECT_LT(watch.Elapsed(), early);
}

TEST(CustomManualResetEvent, ASetReleasesEveryThreadThatWaits)
{
    for (const unsigned long timeoutMs : {longWaitMs, CCustomManualResetEvent::waitWithoutLimit})
    {
        CCustomManualResetEvent event(false);
        std::atomic<int> releasedCount{0};
        const CStopWatch watch;
        std::vector<std::thread> waiters;
        for (int i = 0; i < 8; ++i)
        {
            waiters.emplace_back([&] { releasedCount += event.Wait(timeoutMs, 0) ? 1 : 0; });
        }
        std::this_thread::sleep_for(10ms);
        EXPECT_EQ(releasedCount, 0);
        event.Set();
        for (auto& waiter : waiters)
        {
            waiter.join();
        }
        EXPECT_EQ(releasedCount, 8);
        EXPECT_LT(watch.Elapsed(), early);
    }
}

TEST(CustomManualResetEvent, AnyTimeOutFromAllBitsSetUpwardsIsWithoutLimit)
{
    CCustomManualResetEvent event(false);
    std::atomic<bool> bReleased{false};
    std::thread waiter([&] { bReleased = event.Wait(~0UL, 0); });
    std::this_thread::sleep_for(5ms);
    EXPECT_FALSE(bReleased);
    event.Set();
    waiter.join();
    EXPECT_TRUE(bReleased);
}

TEST(CustomManualResetEvent, DestructionReleasesTheThreadsThatWait)
{
    for (int round = 0; round < 20; ++round)
    {
        auto event = std::make_unique<CCustomManualResetEvent>(false);
        std::atomic<int> aboutToWaitCount{0};
        std::atomic<int> releasedCount{0};
        std::vector<std::thread> waiters;
        for (int i = 0; i < 4; ++i)
        {
            waiters.emplace_back(
                [&, pEvent = event.get()]
                {
                    ++aboutToWaitCount;
                    releasedCount += pEvent->Wait(longWaitMs, 0) ? 1 : 0;
                });
        }
        while (aboutToWaitCount < 4)
        {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(5ms); // until they do wait
        event.reset();
        for (auto& waiter : waiters)
        {
            waiter.join();
        }
        EXPECT_EQ(releasedCount, 4);
    }
}

// Waits on a worker.

TEST(CustomManualResetEvent, AStopRequestEndsAWaitInProgressAsIfTimedOut)
{
    CCustomManualResetEvent event(false);
    CTestSignal entered;
    std::atomic<bool> bResult{true};
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        entered.Raise();
        bResult = event.Wait(longWaitMs, 0);
        return true;
    };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(entered.Wait());
    std::this_thread::sleep_for(5ms);
    const CStopWatch watch;
    ASSERT_TRUE(worker.StopAndWait());
    EXPECT_LT(watch.Elapsed(), early);
    EXPECT_FALSE(bResult);
    EXPECT_EQ(worker.m_loopCount, 1);
}

TEST(CustomManualResetEvent, AStopRequestEndsAWaitWithoutLimit)
{
    CCustomManualResetEvent event(false);
    CTestSignal entered;
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        entered.Raise();
        event.Wait(CCustomManualResetEvent::waitWithoutLimit, 0);
        return true;
    };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(entered.Wait());
    EXPECT_TRUE(worker.StopAndWait());
}

TEST(CustomManualResetEvent, AStopRequestEndsAWaitInPrepare)
{
    CCustomManualResetEvent event(false);
    CTestSignal entered;
    CScriptedWorker worker;
    worker.m_prepare = [&]
    {
        entered.Raise();
        event.Wait(longWaitMs, 0);
        return true;
    };
    const CStopWatch watch;
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(entered.Wait());
    ASSERT_TRUE(worker.StopAndWait());
    EXPECT_LT(watch.Elapsed(), early);
}

TEST(CustomManualResetEvent, AWaitThatBeginsAfterTheStopRequestReturnsAtOnceUnlessTheEventIsSet)
{
    for (const bool bInPrepare : {true, false})
    {
        CCustomManualResetEvent event(false);
        CCustomManualResetEvent setEvent(true);
        CTestSignal entered;
        CTestSignal stopped;
        std::vector<bool> results;
        const auto step = [&]
        {
            entered.Raise();
            stopped.Wait();
            for (CCustomManualResetEvent* waited : {&event, &setEvent})
            {
                results.push_back(waited->Wait(0, 0));
                results.push_back(waited->Wait(longWaitMs, 0));
            }
            return true;
        };
        CScriptedWorker worker;
        (bInPrepare ? worker.m_prepare : worker.m_oneLoop) = step;
        const CStopWatch watch;
        ASSERT_TRUE(worker.Start("Worker"));
        ASSERT_TRUE(entered.Wait());
        worker.Stop();
        stopped.Raise();
        ASSERT_TRUE(worker.WaitExit(testPatienceMs));
        EXPECT_EQ(results, (std::vector<bool>{false, false, true, true}));
        EXPECT_LT(watch.Elapsed(), early);
    }
}

TEST(CustomManualResetEvent, AWorkerThatStopsItselfKeepsTheWaitsOfThatStep)
{
    for (const bool bStoppedByAnotherToo : {false, true})
    {
        CCustomManualResetEvent event(false);
        CTestSignal waits;
        std::vector<std::chrono::milliseconds> elapsed;
        CScriptedWorker worker;
        const auto waitOnce = [&]
        {
            const CStopWatch watch;
            EXPECT_FALSE(event.Wait(shortWaitMs, 0));
            elapsed.push_back(watch.Elapsed());
        };
        worker.m_oneLoop = [&]
        {
            worker.Stop();
            waits.Raise();
            waitOnce();
            waitOnce();
            return true;
        };
        worker.m_finally = waitOnce;
        ASSERT_TRUE(worker.Start("Worker"));
        ASSERT_TRUE(waits.Wait());
        if (bStoppedByAnotherToo)
        {
            worker.Stop();
        }
        ASSERT_TRUE(worker.WaitExit(testPatienceMs));
        EXPECT_EQ(worker.m_loopCount, 1);
        ASSERT_EQ(elapsed.size(), 3U);
        EXPECT_GE(*std::min_element(elapsed.begin(), elapsed.end()), shortWait);
    }
}

TEST(CustomManualResetEvent, AWorkerThatStopsItselfStillSeesTheSignalThatItWaitsFor)
{
    CCustomManualResetEvent event(false);
    CTestSignal waits;
    bool bSet = false;
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        worker.Stop();
        waits.Raise();
        bSet = event.Wait(longWaitMs, 0);
        return true;
    };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(waits.Wait());
    event.Set();
    ASSERT_TRUE(worker.WaitExit(testPatienceMs));
    EXPECT_TRUE(bSet);
}

// The request comes from another thread: during the loop, during the wait in Finally, or both.
TEST(CustomManualResetEvent, WaitsInFinallyLastWheneverTheStopRequestComes)
{
    for (const bool bDuringTheLoop : {true, false})
    {
        CCustomManualResetEvent event(false);
        CTestSignal looped;
        CTestSignal inFinally;
        std::chrono::milliseconds elapsed[2] = {};
        CScriptedWorker worker;
        worker.m_oneLoop = [&]
        {
            looped.Raise();
            return bDuringTheLoop && !event.Wait(longWaitMs, 0);
        };
        worker.m_finally = [&]
        {
            inFinally.Raise();
            for (auto& time : elapsed)
            {
                const CStopWatch watch;
                EXPECT_FALSE(event.Wait(shortWaitMs, 0));
                time = watch.Elapsed();
            }
        };
        const CStopWatch watch;
        ASSERT_TRUE(worker.Start("Worker"));
        ASSERT_TRUE(looped.Wait());
        if (bDuringTheLoop)
        {
            worker.Stop();
        }
        ASSERT_TRUE(inFinally.Wait());
        worker.Stop();
        ASSERT_TRUE(worker.WaitExit(testPatienceMs));
        EXPECT_GE(elapsed[0], shortWait);
        EXPECT_GE(elapsed[1], shortWait);
        EXPECT_LT(watch.Elapsed(), early); // the wait of the loop ended
    }
}

TEST(CustomManualResetEvent, ASetFollowedByAStopBeforeTheWaiterWakesIsStillReportedAsSet)
{
    for (int round = 0; round < 500; ++round)
    {
        CCustomManualResetEvent event(false);
        CTestSignal entered;
        bool bResult = false;
        CScriptedWorker worker;
        worker.m_oneLoop = [&]
        {
            entered.Raise();
            bResult = event.Wait(longWaitMs, 0);
            return false;
        };
        ASSERT_TRUE(worker.Start("Worker"));
        ASSERT_TRUE(entered.Wait());
        event.Set();
        worker.Stop();
        ASSERT_TRUE(worker.WaitExit(testPatienceMs));
        ASSERT_TRUE(bResult) << round;
    }
}

TEST(CustomManualResetEvent, AStopRequestDoesNotTouchWaitsOfOtherThreads)
{
    CCustomManualResetEvent event(false);
    CTestSignal entered;
    CScriptedWorker stopped;
    stopped.m_oneLoop = [&]
    {
        entered.Raise();
        event.Wait(longWaitMs, 0);
        return true;
    };
    ASSERT_TRUE(stopped.Start("Stopped"));
    ASSERT_TRUE(entered.Wait());

    std::chrono::milliseconds elapsed[2] = {};
    const auto waitOnTheSameEvent = [&](std::chrono::milliseconds& result)
    {
        const CStopWatch watch;
        EXPECT_FALSE(event.Wait(100, 0));
        result = watch.Elapsed();
    };
    CScriptedWorker other;
    other.m_oneLoop = [&]
    {
        waitOnTheSameEvent(elapsed[0]);
        return false;
    };
    ASSERT_TRUE(other.Start("Other"));
    std::thread thread([&] { waitOnTheSameEvent(elapsed[1]); });
    std::this_thread::sleep_for(10ms);
    ASSERT_TRUE(stopped.StopAndWait());
    thread.join();
    ASSERT_TRUE(other.WaitExit(testPatienceMs));
    EXPECT_GE(elapsed[0], 100ms);
    EXPECT_GE(elapsed[1], 100ms);
}

TEST(CustomManualResetEvent, ARunWaitsInFullWhateverStopsCameBeforeIt)
{
    CCustomManualResetEvent event(false);
    std::chrono::milliseconds elapsed{0};
    CScriptedWorker worker;
    const auto expectFullWait = [&]
    {
        worker.m_oneLoop = [&]
        {
            const CStopWatch watch;
            event.Wait(shortWaitMs, 0);
            elapsed = watch.Elapsed();
            return false;
        };
        ASSERT_TRUE(worker.RunToItsEnd());
        EXPECT_GE(elapsed, shortWait);
    };
    worker.Stop(); // before the first start
    expectFullWait();
    worker.Stop(); // after an end without a stop
    expectFullWait();
    worker.m_oneLoop = [] { return true; };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(worker.StopAndWait());
    expectFullWait();
}

TEST(CustomManualResetEvent, AStopThatRacesWithTheBeginOfAWaitIsNeverLost)
{
    CCustomManualResetEvent event(false);
    const CStopWatch watch;
    for (int round = 0; round < 3000; ++round)
    {
        CTestSignal entered;
        CScriptedWorker worker;
        worker.m_oneLoop = [&]
        {
            entered.Raise();
            event.Wait(longWaitMs, 0);
            return true;
        };
        ASSERT_TRUE(worker.Start("Worker"));
        if (round % 2 == 0)
        {
            entered.Wait();
        }
        worker.Stop();
        ASSERT_TRUE(worker.WaitExit(longWaitMs / 2)) << "a stop request was lost in round " << round;
    }
}

TEST(CustomManualResetEvent, ASetThatRacesWithTheBeginOfAWaitIsNeverLost)
{
    CCustomManualResetEvent ping(false);
    CCustomManualResetEvent pong(false);
    constexpr int rounds = 20'000;
    std::atomic<int> lostCount{0};
    std::thread other(
        [&]
        {
            for (int i = 0; i < rounds; ++i)
            {
                lostCount += ping.Wait(longWaitMs, 0) ? 0 : 1;
                ping.Reset();
                pong.Set();
            }
        });
    for (int i = 0; i < rounds; ++i)
    {
        ping.Set();
        lostCount += pong.Wait(longWaitMs, 0) ? 0 : 1;
        pong.Reset();
    }
    other.join();
    EXPECT_EQ(lostCount, 0);
}

TEST(CustomManualResetEvent, StopsAndSetsAndWaitsFromManyThreadsEndInAStoppedWorker)
{
    for (int round = 0; round < 100; ++round)
    {
        CCustomManualResetEvent event(false);
        CScriptedWorker worker;
        worker.m_oneLoop = [&]
        {
            event.Wait(longWaitMs, 0);
            event.Reset();
            return true;
        };
        ASSERT_TRUE(worker.Start("Worker"));
        std::thread setter(
            [&]
            {
                for (int i = 0; i < 50; ++i)
                {
                    event.Set();
                }
            });
        std::thread stopper([&] { worker.Stop(); });
        setter.join();
        stopper.join();
        ASSERT_TRUE(worker.WaitExit(longWaitMs / 2));
    }
}
