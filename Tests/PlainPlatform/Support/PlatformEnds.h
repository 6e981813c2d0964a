// The far ends of the band FIFOs and the types of threads, under the names that tests use on every edition of the
// platform: those of the plain edition. The embedded edition's header of the same name is in Tests/Support/Embedded;
// the build chooses.
#pragma once

#include "PlainFIFO.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

// CreateThread's types.
using TestThreadHandle = void*;
using TestThreadWord = std::uint32_t;

// The median of how long a stage takes to stop stays below this: it may sit through a FIFO's wait of 100 ms.
constexpr std::chrono::milliseconds stopBound{200};
constexpr int stopRounds = 5;
constexpr int startStopRounds = 20;

// An input FIFO with its producer's side, whose stage's side can be overridden.
class CTestPool : public CPlainPool
{
public:
    explicit CTestPool(const std::string& /*name*/) {}
};

// An output FIFO whose stage's side can be overridden.
class CTestOutput : public CBandDataFIFO_S
{
public:
    explicit CTestOutput(int capacity)
        : CBandDataFIFO_S(std::make_unique<CBridge>(*this)), m_pBands(CPlainOutput::Queue_Make(capacity))
    {
    }

    virtual bool WaitForIn(unsigned timeoutMs) { return m_pBands->WaitForIn(timeoutMs); }
    virtual bool In(CBandData* band, unsigned timeoutMs) { return m_pBands->In(band, timeoutMs); }
    virtual void SetCompletedFlag() { m_pBands->SetCompletedFlag(); }

private:
    // Leads the contract's operations to the overridden ones.
    class CBridge : public CQueue
    {
    public:
        explicit CBridge(CTestOutput& fifo) : m_fifo(fifo) {}

        bool WaitForIn(unsigned timeoutMs) override { return m_fifo.WaitForIn(timeoutMs); }
        bool In(CBandData* band, unsigned timeoutMs) override { return m_fifo.In(band, timeoutMs); }
        void SetCompletedFlag() override { m_fifo.SetCompletedFlag(); }
        bool WaitForOut(unsigned timeoutMs) override { return m_fifo.m_pBands->WaitForOut(timeoutMs); }
        bool Out(CBandData*& band, unsigned timeoutMs) override { return m_fifo.m_pBands->Out(band, timeoutMs); }
        bool IsCompleted() override { return m_fifo.m_pBands->IsCompleted(); }

    private:
        CTestOutput& m_fifo;
    };

    std::unique_ptr<CQueue> m_pBands;
};

// The next stage's side of any output FIFO.
using CTestOutputEnd = CPlainOutput;
