// Many producers and consumers on one FIFO, and one buffer's whole cycle: nothing lost, nothing twice.
#include "KelCommon/KelThreadBuffer_T.h"
#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "Tests/Platform/TestSignal.h"
#include "Tests/Support/LogCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace
{

// Puts `element` in as soon as there is room. Only the FIFO's full record may come of it.
void PutPatiently(CKelThreadPtrFIFO_T<int>& fifo, int* element)
{
    while (!fifo.HasSpaceEvent().Wait(100, 0) || !fifo.In(element))
    {
    }
}

} // namespace

TEST(KelThreadPtrFIFO_TStress, ManyProducersAndConsumersLoseNothingAndGetNothingTwice)
{
    constexpr int sides = 4;
    constexpr int perProducer = 5000;
    constexpr int total = sides * perProducer;
    for (const int capacity : {1, 7, 64})
    {
        const CLogCapture quiet; // the full records of racing producers
        CKelThreadPtrFIFO_T<int> fifo(capacity);
        std::vector<int> values(total, 0); // each becomes 1 when its element comes out; not atomic: the FIFO orders it
        std::atomic<int> takenCount{0};
        std::atomic<bool> bInOrder{true};
        std::vector<std::thread> threads;
        for (int producer = 0; producer < sides; ++producer)
        {
            threads.emplace_back(
                [&, producer]
                {
                    for (int i = 0; i < perProducer; ++i)
                    {
                        PutPatiently(fifo, &values[static_cast<std::size_t>(producer * perProducer + i)]);
                    }
                });
            threads.emplace_back(
                [&]
                {
                    std::vector<int> last(sides, -1);
                    while (takenCount < total)
                    {
                        int* element = nullptr;
                        if (!fifo.HasDataEvent().Wait(1, 0) || !fifo.Out(element))
                        {
                            continue;
                        }
                        ++*element;
                        ++takenCount;
                        const auto index = static_cast<int>(element - values.data());
                        auto& before = last[static_cast<std::size_t>(index / perProducer)];
                        bInOrder = bInOrder && before < index;
                        before = index;
                    }
                });
        }
        for (auto& thread : threads)
        {
            thread.join();
        }
        EXPECT_EQ(takenCount, total) << capacity;
        EXPECT_EQ(std::count(values.begin(), values.end(), 1), total) << capacity;
        EXPECT_TRUE(bInOrder) << "one producer's elements overtook each other";
        EXPECT_FALSE(fifo.HasDataEvent().Wait(0, 0));
        EXPECT_TRUE(fifo.HasSpaceEvent().Wait(0, 0));
    }
}

TEST(KelThreadBuffer_TStress, ElementsThatCircleThroughAllThreeFIFOsCarryEveryLineOnce)
{
    constexpr int elementCount = 20;
    constexpr int lineCount = 20'000;
    constexpr int workerCount = 4;
    const CLogCapture capture;
    CKelThreadBuffer_T<int> buffer("Circle");
    std::vector<int*> elements;
    for (int i = 0; i < elementCount; ++i)
    {
        elements.push_back(new int(-1));
    }
    ASSERT_TRUE(buffer.Create(elements.data(), elementCount));

    std::vector<int> lines(lineCount, 0); // each done by one worker
    std::atomic<bool> bDone{false};
    std::vector<std::thread> workers;
    for (int i = 0; i < workerCount; ++i)
    {
        workers.emplace_back(
            [&]
            {
                int* element = nullptr;
                while (!bDone)
                {
                    if (buffer.Wait_Out(element, 1))
                    {
                        ++lines[static_cast<std::size_t>(*element)];
                        EXPECT_TRUE(buffer.Full_In(element, 100));
                    }
                }
            });
    }
    int sent = 0;
    int returned = 0;
    while (returned < lineCount)
    {
        int* element = nullptr;
        if (sent < lineCount && buffer.EmptyFIFO()->HasDataEvent().Wait(0, 0) && buffer.Empty_Out(element, 0))
        {
            *element = sent++;
            ASSERT_TRUE(buffer.Wait_In(element, 100));
        }
        if (buffer.FullFIFO()->HasDataEvent().Wait(sent < lineCount ? 0 : 100, 0) && buffer.Full_Out(element, 0))
        {
            ++returned;
            ASSERT_TRUE(buffer.Empty_In(element, 100));
        }
    }
    bDone = true;
    for (auto& worker : workers)
    {
        worker.join();
    }
    EXPECT_EQ(std::count(lines.begin(), lines.end(), 1), lineCount);
    EXPECT_TRUE(capture.Records().empty());
}
