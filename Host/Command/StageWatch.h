// What a conversion stage is doing and why it failed, as far as a client of the library can see it; and the stages of
// boardmap, which tell it.
//
// The library's ink-stripe stage waits an hour for a band converter that has lost one of its threads, and nothing ends
// that wait. The host's stages look after the converter while they wait: a record of a line generator's death, memory
// that ran out, or a request to stop makes them stop it. They also hold the converter to its word: a band that it did
// not finish fails the run.
//
// A watch is made by the conversion before the stage, which is its only writer on the stage's own thread; any thread
// may read it.
#pragma once

#include "DataMap/PrintUnitDataMap_Base.h"
#include "Host/Input/SeparationProducer.h"
#include "Host/Trace.h"
#include "KelCommon/KelWait.h"
#include "Platform/BandData/BandData.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Platform/GlobalConfig/DPConfig.h"
#include "Unit2Board/Unit2Board.h"
#include "UnitData2BoardData/UnitData2BoardData_AllUnit_2.h"
#include "UnitData2BoardData/UnitData2BoardData_Base.h"
#include "UnitData2BoardData/UnitData2BoardData_S_AllUnit.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

class CFailureRecords;

// What of a stage is drawn, if anything.
struct SStageTrace
{
    STraceTrack m_track;
    STraceQueue m_output;
    STraceQueue m_bandSets;                  // of the one-FIFO stage
    const CUnitBandFIFO* m_pFirst = nullptr; // the input that is waited for first; not of the one-FIFO stage
};

class CStageWatch
{
public:
    explicit CStageWatch(const CFailureRecords& records) : m_pRecords(&records) {}
    CStageWatch(const CStageWatch&) = delete;
    CStageWatch& operator=(const CStageWatch&) = delete;

    // Before the stage is made.
    void Trace_Set(const SStageTrace& trace) { m_trace = trace; }
    const SStageTrace& Trace_Get() const { return m_trace; }

    // The stage's thread.
    void State_Set(int state, int bandCount);
    void Band_Set(std::int64_t width, std::int64_t lineCount); // bits of a line; the board band that is to be made
    void NoBand_Set() { m_bNoBand = true; }                    // it could not be made
    void Converter_Set(bool bRuns) { m_bConverter = bRuns; }
    void Exception_Keep();

    // Whether a thread of the converter has ended that should not have.
    bool HasLostWorker() const;

    // Any thread.
    int State_Get() const { return m_state; }
    int BandCount_Get() const { return m_bandCount; } // made so far
    bool IsConverterRunning() const { return m_bConverter; }

    // Why the stage failed, as far as it was seen here: "there is no memory for a board band of ...", or empty.
    std::string Failure_Text() const;

private:
    const CFailureRecords* m_pRecords;
    SStageTrace m_trace;
    std::atomic<int> m_state{0};
    std::atomic<int> m_bandCount{0};
    std::atomic<bool> m_bConverter{false};
    std::atomic<bool> m_bNoBand{false};
    std::atomic<std::int64_t> m_bandWidth{0};
    std::atomic<std::int64_t> m_bandLines{0};
    mutable std::mutex m_lock; // guards m_error
    std::exception_ptr m_error;
};

// "1 Initialize", "4 Process"; for a number that is none, the number.
std::string StageState_Text(int state);

// A stage of the library, watched.
template<class TStage>
class CWatchedStage : public TStage
{
public:
    // The watch stays the caller's and must outlive the stage.
    explicit CWatchedStage(CStageWatch& watch) : m_pWatch(&watch) {}

protected:
    bool OneLoop() override
    {
        m_pWatch->State_Set(this->m_processState, this->m_outputBandNo);
        try
        {
            return TStage::OneLoop();
        }
        catch (...)
        {
            m_pWatch->Exception_Keep();
            throw; // the frame writes its record
        }
    }

    bool GetInputData() override
    {
        return m_pWatch->Trace_Get().m_track.IsOn() ? Input_Trace() : TStage::GetInputData();
    }

    bool AllocateOutputBuffer() override
    {
        if (!this->m_pInputElements->empty())
        {
            const CBandData& first = *this->m_pInputElements->front().band;
            m_pWatch->Band_Set(this->m_pDataMap->SrcPixelCount_2_BoardBitCount(first.m_width), first.m_height);
        }
        const bool bMade = TStage::AllocateOutputBuffer();
        if (!bMade)
        {
            m_pWatch->NoBand_Set();
        }
        return bMade;
    }

    bool GenerateBandData() override
    {
        const SStageTrace& trace = m_pWatch->Trace_Get();
        const CTrace::CTime begin = trace.m_track.Now();
        const bool bMapped = Band_Map();
        if (bMapped && trace.m_track.IsOn())
        {
            const CBandData& first = *this->m_pInputElements->front().band;
            trace.m_track.Span_Add("map", begin,
                                   {{"band", this->m_outputBandNo},
                                    {"page", first.m_pageIndex},
                                    {"swath", first.m_swathIndex},
                                    {"lines", this->m_pOutputBand->m_height},
                                    {"bytes", this->m_pOutputBand->m_dataSize}});
            trace.m_output.Change(1); // before it can be taken
        }
        return bMapped;
    }

private:
    static constexpr unsigned lookMs = 50; // how often it looks after the converter

    bool Band_Map()
    {
        if constexpr (std::is_base_of_v<CUnitData2BoardData_S_AllUnit, TStage>)
        {
            m_pWatch->Converter_Set(true);
            const bool bMapped = Converter_Run();
            m_pWatch->Converter_Set(false);
            return bMapped;
        }
        else
        {
            return TStage::GenerateBandData();
        }
    }

    // The input queues draw the waits for them. That for room in the output comes before the input is taken: behind the
    // wait for the first band, or of the one-FIFO stage before all else.
    bool Input_Trace()
    {
        constexpr bool bOneFIFO = std::is_base_of_v<CUnitData2BoardData_AllUnit_2, TStage>;
        const SStageTrace& trace = m_pWatch->Trace_Get();
        const CTrace::CTime begin = CTrace::Now();
        const auto before = this->m_pOutputFIFO->ProducerStall_Get();
        bool bSetThere = true;
        if constexpr (bOneFIFO)
        {
            bSetThere = this->m_pInputBufferFIFO->HasDataEvent().Wait(0, 0);
        }
        const bool bGoOn = TStage::GetInputData();
        const auto after = this->m_pOutputFIFO->ProducerStall_Get();
        CTrace::CTime end = begin;
        if (after.m_count != before.m_count)
        {
            const CTrace::CTime from =
                trace.m_pFirst == nullptr ? begin : std::max(begin, trace.m_pFirst->WaitEnd_Get());
            end = from + (after.m_duration - before.m_duration);
            trace.m_track.Stall_Add(trace.m_output, from, end);
        }
        if constexpr (bOneFIFO)
        {
            const bool bWaited = !bSetThere && after.m_count == before.m_count;
            if (bWaited)
            {
                trace.m_track.Stall_Add(trace.m_bandSets, end, CTrace::Now());
            }
            if (!this->m_pInputElements->empty())
            {
                trace.m_bandSets.Change(-1);
            }
        }
        return bGoOn;
    }

    bool Converter_Run()
    {
        std::vector<CBandData*> bands;
        for (const SInputElement& element : *this->m_pInputElements)
        {
            bands.push_back(element.band);
        }
        CUnit2Board converter;
        if (!converter.Create(GC_DPConfig()->LineGeneratorCount_Of_DataMap_Get(), bands.data(),
                              static_cast<int>(bands.size()), *this->m_pOutputBand, *this->m_pDataMap))
        {
            return false;
        }
        // The converter's own wait would write a record for every look.
        bool bGoOn = true;
        while (bGoOn && !converter.TamBaseThread::WaitExit(lookMs))
        {
            bGoOn = !this->IsStopRequested() && !m_pWatch->HasLostWorker();
        }
        converter.Stop(); // its threads may not outlive it, however it ended
        converter.TamBaseThread::WaitExit(kelWait_WithoutLimit);
        return bGoOn && converter.IsThreadSuccess();
    }

    CStageWatch* m_pWatch;
};
