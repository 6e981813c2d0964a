// What the data path does when nobody waits makes no system call: on Windows, no call of the kernel's event and wait
// functions leaves the platform's DLL. Critical sections that nobody else holds stay out of the kernel by themselves.
#include "Tests/Platform/QuietWork.h"
#include "Tests/Support/ImportTable.h"

#include <gtest/gtest.h>

#include <atomic>

namespace
{

std::atomic<int> g_callCount{0};
decltype(&SetEvent) g_pSetEvent = nullptr;
decltype(&ResetEvent) g_pResetEvent = nullptr;
decltype(&WaitForMultipleObjects) g_pWait = nullptr;

BOOL WINAPI Set_Count(HANDLE event)
{
    ++g_callCount;
    return g_pSetEvent(event);
}

BOOL WINAPI Reset_Count(HANDLE event)
{
    ++g_callCount;
    return g_pResetEvent(event);
}

DWORD WINAPI Wait_Count(DWORD count, const HANDLE* handles, BOOL bAll, DWORD timeoutMs)
{
    ++g_callCount;
    return g_pWait(count, handles, bAll, timeoutMs);
}

class NoSystemCall : public testing::Test
{
protected:
    NoSystemCall()
    {
        g_pSetEvent = m_platform.Replace("SetEvent", &Set_Count);
        g_pResetEvent = m_platform.Replace("ResetEvent", &Reset_Count);
        g_pWait = m_platform.Replace("WaitForMultipleObjects", &Wait_Count);
        g_callCount = 0;
    }
    ~NoSystemCall() override
    {
        m_platform.Replace("SetEvent", g_pSetEvent);
        m_platform.Replace("ResetEvent", g_pResetEvent);
        m_platform.Replace("WaitForMultipleObjects", g_pWait);
    }

private:
    CImportTable m_platform{"ControllerPlatform.dll"};
};

} // namespace

TEST_F(NoSystemCall, TheHarnessCountsAWaitThatSleeps)
{
    CCustomManualResetEvent event(false);
    event.Wait(1, 0);
    EXPECT_GE(g_callCount, 1);
}

TEST_F(NoSystemCall, ProbesSetsAndResetsOfAnEventThatNobodyWaitsForMakeNone)
{
    CCustomManualResetEvent event(false);
    event.Wait(1, 0); // a time with a waiter changes nothing for the time after it
    g_callCount = 0;
    for (int i = 0; i < 1000; ++i)
    {
        Event_Use(event);
    }
    EXPECT_EQ(g_callCount, 0);
}

TEST_F(NoSystemCall, PassingAnElementThroughAFIFOThatNobodyWaitsForMakesNone)
{
    CKelThreadPtrFIFO_T<int> fifo(1);
    int value = 0;
    for (int i = 0; i < 1000; ++i)
    {
        FIFO_Use(fifo, value);
    }
    EXPECT_EQ(g_callCount, 0);
}

TEST_F(NoSystemCall, TheWholeRoadOfALineIndexMakesNone)
{
    CKelThreadBuffer_T<int> buffer("Buffer");
    int* elements[] = {new int(0), new int(0), new int(0)};
    ASSERT_TRUE(buffer.Create(elements, 3));
    for (int i = 0; i < 1000; ++i)
    {
        LineRoad_Use(buffer);
    }
    EXPECT_EQ(g_callCount, 0);
}
