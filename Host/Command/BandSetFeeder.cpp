// Gathering, copying and passing on of band sets.
#include "Host/Command/BandSetFeeder.h"

#include "KelCommon/KelWait.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace
{

// Null if there is no memory for it.
std::unique_ptr<CBandData> Band_Copy(const CBandData& band)
{
    auto copy = std::make_unique<CBandData>();
    if (!copy->Create(band.m_width, band.m_height, band.m_bitsPerPixel, std::max(band.m_bytesPerLine, 1)))
    {
        return nullptr;
    }
    static_cast<SBandHeader&>(*copy) = band;
    std::memcpy(copy->m_pData, band.m_pData, static_cast<std::size_t>(band.m_dataSize));
    return copy;
}

} // namespace

CBandSetFeeder::CBandSetFeeder(std::vector<CBandDataFIFO*> inputs, CBandSetFIFO& output, bool bDropBlank)
    : m_inputs(std::move(inputs)), m_pOutput(&output), m_bDropBlank(bDropBlank)
{
}

CBandSetFeeder::~CBandSetFeeder()
{
    Stop();
    WaitExit(std::numeric_limits<unsigned int>::max());
}

void CBandSetFeeder::Trace_Set(const STraceTrack& track, const STraceQueue& queue)
{
    m_track = track;
    m_queue = queue;
}

void CBandSetFeeder::Sets_Free(CBandSetFIFO& fifo)
{
    SBufferData<CBandData*>* bandSet = nullptr;
    while (fifo.Out(bandSet))
    {
        if (bandSet != nullptr)
        {
            std::for_each_n(bandSet->data, bandSet->count, [](const CBandData* band) { delete band; });
            delete bandSet;
        }
    }
}

bool CBandSetFeeder::OneLoop()
{
    if (!Space_Wait())
    {
        return true;
    }
    if (m_step.empty() && !m_inputs.front()->Full_WaitForOut(kelWait_Retried))
    {
        if (AreInputsCompleted())
        {
            m_pOutput->In(nullptr); // the end marker
            Stop();
        }
        return true;
    }
    if (!Step_Gather())
    {
        return true;
    }
    if (m_step.back() == nullptr)
    {
        return false; // no memory for the copy
    }
    if (m_bDropBlank && IsStepBlank())
    {
        m_step.clear();
        return true;
    }
    return Set_Push();
}

bool CBandSetFeeder::Space_Wait() const
{
    auto& event = m_pOutput->HasSpaceEvent();
    if (event.Wait(0, 0))
    {
        return true;
    }
    const CTrace::CTime begin = m_track.Now();
    const bool bSpace = event.Wait(kelWait_Retried, 0);
    m_track.Stall_Add(m_queue, begin, m_track.Now());
    return bSpace;
}

// Copies the bands that the step still lacks. False if one did not come in time.
bool CBandSetFeeder::Step_Gather()
{
    while (m_step.size() < m_inputs.size())
    {
        CBandDataFIFO& fifo = *m_inputs[m_step.size()];
        CBandData* band = nullptr;
        if (!fifo.Full_Out(band, kelWait_Retried))
        {
            return false;
        }
        m_step.push_back(Band_Copy(*band));
        fifo.Empty_In(band, kelWait_Retried);
        if (m_step.back() == nullptr)
        {
            return true;
        }
    }
    return true;
}

bool CBandSetFeeder::Set_Push()
{
    auto bandSet = std::make_unique<SBufferData<CBandData*>>();
    if (!bandSet->AllocateBuffer(static_cast<int>(m_step.size()), true))
    {
        return false;
    }
    std::ranges::transform(m_step, bandSet->data, [](const auto& band) { return band.get(); });
    m_queue.Change(1); // before it can be taken
    if (!m_pOutput->In(bandSet.get()))
    {
        return false;
    }
    static_cast<void>(bandSet.release()); // the FIFO's, with the bands
    for (auto& band : m_step)
    {
        static_cast<void>(band.release());
    }
    m_step.clear();
    return true;
}

bool CBandSetFeeder::IsStepBlank() const
{
    return std::ranges::all_of(m_step, [](const auto& band) { return band->m_bSkip; });
}

bool CBandSetFeeder::AreInputsCompleted() const
{
    return std::ranges::all_of(m_inputs, [](CBandDataFIFO* fifo) { return fifo->IsCompleted(); });
}
