// What it costs to hand things from thread to thread: line indices, wake-ups, threads, and a whole band of one line.
//
//   HandOffBench [--rounds N] [--json FILE]
//
// A line index goes there and back: 20 elements travel between two threads through two queues, as they do between a
// band converter and its generator. The library's FIFOs are measured in turns with the bounded queues of two well-known
// libraries, where those are installed; the peers wait as their makers offer it, or by trying again and yielding where
// they offer nothing. README.md beside this file tells how to read the result.
#include "Benchmarks/Figures.h"
#include "DataMap/PrintUnitDataMap_5.h"
#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "KelCommon/KelWait.h"
#include "Platform/BandData/BandData.h"
#include "Platform/Thread/CreateThread.h"
#include "Platform/Thread/CustomManualResetEvent.h"
#include "Unit2Board/Unit2Board.h"

#if defined(HANDOFF_PEER_BOOST)
#include <boost/lockfree/queue.hpp>
#endif
#if defined(HANDOFF_PEER_TBB)
#include <oneapi/tbb/concurrent_queue.h>
#endif

#include <array>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace
{

constexpr int elementCount = 20;
constexpr int handOffsPerRound = 50'000;

// The queues under one pair of names.

class COwnQueue
{
public:
    void Put(int* element)
    {
        while (!m_fifo.In(element))
        {
            m_fifo.HasSpaceEvent().Wait(kelWait_Retried, 0);
        }
    }
    int* Take()
    {
        int* element = nullptr;
        while (!m_fifo.Out(element))
        {
            m_fifo.HasDataEvent().Wait(kelWait_Retried, 0);
        }
        return element;
    }

private:
    CKelThreadPtrFIFO_T<int> m_fifo{elementCount};
};

#if defined(HANDOFF_PEER_BOOST)
class CBoostQueue
{
public:
    void Put(int* element)
    {
        while (!m_queue.bounded_push(element))
        {
            std::this_thread::yield();
        }
    }
    int* Take()
    {
        int* element = nullptr;
        while (!m_queue.pop(element))
        {
            std::this_thread::yield();
        }
        return element;
    }

private:
    boost::lockfree::queue<int*, boost::lockfree::capacity<elementCount>> m_queue;
};
#endif

#if defined(HANDOFF_PEER_TBB)
class CTbbQueue
{
public:
    CTbbQueue() { m_queue.set_capacity(elementCount); }
    void Put(int* element) { m_queue.push(element); }
    int* Take()
    {
        int* element = nullptr;
        m_queue.pop(element);
        return element;
    }

private:
    oneapi::tbb::concurrent_bounded_queue<int*> m_queue;
};
#endif

// Seconds for one index, there and back.
template<class CQueue>
double HandOff_Seconds()
{
    std::array<int, elementCount> elements = {};
    CQueue there;
    CQueue back;
    for (int& element : elements)
    {
        back.Put(&element);
    }
    std::atomic<int> readyCount{0};
    const auto meet = [&]
    {
        for (++readyCount; readyCount < 2;)
        {
            std::this_thread::yield();
        }
    };
    std::int64_t sum = 0;
    std::thread worker(
        [&]
        {
            meet();
            for (int i = 0; i < handOffsPerRound; ++i)
            {
                int* element = there.Take();
                sum += *element;
                back.Put(element);
            }
        });
    meet();
    const double seconds = Seconds_Of(
        [&]
        {
            for (int i = 0; i < handOffsPerRound; ++i)
            {
                int* element = back.Take();
                *element = i;
                there.Put(element);
            }
            worker.join();
        });
    for (int i = 0; i < elementCount; ++i)
    {
        back.Take(); // a FIFO would delete what it still holds
    }
    Require(sum == std::int64_t{handOffsPerRound} * (handOffsPerRound - 1) / 2, "every index once");
    return seconds / handOffsPerRound;
}

// Events under one pair of names, for wake-ups.

class COwnEvent
{
public:
    void Set() { m_event.Set(); }
    void Wait()
    {
        while (!m_event.Wait(kelWait_Retried, 0))
        {
        }
        m_event.Reset();
    }

private:
    CCustomManualResetEvent m_event{false};
};

class CStandardEvent
{
public:
    void Set()
    {
        const std::lock_guard guard(m_lock);
        m_bSet = true;
        m_changed.notify_all();
    }
    void Wait()
    {
        std::unique_lock lock(m_lock);
        m_changed.wait(lock, [this] { return m_bSet; });
        m_bSet = false;
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_bSet = false;
};

// Seconds from a Set to the other thread's answer, halved. `rest` is what each side does before it answers: long enough
// and the other one sleeps.
template<class CEvent>
double WakeUp_Seconds(std::chrono::microseconds rest)
{
    constexpr int turns = 200;
    CEvent ping;
    CEvent pong;
    const auto linger = [&]
    {
        const auto end = std::chrono::steady_clock::now() + rest;
        while (std::chrono::steady_clock::now() < end)
        {
        }
    };
    std::thread other(
        [&]
        {
            for (int i = 0; i < turns; ++i)
            {
                ping.Wait();
                linger();
                pong.Set();
            }
        });
    const double seconds = Seconds_Of(
        [&]
        {
            for (int i = 0; i < turns; ++i)
            {
                linger();
                ping.Set();
                pong.Wait();
            }
        });
    other.join();
    return seconds / turns / 2 - std::chrono::duration<double>(rest).count();
}

unsigned long Thread_Run(void* /*parameter*/)
{
    return 0;
}

double OwnThread_Seconds()
{
    return Seconds_Of(
        []
        {
            const HANDLE thread = CreateThread(nullptr, 0, &Thread_Run, nullptr, 0, nullptr);
            Require(thread != nullptr, "a thread");
            WaitForSingleObject(thread, INFINITE);
            CloseHandle(thread);
        });
}

double StandardThread_Seconds()
{
    return Seconds_Of([] { std::thread([] {}).join(); });
}

// A client's map: whatever it does in a line, it is not one of the library's own, and gets its lines one by one.
class CClientMap : public CPrintUnitDataMap_5
{
public:
    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override
    {
        return m_bIdle || CPrintUnitDataMap_5::MapData_Line(param, src, dst, dstByteCount);
    }
    bool m_bIdle = false; // leaves the line alone: what is left is the converter
};

// One band through a converter, from its construction to its destruction.
class CBandJob
{
public:
    CBandJob(const CPrintUnitDataMap_5& map, int unitCount, int pixelCount, int lineCount)
        : m_map(map), m_lineCount(lineCount)
    {
        for (int unit = 0; unit < unitCount; ++unit)
        {
            m_sources.push_back(std::make_unique<CBandData>());
            Require(m_sources.back()->Create(pixelCount, lineCount, 1, 1), "a source");
            m_sources.back()->m_unitIndex = unit;
            m_pointers.push_back(m_sources.back().get());
        }
        Require(m_board.Create(m_map.SrcPixelCount_2_BoardBitCount(pixelCount), lineCount, 1, 1), "the board");
    }

    double Seconds(int generatorCount)
    {
        return Seconds_Of(
            [&]
            {
                CUnit2Board converter;
                Require(converter.Create(generatorCount, m_pointers.data(), static_cast<int>(m_pointers.size()),
                                         m_board, m_map),
                        "the converter");
                Require(converter.WaitExit(kelWait_WithoutLimit), "the converter's end");
            });
    }
    int LineCount() const { return m_lineCount; }

private:
    const CPrintUnitDataMap_5& m_map;
    int m_lineCount;
    std::vector<std::unique_ptr<CBandData>> m_sources;
    std::vector<CBandData*> m_pointers;
    CBandData m_board;
};

using Measure = std::function<double()>;

// The medians of all, measured in turns.
std::vector<double> Medians_InTurns(int rounds, const std::vector<Measure>& measures)
{
    std::vector<std::vector<double>> seconds(measures.size());
    for (const Measure& measure : measures)
    {
        measure(); // whatever is paid once
    }
    for (int round = 0; round < rounds; ++round)
    {
        for (std::size_t i = 0; i < measures.size(); ++i)
        {
            seconds[i].push_back(measures[i]());
        }
    }
    std::vector<double> medians;
    for (const auto& one : seconds)
    {
        medians.push_back(Median_Of(one));
    }
    return medians;
}

void HandOff_Measure(CFigures& figures, int rounds)
{
    std::vector<std::string> names = {"FIFO pair"};
    std::vector<Measure> measures = {&HandOff_Seconds<COwnQueue>};
#if defined(HANDOFF_PEER_BOOST)
    names.push_back("Boost.Lockfree queue");
    measures.push_back(&HandOff_Seconds<CBoostQueue>);
#endif
#if defined(HANDOFF_PEER_TBB)
    names.push_back("oneTBB concurrent_bounded_queue");
    measures.push_back(&HandOff_Seconds<CTbbQueue>);
#endif
    const auto medians = Medians_InTurns(rounds, measures);
    for (std::size_t i = 1; i < medians.size(); ++i)
    {
        figures.Add({"line index there and back, peer: " + names[i], "", medians[i] * 1e9, "ns", 0});
    }
    figures.Add({"line index there and back, " + names[0], "", medians[0] * 1e9, "ns", 0});
    for (std::size_t i = 1; i < medians.size(); ++i)
    {
        figures.Add(
            {"line index, against " + names[i], "<= 1 x peer", medians[0] * 1e9, "ns", medians[0] / medians[i]});
    }
}

void WakeUp_Measure(CFigures& figures, int rounds)
{
    for (const int restUs : {0, 100})
    {
        const std::chrono::microseconds rest(restUs);
        const auto medians = Medians_InTurns(rounds, {[&] { return WakeUp_Seconds<COwnEvent>(rest); },
                                                      [&] { return WakeUp_Seconds<CStandardEvent>(rest); }});
        const std::string name = restUs == 0 ? "wake-up, answered at once" : "wake-up of a thread that sleeps";
        figures.Add({name, "<= 1 x std", medians[0] * 1e9, "ns", medians[0] / medians[1]});
    }
}

void Thread_Measure(CFigures& figures, int rounds)
{
    const auto medians = Medians_InTurns(rounds * 20, {&OwnThread_Seconds, &StandardThread_Seconds});
    figures.Add({"thread, from its start to its end", "<= 1 x std", medians[0] * 1e6, "us", medians[0] / medians[1]});
}

void Band_Measure(CFigures& figures, int rounds)
{
    constexpr double goalUs = 150;
    CPrintUnitDataMap_5 style;
    CClientMap client;
    CClientMap idleClient;
    idleClient.m_bIdle = true;
    Require(style.Init(1, 16) && client.Init(1, 16) && idleClient.Init(1, 16), "the maps");
    CBandJob single(style, 1, 400, 1);
    CBandJob hundred(style, 16, 400, 100);
    CBandJob idle(idleClient, 1, 400, 30'000);
    CBandJob short8(style, 1, 8, 300'000);
    CBandJob clients(client, 16, 400, 10'000);
    for (const int generatorCount : {1, 2, 4})
    {
        const std::string with = " with " + std::to_string(generatorCount) + " generators";
        const auto bands = Medians_InTurns(rounds * 10, {[&] { return single.Seconds(generatorCount); },
                                                         [&] { return hundred.Seconds(generatorCount); }});
        const bool bGoal = generatorCount == 2;
        figures.Add(
            {"fixed cost of a band" + with, bGoal ? "< 150 us" : "", bands[0] * 1e6, "us", bands[0] * 1e6 / goalUs});
        figures.Add({"a band of 16 units x 400 pixels x 100 lines" + with, "", bands[1] * 1e6, "us", 0});
        const auto lines = Medians_InTurns(rounds, {[&] { return idle.Seconds(generatorCount); },
                                                    [&] { return short8.Seconds(generatorCount); },
                                                    [&] { return clients.Seconds(generatorCount); }});
        const auto add = [&](const char* what, double seconds, const CBandJob& job) {
            figures.Add({what + with, "", seconds / job.LineCount() * 1e9, "ns", 0});
        };
        add("a line of a client's map that does nothing", lines[0], idle);
        add("a line of 8 pixels of a style's map", lines[1], short8);
        add("a line of 16 units x 400 pixels of a client's map", lines[2], clients);
    }
}

} // namespace

int main(int argumentCount, char** arguments)
{
    try
    {
        std::map<std::string, std::string> options = {{"--rounds", "9"}, {"--json", ""}};
        Options_Read(argumentCount, arguments, options);
        const int rounds = std::stoi(options["--rounds"]);
        CFigures figures;
        HandOff_Measure(figures, rounds);
        WakeUp_Measure(figures, rounds);
        Thread_Measure(figures, rounds);
        Band_Measure(figures, rounds);
        if (!options["--json"].empty())
        {
            figures.Json_Write(options["--json"]);
        }
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "HandOffBench: %s\n", error.what());
        return 1;
    }
}
