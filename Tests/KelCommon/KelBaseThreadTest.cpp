// The worker-thread frame: how it creates the thread, and what it does with exceptions.
#include "KelCommon/KelBaseThread.h"

#include "PlatformEnds.h" // of the edition that the program is built for
#include "Tests/Platform/ScriptedWorker.h"
#include "Tests/Support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#if defined(__linux__)
#include <pthread.h>
#endif

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

// A worker whose frame finds another CreateThread than the system's: the one beside the worker's own class.
namespace Creation
{

class CWorker;

struct SCall
{
    bool bSecurityAttributes = false;
    std::size_t stackSize = 0;
    const void* parameter = nullptr;
    TestThreadWord creationFlags = 0;
    const TestThreadWord* threadId = nullptr;
};
std::vector<SCall> g_calls;
bool g_bRefuse = false;

TestThreadHandle CreateThread(void* securityAttributes, std::size_t stackSize, unsigned long (*startRoutine)(void*),
                              CKelBaseThread<CWorker>* parameter, TestThreadWord creationFlags,
                              TestThreadWord* threadId)
{
    g_calls.push_back({securityAttributes != nullptr, stackSize, parameter, creationFlags, threadId});
    return g_bRefuse ? nullptr : ::CreateThread(nullptr, stackSize, startRoutine, parameter, creationFlags, threadId);
}

class CWorker : public CKelBaseThread<CWorker>
{
public:
    // The states that the frame left, seen before Start does its own part.
    std::vector<int> m_statesAfterCreation;

    int State() const { return m_threadState; }
    TestThreadHandle ThreadHandle() const { return m_threadHandle; }
    const TestThreadWord* ThreadIdField() const { return &m_threadId; }

protected:
    bool CustomCreateThread() override
    {
        const bool bCreated = CKelBaseThread::CustomCreateThread();
        if (!bCreated)
        {
            m_statesAfterCreation.push_back(m_threadState);
        }
        return bCreated;
    }
    bool OneLoop() override
    {
        Stop();
        return true;
    }
};

} // namespace Creation

namespace
{

std::vector<std::string> Lines(const CLogCapture& capture)
{
    return capture.SummaryWithLines();
}

constexpr auto startError = "2 Start thread error. name = Unit2Board @KelBaseThread:55";
constexpr auto exceptionError = "2 Thread terminated with an exception. name = Thrower @KelBaseThread:72";

} // namespace

TEST(KelBaseThread, AddsNoDataToItsBase)
{
    EXPECT_EQ(sizeof(CKelBaseThread<CScriptedWorker>), sizeof(TamBaseThread));
}

TEST(KelBaseThread, AsksForAThreadOfDefaultStackThatRunsAtOnceOnTheWorkerItself)
{
    Creation::g_calls.clear();
    Creation::CWorker worker;
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(worker.WaitExit(testPatienceMs));
    ASSERT_EQ(Creation::g_calls.size(), 1U);
    const auto& call = Creation::g_calls[0];
    EXPECT_FALSE(call.bSecurityAttributes);
    EXPECT_EQ(call.stackSize, 0U);
    EXPECT_EQ(call.parameter, static_cast<CKelBaseThread<Creation::CWorker>*>(&worker));
    EXPECT_EQ(call.creationFlags, 0U);
    EXPECT_EQ(call.threadId, worker.ThreadIdField());
    EXPECT_NE(worker.ThreadHandle(), nullptr);
}

TEST(KelBaseThread, AThreadThatCannotBeCreatedIsOneRecordAndAFalseAndLeavesNoTrace)
{
    Creation::g_bRefuse = true;
    Creation::CWorker worker;
    {
        const CLogCapture capture;
        EXPECT_FALSE(worker.Start("Unit2Board"));
        EXPECT_THAT(Lines(capture), ElementsAre(startError));
        EXPECT_EQ(capture.Records()[0].severity, SSeverity::Error);
        EXPECT_THAT(capture.Records()[0].function,
                    AllOf(HasSubstr("CKelBaseThread<"), HasSubstr("::CustomCreateThread()")));
        EXPECT_THAT(capture.Records()[0].function, HasSubstr("CWorker"));
    }
    EXPECT_EQ(worker.m_statesAfterCreation, std::vector<int>{0});
    EXPECT_EQ(worker.State(), 0);
    EXPECT_EQ(worker.ThreadHandle(), nullptr);
    EXPECT_FALSE(worker.WaitReady());
    EXPECT_FALSE(worker.WaitPaused());
    EXPECT_TRUE(worker.WaitExit(0));
    EXPECT_FALSE(worker.IsThreadSuccess());

    Creation::g_bRefuse = false;
    EXPECT_TRUE(worker.Start("Unit2Board"));
    EXPECT_TRUE(worker.WaitReady());
    EXPECT_TRUE(worker.WaitExit(testPatienceMs));
    EXPECT_TRUE(worker.IsThreadSuccess());
}

TEST(KelBaseThread, AFailedStartAfterARunForgetsThatRun)
{
    Creation::CWorker worker;
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(worker.WaitExit(testPatienceMs));
    ASSERT_TRUE(worker.IsThreadSuccess());
    Creation::g_bRefuse = true;
    EXPECT_FALSE(worker.Start("Worker"));
    Creation::g_bRefuse = false;
    EXPECT_EQ(worker.State(), 0);
    EXPECT_EQ(worker.ThreadHandle(), nullptr);
    EXPECT_FALSE(worker.IsThreadSuccess());
    EXPECT_FALSE(worker.WaitReady());
}

#if defined(__linux__)

// The system itself refuses: no address space has room for such a stack.
class KelBaseThreadOnAStarvedSystem : public testing::Test
{
protected:
    void SetUp() override
    {
        SleepingThreads_Release(); // one of them would do
        pthread_getattr_default_np(&m_before);
        pthread_attr_t starved;
        pthread_attr_init(&starved);
        pthread_attr_setstacksize(&starved, std::size_t{1} << 50);
        ASSERT_EQ(pthread_setattr_default_np(&starved), 0);
        pthread_attr_destroy(&starved);
    }
    void TearDown() override { Restore(); }
    void Restore() { pthread_setattr_default_np(&m_before); }

    pthread_attr_t m_before = {};
};

TEST_F(KelBaseThreadOnAStarvedSystem, StartFailsAndSucceedsOnceTheSystemHasRecovered)
{
    CScriptedWorker worker([] { return false; });
    {
        const CLogCapture capture;
        EXPECT_FALSE(worker.Start("Unit2Board"));
        EXPECT_THAT(Lines(capture), ElementsAre(startError));
    }
    EXPECT_EQ(worker.State(), 0);
    EXPECT_EQ(worker.ThreadHandle(), nullptr);
    Restore();
    EXPECT_TRUE(worker.RunToItsEnd());
    EXPECT_EQ(worker.m_prepareCount, 1);
}

#endif

TEST(KelBaseThread, WhateverIsThrownInAnyStepIsOneRecordAndExitCodeZero)
{
    const auto throwError = []() -> bool { throw std::runtime_error("text"); };
    const auto throwNumber = []() -> bool { throw 5; };
    for (const std::function<bool()>& thrower : {std::function<bool()>(throwError), std::function<bool()>(throwNumber)})
    {
        for (int step = 0; step < 3; ++step)
        {
            CScriptedWorker worker([] { return false; });
            if (step == 0)
            {
                worker.m_prepare = thrower;
            }
            if (step == 1)
            {
                worker.m_oneLoop = thrower;
            }
            if (step == 2)
            {
                worker.m_finally = [&] { thrower(); };
            }
            const CLogCapture capture;
            ASSERT_TRUE(worker.Start("Thrower"));
            ASSERT_TRUE(worker.WaitExit(testPatienceMs));
            EXPECT_EQ(worker.m_finallyCount, 1) << step;
            EXPECT_EQ(worker.ExitCode(), 0U) << step;
            EXPECT_THAT(Lines(capture), ElementsAre(exceptionError)) << step;
            EXPECT_THAT(capture.Records()[0].function,
                        AllOf(HasSubstr("CKelBaseThread<"), HasSubstr("::CustomThreadProc(void")));
            EXPECT_FALSE(worker.IsThreadSuccess());
        }
    }
}

TEST(KelBaseThread, AStepAndAFinishThatBothThrowAreOneRecord)
{
    CScriptedWorker worker([]() -> bool { throw std::runtime_error("step"); });
    worker.m_finally = [] { throw std::runtime_error("finish"); };
    const CLogCapture capture;
    ASSERT_TRUE(worker.Start("Thrower"));
    ASSERT_TRUE(worker.WaitExit(testPatienceMs));
    EXPECT_THAT(Lines(capture), ElementsAre(exceptionError));
    EXPECT_EQ(worker.m_finallyCount, 1);
}

TEST(KelBaseThread, AListenerThatThrowsDoesNotLeaveTheThreadAndTheRecordIsWritten)
{
    std::vector<std::string> records;
    const int listener = LogListener_Add(
        [&](const SLogEntry& record)
        {
            records.push_back(record.message + " @" + std::to_string(record.line));
            throw std::runtime_error("listener");
        });
    CScriptedWorker worker([]() -> bool { throw std::runtime_error("step"); });
    const bool bEnded = worker.Start("Thrower") && worker.WaitExit(testPatienceMs);
    LogListener_Remove(listener);
    EXPECT_TRUE(bEnded);
    EXPECT_EQ(worker.ExitCode(), 0U);
    EXPECT_EQ(worker.m_finallyCount, 1);
    EXPECT_THAT(records, ElementsAre("Thread terminated with an exception. name = Thrower @72"));

    const CLogCapture capture; // the log goes on
    ASSERT_TRUE(worker.Start("Thrower"));
    ASSERT_TRUE(worker.WaitExit(testPatienceMs));
    EXPECT_THAT(Lines(capture), ElementsAre(exceptionError));
}

TEST(KelBaseThread, AListenerThatThrowsAtAFailedCreationLeavesAWorkerThatCanBeStarted)
{
    Creation::g_bRefuse = true;
    Creation::CWorker worker;
    const int listener = LogListener_Add([](const SLogEntry& /*record*/) { throw std::runtime_error("listener"); });
    EXPECT_THROW(worker.Start("Worker"), std::runtime_error);
    LogListener_Remove(listener);
    Creation::g_bRefuse = false;
    EXPECT_EQ(worker.State(), 0);
    EXPECT_TRUE(worker.WaitExit(0));
    EXPECT_TRUE(worker.Start("Worker"));
    EXPECT_TRUE(worker.WaitExit(testPatienceMs));
    EXPECT_TRUE(worker.IsThreadSuccess());
}

TEST(KelBaseThread, ARunThatEndsByItselfWritesNoRecord)
{
    const CLogCapture capture;
    CScriptedWorker worker([] { return false; });
    ASSERT_TRUE(worker.RunToItsEnd());
    EXPECT_THAT(Lines(capture), ElementsAre());
}

TEST(KelBaseThread, RunningWorkersHaveDifferentThreadNumbers)
{
    std::set<std::uint32_t> ids;
    CScriptedWorker workers[8];
    for (auto& worker : workers)
    {
        ASSERT_TRUE(worker.Start("Worker"));
        ids.insert(worker.ThreadId());
    }
    EXPECT_EQ(ids.size(), 8U);
    EXPECT_EQ(ids.count(0), 0U);
}
