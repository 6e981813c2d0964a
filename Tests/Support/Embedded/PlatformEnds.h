// The far ends of the band FIFOs and the types of threads, under the names that tests use on every edition of the
// platform: the embedded edition has them itself. The plain edition's header of the same name is in
// Tests/PlainPlatform/Support; the build chooses.
#pragma once

#include "Platform/DataProcess/BandDataFIFO.h"
#include "Platform/DataProcess/BandDataFIFO_S.h"
#include "Platform/Thread/CreateThread.h"

#include <chrono>

// CreateThread's types.
using TestThreadHandle = HANDLE;
using TestThreadWord = DWORD;

// The median of how long a stage takes to stop stays below this. A stop request ends
// this edition's waits; sitting through one would take 50 ms as a rule.
constexpr std::chrono::milliseconds stopBound{25};
constexpr int stopRounds = 40;
constexpr int startStopRounds = 10000;

// An input FIFO with its producer's side, whose stage's side can be overridden.
using CTestPool = CBandDataFIFO;

// An output FIFO whose stage's side can be overridden.
using CTestOutput = CBandDataFIFO_S;

// The next stage's side of any output FIFO.
class CTestOutputEnd
{
public:
    explicit CTestOutputEnd(CBandDataFIFO_S& fifo) : m_fifo(fifo) {}

    bool WaitForOut(unsigned timeoutMs) { return m_fifo.WaitForOut(timeoutMs); }
    bool Out(CBandData*& band, unsigned timeoutMs) { return m_fifo.Out(band, timeoutMs); }
    bool IsCompleted() { return m_fifo.IsCompleted(); }

private:
    CBandDataFIFO_S& m_fifo;
};
