// The pointer FIFO and the recycling buffer, with several threads at either end.
#include "KelCommon/KelThreadBuffer_T.h"
#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "KelCommon/KelWait.h"
#include "Scenario.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace
{

struct SElement
{
    int producer = 0;
    int number = 0;
};

using CFIFO = CKelThreadPtrFIFO_T<SElement>;
using CThreads = std::vector<std::unique_ptr<CScenarioThread>>;

// What consumers have taken, and whether each producer's elements came in order to each consumer.
class CTally
{
public:
    explicit CTally(int producerCount) : m_taken(static_cast<std::size_t>(producerCount)) {}

    void Take(const SElement& element, std::vector<int>& lastOfProducer)
    {
        const CSimulationPause pause;
        int& last = lastOfProducer.at(static_cast<std::size_t>(element.producer));
        Expect(element.number > last, "elements of one producer come out of order");
        last = element.number;
        auto& taken = m_taken.at(static_cast<std::size_t>(element.producer));
        taken.resize(std::max(taken.size(), static_cast<std::size_t>(element.number) + 1));
        ++taken.at(static_cast<std::size_t>(element.number));
    }

    void ExpectOnce(int elementCount) const
    {
        for (const auto& taken : m_taken)
        {
            Expect(taken == std::vector<int>(static_cast<std::size_t>(elementCount), 1),
                   "an element is lost or comes twice");
        }
    }

private:
    std::vector<std::vector<int>> m_taken; // how often, by producer and number
};

void Element_Put(CFIFO& fifo, SElement* element, bool bAlone)
{
    for (;;)
    {
        if (Simulation_Random(2) == 0 && fifo.In(element)) // without asking
        {
            return;
        }
        const bool bRoom = fifo.HasSpaceEvent().Wait(kelWait_Retried, 0);
        if (fifo.In(element))
        {
            return;
        }
        Expect(!(bRoom && bAlone), "the event says that there is room, and there is none");
    }
}

SElement* Element_Get(CFIFO& fifo, bool bAlone)
{
    SElement* element = nullptr;
    for (;;)
    {
        if (Simulation_Random(2) == 0 && fifo.Out(element))
        {
            return element;
        }
        const bool bData = fifo.HasDataEvent().Wait(kelWait_Retried, 0);
        if (fifo.Out(element))
        {
            return element;
        }
        Expect(!(bData && bAlone), "the event says that there is an element, and there is none");
    }
}

// Nobody sits through a wait: the events are right at every moment.
void Scenario_FIFO()
{
    const int producerCount = 1 + static_cast<int>(Simulation_Random(3));
    const int consumerCount = 1 + static_cast<int>(Simulation_Random(3));
    const int elementCount = 1 + static_cast<int>(Simulation_Random(6));
    CFIFO fifo(1 + static_cast<int>(Simulation_Random(3)));
    CTally tally(producerCount);
    const auto Produce = [&](int producer)
    {
        for (int number = 0; number < elementCount; ++number)
        {
            Element_Put(fifo, new SElement{producer, number}, producerCount == 1);
        }
    };
    const auto Consume = [&]
    {
        std::vector<int> last(static_cast<std::size_t>(producerCount), -1);
        while (const std::unique_ptr<SElement> element{Element_Get(fifo, consumerCount == 1)})
        {
            tally.Take(*element, last);
        }
    };
    CThreads consumers;
    for (int i = 0; i < consumerCount; ++i)
    {
        consumers.push_back(std::make_unique<CScenarioThread>("consumer", Consume));
    }
    CThreads producers;
    for (int i = 0; i < producerCount; ++i)
    {
        producers.push_back(std::make_unique<CScenarioThread>("producer", [&Produce, i] { Produce(i); }));
    }
    producers.clear();
    for (int i = 0; i < consumerCount; ++i)
    {
        Element_Put(fifo, nullptr, true); // the end
    }
    consumers.clear();
    tally.ExpectOnce(elementCount);
    ExpectEqual(Simulation_NowMs(), 0, "ms that threads sat through, though there was something to do");
}

// Whatever is put in beside a release is taken or deleted; the events are right afterwards.
void Scenario_FIFORelease()
{
    const int elementCount = 1 + static_cast<int>(Simulation_Random(6));
    const int capacity = 1 + static_cast<int>(Simulation_Random(3));
    CFIFO fifo(capacity);
    {
        CScenarioThread producer("producer",
                                 [&]
                                 {
                                     for (int number = 0; number < elementCount; ++number)
                                     {
                                         Element_Put(fifo, new SElement{0, number}, true);
                                     }
                                 });
        CScenarioThread consumer("consumer",
                                 [&]
                                 {
                                     int last = -1;
                                     for (int i = 0; i < elementCount; ++i)
                                     {
                                         SElement* element = nullptr;
                                         if (fifo.HasDataEvent().Wait(0, 0) && fifo.Out(element))
                                         {
                                             Expect(element->number > last, "elements come out of order");
                                             last = element->number;
                                             delete element;
                                         }
                                     }
                                 });
        Dawdle(30);
        Expect(fifo.ReleaseAllContent(), "an element that is counted cannot be taken");
        consumer.Join();
        while (!producer.IsOver())
        {
            fifo.ReleaseAllContent();
            Dawdle(10);
        }
    }
    fifo.ReleaseAllContent();
    Expect(!fifo.HasDataEvent().Wait(0, 0) && fifo.HasSpaceEvent().Wait(0, 0), "an empty FIFO's events are wrong");
    for (int i = 0; i < capacity; ++i)
    {
        Expect(fifo.In(new SElement()), "a FIFO has lost room");
    }
    Expect(fifo.HasDataEvent().Wait(0, 0) && !fifo.HasSpaceEvent().Wait(0, 0), "a full FIFO's events are wrong");
    ExpectEqual(Simulation_NowMs(), 0, "ms that threads sat through, though there was something to do");
}

// Elements go round and round through the whole cycle.
void Scenario_Buffer()
{
    const int elementCount = 1 + static_cast<int>(Simulation_Random(4));
    const int workerCount = 1 + static_cast<int>(Simulation_Random(3));
    const int roundCount = 1 + static_cast<int>(Simulation_Random(12));
    CKelThreadBuffer_T<SElement> buffer("simulated");
    std::vector<SElement*> elements;
    elements.reserve(static_cast<std::size_t>(elementCount));
    for (int i = 0; i < elementCount; ++i)
    {
        elements.push_back(new SElement{i, -1});
    }
    Expect(buffer.Create(elements.data(), elementCount), "a buffer cannot be made");
    std::vector<int> seen(static_cast<std::size_t>(roundCount));
    CThreads threads;
    threads.push_back(std::make_unique<CScenarioThread>(
        "producer",
        [&]
        {
            for (int i = 0; i < roundCount + workerCount; ++i)
            {
                SElement* element = nullptr;
                Expect(buffer.Empty_Out(element, kelWait_WithoutLimit), "no free element");
                element->number = i < roundCount ? i : -1; // -1: the end, for one worker
                Expect(buffer.Wait_In(element, kelWait_Retried), "no room for an element");
            }
        }));
    for (int i = 0; i < workerCount; ++i)
    {
        threads.push_back(std::make_unique<CScenarioThread>(
            "worker",
            [&]
            {
                SElement* element = nullptr;
                bool bEnd = false;
                while (!bEnd)
                {
                    if (buffer.Wait_Out(element, kelWait_WithoutLimit)) // another worker may have been quicker
                    {
                        bEnd = element->number < 0;
                        Expect(buffer.Full_In(element, kelWait_Retried), "no room for an element");
                    }
                }
            }));
    }
    for (int i = 0; i < roundCount + workerCount; ++i)
    {
        SElement* element = nullptr;
        Expect(buffer.Full_Out(element, kelWait_WithoutLimit), "no element came back");
        if (element->number >= 0)
        {
            ++seen.at(static_cast<std::size_t>(element->number));
        }
        Expect(buffer.Empty_In(element, kelWait_Retried), "no room for an element");
    }
    threads.clear();
    Expect(seen == std::vector<int>(static_cast<std::size_t>(roundCount), 1), "an element is lost or comes twice");
    ExpectEqual(Simulation_NowMs(), 0, "ms that threads sat through, though there was something to do");
}

} // namespace

std::vector<SScenario> KelScenarios_Get()
{
    return {
        {"fifo", "Several producers and consumers share a pointer FIFO of few elements", 4, &Scenario_FIFO},
        {"fifo-release", "A pointer FIFO is emptied while others put in and take out", 2, &Scenario_FIFORelease},
        {"buffer", "Elements travel round the recycling buffer through several workers", 2, &Scenario_Buffer},
    };
}
