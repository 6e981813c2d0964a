// The waiting forms of the pointer FIFO's operations.
#include "Platform/DataProcess/BandDataFIFO_S.h"

using CFIFO = CKelThreadPtrFIFO_T<CBandData>;

CBandDataFIFO_S::CBandDataFIFO_S(int capacity) : CFIFO(capacity) {}

CBandDataFIFO_S::~CBandDataFIFO_S() = default;

bool CBandDataFIFO_S::WaitForIn(unsigned timeoutMs)
{
    auto& event = HasSpaceEvent();
    return m_producerStall.Measure([&] { return event.Wait(0, 0); }, [&] { return event.Wait(timeoutMs, 0); });
}

bool CBandDataFIFO_S::In(CBandData* band, unsigned timeoutMs)
{
    return m_producerStall.Measure([&] { return CFIFO::In(band); },
                                   [&]
                                   {
                                       HasSpaceEvent().Wait(timeoutMs, 0);
                                       return CFIFO::In(band);
                                   });
}

void CBandDataFIFO_S::SetCompletedFlag()
{
    Completed_Set();
    if (IsCompletedAndEmpty())
    {
        HasDataEvent().Set(); // who waits for a band sees that there will be none
    }
}

bool CBandDataFIFO_S::WaitForOut(unsigned timeoutMs)
{
    auto& event = HasDataEvent();
    return !IsCompleted() &&
           m_consumerStall.Measure([&] { return event.Wait(0, 0); }, [&] { return event.Wait(timeoutMs, 0); }) &&
           !IsCompleted();
}

bool CBandDataFIFO_S::Out(CBandData*& band, unsigned timeoutMs)
{
    return m_consumerStall.Measure([&] { return CFIFO::Out(band); },
                                   [&]
                                   {
                                       if (!IsCompleted())
                                       {
                                           HasDataEvent().Wait(timeoutMs, 0);
                                       }
                                       return CFIFO::Out(band);
                                   });
}

bool CBandDataFIFO_S::IsCompleted()
{
    return IsCompletedAndEmpty();
}
