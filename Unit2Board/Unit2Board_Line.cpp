// The line generator's state machine and the mapping of one line.
#include "Unit2Board/Unit2Board_Line.h"

#include "DataMap/PrintUnitDataMap_Base.h"
#include "DataMap/SrcBandDataParam.h"
#include "KelCommon/KelLog.h"
#include "KelCommon/KelWait.h"
#include "Platform/BandData/BandData.h"

#include <algorithm>
#include <new>
#include <string>

CUnit2Board_Line::~CUnit2Board_Line()
{
    delete m_pLineIndex;
    m_pLineIndex = nullptr;
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
        KEL_LOG_AT(kelSeverity_Failure, 42, "failure");
        return false;
    }
    return true;
}

bool CUnit2Board_Line::Prepare()
{
    if (!TamBaseThread::Prepare())
    {
        KEL_LOG_AT(kelSeverity_Failure, 76, "failure");
        return false;
    }
    m_processState = State_CreateParam;
    return true;
}

void CUnit2Board_Line::Finally()
{
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
    KEL_LOG_AT(kelSeverity_Failure, 68, "m_processState = " + std::to_string(m_processState));
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
    m_plan = MapPlan_Get(*m_pDataMap);
    m_processState = State_TakeLine;
    return true;
}

// True also when no line came: the same state runs again.
bool CUnit2Board_Line::Line_Take()
{
    if (m_pLineBuffer->Wait_Out(m_pLineIndex, kelWait_Retried))
    {
        m_processState = State_Process;
    }
    return true;
}

bool CUnit2Board_Line::Process()
{
    if (!MapBandData_Run(*m_pLineIndex))
    {
        KEL_LOG_AT(kelSeverity_Failure, 114, "failure");
        return false;
    }
    m_processState = State_AddDstData;
    return true;
}

bool CUnit2Board_Line::AddDstData()
{
    if (!m_pLineBuffer->Full_In(m_pLineIndex, kelWait_Retried))
    {
        KEL_LOG_AT(kelSeverity_Failure, 124, "failure");
        return false;
    }
    m_pLineIndex = nullptr;
    m_processState = State_TakeLine;
    return true;
}

bool CUnit2Board_Line::MapBandData_Run(int firstLine)
{
    const int count = std::min(m_lineRun, m_pDstBand->m_height - firstLine);
    for (int line = firstLine; line < firstLine + count; ++line)
    {
        if (!MapBandData_Line_AllInput(line))
        {
            return false;
        }
    }
    return true;
}

// At once where every band has the line and the map has a plan, which leaves the bytes of one band after the other. A
// band without the line has its record between the others' turns.
bool CUnit2Board_Line::MapBandData_Line_AllInput(int lineIndex)
{
    if (m_plan.IsThere() && m_srcBandCount > 1 &&
        std::all_of(m_pSrcBands, m_pSrcBands + m_srcBandCount,
                    [&](const CBandData* band) { return lineIndex < band->m_height; }))
    {
        MapBandData_Line_OnePass(lineIndex);
        return true;
    }
    for (int i = 0; i < m_srcBandCount; ++i)
    {
        if (!MapBandData_Line_OneInput(lineIndex, *m_pSrcBands[i]))
        {
            KEL_LOG_AT(kelSeverity_Failure, 135, "failure");
            return false;
        }
    }
    return true;
}

void CUnit2Board_Line::MapBandData_Line_OnePass(int lineIndex)
{
    constexpr int runLength = 64;                                               // bands that are mapped at once
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
        CMapEngine::Lines_Map(m_plan, lines, count, dst, m_pDstBand->m_bytesPerLine);
    }
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
        KEL_LOG_AT(kelSeverity_Failure, 144, "failure");
        return true; // a shorter band adds nothing; the line is finished all the same
    }
    const SSrcBandLine line = SrcLine_Get(lineIndex, srcBand);
    unsigned char* dst = m_pDstBand->m_pData + lineIndex * m_pDstBand->m_bytesPerLine;
    if (!m_pDataMap->MapData_Line(line.m_param, line.m_pLine, dst, m_pDstBand->m_bytesPerLine))
    {
        KEL_LOG_AT(kelSeverity_Failure, 158, "failure");
        return false;
    }
    return true;
}
