// The threads of a job: made in the order of the data, taken down against it.
#include "Host/Command/Conversion.h"

#include "Host/HostError.h"
#include "Host/Job/JobApply.h"
#include "Host/Job/JobCheck.h"
#include "Host/Job/JobGeometry.h"
#include "Host/Job/JobNames.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Platform/ThreadStatus/ThreadStatus.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace
{

constexpr unsigned withoutLimit = 4294967295U;
constexpr std::size_t keptRecords = 6;
constexpr int bandSetCount = 2; // sets that the feeder may be ahead of the one-FIFO stage

void Stall_Add(SStallStatistic& sum, const SStallStatistic& part)
{
    sum.m_count += part.m_count;
    sum.m_duration += part.m_duration;
}

} // namespace

CFailureRecords::CFailureRecords()
    : m_listenerId(CCustomBoostLog::Listener_Add([this](const SLogRecord& record) { Record_Add(record); }))
{
}

CFailureRecords::~CFailureRecords()
{
    CCustomBoostLog::Listener_Remove(m_listenerId);
}

// Whatever a line generator writes, it ends after it; what it throws is told by the thread frame.
void CFailureRecords::Record_Add(const SLogRecord& record)
{
    if (record.severity != ESeverityLevel::Error)
    {
        return;
    }
    const bool bFrame = record.fileName == "KelBaseThread";
    if (record.fileName == "Unit2Board_Line" || (bFrame && record.message.find("CUnit2Board") != std::string::npos))
    {
        m_bLostWorker = true;
    }
    const std::lock_guard guard(m_lock);
    const bool bTelling = record.message != "failure" && !record.message.starts_with("m_processState");
    if (m_records.size() < keptRecords || bTelling)
    {
        m_records.push_back(
            {record.message + " (" + record.fileName + ':' + std::to_string(record.line) + ')', bTelling});
    }
}

bool CFailureRecords::IsTelling() const
{
    const std::lock_guard guard(m_lock);
    return std::ranges::any_of(m_records, &SRecord::m_bTelling);
}

std::string CFailureRecords::Text_Get() const
{
    const bool bTelling = IsTelling();
    const std::lock_guard guard(m_lock);
    std::string text;
    for (std::size_t i = 0; i < std::min(m_records.size(), 2 * keptRecords); ++i)
    {
        const SRecord& record = m_records[i];
        text += record.m_bTelling == bTelling ? (text.empty() ? "" : ", ") + record.m_text : "";
    }
    return text;
}

CConversion::CConversion(const CJobPage& page, const SBandRange& range, CTrace* pTrace)
    : m_page(page), m_job(page.Job()), m_range(range), m_pTrace(pTrace), m_bandSets(bandSetCount)
{
    Job_Apply(m_job, page.Width(), page.Height());
    if (m_pTrace != nullptr)
    {
        Trace_Make();
    }
    for (const SPageUnit& unit : page.Units())
    {
        Producer_Make(unit);
    }
}

// The stage and the writer; each unit's producer draws itself below them.
void CConversion::Trace_Make()
{
    SStageTrace trace;
    const std::string stage = EnumName_Get(EnumNames_StageKind(), static_cast<int>(m_job.m_stageKind));
    trace.m_track = {m_pTrace, m_pTrace->Track_Add("stage " + stage)};
    m_writerTrack = {m_pTrace, m_pTrace->Track_Add("writer")};
    trace.m_output = {m_pTrace, m_pTrace->Counter_Add("output")};
    if (m_job.m_stageKind == EStageKind::OneFIFO)
    {
        m_feederTrack = {m_pTrace, m_pTrace->Track_Add("band set feeder")};
        trace.m_bandSets = {m_pTrace, m_pTrace->Counter_Add("band sets")};
    }
    m_watch.Trace_Set(trace);
}

SSwathPlan CConversion::SwathPlan_Make(const SJobUnit& unit) const
{
    SSwathPlan plan;
    plan.nozzles = m_job.m_nozzles;
    plan.bBidirectional = m_job.m_bBidirectional;
    plan.bByUnitPlanes = Job_LinesPerScanPosition(m_job) > 1;
    plan.bBitsAsPixels = Job_UnitWidth(m_job) > m_job.m_nozzles;
    plan.leftToRight = {Job_PassPositions(m_job, m_page.Width(), true), Job_ImagePosition(m_job, unit, true)};
    plan.rightToLeft = {Job_PassPositions(m_job, m_page.Width(), false), Job_ImagePosition(m_job, unit, false)};
    plan.bMarkBlank = m_job.m_bSkipBlank;
    plan.unitIndex = unit.m_unitId;
    plan.unitDirection = unit.m_direction;
    plan.firstStep = static_cast<int>(m_range.m_first);
    plan.stepCount = static_cast<int>(m_range.Last_Get(m_page.StepCount()) - m_range.m_first + 1);
    return plan;
}

void CConversion::Producer_Make(const SPageUnit& pages)
{
    const SJobUnit& unit = *pages.m_pUnit;
    const SSwathPlan plan = SwathPlan_Make(unit);
    const SUnitBandSize size = UnitBandSize_Get(m_page.PageInfo(), plan);
    m_fifos.push_back(UnitBandPool_Create(Job_UnitText(unit), size, m_job.m_inputBands, m_job.m_alignByteCountPerLine));
    m_units.push_back(&unit);
    const auto Open = [this, &pages](int page) { return m_page.Reader_Open(pages, page); };
    m_producers.push_back(std::make_unique<CSeparationProducer>(m_page.PageInfo(), Open, plan, m_fifos.back().get()));
    if (m_pTrace != nullptr)
    {
        const std::string name = Job_UnitText(unit);
        const STraceQueue queue = {m_pTrace, m_pTrace->Counter_Add(name)};
        SStageTrace stage = m_watch.Trace_Get();
        m_producers.back()->Trace_Set({m_pTrace, m_pTrace->Track_Add(name)}, queue);
        m_fifos.back()->Trace_Set(m_feederTrack.IsOn() ? m_feederTrack : stage.m_track, queue);
        stage.m_pFirst = m_feederTrack.IsOn() ? nullptr : m_fifos.front().get();
        m_watch.Trace_Set(stage);
    }
}

CConversion::~CConversion()
{
    // All are told before any is waited for; what they hold and what is queued goes with them.
    if (m_stage != nullptr)
    {
        m_stage->Stop();
    }
    if (m_feeder != nullptr)
    {
        m_feeder->Stop();
    }
    for (const auto& producer : m_producers)
    {
        producer->Stop();
    }
    if (m_stage != nullptr)
    {
        m_stage->WaitExit(withoutLimit);
    }
    m_feeder.reset();
    m_producers.clear();
    CBandSetFeeder::Sets_Free(m_bandSets);
}

// Makes the stage that the job asks for and starts it.
bool CConversion::Stage_Create()
{
    std::vector<CBandDataFIFO*> inputs;
    std::ranges::transform(m_fifos, std::back_inserter(inputs), [](const auto& fifo) { return fifo.get(); });
    if (m_job.m_stageKind == EStageKind::OneFIFO)
    {
        auto stage = std::make_unique<CWatchedStage<CUnitData2BoardData_AllUnit_2>>(m_watch);
        auto* pStage = stage.get();
        m_stage = std::move(stage);
        m_feeder = std::make_unique<CBandSetFeeder>(inputs, m_bandSets, m_job.m_bSkipBlank);
        m_feeder->Trace_Set(m_feederTrack, m_watch.Trace_Get().m_bandSets);
        return pStage->Create(m_bandSets) && m_feeder->Start("CBandSetFeeder");
    }
    if (m_job.m_stageKind == EStageKind::InkStripe)
    {
        m_stage = std::make_unique<CWatchedStage<CUnitData2BoardData_S_AllUnit>>(m_watch);
    }
    else
    {
        m_stage = std::make_unique<CWatchedStage<CUnitData2BoardData_Base>>(m_watch);
    }
    return m_stage->Create(m_job.m_bSkipBlank, inputs);
}

void CConversion::Start()
{
    if (!Stage_Create())
    {
        throw CRunError("the conversion stage could not be started: " + m_failures.Text_Get());
    }
    m_pOutput = m_stage->OutputProcessor_Get();
    for (const auto& producer : m_producers)
    {
        if (!producer->Start("CSeparationProducer"))
        {
            throw CRunError("a separation's thread could not be started: " + m_failures.Text_Get());
        }
    }
}

void CConversion::Error_Check()
{
    for (std::size_t i = 0; i < m_producers.size(); ++i)
    {
        if (const std::exception_ptr error = m_producers[i]->Error_Get())
        {
            Producer_Rethrow(i, error);
        }
    }
    if (m_feeder != nullptr && m_feeder->WaitExit(0) && !m_feeder->IsThreadSuccess())
    {
        throw CRunError("there is no memory for the unit bands of another step");
    }
    if (m_stage->WaitExit(0) && !m_stage->IsThreadSuccess())
    {
        throw CRunError("the conversion stage stopped before the end of the job: " + Failure_Text());
    }
}

// What was seen of it, and what the library says.
std::string CConversion::Failure_Text() const
{
    const std::string seen = m_watch.Failure_Text();
    const std::string records = seen.empty() || m_failures.IsTelling() ? m_failures.Text_Get() : "";
    return seen + (seen.empty() || records.empty() ? "" : "; ") + records;
}

std::string CConversion::Status_Text(std::int64_t bandsTaken)
{
    const auto Thread_Text = [](TamBaseThread& thread) { return thread.WaitExit(0) ? "ended" : "runs"; };
    const int made = m_watch.BandCount_Get();
    std::string text =
        "stage " + EnumName_Get(EnumNames_StageKind(), static_cast<int>(m_job.m_stageKind)) + ": thread " +
        Thread_Text(*m_stage) + ", state " + StageState_Text(m_watch.State_Get()) + ", " + std::to_string(made) +
        " bands made, " +
        (CThreadStatusMonitor::BusyCount_Get(ECustomThreadId::UnitData2BoardData) > 0 ? "busy" : "idle") + '\n';
    if (m_watch.IsConverterRunning())
    {
        text += "band converter: maps band " + std::to_string(made) + " on " +
                std::to_string(GC_DPConfig()->LineGeneratorCount_Of_DataMap_Get()) + " line threads\n";
    }
    for (std::size_t i = 0; i < m_producers.size(); ++i)
    {
        const int queued = m_producers[i]->QueuedCount_Get();
        text += Job_UnitText(*m_units[i]) + ": thread " + Thread_Text(*m_producers[i]) + ", " + std::to_string(queued) +
                " bands queued, " + std::to_string(queued - m_fifos[i]->TakenCount_Get()) + " of " +
                std::to_string(m_job.m_inputBands) + " wait\n";
    }
    if (m_feeder != nullptr)
    {
        text += std::string("band set feeder: thread ") + Thread_Text(*m_feeder) + '\n';
    }
    return text + "output: " + std::to_string(std::max<std::int64_t>(made - bandsTaken, 0)) + " bands wait\n";
}

// A separation that turns out to be damaged names the unit and its line, as one that could not be opened.
void CConversion::Producer_Rethrow(std::size_t index, const std::exception_ptr& error) const
{
    try
    {
        std::rethrow_exception(error);
    }
    catch (const CInputError& wrong)
    {
        throw CInputError({Separation_Fault(m_job, *m_units[index], m_producers[index]->Page_Get(), wrong)});
    }
}

SConversionStall CConversion::Stall_Get() const
{
    SConversionStall stall;
    for (const auto& fifo : m_fifos)
    {
        Stall_Add(stall.m_input, fifo->ConsumerStall_Get());
    }
    if (m_pOutput != nullptr)
    {
        stall.m_output = m_pOutput->ProducerStall_Get();
    }
    return stall;
}
