// The converter's state machine and its pool of generators.
#include "Unit2Board/Unit2Board.h"

#include "KelCommon/KelLog.h"
#include "KelCommon/SBufferData.h"
#include "Platform/BandData/BandData.h"
#include "Unit2Board/Unit2Board_Line.h"

#include <algorithm>
#include <memory>
#include <string>

template class CKelBaseThread<CUnit2Board>;

namespace
{

constexpr int elementCount = 20; // lines in flight at most
constexpr unsigned long waitMs = 100;
constexpr unsigned long gatherMs = 1;
constexpr unsigned withoutLimit = 4294967295U;

// What m_pLineBuffer points to: the buffer's own class has a virtual operation but a plain destructor, so that only a
// class without heirs can be deleted through a pointer.
class CLineBuffer final : public CKelThreadBuffer_T<int>
{
public:
    using CKelThreadBuffer_T::CKelThreadBuffer_T;
};

using CBuffer = CKelThreadBuffer_T<int>;

// Takes up to `limit` elements out of `fifo`: all at once, or else the one that `take`, which waits for it, brings. The
// number taken.
int Elements_Take(CBuffer& buffer, CBuffer::CFIFO& fifo, bool (CBuffer::*take)(int*&, unsigned long), int** elements,
                  int limit)
{
    const int count = fifo.Out_Many(elements, limit, 1);
    return count > 0 ? count : static_cast<int>((buffer.*take)(elements[0], waitMs));
}

// Gives an element back to the FIFO that it came from, which has room for it.
void Element_Return(CBuffer::CFIFO& source, int* element)
{
    if (!source.In_Many(&element, 1))
    {
        delete element; // all the same nobody's
    }
}

// Puts `count` elements into `fifo`: all at once, or else one by one with `put`, which waits for room. The number put.
// An element that finds no room is in no FIFO any more and is deleted; those behind it go back to `source`.
int Elements_Put(CBuffer& buffer, CBuffer::CFIFO& fifo, bool (CBuffer::*put)(int*, unsigned long),
                 CBuffer::CFIFO& source, int** elements, int count)
{
    if (fifo.In_Many(elements, count))
    {
        return count;
    }
    int** const end = elements + count;
    int** const stuck = std::find_if_not(elements, end, [&](int* element) { return (buffer.*put)(element, waitMs); });
    if (stuck != end)
    {
        delete *stuck;
        std::for_each(stuck + 1, end, [&](int* element) { Element_Return(source, element); });
    }
    return static_cast<int>(stuck - elements);
}

} // namespace

CUnit2Board::~CUnit2Board()
{
    delete static_cast<CLineBuffer*>(m_pLineBuffer);
    m_pLineBuffer = nullptr;
    delete[] m_pSrcBands;
    m_pSrcBands = nullptr;
    Release_LineGenerator();
}

CUnit2Board::CUnit2Board() = default;

CUnit2Board::CUnit2Board(const CUnit2Board& other) = default;

CUnit2Board& CUnit2Board::operator=(const CUnit2Board& other) = default;

bool CUnit2Board::Create(int lineGeneratorCount, CBandData** srcBands, int srcBandCount, CBandData& dstBand,
                         const CPrintUnitDataMap_Base& dataMap)
{
    m_lineGeneratorCount = lineGeneratorCount;
    m_srcBandCount = srcBandCount;
    m_pSrcBands = new CBandData*[static_cast<std::size_t>(srcBandCount)];
    std::copy_n(srcBands, srcBandCount, m_pSrcBands);
    m_pDstBand = &dstBand;
    m_pDataMap = &dataMap;
    if (!Create_LineGenerator())
    {
        KEL_LOG_AT(ESeverityLevel::Error, 50, "failure");
        Stop(); // no generator may outlive a converter that its owner now destroys
        return false;
    }
    if (!Start("CUnit2Board"))
    {
        KEL_LOG_AT(ESeverityLevel::Error, 52, "failure");
        Stop();
        return false;
    }
    return true;
}

bool CUnit2Board::Create_LineGenerator()
{
    m_pLineBuffer = new CLineBuffer("Unit2Board_Buffer");
    SBufferData<int*> elements;
    if (!elements.AllocateBuffer(elementCount, true))
    {
        KEL_LOG_AT(ESeverityLevel::Error, 162, "failure");
        return false;
    }
    std::generate_n(elements.m_pBuffer, elementCount, [] { return new int; });
    if (!m_pLineBuffer->Create(elements.m_pBuffer, elementCount))
    {
        KEL_LOG_AT(ESeverityLevel::Error, 167, "failure");
        return false;
    }
    // Null where no generator came into being.
    m_pLineGenerators = new CUnit2Board_Line* [static_cast<std::size_t>(m_lineGeneratorCount)] {};
    for (int i = 0; i < m_lineGeneratorCount; ++i)
    {
        auto generator = std::make_unique<CUnit2Board_Line>();
        generator->LineShare_Set(2 * m_lineGeneratorCount);
        if (!generator->Create(*m_pLineBuffer, *m_pDataMap, m_pSrcBands, m_srcBandCount, *m_pDstBand))
        {
            KEL_LOG_AT(ESeverityLevel::Error, 174, "failure");
            return false;
        }
        m_pLineGenerators[i] = generator.release();
    }
    return true;
}

bool CUnit2Board::Release_LineGenerator()
{
    if (m_pLineGenerators == nullptr)
    {
        return true;
    }
    for (int i = 0; i < m_lineGeneratorCount; ++i)
    {
        delete m_pLineGenerators[i];
        m_pLineGenerators[i] = nullptr;
    }
    m_lineGeneratorCount = 0;
    delete[] m_pLineGenerators;
    m_pLineGenerators = nullptr;
    return true;
}

bool CUnit2Board::Stop_LineGenerator()
{
    LineGenerator_ForEach([](CUnit2Board_Line& generator) { generator.Stop(); });
    return true;
}

// All are told to stop before any is waited for, so that they end side by side.
void CUnit2Board::Stop()
{
    Stop_LineGenerator();
    LineGenerator_ForEach([](CUnit2Board_Line& generator) { generator.WaitExit(withoutLimit); });
    TamBaseThread::Stop();
}

template<class Action>
void CUnit2Board::LineGenerator_ForEach(Action action)
{
    for (int i = 0; m_pLineGenerators != nullptr && i < m_lineGeneratorCount; ++i)
    {
        if (m_pLineGenerators[i] != nullptr)
        {
            action(*m_pLineGenerators[i]);
        }
    }
}

bool CUnit2Board::WaitExit(unsigned int timeoutMs)
{
    if (!TamBaseThread::WaitExit(timeoutMs))
    {
        KEL_LOG_AT(ESeverityLevel::Error, 227, "failure");
        return false;
    }
    return true;
}

bool CUnit2Board::Prepare()
{
    if (!TamBaseThread::Prepare())
    {
        KEL_LOG_AT(ESeverityLevel::Error, 83, "failure");
        Stop(); // the owner sees this thread end and may destroy the converter, so the generators end first
        return false;
    }
    m_processState = State_Initialize;
    return true;
}

bool CUnit2Board::OneLoop()
{
    if (ProcessState_Run())
    {
        return true;
    }
    KEL_LOG_AT(ESeverityLevel::Error, 75, "m_processState = " + std::to_string(m_processState));
    Stop();
    return false;
}

bool CUnit2Board::ProcessState_Run()
{
    switch (m_processState)
    {
    case State_Initialize:
        return Initialize();
    case State_AddSourceLine:
        return AddSourceLine();
    case State_Process:
        return Process();
    default:
        return false;
    }
}

bool CUnit2Board::Initialize()
{
    m_processState = State_AddSourceLine;
    m_addedLineCount = 0;
    m_finishedLineCount = 0;
    return true;
}

// Hands out lines for as long as there are free elements: all of those at once.
bool CUnit2Board::AddSourceLine()
{
    while (m_addedLineCount < m_pDstBand->m_height && m_pLineBuffer->EmptyFIFO()->HasDataEvent().Wait(0, 0))
    {
        int* elements[elementCount];
        const int wanted = std::min(elementCount, m_pDstBand->m_height - m_addedLineCount);
        const int count =
            Elements_Take(*m_pLineBuffer, *m_pLineBuffer->EmptyFIFO(), &CBuffer::Empty_Out, elements, wanted);
        if (count == 0)
        {
            KEL_LOG_AT(ESeverityLevel::Error, 114, "failure");
            return false;
        }
        std::for_each(elements, elements + count,
                      [line = m_addedLineCount](int* element) mutable { *element = line++; });
        const int putCount = Elements_Put(*m_pLineBuffer, *m_pLineBuffer->InFIFO(), &CBuffer::Wait_In,
                                          *m_pLineBuffer->EmptyFIFO(), elements, count);
        m_addedLineCount += putCount;
        if (putCount < count)
        {
            KEL_LOG_AT(ESeverityLevel::Error, 118, "failure");
            return false;
        }
    }
    m_processState = State_Process;
    return true;
}

// Recycles the elements of all lines that have come back. Which lines they were does not matter, only how many.
bool CUnit2Board::Process()
{
    while (m_pLineBuffer->FullFIFO()->HasDataEvent().Wait(0, 0))
    {
        int* elements[elementCount];
        const int count =
            Elements_Take(*m_pLineBuffer, *m_pLineBuffer->FullFIFO(), &CBuffer::Full_Out, elements, elementCount);
        if (count == 0)
        {
            KEL_LOG_AT(ESeverityLevel::Error, 131, "failure");
            return false;
        }
        const int putCount = Elements_Put(*m_pLineBuffer, *m_pLineBuffer->EmptyFIFO(), &CBuffer::Empty_In,
                                          *m_pLineBuffer->FullFIFO(), elements, count);
        m_finishedLineCount += putCount;
        if (putCount < count)
        {
            KEL_LOG_AT(ESeverityLevel::Error, 135, "failure");
            return false;
        }
    }
    if (m_finishedLineCount >= m_pDstBand->m_height)
    {
        Stop();
        return true;
    }
    // More lines can be handed out, or nothing came back for as long as one waits: both go back to handing out.
    if (m_pLineBuffer->EmptyFIFO()->HasDataEvent().Wait(0, 0) || !FinishedLine_Wait())
    {
        m_processState = State_AddSourceLine;
    }
    return true;
}

// Waits until a line has come back. Being woken costs more than a line: for a moment lines may gather, as long as every
// generator has one to work on. Lines that take so long that none comes in that moment are waited for one by one.
bool CUnit2Board::FinishedLine_Wait()
{
    auto& fullFIFO = *m_pLineBuffer->FullFIFO();
    return fullFIFO.HasData_WaitForMany(elementCount / 2, gatherMs) ||
           fullFIFO.HasDataEvent().Wait(waitMs - gatherMs, 0);
}
