// The recycling buffer of bands, with completion and stall counts on top.
#include "Platform/DataProcess/BandDataFIFO.h"

CBandDataFIFO::CBandDataFIFO(const std::string& name) : m_buffer(name) {}

CBandDataFIFO::~CBandDataFIFO() = default;

bool CBandDataFIFO::Create(CBandData** bands, int count)
{
    return m_buffer.Create(bands, count);
}

bool CBandDataFIFO::Empty_Out(CBandData*& band, unsigned long timeoutMs)
{
    return m_producerStall.Measure([&] { return m_buffer.EmptyFIFO()->Out(band); },
                                   [&] { return m_buffer.Empty_Out(band, timeoutMs); });
}

bool CBandDataFIFO::Full_In(CBandData* band, unsigned long timeoutMs)
{
    return m_buffer.Full_In(band, timeoutMs);
}

void CBandDataFIFO::SetCompletedFlag()
{
    m_bCompleted = true;
}

bool CBandDataFIFO::Full_WaitForOut(unsigned long timeoutMs)
{
    auto& event = m_buffer.FullFIFO()->HasDataEvent();
    // The end need not be waited for. It is told once: a stage that must go on asking, since another of its inputs has
    // not ended, does so at its usual pace.
    return m_consumerStall.Measure(
        [&] { return event.Wait(0, 0); },
        [&] { return (!IsCompleted() || m_bEndTold.exchange(true)) && event.Wait(timeoutMs, 0); });
}

bool CBandDataFIFO::Full_Out(CBandData*& band, unsigned long timeoutMs)
{
    return m_consumerStall.Measure([&] { return m_buffer.FullFIFO()->Out(band); },
                                   [&] { return m_buffer.Full_Out(band, timeoutMs); });
}

bool CBandDataFIFO::Empty_In(CBandData* band, unsigned long timeoutMs)
{
    return m_buffer.Empty_In(band, timeoutMs);
}

bool CBandDataFIFO::IsCompleted()
{
    // In this order: after the flag was seen no band can be queued any more, so an empty FIFO stays empty.
    return m_bCompleted && !m_buffer.FullFIFO()->HasDataEvent().Wait(0, 0);
}
