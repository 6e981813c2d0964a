// The stage's input and output FIFOs: order, time-outs, completion, records, stall counts.
#include "Platform/DataProcess/BandDataFIFO.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Tests/Platform/ScriptedWorker.h"
#include "Tests/Support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

namespace
{

constexpr auto fullRecord = "2 failure @KelThreadPtrFIFO_T:144";

std::unique_ptr<CBandDataFIFO> InputFIFO(int bandCount)
{
    std::vector<CBandData*> bands;
    for (int i = 0; i < bandCount; ++i)
    {
        bands.push_back(new CBandData);
        bands.back()->m_bandNo = i;
    }
    auto fifo = std::make_unique<CBandDataFIFO>("Input");
    EXPECT_TRUE(fifo->Create(bands.data(), bandCount));
    return fifo;
}

// A worker that another thread has stopped calls `wait`; how long that took.
template<class Wait>
std::chrono::milliseconds TimeOnAStoppedWorker(Wait wait)
{
    std::chrono::milliseconds elapsed{0};
    CTestSignal looped;
    CTestSignal stopped;
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        looped.Raise();
        stopped.Wait();
        const CStopWatch watch;
        EXPECT_FALSE(wait());
        elapsed = watch.Elapsed();
        return true;
    };
    EXPECT_TRUE(worker.Start("Worker"));
    EXPECT_TRUE(looped.Wait());
    worker.Stop();
    stopped.Raise();
    EXPECT_TRUE(worker.WaitExit(testPatienceMs));
    return elapsed;
}

} // namespace

// The input side.

TEST(BandDataFIFO, BandsTravelFromThePoolToTheStageInOrderAndBack)
{
    const CLogCapture capture;
    const auto fifo = InputFIFO(3);
    for (int round = 0; round < 3; ++round)
    {
        CBandData* bands[3] = {};
        for (auto*& band : bands)
        {
            ASSERT_TRUE(fifo->Empty_Out(band, 0));
        }
        CBandData* none = nullptr;
        EXPECT_FALSE(fifo->Empty_Out(none, 0));
        EXPECT_FALSE(fifo->Full_WaitForOut(0));
        for (auto* band : bands)
        {
            ASSERT_TRUE(fifo->Full_In(band, 0));
            EXPECT_TRUE(fifo->Full_WaitForOut(0));
        }
        for (const auto* expected : bands)
        {
            CBandData* band = nullptr;
            ASSERT_TRUE(fifo->Full_Out(band, 0));
            EXPECT_EQ(band, expected);
            ASSERT_TRUE(fifo->Empty_In(band, 0));
        }
        EXPECT_FALSE(fifo->Full_Out(none, 0));
        EXPECT_EQ(none, nullptr);
    }
    EXPECT_THAT(capture.Summary(), IsEmpty());
}

TEST(BandDataFIFO, APoolOfNoBandsThrowsTheFIFOsInt0)
{
    const CLogCapture capture;
    CBandDataFIFO fifo("Input");
    CBandData* bands[1] = {nullptr};
    EXPECT_THROW(fifo.Create(bands, 0), int);
    EXPECT_THAT(capture.Summary(), ElementsAre("2 Argument is invalid. bufferLen = 0 @KelThreadPtrFIFO_T"));
}

TEST(BandDataFIFO, ItsWaitsLastTheirTimeOut)
{
    const auto fifo = InputFIFO(1);
    CBandData* band = nullptr;
    const CStopWatch fullWait;
    EXPECT_FALSE(fifo->Full_WaitForOut(20));
    EXPECT_GE(fullWait.Elapsed(), 20ms);
    const CStopWatch fullOut;
    EXPECT_FALSE(fifo->Full_Out(band, 20));
    EXPECT_GE(fullOut.Elapsed(), 20ms);
    EXPECT_LT(fullOut.Elapsed(), testPatience / 2);
    ASSERT_TRUE(fifo->Empty_Out(band, 0));
    CBandData* none = nullptr;
    const CStopWatch emptyOut;
    EXPECT_FALSE(fifo->Empty_Out(none, 20));
    EXPECT_GE(emptyOut.Elapsed(), 20ms);
    ASSERT_TRUE(fifo->Empty_In(band, 0));
}

TEST(BandDataFIFO, NoTimePassesOutsideTheStallThatIsCounted)
{
    const auto fifo = InputFIFO(1);
    CBandData* band = nullptr;
    CBandData* none = nullptr;
    ASSERT_TRUE(fifo->Empty_Out(band, 0));
    const CStopWatch full;
    EXPECT_FALSE(fifo->Full_Out(none, 200));
    EXPECT_LT(full.Elapsed() - fifo->ConsumerStall_Get().m_duration, 150ms);
    const CStopWatch empty;
    EXPECT_FALSE(fifo->Empty_Out(none, 200));
    EXPECT_LT(empty.Elapsed() - fifo->ProducerStall_Get().m_duration, 150ms);
    ASSERT_TRUE(fifo->Empty_In(band, 0));
}

TEST(BandDataFIFO, ItsWaitsEndWhenTheOtherSideComes)
{
    const auto fifo = InputFIFO(1);
    CBandData* band = nullptr;
    ASSERT_TRUE(fifo->Empty_Out(band, 0));
    std::thread producer(
        [&]
        {
            std::this_thread::sleep_for(5ms);
            fifo->Full_In(band, 0);
        });
    const CStopWatch watch;
    CBandData* taken = nullptr;
    EXPECT_TRUE(fifo->Full_WaitForOut(testPatienceMs));
    EXPECT_TRUE(fifo->Full_Out(taken, testPatienceMs));
    producer.join();
    std::thread consumer(
        [&]
        {
            std::this_thread::sleep_for(5ms);
            fifo->Empty_In(taken, 0);
        });
    EXPECT_TRUE(fifo->Empty_Out(band, testPatienceMs));
    consumer.join();
    EXPECT_LT(watch.Elapsed(), testPatience / 2);
    EXPECT_EQ(band, taken);
    delete band;
}

TEST(BandDataFIFO, AStopRequestEndsItsWaitsEarly)
{
    const auto fifo = InputFIFO(1);
    CBandData* band = nullptr;
    EXPECT_LT(TimeOnAStoppedWorker([&] { return fifo->Full_WaitForOut(testPatienceMs); }), testPatience / 2);
    EXPECT_LT(TimeOnAStoppedWorker([&] { return fifo->Full_Out(band, testPatienceMs); }), testPatience / 2);
    ASSERT_TRUE(fifo->Empty_Out(band, 0));
    CBandData* none = nullptr;
    EXPECT_LT(TimeOnAStoppedWorker([&] { return fifo->Empty_Out(none, testPatienceMs); }), testPatience / 2);
    ASSERT_TRUE(fifo->Empty_In(band, 0));
}

// What a worker still has to hand over when it has stopped itself is handed over.
TEST(BandDataFIFO, AWorkerThatStoppedItselfWaitsForRoomInItsStepAndInItsFinish)
{
    const auto fifo = InputFIFO(1);
    CBandData* pooled = nullptr;
    ASSERT_TRUE(fifo->Empty_Out(pooled, 0));
    CBandData* taken[2] = {};
    bool bTaken[2] = {};
    CTestSignal waits;
    CTestSignal finishes;
    CScriptedWorker worker;
    worker.m_oneLoop = [&]
    {
        worker.Stop();
        waits.Raise();
        bTaken[0] = fifo->Empty_Out(taken[0], testPatienceMs);
        return true;
    };
    worker.m_finally = [&]
    {
        finishes.Raise();
        bTaken[1] = fifo->Empty_Out(taken[1], testPatienceMs);
    };
    ASSERT_TRUE(worker.Start("Worker"));
    ASSERT_TRUE(waits.Wait());
    std::this_thread::sleep_for(std::chrono::milliseconds(5)); // until it does wait, most likely
    ASSERT_TRUE(fifo->Empty_In(pooled, 0));
    ASSERT_TRUE(finishes.Wait());
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ASSERT_TRUE(fifo->Empty_In(pooled, 0));
    ASSERT_TRUE(worker.WaitExit(testPatienceMs));
    EXPECT_TRUE(bTaken[0] && bTaken[1]);
    EXPECT_EQ(taken[0], pooled);
    EXPECT_EQ(taken[1], pooled);
    ASSERT_TRUE(fifo->Empty_In(pooled, 0));
}

TEST(BandDataFIFO, IsCompletedOnlyAfterTheFlagAndTheLastBand)
{
    const auto fifo = InputFIFO(2);
    CBandData* band = nullptr;
    EXPECT_FALSE(fifo->IsCompleted());
    ASSERT_TRUE(fifo->Empty_Out(band, 0));
    ASSERT_TRUE(fifo->Full_In(band, 0));
    fifo->SetCompletedFlag();
    EXPECT_FALSE(fifo->IsCompleted());
    EXPECT_TRUE(fifo->Full_WaitForOut(0));
    ASSERT_TRUE(fifo->Full_Out(band, 0));
    EXPECT_TRUE(fifo->IsCompleted());
    ASSERT_TRUE(fifo->Empty_In(band, 0));
    EXPECT_TRUE(fifo->IsCompleted());
}

TEST(BandDataFIFO, IsCompletedNeverComesBeforeTheLastBandWhileAProducerRuns)
{
    constexpr int bandCount = 300;
    for (int round = 0; round < 10; ++round)
    {
        const auto fifo = InputFIFO(4);
        std::thread producer(
            [&]
            {
                CBandData* band = nullptr;
                for (int i = 0; i < bandCount; ++i)
                {
                    while (!fifo->Empty_Out(band, 100))
                    {
                    }
                    fifo->Full_In(band, 0);
                }
                fifo->SetCompletedFlag();
            });
        int takenCount = 0;
        while (!fifo->IsCompleted())
        {
            CBandData* band = nullptr;
            if (fifo->Full_Out(band, 1))
            {
                ++takenCount;
                fifo->Empty_In(band, 0);
            }
        }
        producer.join();
        EXPECT_EQ(takenCount, bandCount);
    }
}

TEST(BandDataFIFO, TheEndIsNotWaitedForTheFirstTime)
{
    const auto fifo = InputFIFO(1);
    CBandData* band = nullptr;
    ASSERT_TRUE(fifo->Empty_Out(band, 0));
    ASSERT_TRUE(fifo->Full_In(band, 0));
    fifo->SetCompletedFlag();
    EXPECT_TRUE(fifo->Full_WaitForOut(testPatienceMs));
    ASSERT_TRUE(fifo->Full_Out(band, 0));
    const CStopWatch first;
    EXPECT_FALSE(fifo->Full_WaitForOut(testPatienceMs));
    EXPECT_LT(first.Elapsed(), testPatience / 2);
    const CStopWatch second; // who asks on has a reason to; the pace is kept
    EXPECT_FALSE(fifo->Full_WaitForOut(20));
    EXPECT_GE(second.Elapsed(), 20ms);
    ASSERT_TRUE(fifo->Empty_In(band, 0));
}

TEST(BandDataFIFO, PuttingIntoAFullFIFOIsARecordForEachOfTheTwoTries)
{
    const auto fifo = InputFIFO(1);
    CBandData extra;
    {
        const CLogCapture capture;
        const CStopWatch watch;
        EXPECT_FALSE(fifo->Empty_In(&extra, 20));
        EXPECT_GE(watch.Elapsed(), 20ms);
        EXPECT_THAT(capture.SummaryWithLines(), ElementsAre(fullRecord, fullRecord));
    }
    CBandData* band = nullptr;
    ASSERT_TRUE(fifo->Empty_Out(band, 0));
    ASSERT_TRUE(fifo->Full_In(band, 0));
    const CLogCapture capture;
    EXPECT_FALSE(fifo->Full_In(&extra, 0));
    EXPECT_THAT(capture.SummaryWithLines(), ElementsAre(fullRecord, fullRecord));
}

TEST(BandDataFIFO, ItCountsTheStallsOfBothSides)
{
    const auto fifo = InputFIFO(1);
    CBandData* band = nullptr;
    ASSERT_TRUE(fifo->Empty_Out(band, 100));
    EXPECT_EQ(fifo->ProducerStall_Get().m_count, 0);
    EXPECT_EQ(fifo->ProducerStall_Get().m_duration, 0ns);
    CBandData* none = nullptr;
    EXPECT_FALSE(fifo->Empty_Out(none, 10));
    EXPECT_EQ(fifo->ProducerStall_Get().m_count, 1);
    EXPECT_GE(fifo->ProducerStall_Get().m_duration, 10ms);
    EXPECT_EQ(fifo->ConsumerStall_Get().m_count, 0);

    EXPECT_FALSE(fifo->Full_WaitForOut(10));
    EXPECT_FALSE(fifo->Full_Out(none, 10));
    EXPECT_EQ(fifo->ConsumerStall_Get().m_count, 2);
    EXPECT_GE(fifo->ConsumerStall_Get().m_duration, 20ms);
    ASSERT_TRUE(fifo->Full_In(band, 0));
    EXPECT_TRUE(fifo->Full_WaitForOut(10));
    EXPECT_TRUE(fifo->Full_Out(band, 10));
    EXPECT_EQ(fifo->ConsumerStall_Get().m_count, 2);
    EXPECT_EQ(fifo->ProducerStall_Get().m_count, 1);
    ASSERT_TRUE(fifo->Empty_In(band, 0));
}

// The output side.

TEST(BandDataFIFO_S, ACapacityOfZeroOrLessThrowsTheInt0AfterARecord)
{
    for (const int capacity : {0, -1, std::numeric_limits<int>::min()})
    {
        const CLogCapture capture;
        EXPECT_THROW(CBandDataFIFO_S fifo(capacity), int);
        EXPECT_THAT(capture.SummaryWithLines(), ElementsAre("2 Argument is invalid. bufferLen = " +
                                                            std::to_string(capacity) + " @KelThreadPtrFIFO_T:64"));
    }
}

TEST(BandDataFIFO_S, BandsComeOutInOrderAndBelongToTheOneWhoTakesThem)
{
    const CLogCapture capture;
    CBandDataFIFO_S fifo(2);
    EXPECT_TRUE(fifo.WaitForIn(0));
    EXPECT_FALSE(fifo.WaitForOut(0));
    auto* first = new CBandData;
    auto* second = new CBandData;
    ASSERT_TRUE(fifo.In(first, 0));
    EXPECT_TRUE(fifo.WaitForIn(0));
    ASSERT_TRUE(fifo.In(second, 0));
    EXPECT_FALSE(fifo.WaitForIn(0));
    EXPECT_TRUE(fifo.WaitForOut(0));
    CBandData* band = nullptr;
    ASSERT_TRUE(fifo.Out(band, 0));
    EXPECT_EQ(band, first);
    delete band;
    EXPECT_THAT(capture.Summary(), IsEmpty());
    // The second is still queued and is deleted with the FIFO.
}

TEST(BandDataFIFO_S, ItsWaitsLastTheirTimeOut)
{
    CBandDataFIFO_S fifo(1);
    CBandData* band = nullptr;
    const CStopWatch waitForOut;
    EXPECT_FALSE(fifo.WaitForOut(20));
    EXPECT_GE(waitForOut.Elapsed(), 20ms);
    const CStopWatch out;
    EXPECT_FALSE(fifo.Out(band, 20));
    EXPECT_GE(out.Elapsed(), 20ms);
    EXPECT_EQ(band, nullptr);
    ASSERT_TRUE(fifo.In(new CBandData, 0));
    const CStopWatch waitForIn;
    EXPECT_FALSE(fifo.WaitForIn(20));
    EXPECT_GE(waitForIn.Elapsed(), 20ms);
}

TEST(BandDataFIFO_S, InOnAFullFIFOIsARecordForEachOfTheTwoTries)
{
    CBandDataFIFO_S fifo(1);
    ASSERT_TRUE(fifo.In(new CBandData, 0));
    CBandData extra;
    for (const unsigned timeoutMs : {0U, 20U})
    {
        const CLogCapture capture;
        const CStopWatch watch;
        EXPECT_FALSE(fifo.In(&extra, timeoutMs));
        EXPECT_GE(watch.Elapsed(), std::chrono::milliseconds(timeoutMs));
        EXPECT_THAT(capture.SummaryWithLines(), ElementsAre(fullRecord, fullRecord));
    }
}

TEST(BandDataFIFO_S, AnInThatFindsRoomInTimeSucceedsAndHasLoggedItsFirstTry)
{
    CBandDataFIFO_S fifo(1);
    ASSERT_TRUE(fifo.In(new CBandData, 0));
    CBandData* taken = nullptr;
    std::thread consumer(
        [&]
        {
            std::this_thread::sleep_for(10ms);
            fifo.Out(taken, 0);
        });
    const CLogCapture capture;
    EXPECT_TRUE(fifo.In(new CBandData, testPatienceMs));
    consumer.join();
    EXPECT_THAT(capture.SummaryWithLines(), ElementsAre(fullRecord));
    delete taken;
}

TEST(BandDataFIFO_S, AStopRequestEndsItsWaitsEarly)
{
    CBandDataFIFO_S fifo(1);
    CBandData* band = nullptr;
    CBandData extra;
    EXPECT_LT(TimeOnAStoppedWorker([&] { return fifo.WaitForOut(testPatienceMs); }), testPatience / 2);
    EXPECT_LT(TimeOnAStoppedWorker([&] { return fifo.Out(band, testPatienceMs); }), testPatience / 2);
    ASSERT_TRUE(fifo.In(new CBandData, 0));
    EXPECT_LT(TimeOnAStoppedWorker([&] { return fifo.WaitForIn(testPatienceMs); }), testPatience / 2);
    const CLogCapture quiet;
    EXPECT_LT(TimeOnAStoppedWorker([&] { return fifo.In(&extra, testPatienceMs); }), testPatience / 2);
}

TEST(BandDataFIFO_S, IsCompletedOnlyAfterTheFlagAndTheLastBand)
{
    CBandDataFIFO_S fifo(2);
    EXPECT_FALSE(fifo.IsCompleted());
    ASSERT_TRUE(fifo.In(new CBandData, 0));
    fifo.SetCompletedFlag();
    EXPECT_FALSE(fifo.IsCompleted());
    CBandData* band = nullptr;
    ASSERT_TRUE(fifo.Out(band, 0));
    EXPECT_TRUE(fifo.IsCompleted());
    delete band;
}

TEST(BandDataFIFO_S, NoWaitForABandOutlastsTheEnd)
{
    CBandDataFIFO_S fifo(1);
    const CStopWatch watch;
    std::thread stage([&] { fifo.SetCompletedFlag(); });
    CBandData* band = nullptr;
    EXPECT_FALSE(fifo.Out(band, testPatienceMs));
    stage.join();
    EXPECT_FALSE(fifo.Out(band, testPatienceMs));
    EXPECT_FALSE(fifo.WaitForOut(testPatienceMs));
    EXPECT_LT(watch.Elapsed(), testPatience / 2);
    EXPECT_TRUE(fifo.IsCompleted());
}

TEST(BandDataFIFO_S, TheLastBandsComeOutAfterTheEndWasSet)
{
    CBandDataFIFO_S fifo(2);
    ASSERT_TRUE(fifo.In(new CBandData, 0));
    fifo.SetCompletedFlag();
    EXPECT_TRUE(fifo.WaitForOut(testPatienceMs));
    CBandData* band = nullptr;
    ASSERT_TRUE(fifo.Out(band, testPatienceMs));
    delete band;
    EXPECT_FALSE(fifo.WaitForOut(0));
}

TEST(BandDataFIFO_S, ItCountsTheStallsOfBothSides)
{
    const CLogCapture quiet;
    CBandDataFIFO_S fifo(1);
    CBandData* band = nullptr;
    EXPECT_FALSE(fifo.WaitForOut(10));
    EXPECT_FALSE(fifo.Out(band, 10));
    EXPECT_EQ(fifo.ConsumerStall_Get().m_count, 2);
    EXPECT_GE(fifo.ConsumerStall_Get().m_duration, 20ms);
    EXPECT_TRUE(fifo.WaitForIn(10));
    ASSERT_TRUE(fifo.In(new CBandData, 10));
    EXPECT_EQ(fifo.ProducerStall_Get().m_count, 0);
    CBandData extra;
    EXPECT_FALSE(fifo.WaitForIn(10));
    EXPECT_FALSE(fifo.In(&extra, 10));
    EXPECT_EQ(fifo.ProducerStall_Get().m_count, 2);
    EXPECT_GE(fifo.ProducerStall_Get().m_duration, 20ms);
    EXPECT_TRUE(fifo.WaitForOut(10));
    ASSERT_TRUE(fifo.Out(band, 10));
    EXPECT_EQ(fifo.ConsumerStall_Get().m_count, 2);
    delete band;
}
