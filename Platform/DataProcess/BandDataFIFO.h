// The input side of a stage: a recycling buffer of bands between one print unit's producer and the stage.
//
// A host creates it with a pool of bands, all free. The producer takes a free band (Empty_Out), fills it and queues it
// (Full_In), and says when there will be no more (SetCompletedFlag). The stage waits for a full band, takes it, and
// gives it back. The pool is the bound on how far a producer can run ahead.
//
// The stage's operations are virtual, so that a host can put its own source of bands in their place. A time-out is
// in milliseconds; a stop request ends waits early as it does those of CCustomManualResetEvent.
#pragma once

#include "KelCommon/KelThreadBuffer_T.h"
#include "Platform/BandData/BandData.h"
#include "Platform/DataProcess/StallStatistic.h"
#include "Platform/PlatformExport.h"

#include <atomic>
#include <string>

class PLATFORM_API CBandDataFIFO
{
public:
    // `name` is for log records.
    explicit CBandDataFIFO(const std::string& name);
    CBandDataFIFO(const CBandDataFIFO&) = delete;
    CBandDataFIFO& operator=(const CBandDataFIFO&) = delete;
    virtual ~CBandDataFIFO(); // deletes the bands that are in it, free or full

    // Takes over `count` bands made with `new`; the array stays the caller's. All are free afterwards. A count of 0 or
    // less throws the int 0, and the bands stay the caller's. Called once, before any other operation.
    bool Create(CBandData** bands, int count);

    // The producer's side.
    bool Empty_Out(CBandData*& band, unsigned long timeoutMs); // takes a free band; false if none came free in time
    bool Full_In(CBandData* band, unsigned long timeoutMs);    // queues a filled band
    void SetCompletedFlag();                                   // nothing more will be queued

    // The stage's side.
    // True if a full band is there to be taken. Returns at once, though only the first time, if there will be none.
    virtual bool Full_WaitForOut(unsigned long timeoutMs);
    virtual bool Full_Out(CBandData*& band, unsigned long timeoutMs); // takes the oldest full band
    virtual bool Empty_In(CBandData* band, unsigned long timeoutMs);  // gives a band back to the pool
    virtual bool IsCompleted();                                       // the producer has ended and nothing is left

    // How often the stage had to wait for a full band, and the producer for a free one.
    SStallStatistic ConsumerStall_Get() const { return m_consumerStall.Get(); }
    SStallStatistic ProducerStall_Get() const { return m_producerStall.Get(); }

private:
    CKelThreadBuffer_T<CBandData> m_buffer;
    std::atomic<bool> m_bCompleted{false};
    std::atomic<bool> m_bEndTold{false}; // by Full_WaitForOut
    CStallCounter m_consumerStall;
    CStallCounter m_producerStall;
};
