// The input side of a stage: a recycling buffer of bands between one print unit's producer and the stage.
//
// A stage knows these four operations. What stands behind them, and the producer's side, is this edition's own affair.
#pragma once

#include "Platform/BandData/BandData.h"

class CBandDataFIFO
{
public:
    bool Full_WaitForOut(unsigned long timeoutMs);            // true if a full band is there to be taken
    bool Full_Out(CBandData*& band, unsigned long timeoutMs); // takes the oldest full band
    bool Empty_In(CBandData* band, unsigned long timeoutMs);  // gives a band back to the pool
    bool IsCompleted();                                       // the producer has ended and nothing is left

    CBandDataFIFO(const CBandDataFIFO&) = delete;
    CBandDataFIFO& operator=(const CBandDataFIFO&) = delete;

protected:
    class CPool; // what stands behind the operations

    explicit CBandDataFIFO(CPool& pool) : m_pool(pool) {}
    ~CBandDataFIFO() = default;

private:
    CPool& m_pool;
};
