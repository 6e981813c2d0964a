// The worker's run loop and its hand-shakes: start, ready, pause, resume, stop, exit.
#include "Tests/Platform/ScriptedWorker.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using namespace std::chrono_literals;

constexpr int manyThreads = 8;

// Runs `call` on `count` threads and waits for them.
template<class Call>
void OnManyThreads(int count, Call call)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
    {
        threads.emplace_back(call);
    }
    for (auto& thread : threads)
    {
        thread.join();
    }
}

// Waits until the worker has made at least one more step.
bool WaitForOneMoreStep(const CScriptedWorker& worker)
{
    const CStopWatch watch;
    const int before = worker.m_loopCount;
    while (worker.m_loopCount == before && watch.Elapsed() < testPatience)
    {
        std::this_thread::yield();
    }
    return worker.m_loopCount != before;
}

// A worker without state of its own, which can be copied.
class CCopyableWorker : public CKelBaseThread<CCopyableWorker>
{
public:
    const std::string& Name() const { return m_threadName; }
    int State() const { return m_threadState; }
    HANDLE ThreadHandle() const { return m_threadHandle; }
    DWORD ThreadId() const { return m_threadId; }

protected:
    bool OneLoop() override
    {
        Stop();
        return true;
    }
};

} // namespace

// The run.

TEST(TamBaseThread, ARunPreparesThenLoopsThenFinishesOnAThreadOfItsOwn)
{
    std::vector<std::string> steps;
    std::vector<std::thread::id> threads;
    const auto note = [&](const char* step)
    {
        steps.emplace_back(step);
        threads.push_back(std::this_thread::get_id());
    };
    CScriptedWorker worker;
    worker.m_prepare = [&]
    {
        note("prepare");
        return true;
    };
    worker.m_oneLoop = [&]
    {
        note("loop");
        return worker.m_loopCount < 3;
    };
    worker.m_finally = [&] { note("finally"); };

    ASSERT_TRUE(worker.RunToItsEnd());

    EXPECT_EQ(steps, (std::vector<std::string>{"prepare", "loop", "loop", "loop", "finally"}));
    EXPECT_EQ(threads, std::vector<std::thread::id>(5, threads[0]));
    EXPECT_NE(threads[0], std::this_thread::get_id());
}

TEST(TamBaseThread, TheStateWordFollowsTheRun)
{
    CScriptedWorker worker;
    std::vector<int> states{worker.State()};
    worker.m_prepare = [&]
    {
        states.push_back(worker.State());
        return true;
    };
    worker.m_oneLoop = [&]
    {
        states.push_back(worker.State());
        return false;
    };
    worker.m_finally = [&] { states.push_back(worker.State()); };
    ASSERT_TRUE(worker.RunToItsEnd());
    states.push_back(worker.State());

    using T = TamBaseThread;
    EXPECT_EQ(states, (std::vector<int>{T::NotStarted, T::Preparing, T::Running, T::Finishing, T::Ended}));
    EXPECT_EQ(T::NotStarted, 0);
}

TEST(TamBaseThread, AFailedPreparationSkipsTheLoopButNotTheFinish)
{
    CScriptedWorker worker;
    worker.m_prepare = [] { return false; };
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_EQ(worker.m_loopCount, 0);
    EXPECT_EQ(worker.m_finallyCount, 1);
    EXPECT_FALSE(worker.IsThreadSuccess());
    EXPECT_EQ(worker.ExitCode(), 0U);
}

TEST(TamBaseThread, AStepThatReturnsFalseIsTheLastAndFailsTheRun)
{
    CScriptedWorker worker([] { return false; });
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_EQ(worker.m_loopCount, 1);
    EXPECT_EQ(worker.m_finallyCount, 1);
    EXPECT_FALSE(worker.IsThreadSuccess());
    EXPECT_EQ(worker.ExitCode(), 0U);
}

TEST(TamBaseThread, AStepThatStopsAndReturnsFalseFailsTheRun)
{
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        worker.Stop();
        return false;
    };
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_FALSE(worker.IsThreadSuccess());
}

TEST(TamBaseThread, SuccessIsFalseBeforeTheStartAndWhileTheWorkerRuns)
{
    CScriptedWorker worker;
    EXPECT_FALSE(worker.IsThreadSuccess());
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(worker.WaitReady());
    EXPECT_FALSE(worker.IsThreadSuccess());
    ASSERT_TRUE(worker.StopAndWait());
    EXPECT_TRUE(worker.IsThreadSuccess());
}

TEST(TamBaseThread, AWorkerThatWasNeverStartedCanBeDestroyed)
{
    auto worker = std::make_unique<CCopyableWorker>();
    EXPECT_NO_THROW(worker.reset());
}

TEST(TamBaseThread, AWorkerCanBeDestroyedAsSoonAsItsExitWasSeen)
{
    for (int i = 0; i < 200; ++i)
    {
        auto worker = std::make_unique<CCopyableWorker>();
        ASSERT_TRUE(worker->Start("Worker"));
        ASSERT_TRUE(worker->WaitExit(withoutLimit));
        worker.reset();
    }
}

// Stop.

TEST(TamBaseThread, AStopFromAnotherThreadEndsTheLoopAsSuccess)
{
    CScriptedWorker worker;
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(WaitForOneMoreStep(worker));
    worker.Stop();
    ASSERT_TRUE(worker.WaitExit(withoutLimit));
    EXPECT_TRUE(worker.IsThreadSuccess());
    EXPECT_EQ(worker.ExitCode(), 1U);
    EXPECT_EQ(worker.m_finallyCount, 1);
}

TEST(TamBaseThread, AStopFromTheWorkerItselfLetsNoFurtherStepBegin)
{
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        if (worker.m_loopCount == 3)
        {
            worker.Stop();
        }
        return true;
    };
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_EQ(worker.m_loopCount, 3);
    EXPECT_TRUE(worker.IsThreadSuccess());
}

TEST(TamBaseThread, AStopDuringThePreparationLetsNoStepBegin)
{
    CScriptedWorker worker;
    worker.m_prepare = [&]
    {
        worker.Stop();
        return true;
    };
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_EQ(worker.m_loopCount, 0);
    EXPECT_EQ(worker.m_finallyCount, 1);
    EXPECT_TRUE(worker.IsThreadSuccess());
    EXPECT_TRUE(worker.WaitReady());
}

TEST(TamBaseThread, AStopDuringTheFinishChangesNothing)
{
    CScriptedWorker worker([] { return false; });
    worker.m_finally = [&] { worker.Stop(); };
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_EQ(worker.m_finallyCount, 1);
    EXPECT_FALSE(worker.IsThreadSuccess());
}

TEST(TamBaseThread, StopsFromManyThreadsAtOnceEndTheLoopOnce)
{
    for (int round = 0; round < 50; ++round)
    {
        CScriptedWorker worker;
        worker.m_oneLoop = [&]
        {
            if (worker.m_loopCount == 5)
            {
                worker.Stop();
            }
            return true;
        };
        ASSERT_TRUE(worker.Start("Worker"));
        OnManyThreads(manyThreads, [&] { worker.Stop(); });
        ASSERT_TRUE(worker.WaitExit(testPatienceMs));
        EXPECT_LE(worker.m_loopCount, 5);
        EXPECT_EQ(worker.m_finallyCount, 1);
    }
}

TEST(TamBaseThread, AStopRightAfterTheStartIsNotLost)
{
    for (int round = 0; round < 300; ++round)
    {
        CScriptedWorker worker;
        ASSERT_TRUE(worker.Start("Worker"));
        worker.Stop();
        ASSERT_TRUE(worker.WaitExit(testPatienceMs));
    }
}

TEST(TamBaseThread, AStopBeforeTheStartDoesNotCountForTheNextRun)
{
    CScriptedWorker worker;
    worker.Stop();
    ASSERT_TRUE(worker.Start("Worker"));
    EXPECT_TRUE(WaitForOneMoreStep(worker));
}

TEST(TamBaseThread, AStopAfterTheEndDoesNotCountForTheNextRun)
{
    CScriptedWorker worker([] { return false; });
    ASSERT_TRUE(worker.RunToItsEnd());
    worker.Stop();
    worker.m_oneLoop = [] { return true; };
    ASSERT_TRUE(worker.Start("Worker"));
    EXPECT_TRUE(WaitForOneMoreStep(worker));
}

// Start.

TEST(TamBaseThread, StartingARunningWorkerIsRefusedAndTheRunGoesOn)
{
    CScriptedWorker worker;
    ASSERT_TRUE(worker.Start("First"));
    ASSERT_TRUE(worker.WaitReady());
    const HANDLE handle = worker.ThreadHandle();

    EXPECT_FALSE(worker.Start("Second"));

    EXPECT_EQ(worker.Name(), "First");
    EXPECT_EQ(worker.ThreadHandle(), handle);
    EXPECT_TRUE(WaitForOneMoreStep(worker));
    EXPECT_EQ(worker.m_prepareCount, 1);
    EXPECT_FALSE(worker.WaitExit(0));
}

TEST(TamBaseThread, StartingItselfFromItsOwnStepsIsRefused)
{
    std::vector<bool> started;
    CScriptedWorker worker;
    worker.m_prepare = [&]
    {
        started.push_back(worker.Start("Again"));
        return true;
    };
    worker.m_oneLoop = [&]
    {
        started.push_back(worker.Start("Again"));
        return false;
    };
    worker.m_finally = [&] { started.push_back(worker.Start("Again")); };
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_EQ(started, (std::vector<bool>{false, false, false}));
    EXPECT_EQ(worker.m_prepareCount, 1);
}

TEST(TamBaseThread, StartsFromManyThreadsAtOnceMakeOneRun)
{
    CScriptedWorker worker;
    std::atomic<int> startedCount{0};
    OnManyThreads(manyThreads, [&] { startedCount += worker.Start("Worker") ? 1 : 0; });
    EXPECT_EQ(startedCount, 1);
    ASSERT_TRUE(worker.StopAndWait());
    EXPECT_EQ(worker.m_prepareCount, 1);
    EXPECT_EQ(worker.m_finallyCount, 1);
}

TEST(TamBaseThread, AWorkerCanBeStartedAgainAfterItsEnd)
{
    CScriptedWorker worker([] { return false; });
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_FALSE(worker.IsThreadSuccess());
    [[maybe_unused]] const DWORD firstId = worker.ThreadId();

    worker.m_oneLoop = [&]
    {
        worker.Stop();
        return true;
    };
    ASSERT_TRUE(worker.RunToItsEnd());

    EXPECT_EQ(worker.m_prepareCount, 2);
    EXPECT_EQ(worker.m_loopCount, 2);
    EXPECT_EQ(worker.m_finallyCount, 2);
    EXPECT_TRUE(worker.IsThreadSuccess());
    EXPECT_EQ(worker.ExitCode(), 1U);
#if !defined(_WIN32) // which may give the number of a thread that is gone to the next one
    EXPECT_NE(worker.ThreadId(), firstId);
#endif
}

TEST(TamBaseThread, ANewRunForgetsTheSuccessOfTheOneBefore)
{
    CTestSignal entered;
    CTestSignal release;
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        worker.Stop();
        return true;
    };
    ASSERT_TRUE(worker.RunToItsEnd());
    ASSERT_TRUE(worker.IsThreadSuccess());

    worker.m_prepare = [&]
    {
        entered.Raise();
        release.Wait();
        return false;
    };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(entered.Wait());
    EXPECT_FALSE(worker.IsThreadSuccess());
    release.Raise();
    EXPECT_FALSE(worker.WaitReady());
    ASSERT_TRUE(worker.WaitExit(testPatienceMs));
}

TEST(TamBaseThread, StartingAgainBeforeAnybodyHasWaitedIsFine)
{
    CScriptedWorker worker;
    for (int run = 1; run <= 200; ++run)
    {
        ASSERT_TRUE(worker.Start("Worker"));
        worker.Stop();
        while (worker.State() != TamBaseThread::Ended)
        {
            std::this_thread::yield();
        }
        ASSERT_EQ(worker.m_finallyCount, run);
    }
}

TEST(TamBaseThread, StartingAgainWaitsForThoseWhoStillWaitForTheRunBefore)
{
    CScriptedWorker worker;
    std::atomic<bool> bDone{false};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 4; ++i)
    {
        waiters.emplace_back(
            [&]
            {
                while (!bDone)
                {
                    worker.WaitExit(1);
                }
            });
    }
    for (int run = 0; run < 300; ++run)
    {
        ASSERT_TRUE(worker.Start("Worker"));
        worker.Stop();
        while (worker.State() != TamBaseThread::Ended)
        {
            std::this_thread::yield();
        }
    }
    bDone = true;
    for (auto& waiter : waiters)
    {
        waiter.join();
    }
    EXPECT_EQ(worker.m_finallyCount, 300);
}

TEST(TamBaseThread, AWorkerWhoseThreadIsNotCreatedIsNotStarted)
{
    class CThreadless : public CCopyableWorker
    {
    protected:
        bool CustomCreateThread() override { return false; }
    };
    CThreadless worker;
    EXPECT_FALSE(worker.Start("Threadless"));
    EXPECT_EQ(worker.State(), TamBaseThread::NotStarted);
    EXPECT_FALSE(worker.WaitReady());
    EXPECT_TRUE(worker.WaitExit(0));
    EXPECT_FALSE(worker.Start("Threadless"));
}

TEST(TamBaseThread, WhatTheCreationOfTheThreadThrowsPassesAndTheWorkerCanBeStartedAgain)
{
    class CThrowingOnce : public CCopyableWorker
    {
    public:
        int m_creationCount = 0;

    protected:
        bool CustomCreateThread() override
        {
            if (++m_creationCount == 2)
            {
                throw std::bad_alloc();
            }
            return CCopyableWorker::CustomCreateThread();
        }
    };
    CThrowingOnce worker;
    ASSERT_TRUE(worker.Start("First"));
    ASSERT_TRUE(worker.WaitExit(testPatienceMs));
    EXPECT_THROW(worker.Start("Second"), std::bad_alloc);
    EXPECT_EQ(worker.State(), TamBaseThread::NotStarted);
    EXPECT_EQ(worker.ThreadHandle(), nullptr);
    EXPECT_FALSE(worker.WaitReady());
    EXPECT_FALSE(worker.IsThreadSuccess());
    EXPECT_TRUE(worker.WaitExit(0));
    worker.Pause();
    EXPECT_FALSE(worker.WaitPaused()); // there is no run that could reach a pause
    EXPECT_TRUE(worker.Start("Third"));
    EXPECT_TRUE(worker.WaitReady());
    EXPECT_TRUE(worker.WaitExit(testPatienceMs));
    EXPECT_TRUE(worker.IsThreadSuccess());
}

// Ready.

TEST(TamBaseThread, WaitReadyReturnsWhenThePreparationIsOver)
{
    CTestSignal release;
    std::atomic<bool> bPrepared{false};
    CScriptedWorker worker;
    worker.m_prepare = [&]
    {
        release.Wait();
        bPrepared = true;
        return true;
    };
    ASSERT_TRUE(worker.Start("Worker"));
    auto ready = std::async(std::launch::async, [&] { return worker.WaitReady() && bPrepared; });
    EXPECT_EQ(ready.wait_for(20ms), std::future_status::timeout);
    release.Raise();
    EXPECT_TRUE(ready.get());
    EXPECT_TRUE(worker.WaitReady());
}

TEST(TamBaseThread, WaitReadyIsFalseForAPreparationThatFailsOrThrows)
{
    CScriptedWorker failing;
    failing.m_prepare = [] { return false; };
    ASSERT_TRUE(failing.Start("Failing"));
    EXPECT_FALSE(failing.WaitReady());

    CScriptedWorker throwing;
    throwing.m_prepare = []() -> bool { throw std::runtime_error("prepare"); };
    ASSERT_TRUE(throwing.Start("Throwing"));
    EXPECT_FALSE(throwing.WaitReady());
}

TEST(TamBaseThread, WaitReadyIsFalseAtOnceWithoutAStartAndStaysTrueAfterTheEnd)
{
    CScriptedWorker worker([] { return false; });
    EXPECT_FALSE(worker.WaitReady());
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_TRUE(worker.WaitReady());
}

TEST(TamBaseThread, OnItsOwnThreadAWorkerNeitherWaitsForReadyNorForPausedNorForExit)
{
    std::vector<bool> answers;
    CScriptedWorker worker;
    worker.m_prepare = [&]
    {
        worker.Pause();
        answers.push_back(worker.WaitReady());
        answers.push_back(worker.WaitPaused());
        answers.push_back(worker.WaitExit(withoutLimit));
        worker.Resume();
        return true;
    };
    worker.m_oneLoop = [&]
    {
        answers.push_back(worker.WaitReady());
        return false;
    };
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_EQ(answers, (std::vector<bool>{false, false, false, true}));
}

// Exit.

TEST(TamBaseThread, WaitExitIsTrueAtOnceForAWorkerThatWasNeverStarted)
{
    CScriptedWorker worker;
    EXPECT_TRUE(worker.WaitExit(0));
    EXPECT_TRUE(worker.WaitExit(withoutLimit));
}

TEST(TamBaseThread, WaitExitProbesWithTimeOutZero)
{
    CScriptedWorker worker;
    ASSERT_TRUE(worker.Start("Worker"));
    EXPECT_FALSE(worker.WaitExit(0));
    ASSERT_TRUE(worker.StopAndWait());
    EXPECT_TRUE(worker.WaitExit(0));
}

TEST(TamBaseThread, WaitExitLastsItsTimeOutWhileTheWorkerRuns)
{
    CScriptedWorker worker;
    ASSERT_TRUE(worker.Start("Worker"));
    const CStopWatch watch;
    EXPECT_FALSE(worker.WaitExit(50));
    EXPECT_GE(watch.Elapsed(), 50ms);
}

TEST(TamBaseThread, WaitExitWithAllBitsSetWaitsAsLongAsItTakes)
{
    CTestSignal release;
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        release.Wait();
        return false;
    };
    ASSERT_TRUE(worker.Start("Worker"));
    auto exit = std::async(std::launch::async, [&] { return worker.WaitExit(withoutLimit); });
    EXPECT_EQ(exit.wait_for(50ms), std::future_status::timeout);
    release.Raise();
    EXPECT_TRUE(exit.get());
}

TEST(TamBaseThread, WaitExitReturnsAfterTheLastThingThatTheWorkerDoes)
{
    bool bFinished = false; // not atomic: the exit orders it
    CScriptedWorker worker([] { return false; });
    worker.m_finally = [&]
    {
        std::this_thread::sleep_for(20ms);
        bFinished = true;
    };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(worker.WaitExit(withoutLimit));
    EXPECT_TRUE(bFinished);
}

TEST(TamBaseThread, WaitingTwiceAndFromSeveralThreadsIsFine)
{
    CScriptedWorker worker;
    ASSERT_TRUE(worker.Start("Worker"));
    std::atomic<int> seenCount{0};
    std::thread stopper(
        [&]
        {
            std::this_thread::sleep_for(10ms);
            worker.Stop();
        });
    OnManyThreads(manyThreads, [&] { seenCount += worker.WaitExit(testPatienceMs) ? 1 : 0; });
    stopper.join();
    EXPECT_EQ(seenCount, manyThreads);
    EXPECT_TRUE(worker.WaitExit(testPatienceMs));
    EXPECT_TRUE(worker.WaitExit(0));
}

TEST(TamBaseThread, WaitExitIsNotCutShortByAStopOfTheWorkerThatWaits)
{
    CScriptedWorker other;
    ASSERT_TRUE(other.Start("Other"));
    bool bExited = true;
    std::chrono::milliseconds elapsed{0};
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        worker.Stop();
        const CStopWatch watch;
        bExited = other.WaitExit(80);
        elapsed = watch.Elapsed();
        return true;
    };
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_FALSE(bExited);
    EXPECT_GE(elapsed, 80ms);
}

// Pause.

TEST(TamBaseThread, APausedWorkerRestsUntilItIsResumed)
{
    CScriptedWorker worker;
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(WaitForOneMoreStep(worker));
    worker.Pause();
    ASSERT_TRUE(worker.WaitPaused());
    EXPECT_EQ(worker.State(), TamBaseThread::Paused);
    const int count = worker.m_loopCount;
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(worker.m_loopCount, count);
    EXPECT_TRUE(worker.WaitPaused());

    worker.Resume();
    EXPECT_TRUE(WaitForOneMoreStep(worker));
    EXPECT_EQ(worker.State(), TamBaseThread::Running);
}

TEST(TamBaseThread, WaitPausedReturnsWhenTheStepInProgressIsOver)
{
    CTestSignal entered;
    CTestSignal release;
    std::atomic<bool> bStepOver{false};
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        entered.Raise();
        release.Wait();
        bStepOver = true;
        return true;
    };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(entered.Wait());
    worker.Pause();
    auto paused = std::async(std::launch::async, [&] { return worker.WaitPaused() && bStepOver; });
    EXPECT_EQ(paused.wait_for(20ms), std::future_status::timeout);
    release.Raise();
    EXPECT_TRUE(paused.get());
    EXPECT_EQ(worker.m_loopCount, 1);
}

TEST(TamBaseThread, APauseDuringThePreparationComesBeforeTheFirstStep)
{
    CScriptedWorker worker;
    worker.m_prepare = [&]
    {
        worker.Pause();
        return true;
    };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(worker.WaitReady());
    EXPECT_TRUE(worker.WaitPaused());
    EXPECT_EQ(worker.m_loopCount, 0);
}

TEST(TamBaseThread, WaitPausedIsFalseAtOnceWithoutAPause)
{
    CScriptedWorker worker;
    EXPECT_FALSE(worker.WaitPaused());
    ASSERT_TRUE(worker.Start("Worker"));
    EXPECT_FALSE(worker.WaitPaused());
    ASSERT_TRUE(worker.StopAndWait());
    EXPECT_FALSE(worker.WaitPaused());
}

TEST(TamBaseThread, APauseBeforeTheStartDoesNotCount)
{
    CScriptedWorker worker;
    worker.Pause();
    EXPECT_FALSE(worker.WaitPaused());
    ASSERT_TRUE(worker.Start("Worker"));
    EXPECT_TRUE(WaitForOneMoreStep(worker));
}

TEST(TamBaseThread, APauseThatTheLastRunDidNotReachDoesNotCountForTheNext)
{
    CScriptedWorker worker([] { return false; });
    worker.m_finally = [&] { worker.Pause(); };
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_FALSE(worker.WaitPaused());
    EXPECT_TRUE(worker.RunToItsEnd());
    EXPECT_EQ(worker.m_loopCount, 2);
}

TEST(TamBaseThread, AResumeWithoutAPauseChangesNothing)
{
    CScriptedWorker worker;
    worker.Resume();
    ASSERT_TRUE(worker.Start("Worker"));
    worker.Resume();
    EXPECT_TRUE(WaitForOneMoreStep(worker));
    worker.Pause();
    EXPECT_TRUE(worker.WaitPaused());
}

TEST(TamBaseThread, AStopEndsAPausedWorkerWithoutAFurtherStep)
{
    CScriptedWorker worker;
    ASSERT_TRUE(worker.Start("Worker"));
    worker.Pause();
    ASSERT_TRUE(worker.WaitPaused());
    const int count = worker.m_loopCount;
    ASSERT_TRUE(worker.StopAndWait());
    EXPECT_EQ(worker.m_loopCount, count);
    EXPECT_TRUE(worker.IsThreadSuccess());
    EXPECT_FALSE(worker.WaitPaused());
}

TEST(TamBaseThread, APauseAndAStopBeforeItIsReachedEndTheWorker)
{
    CTestSignal entered;
    CTestSignal release;
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        entered.Raise();
        release.Wait();
        return true;
    };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(entered.Wait());
    worker.Pause();
    worker.Stop();
    EXPECT_FALSE(worker.WaitPaused()); // while the step is still in progress
    release.Raise();
    ASSERT_TRUE(worker.WaitExit(testPatienceMs));
    EXPECT_EQ(worker.m_loopCount, 1);
}

TEST(TamBaseThread, APauseAfterAStopDoesNotHoldTheWorker)
{
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        worker.Stop();
        worker.Pause();
        return true;
    };
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_EQ(worker.m_loopCount, 1);
}

TEST(TamBaseThread, WaitPausedIsReleasedByAResumeAStopOrTheEnd)
{
    enum class EEnd
    {
        Resume,
        Stop,
        FailedStep,
        FailedPreparation
    };
    for (const EEnd end : {EEnd::Resume, EEnd::Stop, EEnd::FailedStep, EEnd::FailedPreparation})
    {
        CTestSignal entered;
        CTestSignal release;
        const auto rest = [&](EEnd failing)
        {
            entered.Raise();
            release.Wait();
            return end != failing;
        };
        CScriptedWorker worker([&] { return rest(EEnd::FailedStep); });
        if (end == EEnd::FailedPreparation)
        {
            worker.m_prepare = [&] { return rest(EEnd::FailedPreparation); };
        }
        ASSERT_TRUE(worker.Start("Worker"));
        ASSERT_TRUE(entered.Wait());
        worker.Pause();
        auto paused = std::async(std::launch::async, [&] { return worker.WaitPaused(); });
        EXPECT_EQ(paused.wait_for(5ms), std::future_status::timeout);
        if (end == EEnd::Resume)
        {
            worker.Resume();
        }
        if (end == EEnd::Stop)
        {
            worker.Stop();
        }
        if (end == EEnd::FailedStep || end == EEnd::FailedPreparation)
        {
            release.Raise();
        }
        EXPECT_FALSE(paused.get()) << static_cast<int>(end);
        release.Raise();
    }
}

TEST(TamBaseThread, APauseTakenBackAndMadeAgainAtOnceIsAPause)
{
    CScriptedWorker worker;
    ASSERT_TRUE(worker.Start("Worker"));
    for (int i = 0; i < 500; ++i)
    {
        worker.Pause();
        ASSERT_TRUE(worker.WaitPaused());
        worker.Resume();
        worker.Pause();
        ASSERT_TRUE(worker.WaitPaused());
        const int count = worker.m_loopCount;
        std::this_thread::yield();
        ASSERT_EQ(worker.m_loopCount, count);
        worker.Resume();
    }
}

// Copies.

TEST(TamBaseThread, AssignedToItselfAWorkerStaysAsItIs)
{
    CCopyableWorker worker;
    ASSERT_TRUE(worker.Start("Same"));
    ASSERT_TRUE(worker.WaitExit(testPatienceMs));
    const int state = worker.State();
    const CCopyableWorker& self = worker;
    worker = self;
    EXPECT_EQ(worker.State(), state);
    EXPECT_EQ(worker.Name(), "Same");
}

TEST(TamBaseThread, ACopyIsAWorkerOfTheSameNameThatWasNotStarted)
{
    CCopyableWorker original;
    ASSERT_TRUE(original.Start("Original"));
    ASSERT_TRUE(original.WaitExit(testPatienceMs));

    CCopyableWorker copy(original);
    CCopyableWorker assigned;
    assigned = original;

    for (CCopyableWorker* worker : {&copy, &assigned})
    {
        EXPECT_EQ(worker->Name(), "Original");
        EXPECT_EQ(worker->State(), TamBaseThread::NotStarted);
        EXPECT_EQ(worker->ThreadHandle(), nullptr);
        EXPECT_EQ(worker->ThreadId(), 0U);
        EXPECT_FALSE(worker->IsThreadSuccess());
        EXPECT_FALSE(worker->WaitReady());
        EXPECT_TRUE(worker->WaitExit(0));
        EXPECT_TRUE(worker->Start("Copy"));
        EXPECT_TRUE(worker->WaitExit(testPatienceMs));
        EXPECT_TRUE(worker->IsThreadSuccess());
    }
    EXPECT_TRUE(original.IsThreadSuccess());
    EXPECT_EQ(original.Name(), "Original");
}

// What a throwing step leaves behind; the record that it writes is the frame's.

TEST(TamBaseThread, AThrowingStepEndsInOneFinishAndAFailedRunThatCanBeStartedAgain)
{
    const auto fail = [] { throw std::runtime_error("step"); };
    const auto failingStep = [&]() -> bool
    {
        fail();
        return true;
    };
    for (int thrower = 0; thrower < 4; ++thrower)
    {
        CScriptedWorker worker([] { return false; });
        if (thrower == 0)
        {
            worker.m_prepare = failingStep;
        }
        if (thrower == 1 || thrower == 3)
        {
            worker.m_oneLoop = failingStep;
        }
        if (thrower == 2 || thrower == 3)
        {
            worker.m_finally = fail;
        }
        ASSERT_TRUE(worker.RunToItsEnd());
        EXPECT_EQ(worker.m_finallyCount, 1) << thrower;
        EXPECT_FALSE(worker.IsThreadSuccess()) << thrower;
        EXPECT_EQ(worker.ExitCode(), 0U) << thrower;
        EXPECT_EQ(worker.State(), TamBaseThread::Ended) << thrower;

        worker.m_prepare = [] { return true; };
        worker.m_oneLoop = [&]
        {
            worker.Stop();
            return true;
        };
        worker.m_finally = [] {};
        ASSERT_TRUE(worker.RunToItsEnd()) << thrower;
        EXPECT_TRUE(worker.IsThreadSuccess()) << thrower;
    }
}

TEST(TamBaseThread, AFinishThatThrowsFailsARunThatWasStopped)
{
    CScriptedWorker worker;
    worker.m_finally = [] { throw 1; };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(worker.StopAndWait());
    EXPECT_FALSE(worker.IsThreadSuccess());
    EXPECT_EQ(worker.ExitCode(), 0U);
}
