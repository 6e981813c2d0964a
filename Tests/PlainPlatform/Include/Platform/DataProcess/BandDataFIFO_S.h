// The output side of a stage: a bounded FIFO of bands, which owns those that are in it.
//
// A stage knows these operations. The next stage's side is this edition's own affair.
#pragma once

#include "Platform/BandData/BandData.h"

#include <memory>

class CBandDataFIFO_S
{
public:
    explicit CBandDataFIFO_S(int capacity); // in bands; throws the int 0 for less than 1
    CBandDataFIFO_S(const CBandDataFIFO_S&) = delete;
    CBandDataFIFO_S& operator=(const CBandDataFIFO_S&) = delete;
    virtual ~CBandDataFIFO_S(); // deletes the bands that are still queued

    bool WaitForIn(unsigned timeoutMs);           // true if there is room for a band
    bool In(CBandData* band, unsigned timeoutMs); // queues a band; false if there was no room in time
    void SetCompletedFlag();                      // nothing more will be queued

protected:
    class CQueue; // what stands behind the operations

    explicit CBandDataFIFO_S(std::unique_ptr<CQueue> queue);

private:
    friend class CPlainOutput;

    std::unique_ptr<CQueue> m_pQueue;
};
