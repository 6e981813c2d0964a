// Sequences of calls: the pointer FIFO and the recycling buffer against queues, the worker-thread frame against its
// promises. The input's first byte chooses one of the three, the others the calls.
#include "KelCommon/KelBaseThread.h"
#include "KelCommon/KelThreadBuffer_T.h"
#include "Tests/Fuzz/FuzzTarget.h"
#include "Tests/KelCommon/CountedElement.h"

#include <array>
#include <chrono>
#include <deque>
#include <memory>
#include <stdexcept>
#include <thread>

namespace
{

using CElementFIFO = CKelThreadPtrFIFO_T<SCountedElement>;
using CElementQueue = std::deque<SCountedElement*>;

void Events_Expect(CElementFIFO& fifo, const CElementQueue& queue, std::size_t capacity)
{
    Fuzz_Expect(fifo.HasDataEvent().Wait(0, 0) == !queue.empty(), "the data event is set while there is an element");
    Fuzz_Expect(fifo.HasSpaceEvent().Wait(0, 0) == (queue.size() < capacity),
                "the space event is set while there is room");
}

// An element or, now and then, null, which a FIFO takes as it takes any pointer.
SCountedElement* Element_Make(CFuzzInput& input)
{
    return input.Byte() % 8 == 0 ? nullptr : new SCountedElement();
}

void FIFO_Run(CFuzzInput& input)
{
    const int capacity = input.Number(1, 6);
    {
        CElementFIFO fifo(capacity);
        CElementQueue queue;
        while (!input.IsAtEnd())
        {
            switch (input.Byte() % 8)
            {
            case 0:
                Fuzz_Expect(fifo.ReleaseAllContent(), "everything can be released");
                queue.clear();
                Fuzz_Expect(SCountedElement::LiveCount() == 0, "what was queued is deleted");
                break;
            case 1:
            case 2:
            case 3:
            {
                SCountedElement* taken = nullptr;
                Fuzz_Expect(fifo.Out(taken) == !queue.empty(), "there is an element to take");
                Fuzz_Expect(queue.empty() || taken == queue.front(), "the oldest element comes first");
                if (!queue.empty())
                {
                    queue.pop_front();
                    delete taken;
                }
                break;
            }
            default:
            {
                std::unique_ptr<SCountedElement> element(Element_Make(input));
                const bool bRoom = queue.size() < static_cast<std::size_t>(capacity);
                Fuzz_Expect(fifo.In(element.get()) == bRoom, "a FIFO takes as many as it has room for");
                if (bRoom)
                {
                    queue.push_back(element.release());
                }
                break;
            }
            }
            Events_Expect(fifo, queue, static_cast<std::size_t>(capacity));
        }
    }
    Fuzz_Expect(SCountedElement::LiveCount() == 0, "a FIFO deletes what is queued in it");
}

// The three FIFOs of a buffer by the operations on them.
struct SBufferPart
{
    bool (CKelThreadBuffer_T<SCountedElement>::*m_pOut)(SCountedElement*&, unsigned long);
    bool (CKelThreadBuffer_T<SCountedElement>::*m_pIn)(SCountedElement*, unsigned long);
    CElementFIFO* (CKelThreadBuffer_T<SCountedElement>::*m_pFIFO)();
    bool m_bTakesNull;
};

using CElementBuffer = CKelThreadBuffer_T<SCountedElement>;
constexpr std::array<SBufferPart, 3> bufferParts = {
    SBufferPart{&CElementBuffer::Empty_Out, &CElementBuffer::Empty_In, &CElementBuffer::EmptyFIFO, true},
    SBufferPart{&CElementBuffer::Wait_Out, &CElementBuffer::Wait_In, &CElementBuffer::InFIFO, false},
    SBufferPart{&CElementBuffer::Full_Out, &CElementBuffer::Full_In, &CElementBuffer::FullFIFO, true},
};

void Buffer_Run(CFuzzInput& input)
{
    const auto count = static_cast<std::size_t>(input.Number(1, 5));
    CElementQueue held; // by this caller
    {
        CElementBuffer buffer("a buffer");
        std::array<CElementQueue, 3> queues;
        for (std::size_t i = 0; i < count; ++i)
        {
            queues[0].push_back(new SCountedElement());
        }
        std::vector<SCountedElement*> elements(queues[0].begin(), queues[0].end());
        Fuzz_Expect(buffer.Create(elements.data(), static_cast<int>(count)), "a buffer takes its elements");
        while (!input.IsAtEnd())
        {
            const unsigned call = input.Byte();
            const SBufferPart& part = bufferParts[call % 3];
            CElementQueue& queue = queues[call % 3];
            if (call / 3 % 2 == 0)
            {
                SCountedElement* taken = nullptr;
                Fuzz_Expect((buffer.*part.m_pOut)(taken, 0) == !queue.empty(), "there is an element to take");
                Fuzz_Expect(queue.empty() || taken == queue.front(), "the oldest element comes first");
                if (!queue.empty())
                {
                    queue.pop_front();
                    held.push_back(taken);
                }
            }
            else
            {
                SCountedElement* element = held.empty() ? nullptr : held.front();
                const bool bTaken = queue.size() < count && (element != nullptr || part.m_bTakesNull);
                Fuzz_Expect((buffer.*part.m_pIn)(element, 0) == bTaken, "a FIFO takes as many as it has room for");
                if (bTaken)
                {
                    queue.push_back(element);
                    if (!held.empty())
                    {
                        held.pop_front();
                    }
                }
            }
            Events_Expect(*(buffer.*part.m_pFIFO)(), queue, count);
        }
        std::for_each(held.begin(), held.end(), [](SCountedElement* element) { delete element; });
    }
    Fuzz_Expect(SCountedElement::LiveCount() == 0, "a buffer deletes what is in its FIFOs");
}

enum class EOutcome
{
    Success,
    Failure,
    Exception,
};

// A worker that does what the input says, and counts.
class CFuzzWorker : public CKelBaseThread<CFuzzWorker>
{
public:
    CFuzzWorker(EOutcome prepare, EOutcome loop, int loopCount) : m_prepare(prepare), m_loop(loop), m_left(loopCount) {}
    CFuzzWorker(const CFuzzWorker&) = delete;
    CFuzzWorker& operator=(const CFuzzWorker&) = delete;
    ~CFuzzWorker() override
    {
        Stop();
        WaitExit(CCustomManualResetEvent::waitWithoutLimit);
    }

    std::atomic<int> m_prepareCount{0};
    std::atomic<int> m_loopCount{0};
    std::atomic<int> m_finallyCount{0};

protected:
    bool Prepare() override
    {
        ++m_prepareCount;
        return Outcome_Take(m_prepare);
    }

    // The last loop has the outcome; without a number of loops, none is the last.
    bool OneLoop() override
    {
        ++m_loopCount;
        if (m_left == 0 || --m_left > 0)
        {
            std::this_thread::yield();
            return true;
        }
        TamBaseThread::Stop();
        return Outcome_Take(m_loop);
    }
    void Finally() override
    {
        ++m_finallyCount;
        TamBaseThread::Finally();
    }

private:
    static bool Outcome_Take(EOutcome outcome)
    {
        if (outcome == EOutcome::Exception)
        {
            throw std::runtime_error("as the input says");
        }
        return outcome == EOutcome::Success;
    }

    EOutcome m_prepare;
    EOutcome m_loop;
    int m_left;
};

void Worker_Run(CFuzzInput& input)
{
    constexpr unsigned withoutLimit = CCustomManualResetEvent::waitWithoutLimit;
    const auto prepare = static_cast<EOutcome>(input.Byte() % 3);
    const auto loop = static_cast<EOutcome>(input.Byte() % 3);
    const int loopCount = input.Number(0, 5);
    const bool bForever = prepare == EOutcome::Success && loopCount == 0;
    CFuzzWorker worker(prepare, loop, loopCount);
    int startCount = 0;
    bool bPaused = false;    // requested, of a run that only stops when it is told to
    bool bMayRun = false;    // started, and not waited for since
    bool bStopAsked = false; // since the start
    for (int calls = 0; calls < 24 && !input.IsAtEnd(); ++calls)
    {
        switch (input.Byte() % 8)
        {
        case 0:
        case 1:
        {
            const bool bStarted = worker.Start("CFuzzWorker");
            Fuzz_Expect(bStarted || bMayRun, "a worker that has ended can be started");
            Fuzz_Expect(!bStarted || !bMayRun || bStopAsked || !bForever, "a worker that runs cannot be started");
            if (bStarted)
            {
                ++startCount;
                bMayRun = true;
                bPaused = false;
                bStopAsked = false;
            }
            break;
        }
        case 2:
            worker.Stop();
            bStopAsked = true;
            bPaused = false;
            break;
        case 3:
            worker.Pause();
            bPaused = bMayRun && bForever && !bStopAsked;
            break;
        case 4:
            worker.Resume();
            bPaused = false;
            break;
        case 5:
            if (!bStopAsked && bMayRun)
            {
                Fuzz_Expect(worker.WaitReady() == (prepare == EOutcome::Success), "ready means that Prepare succeeded");
            }
            break;
        case 6:
            if (bPaused)
            {
                Fuzz_Expect(worker.WaitPaused(), "a worker that runs on reaches its pause");
                const int before = worker.m_loopCount;
                std::this_thread::yield();
                Fuzz_Expect(worker.m_loopCount == before, "a worker that has paused does nothing");
            }
            break;
        default:
            if (bStopAsked || (!bForever && !bPaused && worker.WaitExit(1)))
            {
                Fuzz_Expect(worker.WaitExit(withoutLimit), "a worker that was stopped ends");
                bMayRun = false;
                Fuzz_Expect(worker.m_finallyCount == startCount, "every run had its Finally");
            }
            break;
        }
    }
    worker.Stop();
    Fuzz_Expect(worker.WaitExit(withoutLimit), "a worker that was stopped ends");
    Fuzz_Expect(worker.m_prepareCount == startCount, "every run began with Prepare");
    Fuzz_Expect(worker.m_finallyCount == startCount, "every run ended with Finally");
    Fuzz_Expect(prepare == EOutcome::Success || worker.m_loopCount == 0, "nothing runs after a failed Prepare");
    Fuzz_Expect(!worker.IsThreadSuccess() || (prepare == EOutcome::Success && startCount > 0),
                "only a run that was prepared succeeds");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    CFuzzInput input(bytes, size);
    switch (input.Byte() % 3)
    {
    case 0:
        FIFO_Run(input);
        break;
    case 1:
        Buffer_Run(input);
        break;
    default:
        Worker_Run(input);
        break;
    }
    return 0;
}
