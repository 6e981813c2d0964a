// The waiting forms of the pointer FIFO's operations, and the end of the bands.
#include "Platform/DataProcess/BandDataFIFO_S.h"

CBandDataFIFO_S::CBandDataFIFO_S(int capacity) : m_fifo(capacity) {}

CBandDataFIFO_S::~CBandDataFIFO_S() = default;

bool CBandDataFIFO_S::WaitForIn(unsigned timeoutMs)
{
    auto& event = m_fifo.HasSpaceEvent();
    return m_producerStall.Measure([&] { return event.Wait(0, 0); }, [&] { return event.Wait(timeoutMs, 0); });
}

bool CBandDataFIFO_S::In(CBandData* band, unsigned timeoutMs)
{
    return m_producerStall.Measure([&] { return Band_Put(band); },
                                   [&]
                                   {
                                       m_fifo.HasSpaceEvent().Wait(timeoutMs, 0);
                                       return Band_Put(band);
                                   });
}

void CBandDataFIFO_S::SetCompletedFlag()
{
    m_bCompleted = true;
    if (IsCompleted())
    {
        m_fifo.HasDataEvent().Set(); // who waits for a band sees that there will be none
    }
}

bool CBandDataFIFO_S::WaitForOut(unsigned timeoutMs)
{
    auto& event = m_fifo.HasDataEvent();
    return !IsCompleted() &&
           m_consumerStall.Measure([&] { return event.Wait(0, 0); }, [&] { return event.Wait(timeoutMs, 0); }) &&
           !IsCompleted();
}

bool CBandDataFIFO_S::Out(CBandData*& band, unsigned timeoutMs)
{
    return m_consumerStall.Measure([&] { return Band_Take(band); },
                                   [&]
                                   {
                                       if (!IsCompleted())
                                       {
                                           m_fifo.HasDataEvent().Wait(timeoutMs, 0);
                                       }
                                       return Band_Take(band);
                                   });
}

bool CBandDataFIFO_S::IsCompleted()
{
    return m_bCompleted && m_bandCount == 0;
}

// The count is raised before the band can be seen and lowered when it is gone, so that it is never too low.

bool CBandDataFIFO_S::Band_Put(CBandData* band)
{
    ++m_bandCount;
    const bool bPut = m_fifo.In(band);
    m_bandCount -= bPut ? 0 : 1;
    return bPut;
}

bool CBandDataFIFO_S::Band_Take(CBandData*& band)
{
    const bool bTaken = m_fifo.Out(band);
    m_bandCount -= bTaken ? 1 : 0;
    return bTaken;
}
