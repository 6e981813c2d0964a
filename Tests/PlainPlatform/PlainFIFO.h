// What stands behind the contract's band FIFOs, and their far ends: a pool with its producer's side, an output queue
// with the next stage's side. A wait lasts until there is something or the time is over.
//
// The library cannot include this header: it does not lie below the folder of the contract's headers.
#pragma once

#include "Platform/DataProcess/BandDataFIFO.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"

#include "PlainMonitor.h"

#include <cstddef>
#include <deque>

// A bounded queue of bands, which owns those that are in it.
class CPlainQueue
{
public:
    explicit CPlainQueue(std::size_t capacity) : m_capacity(capacity) {}
    CPlainQueue(const CPlainQueue&) = delete;
    CPlainQueue& operator=(const CPlainQueue&) = delete;
    ~CPlainQueue();

    bool Data_Wait(unsigned long timeoutMs);
    bool Space_Wait(unsigned long timeoutMs);
    bool Put(CBandData* band, unsigned long timeoutMs);
    bool Take(CBandData*& band, unsigned long timeoutMs);
    bool IsEmpty();

private:
    bool HasData() const { return !m_bands.empty(); }
    bool HasSpace() const { return m_bands.size() < m_capacity; }

    CPlainMonitor m_monitor; // guards m_bands
    std::deque<CBandData*> m_bands;
    std::size_t m_capacity;
};

// The stage's operations of an input FIFO.
class CBandDataFIFO::CPool
{
public:
    virtual bool Full_WaitForOut(unsigned long timeoutMs) = 0;
    virtual bool Full_Out(CBandData*& band, unsigned long timeoutMs) = 0;
    virtual bool Empty_In(CBandData* band, unsigned long timeoutMs) = 0;
    virtual bool IsCompleted() = 0;

protected:
    ~CPool() = default;
};

// The stage's operations of an output FIFO, and the next stage's.
class CBandDataFIFO_S::CQueue
{
public:
    virtual ~CQueue() = default;

    virtual bool WaitForIn(unsigned timeoutMs) = 0;
    virtual bool In(CBandData* band, unsigned timeoutMs) = 0;
    virtual void SetCompletedFlag() = 0;
    virtual bool WaitForOut(unsigned timeoutMs) = 0;
    virtual bool Out(CBandData*& band, unsigned timeoutMs) = 0;
    virtual bool IsCompleted() = 0;
};

// An input FIFO as a host makes one.
class CPlainPool : private CBandDataFIFO::CPool, public CBandDataFIFO
{
public:
    CPlainPool();
    virtual ~CPlainPool();

    bool Create(CBandData** bands, int count); // takes over `count` bands made with new; all are free afterwards

    // The producer's side.
    bool Empty_Out(CBandData*& band, unsigned long timeoutMs);
    bool Full_In(CBandData* band, unsigned long timeoutMs);
    void SetCompletedFlag();

    // The stage's side; what the contract's operations do.
    bool Full_WaitForOut(unsigned long timeoutMs) override;
    bool Full_Out(CBandData*& band, unsigned long timeoutMs) override;
    bool Empty_In(CBandData* band, unsigned long timeoutMs) override;
    bool IsCompleted() override;

private:
    CPlainQueue m_empty;
    CPlainQueue m_full;
    CPlainMonitor m_monitor; // guards m_bCompleted
    bool m_bCompleted = false;
};

// The next stage's side of any output FIFO.
class CPlainOutput
{
public:
    explicit CPlainOutput(CBandDataFIFO_S& fifo) : m_queue(*fifo.m_pQueue) {}

    bool WaitForOut(unsigned timeoutMs) { return m_queue.WaitForOut(timeoutMs); }
    bool Out(CBandData*& band, unsigned timeoutMs) { return m_queue.Out(band, timeoutMs); }
    bool IsCompleted() { return m_queue.IsCompleted(); }

    using CQueue = CBandDataFIFO_S::CQueue;

    // A queue as the contract's constructor makes it.
    static std::unique_ptr<CQueue> Queue_Make(int capacity);

private:
    CQueue& m_queue;
};
