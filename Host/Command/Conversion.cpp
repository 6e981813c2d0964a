// The threads of a job: made in the order of the data, taken down against it.
#include "Host/Command/Conversion.h"

#include "Host/HostError.h"
#include "Host/Job/JobApply.h"
#include "Host/Job/JobCheck.h"
#include "Host/Output/PathText.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"

#include <algorithm>
#include <cstddef>

namespace
{

constexpr unsigned waitMs = 100;
constexpr unsigned withoutLimit = 4294967295U;
constexpr std::size_t keptRecords = 6;

void Stall_Add(SStallStatistic& sum, const SStallStatistic& part)
{
    sum.m_count += part.m_count;
    sum.m_duration += part.m_duration;
}

std::string Unit_Name(const SJobUnit& unit)
{
    return "unit " + std::to_string(unit.m_unitId) + (unit.m_name.empty() ? "" : " (" + unit.m_name + ')');
}

} // namespace

CFailureRecords::CFailureRecords()
    : m_listenerId(CCustomBoostLog::Listener_Add(
          [this](const SLogRecord& record)
          {
              const std::lock_guard guard(m_lock);
              if (record.severity == ESeverityLevel::Error && m_records.size() < keptRecords)
              {
                  m_records.push_back(record.message + " (" + record.fileName + ':' + std::to_string(record.line) +
                                      ')');
              }
          }))
{
}

CFailureRecords::~CFailureRecords()
{
    CCustomBoostLog::Listener_Remove(m_listenerId);
}

std::string CFailureRecords::Text_Get() const
{
    const std::lock_guard guard(m_lock);
    std::string text;
    for (const std::string& record : m_records)
    {
        text += (text.empty() ? "" : ", ") + record;
    }
    return text;
}

CConversion::CConversion(const SJob& job) : m_job(job)
{
    std::vector<SSeparationInfo> separations;
    for (const SJobUnit& unit : job.m_units)
    {
        m_readers.push_back(std::make_unique<CSeparationReader>(Path_Text(unit.m_separationPath)));
        separations.push_back(m_readers.back()->Info_Get());
    }
    Job_CheckSeparations(job, separations);
    m_pageWidth = separations.front().width;
    m_pageHeight = separations.front().height;
    Job_Apply(job, m_pageWidth, m_pageHeight);
    Producers_Make();
}

void CConversion::Producers_Make()
{
    for (std::size_t i = 0; i < m_job.m_units.size(); ++i)
    {
        const SJobUnit& unit = m_job.m_units[i];
        SSwathPlan plan;
        plan.nozzles = m_job.m_nozzles;
        plan.bBidirectional = m_job.m_bBidirectional;
        plan.bByUnitPlanes = m_job.m_dpOption.m_dataPushStyle == EDataPushStyle::ByUnit;
        plan.bMarkBlank = m_job.m_bSkipBlank;
        plan.unitIndex = unit.m_unitId;
        plan.unitDirection = unit.m_direction;
        const SUnitBandSize size = UnitBandSize_Get(m_readers[i]->Info_Get(), plan);
        m_fifos.push_back(
            UnitBandPool_Create(Unit_Name(unit), size, m_job.m_inputBands, m_job.m_alignByteCountPerLine));
        m_producers.push_back(
            std::make_unique<CSeparationProducer>(std::move(m_readers[i]), plan, m_fifos.back().get()));
    }
    m_readers.clear();
}

CConversion::~CConversion()
{
    m_stage.Stop();
    for (const auto& producer : m_producers)
    {
        producer->Stop();
    }
    m_stage.WaitExit(withoutLimit);
    for (const auto& producer : m_producers)
    {
        producer->WaitExit(withoutLimit);
    }
}

void CConversion::Start()
{
    std::vector<CBandDataFIFO*> inputs;
    for (const auto& fifo : m_fifos)
    {
        inputs.push_back(fifo.get());
    }
    if (!m_stage.Create(m_job.m_bSkipBlank, inputs))
    {
        throw CRunError("the conversion stage could not be started: " + m_failures.Text_Get());
    }
    m_pOutput = m_stage.OutputProcessor_Get();
    for (const auto& producer : m_producers)
    {
        if (!producer->Start("CSeparationProducer"))
        {
            throw CRunError("a separation's thread could not be started: " + m_failures.Text_Get());
        }
    }
}

std::unique_ptr<CBandData> CConversion::Band_Next()
{
    CBandData* band = nullptr;
    m_pOutput->Out(band, waitMs);
    return std::unique_ptr<CBandData>(band);
}

bool CConversion::IsCompleted()
{
    return m_pOutput->IsCompleted();
}

void CConversion::Error_Check()
{
    for (const auto& producer : m_producers)
    {
        if (const std::exception_ptr error = producer->Error_Get())
        {
            std::rethrow_exception(error);
        }
    }
    if (m_stage.WaitExit(0) && !m_stage.IsThreadSuccess())
    {
        throw CRunError("the conversion stage stopped before the end of the page: " + m_failures.Text_Get());
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
