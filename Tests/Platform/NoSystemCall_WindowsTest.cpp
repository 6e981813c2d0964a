// What the data path does when nobody waits makes no system call: on Windows, no call of the functions that sleep on an
// address and wake there leaves the platform's DLL. Critical sections that nobody else holds stay out of the kernel by
// themselves.
#include "Tests/Platform/QuietWork.h"
#include "Tests/Support/ImportTable.h"

#include <gtest/gtest.h>

#include <atomic>

namespace
{

std::atomic<int> g_callCount{0};
decltype(&WaitOnAddress) g_pSleep = nullptr;
decltype(&WakeByAddressAll) g_pWake = nullptr;

BOOL WINAPI Sleep_Count(volatile void* address, void* compared, SIZE_T size, DWORD timeoutMs)
{
    ++g_callCount;
    return g_pSleep(address, compared, size, timeoutMs);
}

void WINAPI Wake_Count(void* address)
{
    ++g_callCount;
    g_pWake(address);
}

class NoSystemCall : public testing::Test
{
protected:
    NoSystemCall()
    {
        g_pSleep = m_platform.Replace("WaitOnAddress", &Sleep_Count);
        g_pWake = m_platform.Replace("WakeByAddressAll", &Wake_Count);
        g_callCount = 0;
    }
    ~NoSystemCall() override
    {
        m_platform.Replace("WaitOnAddress", g_pSleep);
        m_platform.Replace("WakeByAddressAll", g_pWake);
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
