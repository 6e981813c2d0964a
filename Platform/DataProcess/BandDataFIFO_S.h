// The output side of a stage: a bounded pointer FIFO of bands, and its end. Who puts a band in gives it away; who takes
// one out owns it. The stage's three operations are virtual, so that a host can put its own sink in their place.
#pragma once

#include "KelCommon/KelThreadPtrFIFO_T.h"
#include "Platform/BandData/BandData.h"
#include "Platform/DataProcess/StallStatistic.h"
#include "Platform/PlatformExport.h"

#include <atomic>

class PLATFORM_API CBandDataFIFO_S
{
public:
    // `capacity` in bands, at least 1; otherwise the FIFO template throws.
    explicit CBandDataFIFO_S(int capacity);
    CBandDataFIFO_S(const CBandDataFIFO_S&) = delete;
    CBandDataFIFO_S& operator=(const CBandDataFIFO_S&) = delete;
    virtual ~CBandDataFIFO_S(); // deletes the bands that are still queued

    // The stage's side. A time-out is in milliseconds.
    virtual bool WaitForIn(unsigned timeoutMs);           // true if there is room for a band
    virtual bool In(CBandData* band, unsigned timeoutMs); // queues a band; false if there was no room in time
    virtual void SetCompletedFlag();                      // nothing more will be queued

    // The next stage's side. No wait goes on once the stage has ended.
    bool WaitForOut(unsigned timeoutMs);            // true if a band is there to be taken
    bool Out(CBandData*& band, unsigned timeoutMs); // takes the oldest band; false if none came in time
    bool IsCompleted();                             // the stage has ended and nothing is left

    // How often the stage had to wait for room, and the next stage for a band.
    SStallStatistic ProducerStall_Get() const { return m_producerStall.Get(); }
    SStallStatistic ConsumerStall_Get() const { return m_consumerStall.Get(); }

private:
    bool Band_Put(CBandData* band);
    bool Band_Take(CBandData*& band);

    CKelThreadPtrFIFO_T<CBandData> m_fifo;
    std::atomic<int> m_bandCount{0}; // bands queued, or about to be: 0 means that nothing is left
    std::atomic<bool> m_bCompleted{false};
    CStallCounter m_producerStall;
    CStallCounter m_consumerStall;
};
