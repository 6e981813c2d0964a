// The output thread; see the header.
#include "Host/Command/BoardOutput.h"

#include "KelCommon/KelWait.h"

#include <limits>
#include <memory>

CBoardOutput::CBoardOutput(CBandDataFIFO_S& bands, CBoardWriter& writer) : m_pBands(&bands), m_pWriter(&writer) {}

CBoardOutput::~CBoardOutput()
{
    Stop();
    WaitExit(std::numeric_limits<unsigned int>::max());
}

void CBoardOutput::Trace_Set(const STraceTrack& track, const STraceQueue& queue)
{
    m_track = track;
    m_queue = queue;
}

SBoardCount CBoardOutput::Count_Get() const
{
    const std::lock_guard guard(m_lock);
    return m_count;
}

void CBoardOutput::Error_Check() const
{
    const std::lock_guard guard(m_lock);
    if (m_error != nullptr)
    {
        std::rethrow_exception(m_error);
    }
}

bool CBoardOutput::OneLoop()
{
    try
    {
        Band_Write();
        return true;
    }
    catch (...)
    {
        const std::lock_guard guard(m_lock);
        m_error = std::current_exception();
        return false;
    }
}

void CBoardOutput::Band_Write()
{
    CBandData* next = nullptr;
    const bool bTaken = m_track.Stall_Watch(
        m_queue, [&] { return m_pBands->Out(next, kelWait_Retried); },
        [&] { return m_pBands->ConsumerStall_Get().m_count; });
    if (!bTaken)
    {
        if (m_pBands->IsCompleted())
        {
            Stop();
        }
        return;
    }
    const std::unique_ptr<CBandData> band(next);
    m_queue.Change(-1);
    const CTrace::CTime begin = m_track.Now();
    m_pWriter->Band_Write(*band);
    m_track.Span_Add("write", begin,
                     {{"band", band->m_bandNo},
                      {"page", band->m_pageIndex},
                      {"swath", band->m_swathIndex},
                      {"lines", band->m_height},
                      {"bytes", band->m_dataSize}});
    const std::lock_guard guard(m_lock);
    ++m_count.bands;
    m_count.lines += band->m_height;
    m_count.bytes += band->m_dataSize;
}
