// What the stage tests share: a stage whose inside can be driven step by step, and FIFOs that follow a script and write
// down every call.
#pragma once

#include "PlatformEnds.h" // of the edition that the program is built for

#include "Platform/BandData/BandData.h"
#include "Tests/Platform/TestSignal.h"
#include "UnitData2BoardData/UnitData2BoardData_Base.h"

#include "DataMap/PrintUnitDataMap_5.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <thread>
#include <vector>

// The calls of all scripted FIFOs of a test, in order: "0.Full_Out", "out.WaitForIn".
using Journal = std::vector<std::string>;

// An input FIFO that hands out what the test put in, never waits, and remembers what it was given.
class CScriptedFIFO : public CTestPool
{
public:
    CScriptedFIFO(int number, Journal& journal)
        : CTestPool("scripted"), m_name(std::to_string(number) + '.'), m_pJournal(&journal)
    {
    }
    ~CScriptedFIFO() override
    {
        for (CBandData* band : m_full)
        {
            delete band;
        }
        for (CBandData* band : m_returned)
        {
            delete band;
        }
    }

    bool Full_WaitForOut(unsigned long timeoutMs) override
    {
        Write("Full_WaitForOut", timeoutMs);
        return !m_full.empty();
    }
    bool Full_Out(CBandData*& band, unsigned long timeoutMs) override
    {
        Write("Full_Out", timeoutMs);
        if (m_bGiveNull)
        {
            band = nullptr;
            return true;
        }
        if (m_full.empty())
        {
            return false;
        }
        band = m_full.front();
        m_full.pop_front();
        return true;
    }
    bool Empty_In(CBandData* band, unsigned long timeoutMs) override
    {
        Write("Empty_In", timeoutMs);
        if (m_bRefuseReturn)
        {
            return false;
        }
        m_returned.push_back(band);
        return true;
    }
    bool IsCompleted() override
    {
        Write("IsCompleted", 100);
        return m_bCompleted;
    }

    std::deque<CBandData*> m_full;
    std::vector<CBandData*> m_returned;
    bool m_bCompleted = false;
    bool m_bGiveNull = false;
    bool m_bRefuseReturn = false;

private:
    void Write(const char* call, unsigned long timeoutMs)
    {
        m_pJournal->push_back(m_name + call + (timeoutMs == 100 ? "" : " with another time-out"));
    }

    std::string m_name;
    Journal* m_pJournal;
};

// An output FIFO with a switch for "full".
class CScriptedOutput : public CTestOutput
{
public:
    explicit CScriptedOutput(Journal& journal) : CTestOutput(8), m_pJournal(&journal) {}

    bool WaitForIn(unsigned timeoutMs) override
    {
        Write("WaitForIn", timeoutMs);
        return !m_bFull;
    }
    bool In(CBandData* band, unsigned timeoutMs) override
    {
        Write("In", timeoutMs);
        return !m_bRefuse && CTestOutput::In(band, timeoutMs);
    }
    void SetCompletedFlag() override
    {
        Write("SetCompletedFlag", 100);
        CTestOutput::SetCompletedFlag();
    }

    bool m_bFull = false;
    bool m_bRefuse = false;

private:
    void Write(const char* call, unsigned timeoutMs)
    {
        m_pJournal->push_back(std::string("out.") + call + (timeoutMs == 100 ? "" : " with another time-out"));
    }

    Journal* m_pJournal;
};

// A stage with its inside open to the test.
template<class TStage>
class CStageUnderTestOf : public TStage
{
public:
    using TStage::AlignBytesPerLine;
    using TStage::AllocateOutputBuffer;
    using TStage::Check_InputData;
    using TStage::GenerateBandData;
    using TStage::GetInputData;
    using TStage::Initialize;
    using TStage::m_bCheckInput;
    using TStage::m_outputBandNo;
    using TStage::m_pDataMap;
    using TStage::m_pInputElements;
    using TStage::m_pInputFIFOs;
    using TStage::m_pOutputBand;
    using TStage::m_pOutputFIFO;
    using TStage::m_processState;
    using TStage::MapBandData_Line_AllInput;
    using TStage::MapBandData_Line_OneInput;
    using TStage::OneLoop;
    using TStage::OutputBufferCount_Get;
    using TStage::Prepare;
    using TStage::Process;
    using TStage::Release_InputElement_Internal;
    using TStage::ReleaseInputElement;
    using TStage::SetState_AllocateOutputBuffer;
    using TStage::SetState_Process;

    void Stop() override
    {
        ++m_stopCount;
        m_bStopRequested = true;
        TStage::Stop();
    }

    bool CustomCreateThread() override { return m_bRefuseThread ? false : TStage::CustomCreateThread(); }

    bool IsStopRequested() const { return m_bStopRequested; }

    std::atomic<int> m_stopCount = 0;
    bool m_bRefuseThread = false;

private:
    std::atomic<bool> m_bStopRequested{false};
};

// The next stage's side of a stage's output.
inline CTestOutputEnd Output_Of(CUnitData2BoardData_Base& stage)
{
    return CTestOutputEnd(*stage.OutputProcessor_Get());
}

using CStageUnderTest = CStageUnderTestOf<CUnitData2BoardData_Base>;

// A new band of `height` lines of `width` pixels for one unit, all zero.
inline std::unique_ptr<CBandData> Band_Make(int unitIndex, int width, int height, int bitsPerPixel = 1)
{
    auto band = std::make_unique<CBandData>();
    band->Create(width, height, bitsPerPixel, 1);
    band->m_unitIndex = unitIndex;
    return band;
}

// For stages on their own threads.

// An input FIFO with a pool of bands of one unit.
inline std::unique_ptr<CTestPool> Pool_Make(int unitIndex, int bandCount, int width = 32, int height = 4)
{
    auto fifo = std::make_unique<CTestPool>("unit " + std::to_string(unitIndex));
    std::vector<CBandData*> bands;
    for (int i = 0; i < bandCount; ++i)
    {
        bands.push_back(Band_Make(unitIndex, width, height).release());
    }
    EXPECT_TRUE(fifo->Create(bands.data(), bandCount));
    return fifo;
}

// Moves one band from the pool to the stage's side.
inline bool Band_Push(CTestPool& fifo, int bandNo = 0, unsigned long timeoutMs = 1000)
{
    CBandData* band = nullptr;
    if (!fifo.Empty_Out(band, timeoutMs))
    {
        return false;
    }
    band->m_bandNo = bandNo;
    return fifo.Full_In(band, timeoutMs);
}

// Waits until `done()`; a test that waits in vain fails by this limit instead of hanging.
template<class Done>
bool Eventually(Done done)
{
    for (int i = 0; i < 20000; ++i)
    {
        if (done())
        {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

// A stage with a real map, scripted FIFOs and no thread: the test runs its operations.
class CDrivenStage : public testing::Test
{
protected:
    void Stage_Prepare(int fifoCount)
    {
        auto* map = new CPrintUnitDataMap_5();
        ASSERT_TRUE(map->Init(1, 16));
        m_stage.m_pDataMap = map;
        m_pOutput = new CScriptedOutput(m_journal);
        m_stage.m_pOutputFIFO = m_pOutput;
        m_stage.m_pInputFIFOs = new std::vector<CBandDataFIFO*>();
        for (int i = 0; i < fifoCount; ++i)
        {
            m_fifos.push_back(std::make_unique<CScriptedFIFO>(i, m_journal));
            m_stage.m_pInputFIFOs->push_back(m_fifos.back().get());
        }
        m_stage.m_processState = 2;
    }

    // Puts a band of 2 lines of 16 pixels into a FIFO.
    void Feed(std::size_t fifo, bool bSkip = false)
    {
        auto band = Band_Make(static_cast<int>(fifo), 16, 2);
        band->m_bSkip = bSkip;
        m_fifos[fifo]->m_full.push_back(band.release());
    }

    Journal m_journal;
    std::vector<std::unique_ptr<CScriptedFIFO>> m_fifos;
    CScriptedOutput* m_pOutput = nullptr; // the stage's
    CStageUnderTest m_stage;
};
