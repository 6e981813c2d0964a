// The line generator's state machine and the mapping of one line.
#include "Unit2Board/Unit2Board_Line.h"

#include "DataMap/PrintUnitDataMap_Base.h"
#include "DataMap/SrcBandDataParam.h"
#include "KelCommon/KelLog.h"
#include "Platform/BandData/BandData.h"

#include <algorithm>
#include <new>
#include <string>
#include <utility>

namespace
{

constexpr unsigned long waitMs = 100;

} // namespace

CUnit2Board_Line::~CUnit2Board_Line()
{
    delete m_pLineIndex;
    m_pLineIndex = nullptr;
    std::for_each(m_pLines, m_pLines + m_lineCount, [](int* line) { delete line; });
    m_lineCount = 0;
}

bool CUnit2Board_Line::Create(CKelThreadBuffer_T<int>& buffer, const CPrintUnitDataMap_Base& dataMap,
                              CBandData** srcBands, int srcBandCount, CBandData& dstBand)
{
    m_pLineBuffer = &buffer;
    m_pDataMap = &dataMap;
    m_pSrcBands = srcBands;
    m_srcBandCount = srcBandCount;
    m_pDstBand = &dstBand;
    if (!Start("CUnit2Board_Line"))
    {
        KEL_LOG_AT(ESeverityLevel::Error, 42, "failure");
        return false;
    }
    return true;
}

bool CUnit2Board_Line::Prepare()
{
    if (!TamBaseThread::Prepare())
    {
        KEL_LOG_AT(ESeverityLevel::Error, 76, "failure");
        return false;
    }
    m_processState = State_CreateParam;
    return true;
}

void CUnit2Board_Line::Finally()
{
    Lines_GiveUp();
    m_pDataMap->CustomParam_Release(m_pCustomParam);
    m_pCustomParam = nullptr;
    TamBaseThread::Finally();
}

bool CUnit2Board_Line::OneLoop()
{
    if (ProcessState_Run())
    {
        return true;
    }
    KEL_LOG_AT(ESeverityLevel::Error, 68, "m_processState = " + std::to_string(m_processState));
    Stop();
    return false;
}

bool CUnit2Board_Line::ProcessState_Run()
{
    switch (m_processState)
    {
    case State_CreateParam:
        return CustomParam_Make();
    case State_TakeLine:
        return Line_Take();
    case State_Process:
        return Process();
    case State_AddDstData:
        return AddDstData();
    default:
        return false;
    }
}

bool CUnit2Board_Line::CustomParam_Make()
{
    m_pCustomParam = m_pDataMap->CustomParam_Create();
    m_processState = State_TakeLine;
    return true;
}

// True also when no line came: the same state runs again.
bool CUnit2Board_Line::Line_Take()
{
    if (m_lineNext == m_lineCount && Lines_Take() == 0)
    {
        return true;
    }
    m_pLineIndex = std::exchange(m_pLines[m_lineNext], nullptr);
    m_processState = State_Process;
    return true;
}

// Passing one element from thread to thread costs about as much as passing some, and often more than mapping a line.
int CUnit2Board_Line::Lines_Take()
{
    auto& inFIFO = *m_pLineBuffer->InFIFO();
    m_lineNext = 0;
    m_lineCount = inFIFO.Out_Many(m_pLines, lineLimit, m_lineShare);
    if (m_lineCount == 0)
    {
        m_pLineBuffer->FullFIFO()->HasData_Hurry(); // this generator brings nothing more until lines are handed out
        inFIFO.HasDataEvent().Wait(waitMs, 0);
        m_lineCount = inFIFO.Out_Many(m_pLines, lineLimit, m_lineShare);
    }
    return m_lineCount;
}

bool CUnit2Board_Line::Process()
{
    if (!MapBandData_Line_AllInput(*m_pLineIndex))
    {
        KEL_LOG_AT(ESeverityLevel::Error, 114, "failure");
        return false;
    }
    m_processState = State_AddDstData;
    return true;
}

// The finished lines go back together, with the last of those that were taken together.
bool CUnit2Board_Line::AddDstData()
{
    m_pLines[m_lineNext] = m_pLineIndex;
    if (m_lineNext + 1 < m_lineCount)
    {
        ++m_lineNext;
    }
    else if (Lines_HandBack())
    {
        m_lineCount = 0; // the buffer's
        m_lineNext = 0;
    }
    else
    {
        m_pLines[m_lineNext] = nullptr; // stays in hand
        KEL_LOG_AT(ESeverityLevel::Error, 124, "failure");
        return false;
    }
    m_pLineIndex = nullptr;
    m_processState = State_TakeLine;
    return true;
}

bool CUnit2Board_Line::Lines_HandBack()
{
    if (m_pLineBuffer->FullFIFO()->In_Many(m_pLines, m_lineCount))
    {
        return true;
    }
    return std::all_of(m_pLines, m_pLines + m_lineCount,
                       [this](int*& line)
                       {
                           const bool bBack = m_pLineBuffer->Full_In(line, waitMs);
                           line = bBack ? nullptr : line;
                           return bBack;
                       });
}

// An end in the middle: what is finished counts, and what is not yet begun is left to the other generators. A line that
// failed stays in hand.
void CUnit2Board_Line::Lines_GiveUp()
{
    for (std::int32_t i = 0; i < m_lineCount; ++i)
    {
        auto& fifo = i < m_lineNext ? *m_pLineBuffer->FullFIFO() : *m_pLineBuffer->InFIFO();
        if (m_pLines[i] != nullptr && fifo.In_Many(&m_pLines[i], 1))
        {
            m_pLines[i] = nullptr;
        }
    }
}

// In one pass where every band has the line; what the map then does is what it does band by band. A band without the
// line has its record between the others' turns.
bool CUnit2Board_Line::MapBandData_Line_AllInput(int lineIndex)
{
    if (m_srcBandCount > 1 && std::all_of(m_pSrcBands, m_pSrcBands + m_srcBandCount,
                                          [&](const CBandData* band) { return lineIndex < band->m_height; }))
    {
        if (!MapBandData_Line_OnePass(lineIndex))
        {
            KEL_LOG_AT(ESeverityLevel::Error, 135, "failure");
            return false;
        }
        return true;
    }
    for (int i = 0; i < m_srcBandCount; ++i)
    {
        if (!MapBandData_Line_OneInput(lineIndex, *m_pSrcBands[i]))
        {
            KEL_LOG_AT(ESeverityLevel::Error, 135, "failure");
            return false;
        }
    }
    return true;
}

bool CUnit2Board_Line::MapBandData_Line_OnePass(int lineIndex)
{
    constexpr int runLength = 64;                                               // bands that the map gets at once
    alignas(SSrcBandLine) unsigned char room[runLength * sizeof(SSrcBandLine)]; // clearing it would cost as much again
    auto* lines = reinterpret_cast<SSrcBandLine*>(room);
    unsigned char* dst = m_pDstBand->m_pData + lineIndex * m_pDstBand->m_bytesPerLine;
    for (int first = 0; first < m_srcBandCount; first += runLength)
    {
        const int count = std::min(runLength, m_srcBandCount - first);
        for (int i = 0; i < count; ++i)
        {
            ::new (lines + i) SSrcBandLine(SrcLine_Get(lineIndex, *m_pSrcBands[first + i]));
        }
        if (!m_pDataMap->MapData_Line_AllInput(lines, count, dst, m_pDstBand->m_bytesPerLine))
        {
            // The record of MapBandData_Line_OneInput, whose place this takes.
            KelLog_Write({ESeverityLevel::Error,
                          "bool CUnit2Board_Line::MapBandData_Line_OneInput(int, const CBandData&)",
                          KelLog_BaseName(__FILE__), 158},
                         "failure");
            return false;
        }
    }
    return true;
}

SSrcBandLine CUnit2Board_Line::SrcLine_Get(int lineIndex, const CBandData& srcBand) const
{
    SSrcBandLine line;
    line.m_param.m_unitIndex = srcBand.m_unitIndex;
    line.m_param.m_unitDirection = srcBand.m_unitDirection;
    line.m_param.m_lineBitCount = srcBand.m_width * srcBand.m_bitsPerPixel;
    line.m_param.m_customParam = m_pCustomParam;
    line.m_pLine = srcBand.m_pData + lineIndex * srcBand.m_bytesPerLine;
    return line;
}

bool CUnit2Board_Line::MapBandData_Line_OneInput(int lineIndex, const CBandData& srcBand)
{
    if (lineIndex >= srcBand.m_height)
    {
        KEL_LOG_AT(ESeverityLevel::Error, 144, "failure");
        return true; // a shorter band adds nothing; the line is finished all the same
    }
    const SSrcBandLine line = SrcLine_Get(lineIndex, srcBand);
    unsigned char* dst = m_pDstBand->m_pData + lineIndex * m_pDstBand->m_bytesPerLine;
    if (!m_pDataMap->MapData_Line(line.m_param, line.m_pLine, dst, m_pDstBand->m_bytesPerLine))
    {
        KEL_LOG_AT(ESeverityLevel::Error, 158, "failure");
        return false;
    }
    return true;
}
