// A worker's thread is the system's own: its handle, its identifier and its waits are those that Windows knows.
#include "Platform/Thread/CustomManualResetEvent.h"
#include "Tests/Platform/ScriptedWorker.h"
#include "Tests/Support/ImportTable.h"

#include <gtest/gtest.h>

#include <atomic>

namespace
{

std::atomic<DWORD> g_handleCount{0}; // of the last wait
decltype(&WaitForMultipleObjects) g_pWait = nullptr;

DWORD WINAPI Wait_Record(DWORD count, const HANDLE* handles, BOOL bAll, DWORD timeoutMs)
{
    g_handleCount = count;
    return g_pWait(count, handles, bAll, timeoutMs);
}

class WorkerWait : public testing::Test
{
protected:
    WorkerWait()
    {
        g_pWait = m_platform.Replace("WaitForMultipleObjects", &Wait_Record);
        g_handleCount = 0;
    }
    ~WorkerWait() override { m_platform.Replace("WaitForMultipleObjects", g_pWait); }

private:
    CImportTable m_platform{"ControllerPlatform.dll"};
};

} // namespace

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

TEST_F(WorkerWait, AWorkerWaitsForTheEventAndForItsStopRequest)
{
    CCustomManualResetEvent event(false);
    CTestSignal looped;
    bool bSet = true;
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        looped.Raise();
        bSet = event.Wait(withoutLimit);
        return false;
    };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(looped.Wait());
    ASSERT_TRUE(worker.StopAndWait());
    EXPECT_FALSE(bSet);
    EXPECT_EQ(g_handleCount, 2U);
}

TEST_F(WorkerWait, AnyOtherThreadWaitsForTheEventAlone)
{
    CCustomManualResetEvent event(false);
    event.Wait(1);
    EXPECT_EQ(g_handleCount, 1U);
}
