// One job on its way through the library: a producer and a FIFO for every print unit that has a separation, and the
// stage behind them. Made, read and destroyed by the command's main thread; the producers and the stage run on threads
// of their own.
#pragma once

#include "Host/Command/BandRange.h"
#include "Host/Command/BandSetFeeder.h"
#include "Host/Command/StageWatch.h"
#include "Host/Input/SeparationProducer.h"
#include "Host/Job/JobPage.h"
#include "Host/Trace.h"
#include "Platform/Log/CustomBoostLog.h"
#include "UnitData2BoardData/UnitData2BoardData_Base.h"

#include <atomic>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// Keeps the first error records that the library writes, to say why a stage stopped.
class CFailureRecords
{
public:
    CFailureRecords();
    ~CFailureRecords();
    CFailureRecords(const CFailureRecords&) = delete;
    CFailureRecords& operator=(const CFailureRecords&) = delete;

    // "Start thread error. name = CUnit2Board (KelBaseThread:55)": those that say something beyond a failure. If none
    // does: "failure (UnitData2BoardData_Base:240), m_processState = 3 (UnitData2BoardData_Base:103)".
    std::string Text_Get() const;

    // Whether there is one that says something.
    bool IsTelling() const;

    // Whether a thread of a band converter has told that it ends.
    bool HasLostWorker() const { return m_bLostWorker; }

private:
    struct SRecord
    {
        std::string m_text;
        bool m_bTelling = false;
    };

    void Record_Add(const SLogRecord& record);

    mutable std::mutex m_lock;
    std::vector<SRecord> m_records;
    std::atomic<bool> m_bLostWorker{false};
    int m_listenerId;
};

// How the two sides of the stage waited for each other.
struct SConversionStall
{
    SStallStatistic m_input;  // the stage for unit bands
    SStallStatistic m_output; // the stage for room in its output
};

class CConversion
{
public:
    // Sets the configuration from an opened job and takes the memory of the unit bands; `range` are the swaths that are
    // converted, counted over all pages. Nothing runs yet. The page stays the caller's and must outlive this; so must
    // the trace that the threads' work is drawn into, if there is one. Throws CInputError or CRunError.
    explicit CConversion(const CJobPage& page, const SBandRange& range = {}, CTrace* pTrace = nullptr);
    CConversion(const CConversion&) = delete;
    CConversion& operator=(const CConversion&) = delete;

    // Stops every thread that runs and waits for it. Bands that nobody took are freed.
    ~CConversion();

    // Starts the stage and the producers. Throws CRunError.
    void Start();

    // Where the stage puts its board bands, completed when it has ended. The stage's; null before Start.
    CBandDataFIFO_S* Output() const { return m_pOutput; }

    // Throws why the job cannot go on, if it cannot: a producer's error, or a CRunError for a stage that stopped early.
    void Error_Check();

    SConversionStall Stall_Get() const;

    // What the thread that takes the board bands draws itself as, and the queue that it takes them from.
    const STraceTrack& WriterTrack_Get() const { return m_writerTrack; }
    const STraceQueue& OutputQueue_Get() const { return m_watch.Trace_Get().m_output; }

    // What every part is doing and what waits between them, a line each, for somebody who looks on. `bandsTaken`: board
    // bands that were taken from the output.
    std::string Status_Text(std::int64_t bandsTaken);

private:
    void Trace_Make();
    void Producer_Make(const SPageUnit& pages);
    SSwathPlan SwathPlan_Make(const SJobUnit& unit) const;
    bool Stage_Create();
    std::string Failure_Text() const;
    [[noreturn]] void Producer_Rethrow(std::size_t index, const std::exception_ptr& error) const;

    const CJobPage& m_page;
    const SJob& m_job;
    SBandRange m_range;
    CTrace* m_pTrace;
    STraceTrack m_writerTrack;
    STraceTrack m_feederTrack; // of the one-FIFO stage
    CFailureRecords m_failures;
    CStageWatch m_watch{m_failures};
    std::vector<std::unique_ptr<CUnitBandFIFO>> m_fifos;
    std::vector<std::unique_ptr<CSeparationProducer>> m_producers;
    std::vector<const SJobUnit*> m_units;     // the producers', in their order; the job's
    CBandSetFeeder::CBandSetFIFO m_bandSets;  // between the feeder and the one-FIFO stage
    std::unique_ptr<CBandSetFeeder> m_feeder; // only with the one-FIFO stage
    std::unique_ptr<CUnitData2BoardData_Base> m_stage;
    CBandDataFIFO_S* m_pOutput = nullptr; // the stage's
};
