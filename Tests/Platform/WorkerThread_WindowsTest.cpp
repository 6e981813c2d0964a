// A worker's thread is the system's own: its handle and its identifier are those that Windows knows.
#include "Tests/Platform/ScriptedWorker.h"

#include <gtest/gtest.h>

TEST(WorkerThread, ItsHandleAndItsIdentifierAreTheSystems)
{
    CTestSignal looped;
    CTestSignal release;
    DWORD idInside = 0;
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        idInside = GetCurrentThreadId();
        looped.Raise();
        release.Wait();
        worker.Stop();
        return true;
    };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(looped.Wait());
    EXPECT_EQ(worker.ThreadId(), idInside);
    EXPECT_EQ(GetThreadId(worker.ThreadHandle()), idInside);
    EXPECT_EQ(GetProcessIdOfThread(worker.ThreadHandle()), GetCurrentProcessId());
    EXPECT_EQ(worker.ExitCode(), STILL_ACTIVE);
    EXPECT_EQ(WaitForSingleObject(worker.ThreadHandle(), 0), WAIT_TIMEOUT);

    release.Raise();
    EXPECT_EQ(WaitForSingleObject(worker.ThreadHandle(), testPatienceMs), WAIT_OBJECT_0);
    EXPECT_EQ(worker.ExitCode(), 1U);
}
