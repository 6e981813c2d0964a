// What the converter tests share: a way to the private parts, a map that follows a script and writes down every call,
// and bands to convert.
#pragma once

#include "DataMap/PrintUnitDataMap_Base.h"
#include "PlatformEnds.h" // of the edition that the program is built for

#include "Platform/BandData/BandData.h"
#include "Tests/Platform/TestSignal.h"
#include "Tests/Support/LogCapture.h"
#include "Unit2Board/Unit2Board.h"
#include "Unit2Board/Unit2Board_Line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// The members and the private operations. Nothing here has logic of its own but Setup.
struct SConverterTestAccess
{
    static auto& State(CUnit2Board& c) { return c.m_processState; }
    static auto& Generators(CUnit2Board& c) { return c.m_pLineGenerators; }
    static auto& GeneratorCount(CUnit2Board& c) { return c.m_lineGeneratorCount; }
    static auto& AddedCount(CUnit2Board& c) { return c.m_addedLineCount; }
    static auto& FinishedCount(CUnit2Board& c) { return c.m_finishedLineCount; }
    static auto& DataMap(CUnit2Board& c) { return c.m_pDataMap; }
    static auto& SrcBands(CUnit2Board& c) { return c.m_pSrcBands; }
    static auto& SrcBandCount(CUnit2Board& c) { return c.m_srcBandCount; }
    static auto& DstBand(CUnit2Board& c) { return c.m_pDstBand; }
    static auto& LineBuffer(CUnit2Board& c) { return c.m_pLineBuffer; }
    static bool Prepare(CUnit2Board& c) { return c.Prepare(); }
    static bool OneLoop(CUnit2Board& c) { return c.OneLoop(); }
    static bool AddSourceLine(CUnit2Board& c) { return c.AddSourceLine(); }
    static bool Process(CUnit2Board& c) { return c.Process(); }
    static bool Release_LineGenerator(CUnit2Board& c) { return c.Release_LineGenerator(); }
    static bool Stop_LineGenerator(CUnit2Board& c) { return c.Stop_LineGenerator(); }

    // A converter as Create leaves it, but without generators and without a thread: the test calls OneLoop itself.
    static bool Setup(CUnit2Board& c, CBandData& dst, const CPrintUnitDataMap_Base& map)
    {
        c.m_lineGeneratorCount = 0;
        c.m_pDstBand = &dst;
        c.m_pDataMap = &map;
        return c.Create_LineGenerator() && c.Prepare();
    }

    static auto& State(CUnit2Board_Line& g) { return g.m_processState; }
    static auto& DataMap(CUnit2Board_Line& g) { return g.m_pDataMap; }
    static auto& CustomParam(CUnit2Board_Line& g) { return g.m_pCustomParam; }
    static auto& SrcBands(CUnit2Board_Line& g) { return g.m_pSrcBands; }
    static auto& SrcBandCount(CUnit2Board_Line& g) { return g.m_srcBandCount; }
    static auto& DstBand(CUnit2Board_Line& g) { return g.m_pDstBand; }
    static auto& LineBuffer(CUnit2Board_Line& g) { return g.m_pLineBuffer; }
    static auto& LineIndex(CUnit2Board_Line& g) { return g.m_pLineIndex; }
    static bool Prepare(CUnit2Board_Line& g) { return g.Prepare(); }
    static bool OneLoop(CUnit2Board_Line& g) { return g.OneLoop(); }
    static void Finally(CUnit2Board_Line& g) { g.Finally(); }
};
using SAccess = SConverterTestAccess;

// A scratch object that remembers who made it and who gave it back.
struct SScratch
{
    std::thread::id madeOn;
    std::thread::id releasedOn;
    int releaseCount = 0;
};

// One MapData_Line.
struct SLineCall
{
    int line = 0; // reckoned from the destination address
    SSrcBandDataParam param;
    const unsigned char* src = nullptr;
    int dstByteCount = 0;
    std::thread::id thread;

    SScratch* Scratch() const { return static_cast<SScratch*>(param.m_customParam); }
};

// A map that maps nothing: it writes down its calls and then does what the test's script says.
class CScriptedMap : public CPrintUnitDataMap_Base
{
public:
    using Script = std::function<bool(const SLineCall&)>;

    explicit CScriptedMap(const CBandData& dst) : m_pDst(&dst) {}

    bool MapData_Line(const SSrcBandDataParam& param, const unsigned char* src, unsigned char* dst,
                      int dstByteCount) const override
    {
        const auto line = static_cast<int>((dst - m_pDst->m_pData) / m_pDst->m_bytesPerLine);
        const SLineCall call = {line, param, src, dstByteCount, std::this_thread::get_id()};
        {
            const std::lock_guard guard(m_lock);
            m_calls.push_back(call);
        }
        return !m_script || m_script(call);
    }
    void* CustomParam_Create() const override
    {
        if (m_bScratchThrows)
        {
            throw std::runtime_error("no scratch");
        }
        const std::lock_guard guard(m_lock);
        m_scratches.push_back(std::make_unique<SScratch>());
        m_scratches.back()->madeOn = std::this_thread::get_id();
        return m_scratches.back().get();
    }
    void CustomParam_Release(void* customParam) const override
    {
        const std::lock_guard guard(m_lock);
        if (customParam == nullptr)
        {
            ++m_nullReleaseCount;
            return;
        }
        auto* scratch = static_cast<SScratch*>(customParam);
        scratch->releasedOn = std::this_thread::get_id();
        ++scratch->releaseCount;
    }

    std::vector<SLineCall> Calls() const
    {
        const std::lock_guard guard(m_lock);
        return m_calls;
    }
    std::size_t CallCount() const
    {
        const std::lock_guard guard(m_lock);
        return m_calls.size();
    }
    std::size_t ScratchCount() const
    {
        const std::lock_guard guard(m_lock);
        return m_scratches.size();
    }
    int NullReleaseCount() const
    {
        const std::lock_guard guard(m_lock);
        return m_nullReleaseCount;
    }

    // Every scratch object: used by its maker's thread only, released there, once. After the threads have ended.
    void Scratches_Expect() const
    {
        for (const auto& scratch : m_scratches)
        {
            EXPECT_EQ(scratch->releaseCount, 1);
            EXPECT_EQ(scratch->releasedOn, scratch->madeOn);
        }
        for (const SLineCall& call : m_calls)
        {
            ASSERT_NE(call.Scratch(), nullptr);
            EXPECT_EQ(call.Scratch()->madeOn, call.thread);
        }
    }

    Script m_script; // set before the threads start; called without a lock
    bool m_bScratchThrows = false;

private:
    const CBandData* m_pDst;
    mutable std::mutex m_lock;
    mutable std::vector<SLineCall> m_calls;
    mutable std::vector<std::unique_ptr<SScratch>> m_scratches;
    mutable int m_nullReleaseCount = 0;
};

// One band to convert: source bands of 24 pixels for the units 10, 11, ... and a destination of 8 bytes per line.
struct SBandJob
{
    SBandJob(int srcBandCount, int height)
    {
        EXPECT_TRUE(dst.Create(64, height, 1, 1));
        for (int i = 0; i < srcBandCount; ++i)
        {
            sources.push_back(std::make_unique<CBandData>());
            EXPECT_TRUE(sources.back()->Create(24, height, 1, 1));
            sources.back()->m_unitIndex = 10 + i;
            pointers.push_back(sources.back().get());
        }
    }

    bool Create(CUnit2Board& converter, int lineGeneratorCount)
    {
        return converter.Create(lineGeneratorCount, pointers.data(), static_cast<int>(pointers.size()), dst, map);
    }

    CBandData dst;
    std::vector<std::unique_ptr<CBandData>> sources;
    std::vector<CBandData*> pointers;
    CScriptedMap map{dst};
};

// A converter that counts its steps, and that stops and waits for itself so that a failing test ends.
class CWatchedConverter : public CUnit2Board
{
public:
    CWatchedConverter() = default;
    CWatchedConverter(const CWatchedConverter&) = delete;
    CWatchedConverter& operator=(const CWatchedConverter&) = delete;
    ~CWatchedConverter() override
    {
        CUnit2Board::Stop();
        TamBaseThread::WaitExit(withoutLimit);
    }

    void Stop() override
    {
        ++m_stopCount;
        CUnit2Board::Stop();
    }
    bool OneLoop() override
    {
        ++m_loopCount;
        return CUnit2Board::OneLoop();
    }

    std::atomic<int> m_stopCount{0};
    std::atomic<int> m_loopCount{0};
};

// Lets those who come in out again one by one, as the test admits them.
class CTurnstile
{
public:
    // Returns once the caller has been admitted; false if that takes too long.
    bool Pass()
    {
        std::unique_lock lock(m_lock);
        const int number = m_enteredCount++;
        m_changed.notify_all();
        return m_changed.wait_for(lock, testPatience, [&] { return number < m_admittedCount; });
    }
    void Admit(int count)
    {
        const std::lock_guard guard(m_lock);
        m_admittedCount += count;
        m_changed.notify_all();
    }
    // True once `count` callers have come in.
    bool WaitEntered(int count)
    {
        std::unique_lock lock(m_lock);
        return m_changed.wait_for(lock, testPatience, [&] { return m_enteredCount >= count; });
    }
    int EnteredCount()
    {
        const std::lock_guard guard(m_lock);
        return m_enteredCount;
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    int m_enteredCount = 0;
    int m_admittedCount = 0;
};

// Waits until `done()`; false if that takes too long.
template<class Done>
bool Eventually(Done done)
{
    const CStopWatch watch;
    while (!done())
    {
        if (watch.Elapsed() > testPatience)
        {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// The records, in order, with the function that wrote each: "2 failure @Unit2Board:50 Create".
inline std::vector<std::string> Records_Text(const CLogCapture& log)
{
    std::vector<std::string> texts = log.SummaryWithLines();
    const auto records = log.Records();
    for (std::size_t i = 0; i < texts.size(); ++i)
    {
        const std::string& function = records[i].function;
        const auto end = function.find('(');
        const auto begin = function.find_last_of(" *&:", end) + 1;
        texts[i] += ' ' + function.substr(begin, end - begin);
    }
    return texts;
}
