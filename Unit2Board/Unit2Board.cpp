// The converter's state machine and its pool of generators.
#include "Unit2Board/Unit2Board.h"

#include "KelCommon/KelLog.h"
#include "KelCommon/KelWait.h"
#include "KelCommon/SBufferData.h"
#include "Platform/BandData/BandData.h"
#include "Unit2Board/LineRun.h"
#include "Unit2Board/Unit2Board_Line.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>

template class CKelBaseThread<CUnit2Board>;

namespace
{

constexpr int elementCount = 20; // indices in flight at most

// What m_pLineBuffer points to: the buffer, and how many lines an index in it stands for. (The buffer's own class has a
// virtual operation but a plain destructor, so that only a class without heirs can be deleted through a pointer.)
class CLineBuffer final : public CKelThreadBuffer_T<int>
{
public:
    CLineBuffer(const std::string& name, int lineRun) : CKelThreadBuffer_T(name), m_lineRun(lineRun) {}

    const int m_lineRun;
};

// Stops a converter that could not be made, or whose thread cannot go on: its owner sees that and may destroy it, so
// the generators end first. Also when what fails throws, as a log's sink may.
struct SStopOnFailure
{
    ~SStopOnFailure()
    {
        if (!m_bAllRun)
        {
            m_converter.Stop();
        }
    }

    CUnit2Board& m_converter;
    bool m_bAllRun = false;
};

int LineRun_Of(const CKelThreadBuffer_T<int>* buffer)
{
    return static_cast<const CLineBuffer*>(buffer)->m_lineRun;
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
    SStopOnFailure threads{*this};
    if (!Create_LineGenerator())
    {
        KEL_LOG_AT(kelSeverity_Failure, 50, "failure");
        return false;
    }
    if (!Start("CUnit2Board"))
    {
        KEL_LOG_AT(kelSeverity_Failure, 52, "failure");
        return false;
    }
    threads.m_bAllRun = true;
    return true;
}

bool CUnit2Board::Create_LineGenerator()
{
    const int lineRun = LineRun_Get(*m_pDstBand, *m_pDataMap, m_lineGeneratorCount);
    m_pLineBuffer = new CLineBuffer("Unit2Board_Buffer", lineRun);
    SBufferData<int*> elements;
    if (!elements.AllocateBuffer(elementCount, true))
    {
        KEL_LOG_AT(kelSeverity_Failure, 162, "failure");
        return false;
    }
    std::array<std::unique_ptr<int>, elementCount> owned; // until the buffer has taken them
    std::generate(owned.begin(), owned.end(), [] { return std::make_unique<int>(); });
    std::transform(owned.begin(), owned.end(), elements.data, [](const auto& element) { return element.get(); });
    const bool bTaken = m_pLineBuffer->Create(elements.data, elementCount);
    std::for_each(owned.begin(), owned.end(), [](auto& element) { static_cast<void>(element.release()); });
    if (!bTaken)
    {
        KEL_LOG_AT(kelSeverity_Failure, 167, "failure");
        return false;
    }
    // Null where no generator came into being.
    m_pLineGenerators = new CUnit2Board_Line* [static_cast<std::size_t>(m_lineGeneratorCount)] {};
    for (int i = 0; i < m_lineGeneratorCount; ++i)
    {
        auto generator = std::make_unique<CUnit2Board_Line>();
        generator->LineRun_Set(lineRun);
        if (!generator->Create(*m_pLineBuffer, *m_pDataMap, m_pSrcBands, m_srcBandCount, *m_pDstBand))
        {
            KEL_LOG_AT(kelSeverity_Failure, 174, "failure");
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

// All are told to stop before any is waited for, so that they end side by side; and they are woken, since most of them
// wait for a line that never comes. Waking them is harmless: a generator that finds no line looks for a stop request.
void CUnit2Board::Stop()
{
    Stop_LineGenerator();
    if (m_pLineGenerators != nullptr)
    {
        m_pLineBuffer->InFIFO()->HasDataEvent().Set();
    }
    LineGenerator_ForEach([](CUnit2Board_Line& generator) { generator.WaitExit(kelWait_WithoutLimit); });
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
        KEL_LOG_AT(kelSeverity_Failure, 227, "failure");
        return false;
    }
    return true;
}

bool CUnit2Board::Prepare()
{
    SStopOnFailure threads{*this};
    threads.m_bAllRun = TamBaseThread::Prepare();
    if (!threads.m_bAllRun)
    {
        KEL_LOG_AT(kelSeverity_Failure, 83, "failure");
        return false;
    }
    m_processState = State_Initialize;
    return true;
}

bool CUnit2Board::OneLoop()
{
    SStopOnFailure threads{*this};
    threads.m_bAllRun = ProcessState_Run();
    if (!threads.m_bAllRun)
    {
        KEL_LOG_AT(kelSeverity_Failure, 75, "m_processState = " + std::to_string(m_processState));
    }
    return threads.m_bAllRun;
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

// Hands out lines for as long as there are free elements.
bool CUnit2Board::AddSourceLine()
{
    const int lineRun = LineRun_Of(m_pLineBuffer);
    auto& freeElement = m_pLineBuffer->EmptyFIFO()->HasDataEvent();
    while (m_addedLineCount < m_pDstBand->m_height && freeElement.Wait(0, 0))
    {
        int* element = nullptr;
        if (!m_pLineBuffer->Empty_Out(element, kelWait_Retried))
        {
            KEL_LOG_AT(kelSeverity_Failure, 114, "failure");
            return false;
        }
        *element = m_addedLineCount;
        if (!m_pLineBuffer->Wait_In(element, kelWait_Retried))
        {
            KEL_LOG_AT(kelSeverity_Failure, 118, "failure");
            delete element; // in no FIFO any more
            return false;
        }
        m_addedLineCount += std::min(lineRun, m_pDstBand->m_height - m_addedLineCount);
    }
    m_processState = State_Process;
    return true;
}

// Recycles the elements of all lines that have come back. Which lines they were does not matter, only how many runs:
// the one that is shorter is counted last, whichever came last.
bool CUnit2Board::Process()
{
    const int lineRun = LineRun_Of(m_pLineBuffer);
    auto& finishedLine = m_pLineBuffer->FullFIFO()->HasDataEvent();
    while (finishedLine.Wait(0, 0))
    {
        int* element = nullptr;
        if (!m_pLineBuffer->Full_Out(element, kelWait_Retried))
        {
            KEL_LOG_AT(kelSeverity_Failure, 131, "failure");
            return false;
        }
        if (!m_pLineBuffer->Empty_In(element, kelWait_Retried))
        {
            KEL_LOG_AT(kelSeverity_Failure, 135, "failure");
            delete element; // in no FIFO any more
            return false;
        }
        m_finishedLineCount += std::min(lineRun, m_pDstBand->m_height - m_finishedLineCount);
    }
    if (m_finishedLineCount >= m_pDstBand->m_height)
    {
        Stop();
        return true;
    }
    // More lines can be handed out, or nothing came back for as long as one waits: both go back to handing out.
    if (m_pLineBuffer->EmptyFIFO()->HasDataEvent().Wait(0, 0) || !finishedLine.Wait(kelWait_Retried, 0))
    {
        m_processState = State_AddSourceLine;
    }
    return true;
}
