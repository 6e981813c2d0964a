// A recycling buffer's waits on a worker whose stop was requested. Of the embedded edition only: its events end such
// waits, and nothing in the contract says that they must.
#include "KelCommon/KelThreadBuffer_T.h"
#include "Tests/KelCommon/CountedElement.h"
#include "Tests/Platform/ScriptedWorker.h"

#include <gtest/gtest.h>

TEST(StopEndsWait, AStopRequestEndsTheWaitsOfEveryFIFOOfABuffer)
{
    using CBuffer = CKelThreadBuffer_T<SCountedElement>;
    for (const auto take : {&CBuffer::Empty_Out, &CBuffer::Full_Out, &CBuffer::Wait_Out})
    {
        CBuffer buffer("Buffer");
        auto* only = new SCountedElement(); // the buffer's
        ASSERT_TRUE(buffer.Create(&only, 1));
        SCountedElement* taken = nullptr;
        ASSERT_TRUE(buffer.Empty_Out(taken, 0)); // nothing is left to take
        CTestSignal looped;
        CTestSignal stopped;
        CScriptedWorker worker;
        bool bTaken = true;
        worker.m_oneLoop = [&]
        {
            looped.Raise();
            stopped.Wait();
            SCountedElement* element = nullptr;
            bTaken = (buffer.*take)(element, testPatienceMs);
            return true;
        };
        const CStopWatch watch;
        ASSERT_TRUE(worker.Start("Worker"));
        ASSERT_TRUE(looped.Wait());
        worker.Stop();
        stopped.Raise();
        ASSERT_TRUE(worker.WaitExit(testPatienceMs));
        EXPECT_LT(watch.Elapsed(), testPatience / 2);
        EXPECT_FALSE(bTaken);
        delete taken;
    }
}
